// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/baking/MapText.h"
#include "framework/multires/LevelGeometry.h"

#include <optional>
#include <string>

namespace trovik {

class JobControl;

/// How a displacement map is laid onto a level. What is not given is taken from the line of text in
/// the file (MapText); where there is none, the map is a scalar displacement with mid 0.5 when its
/// numbers are whole and 0 when they are floats, and scale 1.
struct DisplacementOptions {
    /// An image file; with `<UDIM>` in its name one for each tile.
    std::string path;
    /// Displacement (its first channel) or Vector (its first three).
    std::optional<MapKind> kind = {};
    std::optional<MapSpace> space = {};
    /// A number v stands for (v - mid) * scale, in the units of the mesh.
    std::optional<float> mid = {};
    std::optional<float> scale = {};
    /// Multiplies every displacement.
    float strength = 1.0f;
    /// The image repeats beyond 0 to 1, and its edges meet; otherwise UVs beyond are refused.
    bool repeat = false;
};

/// Moves the vertices of the bound level by a map, and makes that one step of undo.
///
/// Per vertex the map is read at its UVs, bilinear between the centres of texels and constant
/// beyond the outermost ones. A scalar moves along the vertex's normal, a vector in the frame at
/// the vertex (SurfaceFrames of the level as it is) or mesh-local. A vertex on a seam of the
/// texture is moved by the mean of what its UVs say, so nothing comes apart. Freezing holds back
/// its share. Where a layer is active the moves go into it, and its strength scales them.
/// \return the number of vertices that were moved; with none there is no step.
/// \throw HostError, with nothing changed: no UVs, UVs outside, no such image, an image with too
/// few channels or of normals, an active layer that is hidden or locked. Error when memory is
/// refused. Cancelled, with nothing changed: the job is asked until the first vertex moves.
TROVIK_API std::uint64_t DisplaceByMap(LevelGeometry& geometry,
                                       const DisplacementOptions& options,
                                       JobControl* job = nullptr);

}  // namespace trovik
