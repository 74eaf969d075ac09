// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/strokes/PressureCurve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace trovik::test {
namespace {

std::string FlawOf(const std::vector<PressureCurve::Point>& points, std::size_t& index) {
    return PressureCurve::Flaw(points, index).value_or("");
}

TEST(PressureCurve, WithoutPointsIsTheIdentity) {
    const PressureCurve curve;
    EXPECT_TRUE(curve.IsIdentity());
    for (const float p : {0.0f, 0.1f, 0.77f, 1.0f}) EXPECT_EQ(curve.At(p), p);
}

TEST(PressureCurve, PassesThroughItsPointsAndIsConstantOutside) {
    const PressureCurve curve({{0.2f, 0.1f}, {0.5f, 0.6f}, {0.9f, 0.7f}});
    EXPECT_EQ(curve.At(0.0f), 0.1f);
    EXPECT_EQ(curve.At(0.2f), 0.1f);
    EXPECT_FLOAT_EQ(curve.At(0.5f), 0.6f);
    EXPECT_EQ(curve.At(0.9f), 0.7f);
    EXPECT_EQ(curve.At(1.0f), 0.7f);
    EXPECT_EQ(curve.At(std::numeric_limits<float>::quiet_NaN()), 0.1f);
}

TEST(PressureCurve, CollinearPointsGiveALine) {
    const PressureCurve curve({{0.0f, 0.2f}, {0.3f, 0.38f}, {0.5f, 0.5f}, {1.0f, 0.8f}});
    for (int step = 0; step <= 20; ++step) {
        const float p = 0.05f * static_cast<float>(step);
        EXPECT_NEAR(curve.At(p), 0.2f + 0.6f * p, 1e-6f);
    }
}

TEST(PressureCurve, RisesAndFallsOnlyWhereItsPointsDo) {
    // Points for which a plain spline overshoots.
    const PressureCurve curve(
        {{0.0f, 0.0f}, {0.4f, 0.02f}, {0.5f, 0.98f}, {0.8f, 1.0f}, {1.0f, 0.3f}});
    float before = 0.0f;
    float widest = 0.0f;
    for (int i = 1; i <= 1000; ++i) {
        const float p = static_cast<float>(i) * 0.001f;
        const float value = curve.At(p);
        EXPECT_LE(value, 1.0f) << p;
        if (p <= 0.8f) {
            EXPECT_GE(value, before - 1e-6f) << p;
        }
        if (p > 0.801f) {
            EXPECT_LE(value, before + 1e-6f) << p;
        }
        widest = std::max(widest, std::abs(value - before));
        before = value;
    }
    EXPECT_LT(widest, 0.02f) << "no jumps";
    // The curve is smooth: within a steep span, it is steepest in the middle and does not follow
    // the chord.
    EXPECT_GT(std::abs(curve.At(0.42f) - (0.02f + 0.96f * 0.2f)), 0.02f);
}

TEST(PressureCurve, RefusesPointsThatDefineNoCurve) {
    std::size_t index = 9;
    EXPECT_EQ(FlawOf({{0.0f, 0.0f}}, index), "a pressure curve must have 2 to 32 points");
    EXPECT_EQ(index, 1u);
    EXPECT_EQ(FlawOf(std::vector<PressureCurve::Point>(33, {0.0f, 0.0f}), index),
              "a pressure curve must have 2 to 32 points");
    EXPECT_EQ(FlawOf({{0.0f, 0.0f}, {0.5f, 1.5f}}, index),
              "pressures and values must be between 0 and 1");
    EXPECT_EQ(index, 1u);
    EXPECT_EQ(FlawOf({{0.0f, 0.0f}, {0.5f, 0.5f}, {0.5f, 1.0f}}, index),
              "the pressures of curve points must be in ascending order");
    EXPECT_EQ(index, 2u);
    EXPECT_EQ(FlawOf({{std::numeric_limits<float>::quiet_NaN(), 0.0f}, {1.0f, 1.0f}}, index),
              "pressures and values must be between 0 and 1");
    EXPECT_EQ(FlawOf({{0.0f, 0.0f}, {1.0f, 1.0f}}, index), "");
    EXPECT_THROW(PressureCurve({{0.0f, 0.0f}}), HostError);
}

}  // namespace
}  // namespace trovik::test
