// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstring>
#include <type_traits>

namespace trovik {

/// Returns whether two values are bit-identical. Unlike ==, this distinguishes 0 from -0 and
/// considers a NaN equal to itself, so that "nothing changed" is exact.
template <typename T>
bool SameBits(const T& a, const T& b) {
    static_assert(std::is_trivially_copyable_v<T>);
    // The compared types have no padding. NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

}  // namespace trovik
