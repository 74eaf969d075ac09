// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace trovik {

/// Splits a list of items at the median of their centres, along the longest axis of the centres'
/// bounding box. Afterwards, the first half of the list contains the items whose centres have the
/// smaller coordinates along the axis, and each half is sorted by item number. Equal centres are
/// ordered by item number, so the result depends only on the arguments. The axis and the split are
/// chosen as in Friedman, Bentley, Finkel: "An Algorithm for Finding Best Matches in Logarithmic
/// Expected Time" (1977). \param items  indices into `centres`. \param centres  must be finite.
/// \return the size of the first half, count / 2. Cost: O(n log n).
uint32_t SplitAtMedian(uint32_t* items,
                       uint32_t count,
                       const std::vector<std::array<float, 3>>& centres);

}  // namespace trovik
