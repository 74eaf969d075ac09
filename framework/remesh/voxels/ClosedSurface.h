// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SourceSurface.h"

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

namespace trovik {

/// The current level of a geometry as triangles, with all holes filled flat. Mesh-local.
struct ClosedSurface {
    std::vector<std::array<float, 3>> positions;
    /// Three vertices for each triangle.
    std::vector<uint32_t> triangles;
    std::size_t filledHoles = 0;

    double area = 0.0;
    /// The sum of the areas of the projections of all triangles along the three axes: the expected
    /// number of grid edges that cross the surface, for a grid with a spacing of 1.
    double projectedArea = 0.0;
    /// The sum of the volumes that the connected components enclose, regardless of their
    /// orientation.
    double volume = 0.0;
    /// The largest absolute coordinate, and the diagonal of the bounding box.
    double largestCoordinate = 0.0;
    double diagonal = 0.0;

    /// \throw HostError if a position is not finite; Cancelled. Cost: O(n log n).
    explicit ClosedSurface(SourceSurface& source, JobControl* job);

    /// Returns the triangles as a geometry.
    std::unique_ptr<LevelGeometry> MakeGeometry(JobControl* job) const;
};

}  // namespace trovik
