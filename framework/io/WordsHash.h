// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace trovik {

/// Hash function for a fixed number of 32-bit words.
struct WordsHash {
    template <std::size_t count>
    std::size_t operator()(const std::array<std::uint32_t, count>& words) const {
        std::uint64_t hash = 0x9E3779B97F4A7C15u;
        for (const std::uint32_t word : words) {
            hash = (hash ^ word) * 0xFF51AFD7ED558CCDu;
            hash ^= hash >> 32;
        }
        return static_cast<std::size_t>(hash);
    }
};

}  // namespace trovik
