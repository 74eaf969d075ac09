// SPDX-License-Identifier: Apache-2.0
#include "framework/display/GridIndices.h"

#include <array>
#include <cassert>

namespace trovik {

GridIndices::GridIndices(uint32_t depth) {
    const uint32_t side = 1u << depth;
    const uint32_t nextRow = side + 1;
    for (uint32_t strideLog2 = 0; strideLog2 <= depth; ++strideLog2) {
        first.push_back(static_cast<uint32_t>(indices.size()));
        const uint32_t stride = 1u << strideLog2;
        for (uint32_t row = 0; row < side; row += stride) {
            for (uint32_t column = 0; column < side; column += stride) {
                const uint32_t corner0 = row * nextRow + column;
                const uint32_t corner1 = corner0 + stride;
                const uint32_t corner3 = corner0 + stride * nextRow;
                const uint32_t corner2 = corner3 + stride;
                for (const uint32_t corner : {corner0, corner1, corner2, corner0, corner2, corner3})
                    indices.push_back(static_cast<uint16_t>(corner));
            }
        }
    }
    first.push_back(static_cast<uint32_t>(indices.size()));
}

const GridIndices& GridIndices::OfDepth(uint32_t depth) {
    assert(depth <= maxDepth);
    static const std::array<GridIndices, maxDepth + 1> all = {GridIndices(0),
                                                              GridIndices(1),
                                                              GridIndices(2),
                                                              GridIndices(3),
                                                              GridIndices(4),
                                                              GridIndices(5)};
    return all[depth];
}

}  // namespace trovik
