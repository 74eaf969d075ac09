// SPDX-License-Identifier: Apache-2.0
#include "framework/picking/MedianSplit.h"

#include <algorithm>
#include <limits>

namespace trovik {

uint32_t SplitAtMedian(uint32_t* items,
                       uint32_t count,
                       const std::vector<std::array<float, 3>>& centres) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    std::array<float, 3> low = {infinity, infinity, infinity};
    std::array<float, 3> high = {-infinity, -infinity, -infinity};
    for (uint32_t i = 0; i < count; ++i) {
        for (std::size_t a = 0; a < 3; ++a) {
            low[a] = std::min(low[a], centres[items[i]][a]);
            high[a] = std::max(high[a], centres[items[i]][a]);
        }
    }
    std::size_t axis = 0;
    for (std::size_t a = 1; a < 3; ++a)
        if (high[a] - low[a] > high[axis] - low[axis]) axis = a;

    const uint32_t half = count / 2;
    std::nth_element(items, items + half, items + count, [&](uint32_t a, uint32_t b) {
        const float ca = centres[a][axis];
        const float cb = centres[b][axis];
        return ca != cb ? ca < cb : a < b;
    });
    // nth_element leaves each half in an unspecified order.
    std::sort(items, items + half);
    std::sort(items + half, items + count);
    return half;
}

}  // namespace trovik
