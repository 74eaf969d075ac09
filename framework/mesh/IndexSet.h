// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace trovik {

/// A set of vertex or face numbers, which ranks its members from 0 in ascending order.
///
/// The ranks lie in pages of 512 numbers; pages without members are not stored. Cost and memory: by
/// the members as long as they lie close together in numbers, as those of a region do, and 8 bytes
/// for each 512 numbers between the lowest and the highest.
class TROVIK_API IndexSet {
public:
    /// \param members  in any order; repeated ones count once.
    explicit IndexSet(std::span<const uint32_t> members);

    static constexpr uint32_t noRank = 0xffffffffu;
    /// The number of lower members; noRank for a number that is not a member.
    uint32_t RankOf(uint32_t number) const {
        const std::size_t page = number / pageNumbers - firstPage;
        if (page >= pages.size() || pages[page] == noPage) return noRank;
        return ranks[pages[page] + number % pageNumbers];
    }
    bool Has(uint32_t number) const { return RankOf(number) != noRank; }
    uint32_t Count() const { return count; }
    /// Ascending.
    std::vector<uint32_t> Members() const;

private:
    static constexpr uint32_t pageNumbers = 512;
    static constexpr std::size_t noPage = ~std::size_t{0};

    /// Differences to it wrap for lower numbers, which are then beyond the last page.
    std::size_t firstPage = 0;
    /// Per page of numbers its index into `ranks`.
    std::vector<std::size_t> pages;
    std::vector<uint32_t> ranks;
    uint32_t count = 0;
};

}  // namespace trovik
