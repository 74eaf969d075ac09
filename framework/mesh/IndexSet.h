// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace trovik {

/// A set of vertex or face numbers. Each member has a rank: its index in ascending order, from 0.
///
/// Ranks are stored in pages of 512 numbers; pages without members are not stored. Cost and memory
/// are linear in the number of members if their numbers are close together, as in a region of a
/// mesh. In addition, the set uses 8 bytes per 512 numbers between the lowest and the highest
/// member.
class TROVIK_API IndexSet {
public:
    /// \param members  in any order; duplicates are allowed.
    explicit IndexSet(std::span<const uint32_t> members);

    static constexpr uint32_t noRank = 0xffffffffu;
    /// Returns how many members are below `number`, or noRank if `number` is not a member.
    uint32_t RankOf(uint32_t number) const {
        const std::size_t page = number / pageNumbers - firstPage;
        if (page >= pages.size() || pages[page] == noPage) return noRank;
        return ranks[pages[page] + number % pageNumbers];
    }
    bool Has(uint32_t number) const { return RankOf(number) != noRank; }
    uint32_t Count() const { return count; }
    /// Returns the members in ascending order.
    std::vector<uint32_t> Members() const;

private:
    static constexpr uint32_t pageNumbers = 512;
    static constexpr std::size_t noPage = ~std::size_t{0};

    /// Number of the first page. Subtracting it from a lower page number wraps around, so the
    /// result lies beyond the last page.
    std::size_t firstPage = 0;
    /// For each page of numbers, its index in the stored ranks.
    std::vector<std::size_t> pages;
    std::vector<uint32_t> ranks;
    uint32_t count = 0;
};

}  // namespace trovik
