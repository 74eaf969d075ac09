// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/IndexSet.h"

#include <algorithm>

namespace trovik {

IndexSet::IndexSet(std::span<const uint32_t> members) {
    if (members.empty()) return;
    // Faster than std::minmax_element, which branches.
    uint32_t low = members.front();
    uint32_t high = low;
    for (const uint32_t member : members) {
        low = std::min(low, member);
        high = std::max(high, member);
    }
    firstPage = low / pageNumbers;
    pages.assign(high / pageNumbers - firstPage + 1, noPage);
    for (const uint32_t member : members) {
        std::size_t& page = pages[member / pageNumbers - firstPage];
        if (page == noPage) {
            page = ranks.size();
            ranks.resize(ranks.size() + pageNumbers, noRank);
        }
        ranks[page + member % pageNumbers] = 0;
    }
    for (const std::size_t page : pages) {
        if (page == noPage) continue;
        for (std::size_t i = page; i < page + pageNumbers; ++i)
            if (ranks[i] != noRank) ranks[i] = count++;
    }
}

std::vector<uint32_t> IndexSet::Members() const {
    std::vector<uint32_t> members(count);
    uint32_t* next = members.data();
    for (std::size_t page = 0; page < pages.size(); ++page) {
        if (pages[page] == noPage) continue;
        const auto first = static_cast<uint32_t>((firstPage + page) * pageNumbers);
        for (uint32_t i = 0; i < pageNumbers; ++i)
            if (ranks[pages[page] + i] != noRank) *next++ = first + i;
    }
    return members;
}

}  // namespace trovik
