// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/Falloff.h"

#include <gtest/gtest.h>

namespace trovik {
namespace {

std::vector<float> CurveOf(int index) {
    Store<float> samples;
    FillFalloff(samples, index);
    return {samples.array, samples.array + samples.fill};
}

TEST(Falloff, EachCurveDecreasesFromOneToTheRim) {
    for (int index = 0; index < static_cast<int>(FalloffNames().size()); ++index) {
        SCOPED_TRACE(FalloffNames()[static_cast<std::size_t>(index)]);
        const std::vector<float> curve = CurveOf(index);
        ASSERT_EQ(curve.size(), 256u);
        EXPECT_EQ(curve.front(), 1.0f);
        EXPECT_EQ(curve.back(), index == 0 ? 1.0f : 0.0f);
        for (std::size_t i = 1; i < curve.size(); ++i) ASSERT_LE(curve[i], curve[i - 1]) << i;
    }
}

TEST(Falloff, IndexAndNameAgree) {
    EXPECT_EQ(FalloffNames().size(), 8u);
    EXPECT_EQ(FalloffIndexOf("constant"), 0);
    EXPECT_EQ(FalloffIndexOf("smooth"), smoothFalloffIndex);
    EXPECT_EQ(FalloffIndexOf("plateau"), plateauFalloffIndex);
    EXPECT_EQ(FalloffIndexOf("Smooth"), -1);
    EXPECT_EQ(FalloffName(1), "linear");
    EXPECT_EQ(FalloffName(customFalloffIndex), "custom");
    EXPECT_FALSE(IsFalloffIndex(8));
    EXPECT_FALSE(IsFalloffIndex(-1));
}

TEST(Falloff, CurvesHaveTheirDefinedMidValues) {
    EXPECT_EQ(FalloffValue(0, 0.5f), 1.0f);
    EXPECT_EQ(FalloffValue(1, 0.5f), 0.5f);
    EXPECT_EQ(FalloffValue(2, 0.5f), 0.5f);
    EXPECT_EQ(FalloffValue(2, 0.25f), 0.84375f);
    EXPECT_EQ(FalloffValue(3, 0.5f), std::sqrt(0.75f));
    EXPECT_EQ(FalloffValue(4, 0.5f), 0.125f);
    EXPECT_EQ(FalloffValue(5, 0.5f), 0.5f * (1.0f / 0.75f));
    EXPECT_EQ(FalloffValue(5, 0.125f), 1.0f);
    EXPECT_EQ(FalloffValue(6, 0.5f), 0.421875f);
    EXPECT_EQ(FalloffValue(7, 0.5f), 1.0f);
    EXPECT_EQ(FalloffValue(7, 0.875f), 0.5f);
}

TEST(Falloff, UnknownIndexIsSmooth) {
    EXPECT_EQ(CurveOf(99), CurveOf(smoothFalloffIndex));
    EXPECT_EQ(CurveOf(-7), CurveOf(smoothFalloffIndex));
}

}  // namespace
}  // namespace trovik
