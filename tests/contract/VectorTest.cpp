// SPDX-License-Identifier: Apache-2.0
#include "host/Vector.h"

#include <gtest/gtest.h>

namespace trovik {
namespace {

// 2^24 + 1 is not a float. If each 1 is added to 2^24 separately, it is lost; if the ones are added
// together first, they count.
constexpr float big = 16777216.0f;

TEST(Vector, DotSumsFromTheLeft) {
    EXPECT_EQ((Vector(big, 1.0f, 1.0f) | Vector(1.0f, 1.0f, 1.0f)), big);
    EXPECT_EQ((Vector(1.0f, 1.0f, big) | Vector(1.0f, 1.0f, 1.0f)), big + 2.0f);
}

TEST(Vector, CrossFollowsTheRightHandRule) {
    EXPECT_EQ((Vector(1, 0, 0) & Vector(0, 1, 0)), Vector(0, 0, 1));
    EXPECT_EQ((Vector(2, 3, 5) & Vector(7, 11, 13)), Vector(-16, 9, 1));
}

TEST(Vector, LengthIsTheRootOfTheSumOfSquares) {
    EXPECT_EQ(Vector(2, 3, 6).Length(), 7.0f);
    EXPECT_EQ(Vector().Length(), 0.0f);
}

TEST(Vector, NormalizeMultipliesByOneOverTheLength) {
    Vector v(3.0f, 0.0f, 4.0f);
    v.Normalize();
    EXPECT_EQ(v, Vector(3.0f * (1.0f / 5.0f), 0.0f, 4.0f * (1.0f / 5.0f)));
    EXPECT_EQ(Vector(3, 0, 4).Normalized(), v);
    EXPECT_EQ(Vector().Normalized(), Vector());
}

TEST(AxisAlignedBoundingBox, GrowsFromEmptyByItsPoints) {
    AxisAlignedBoundingBox box;
    EXPECT_TRUE(box.IsEmpty());
    box.Extend({1, 2, 3});
    EXPECT_FALSE(box.IsEmpty());
    EXPECT_EQ(box.minX, 1.0f);
    EXPECT_EQ(box.maxX, 1.0f);
    box.Extend({-1, 5, 3});
    EXPECT_EQ(box.minX, -1.0f);
    EXPECT_EQ(box.maxX, 1.0f);
    EXPECT_EQ(box.minY, 2.0f);
    EXPECT_EQ(box.maxY, 5.0f);
    EXPECT_EQ(box.minZ, 3.0f);
    EXPECT_EQ(box.maxZ, 3.0f);
}

}  // namespace
}  // namespace trovik
