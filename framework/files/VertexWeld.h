// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/io/WordsHash.h"

#include <array>
#include <bit>
#include <cstdint>
#include <unordered_map>

namespace trovik {

/// Numbers positions in the order of their first occurrence; bitwise equal positions get the same
/// number. 0 and -0 are equal.
class VertexWeld {
public:
    /// \param next  the number to assign to a position that has not occurred before.
    /// \return the number of the position, and whether it is new.
    std::pair<std::uint32_t, bool> Number(const std::array<float, 3>& position,
                                          std::uint32_t next) {
        const auto [entry, isNew] = numbers.try_emplace(BitsOf(position), next);
        return {entry->second, isNew};
    }

    static bool AreSame(const std::array<float, 3>& a, const std::array<float, 3>& b) {
        return BitsOf(a) == BitsOf(b);
    }

private:
    using Bits = std::array<std::uint32_t, 3>;

    static Bits BitsOf(const std::array<float, 3>& position) {
        // Adding zero changes -0 to +0 and nothing else.
        return {std::bit_cast<std::uint32_t>(position[0] + 0.0f),
                std::bit_cast<std::uint32_t>(position[1] + 0.0f),
                std::bit_cast<std::uint32_t>(position[2] + 0.0f)};
    }

    std::unordered_map<Bits, std::uint32_t, WordsHash> numbers;
};

}  // namespace trovik
