// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SurfaceReplacement.h"

#include <optional>

namespace trovik {

/// Settings of a remesh with voxels. Exactly one of `voxelSize` and `faces` must be set.
struct VoxelRemesh {
    /// Edge length of the voxels, and approximately of the new faces, in world units.
    std::optional<float> voxelSize = {};
    /// Number of faces of the new level 0. It is reached within 5 per cent, if possible.
    std::optional<uint32_t> faces = {};
    /// Moves the vertices of level 0 to the nearest points of the old surface, which restores edges
    /// and details smaller than two voxels.
    bool projects = false;
    /// Number of levels to add above level 0. The vertices of each of them are moved to the nearest
    /// points of the old surface.
    uint32_t levels = 0;
    /// Maximum size of all additional levels.
    uint64_t byteBudget = LevelGeometry::unlimitedBytes;
};

/// Replaces the mesh by a closed mesh of quads of nearly the same size, which follows the outside
/// of the old surface. Connected components that intersect are joined. Holes are filled flat first;
/// cavities, and everything else inside, disappear. The bound level is then the highest level.
///
/// The distances to the surface are sampled on a grid (VoxelField), from which DualSurfaceOf
/// extracts the new surface. The result is bit-identical for any number of threads.
///
/// If the number of faces cannot be reached, a warning reports it. Throws HostError if the surface
/// encloses no volume, such as a plane, if the voxels are too large for it, or if they are so small
/// that the result would need more memory than is free.
TROVIK_API SurfaceOperation RemeshWithVoxels(const VoxelRemesh& settings);

}  // namespace trovik
