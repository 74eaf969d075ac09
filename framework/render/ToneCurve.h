// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace trovik {

/// Converts linear light to sRGB (IEC 61966-2-1 (1999)), 0 to 1. Bright values roll off smoothly
/// towards white; a kink in the curve would be visible as a line on a smooth surface.
inline float Coded(float linear) {
    const float soft = 1.0f - std::exp(-1.3f * std::max(linear, 0.0f));
    return soft <= 0.0031308f ? soft * 12.92f : 1.055f * std::pow(soft, 1.0f / 2.4f) - 0.055f;
}

/// Converts a value from 0 to 1 to the nearest byte value.
inline uint8_t ToByte(float value) {
    // Faster than std::lround, and the value is not negative.
    // NOLINTNEXTLINE(bugprone-incorrect-roundings)
    return static_cast<uint8_t>(std::clamp(value, 0.0f, 1.0f) * 255.0f + 0.5f);
}

}  // namespace trovik
