// SPDX-License-Identifier: Apache-2.0
#include "framework/picking/MedianSplit.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <utility>

namespace trovik {

uint32_t SplitAtMedian(uint32_t* items,
                       uint32_t count,
                       const std::vector<std::array<float, 3>>& centres) {
    assert(std::is_sorted(items, items + count));
    if (count == 0) return 0;
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

    // The median is found in a copy, because nth_element leaves each half in an unspecified order.
    using Key = std::pair<float, uint32_t>;
    std::vector<Key> keys(count);
    for (uint32_t i = 0; i < count; ++i) keys[i] = {centres[items[i]][axis], items[i]};
    const uint32_t half = count / 2;
    std::nth_element(keys.begin(), keys.begin() + half, keys.end());
    const Key median = keys[half];
    std::stable_partition(items, items + count, [&](uint32_t item) {
        return Key(centres[item][axis], item) < median;
    });
    return half;
}

}  // namespace trovik
