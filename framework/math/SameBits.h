// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstring>
#include <type_traits>

namespace trovik {

/// Whether two values agree in every bit. Unlike ==, it tells 0 from -0 and finds a NaN equal to
/// itself, so that "nothing changed" means just that.
template <typename T>
bool SameBits(const T& a, const T& b) {
    static_assert(std::is_trivially_copyable_v<T>);
    // The types compared hold no padding. NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

}  // namespace trovik
