// SPDX-License-Identifier: Apache-2.0

/// \file Tests which types may be written to scenes byte by byte.
#include "framework/layers/LayerBase.h"
#include "framework/scene/NoPadding.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

struct PaddedBehind {
    uint64_t ring = 0;
    uint32_t vertex = 0;
    int16_t words[3] = {0, 0, 0};
};

struct PaddedBetween {
    uint8_t amount;
    float share;
};

struct PaddedInside {
    PaddedBetween inner;
    float share;
};

struct Whole {
    uint32_t vertex;
    Vector position;
    int16_t words[2];
};

TEST(NoPadding, IsTrueIfEveryByteBelongsToAMember) {
    EXPECT_TRUE(NoPadding<uint8_t>);
    EXPECT_TRUE(NoPadding<float>);
    EXPECT_TRUE(NoPadding<Vector>);
    EXPECT_TRUE((NoPadding<std::array<float, 3>>));
    EXPECT_TRUE(NoPadding<Whole>);
    EXPECT_TRUE(NoPadding<LayerBase::LayeredVertex>);
    EXPECT_TRUE(NoPadding<LayerBase::StoredNormal>);
}

TEST(NoPadding, IsFalseIfAByteBelongsToNoMember) {
    EXPECT_FALSE(NoPadding<PaddedBehind>);
    EXPECT_FALSE(NoPadding<PaddedBetween>);
    EXPECT_FALSE(NoPadding<PaddedInside>);
    EXPECT_FALSE((NoPadding<std::array<PaddedBetween, 2>>));
}

}  // namespace
}  // namespace trovik::test
