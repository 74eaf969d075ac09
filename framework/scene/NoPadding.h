// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <type_traits>

namespace trovik {

/// Of the bytes that a value of the type consists of. No constant where one of them is padding,
/// since such a byte has no value.
template <typename T>
constexpr uint64_t SumOfBytes() {
    const auto bytes = std::bit_cast<std::array<uint8_t, sizeof(T)>>(T{});
    uint64_t sum = 0;
    for (const uint8_t byte : bytes) sum += byte;
    return sum;
}

/// Every byte of such a type belongs to a member, so values that are written byte by byte leave
/// none to chance. It has to be made by T{} in a constant expression, and copied byte by byte.
template <typename T>
concept NoPadding = requires {
    typename std::integral_constant<uint64_t, SumOfBytes<T>()>;
};

}  // namespace trovik
