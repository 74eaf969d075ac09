// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <type_traits>

namespace trovik {

/// Sum of the bytes of a value. It is not a constant expression if one of the bytes is padding,
/// because padding bytes have no value.
template <typename T>
constexpr uint64_t SumOfBytes() {
    const auto bytes = std::bit_cast<std::array<uint8_t, sizeof(T)>>(T{});
    uint64_t sum = 0;
    for (const uint8_t byte : bytes) sum += byte;
    return sum;
}

/// Types in which every byte belongs to a member, so that values written byte by byte have no
/// undefined bytes. T{} must be a constant expression, and T must be trivially copyable.
template <typename T>
concept NoPadding = requires {
    typename std::integral_constant<uint64_t, SumOfBytes<T>()>;
};

}  // namespace trovik
