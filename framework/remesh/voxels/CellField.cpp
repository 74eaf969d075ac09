// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/voxels/CellField.h"

#include <algorithm>

namespace trovik {

namespace {

/// Returns the values of a block, or null if the field has no block there.
const float* ValuesAt(const VoxelField& field, const Voxel& origin) {
    const auto& blocks = field.Blocks();
    const auto found = std::lower_bound(
        blocks.begin(), blocks.end(), origin, [](const VoxelField::Block& block, const Voxel& at) {
            return block.origin < at;
        });
    return found != blocks.end() && found->origin == origin ? found->values : nullptr;
}

/// Returns origin + corner c of a cube with a side of `length`.
Voxel Moved(const Voxel& origin, uint32_t c, int32_t length) {
    return {origin[0] + static_cast<int32_t>(c & 1) * length,
            origin[1] + static_cast<int32_t>(c >> 1 & 1) * length,
            origin[2] + static_cast<int32_t>(c >> 2 & 1) * length};
}

}  // namespace

BlockCells::BlockCells(const VoxelField& field, const Voxel& origin) {
    for (uint32_t c = 0; c < 8; ++c) {
        const Voxel first = Moved({0, 0, 0}, c, side);
        const Voxel block = Moved(origin, c, side);
        const float* source = ValuesAt(field, block);
        // Without a block, all its values are the same.
        const float constant = source == nullptr ? field.Value(block) : 0.0f;
        const auto end = [&](std::size_t axis) { return first[axis] == 0 ? side : width; };
        for (int32_t x = first[0]; x < end(0); ++x)
            for (int32_t y = first[1]; y < end(1); ++y)
                for (int32_t z = first[2]; z < end(2); ++z) {
                    const int32_t local =
                        ((x - first[0]) * side + (y - first[1])) * side + (z - first[2]);
                    values[Index(x, y, z)] = source == nullptr ? constant : source[local];
                }
    }
}

std::vector<Voxel> OriginsOfCells(const VoxelField& field) {
    std::vector<Voxel> origins;
    origins.reserve(field.Blocks().size() * 8);
    // The cells below a block have corners in it.
    for (const VoxelField::Block& block : field.Blocks())
        for (uint32_t c = 0; c < 8; ++c)
            origins.push_back(Moved(block.origin, c, -VoxelField::blockSide));
    std::sort(origins.begin(), origins.end());
    origins.erase(std::unique(origins.begin(), origins.end()), origins.end());
    return origins;
}

}  // namespace trovik
