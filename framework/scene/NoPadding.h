// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <type_traits>

namespace trovik {

/// Returns the sum of a value's bytes. The call is not a constant expression if one of them is a
/// padding byte, because padding bytes are indeterminate.
template <typename T>
constexpr uint64_t SumOfBytes() {
    const auto bytes = std::bit_cast<std::array<uint8_t, sizeof(T)>>(T{});
    uint64_t sum = 0;
    for (const uint8_t byte : bytes) sum += byte;
    return sum;
}

/// Types without padding: every byte belongs to a member, so that writing a value byte by byte
/// writes no indeterminate bytes. T{} must be a constant expression, and T must be trivially
/// copyable.
template <typename T>
concept NoPadding = requires {
    typename std::integral_constant<uint64_t, SumOfBytes<T>()>;
};

}  // namespace trovik
