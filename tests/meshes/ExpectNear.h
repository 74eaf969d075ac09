// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <gtest/gtest.h>

namespace trovik::test {

inline void ExpectNear(const Vector& a, const Vector& b, float tolerance = 1e-6f) {
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

}  // namespace trovik::test
