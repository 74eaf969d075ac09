// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"

#include <cstdint>
#include <optional>

namespace trovik {

class JobControl;
class LevelGeometry;

/// The parts of a surface where the wall is thinner than a limit.
struct ThinWalls {
    /// Number of faces with a thin wall, and the area of their thin triangles.
    uint64_t faces = 0;
    double area = 0.0;
    /// Area of the whole surface.
    double totalArea = 0.0;
    /// The smallest thickness below the limit; empty if no wall is thin.
    std::optional<float> thinnest = {};
};

/// Measures the wall of each triangle of a surface: the distance from its centre, along the inward
/// normal, to the first triangle that the ray meets. If the ray enters that triangle from outside,
/// there is no wall. Faces with more than three corners are split into fans. Walls that are thinner
/// than a ten-thousandth of the limit, or than the precision of the coordinates, are not found.
///
/// Walls are measured along one normal, so slanted walls can be thinner than measured; gaps between
/// parts are not measured, but overlaps of parts are, as if they were walls. The orientation of the
/// faces must be correct.
/// \param mesh  a mesh that CheckPolygonMesh accepts; lengths are in its units.
/// \param limit  positive. \throw HostError if the coordinates are too large for such a small
/// limit; Cancelled. Cost: O(n log n) for n triangles, on several threads; the result does not
/// depend on their number.
TROVIK_API ThinWalls FindThinWalls(const PolygonMesh& mesh, float limit, JobControl* job = nullptr);
/// Measures the current level in world units, including hidden faces.
TROVIK_API ThinWalls FindThinWalls(const LevelGeometry& geometry,
                                   float limit,
                                   JobControl* job = nullptr);

}  // namespace trovik
