// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/voxels/VoxelField.h"

#include <cstddef>
#include <vector>

namespace trovik {

/// The values of a field at all corners of the cells of one block. Cell (x, y, z) has its lowest
/// corner at the sample point of voxel (x, y, z) of the block.
class BlockCells {
public:
    static constexpr int32_t side = VoxelField::blockSide;

    /// \param origin  a multiple of the block side; the field need not have a block there.
    BlockCells(const VoxelField& field, const Voxel& origin);

    /// The values at the corners of a cell; see CellLoops.
    std::array<float, 8> Corners(int32_t x, int32_t y, int32_t z) const {
        std::array<float, 8> corners;
        const float* low = &values[Index(x, y, z)];
        for (std::size_t c = 0; c < 8; ++c) corners[c] = low[cornerOffset[c]];
        return corners;
    }

    /// The corner code of a cell.
    static uint8_t CodeOf(const std::array<float, 8>& corners) {
        uint32_t code = 0;
        for (std::size_t c = 0; c < 8; ++c) code |= (corners[c] < 0.0f ? 1u : 0u) << c;
        return static_cast<uint8_t>(code);
    }

    /// Calls `visit(x, y, z)` for each cell of a block.
    template <typename Visit>
    static void ForEach(const Visit& visit) {
        for (int32_t x = 0; x < side; ++x)
            for (int32_t y = 0; y < side; ++y)
                for (int32_t z = 0; z < side; ++z) visit(x, y, z);
    }

private:
    static constexpr int32_t width = side + 1;
    static constexpr std::size_t Index(int32_t x, int32_t y, int32_t z) {
        const int32_t index = (x * width + y) * width + z;
        return static_cast<std::size_t>(index);
    }
    static constexpr std::size_t slab = width * width;
    static constexpr std::array<std::size_t, 8> cornerOffset = {
        0, slab, width, slab + width, 1, slab + 1, width + 1, slab + width + 1};

    std::array<float, width * width * width> values;
};

/// Returns the origins of all blocks with cells that can cross the surface, in ascending order.
std::vector<Voxel> OriginsOfCells(const VoxelField& field);

}  // namespace trovik
