// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace trovik {

class JobControl;

/// The coordinates of a voxel: its sample point is at these coordinates times the voxel size.
using Voxel = std::array<int32_t, 3>;

/// Signed distances to a surface at the sample points of voxels, in units of the voxel size;
/// negative inside. Exact only near the surface: a voxel that is one or more units away has at
/// least the correct sign. Thread-safe.
class VoxelField {
public:
    /// A cube of voxels in which the distances vary. The value of voxel origin + (x, y, z) is
    /// `values[(x * blockSide + y) * blockSide + z]`.
    struct Block {
        Voxel origin;
        const float* values;
    };
    static constexpr int32_t blockSide = 8;

    virtual ~VoxelField() = default;
    /// The blocks, sorted by origin, whose coordinates are multiples of blockSide. Each pair of
    /// neighbouring voxels with different signs is in blocks.
    virtual const std::vector<Block>& Blocks() const = 0;
    /// The value of any voxel.
    virtual float Value(const Voxel& voxel) const = 0;
};

/// Computes voxel fields. It is implemented in the module `trovik-openvdb`.
class VoxelLibrary {
public:
    /// Voxel coordinates must have a smaller magnitude.
    static constexpr double maxCoordinate = 1 << 20;

    /// Returns the signed distances to a closed surface. Space that cannot be reached from outside
    /// is inside, so parts of the surface that are inside other parts have no effect, and cavities
    /// are filled. The result is bit-identical for each run and each number of threads.
    /// \param positions  finite; divided by the voxel size, below maxCoordinate.
    /// \param triangles  three vertices for each triangle.
    /// \throw HostError if there is not enough memory; Cancelled.
    virtual std::unique_ptr<VoxelField> Distances(
        const std::vector<std::array<float, 3>>& positions,
        const std::vector<uint32_t>& triangles,
        float voxelSize,
        JobControl* job) const = 0;

protected:
    ~VoxelLibrary() = default;
};

/// Loads the module at the first call. \throw HostError if that fails; see OpenModule.
TROVIK_API const VoxelLibrary& LoadedVoxelLibrary();

}  // namespace trovik
