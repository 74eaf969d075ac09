// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <cmath>

namespace trovik::test {

/// 90 degrees.
constexpr float quarter = 1.57079632f;

inline Vector RotatedAboutZ(const Vector& p, float angle) {
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    return {p.x * c - p.y * s, p.x * s + p.y * c, p.z};
}

}  // namespace trovik::test
