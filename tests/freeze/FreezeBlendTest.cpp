// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeBlend.h"
#include "tests/freeze/FreezeGrid.h"

#include <gtest/gtest.h>

#include <limits>

namespace trovik::test {
namespace {

TEST(FreezeBlend, AmountsRoundToTheNearest127th) {
    EXPECT_EQ(FreezeAmountOf(0.0f), 0);
    EXPECT_EQ(FreezeAmountOf(0.0039f), 0);
    EXPECT_EQ(FreezeAmountOf(0.5f), 64) << "halves up";
    EXPECT_EQ(FreezeAmountOf(1.0f), 127);
    EXPECT_EQ(FreezeAmountOf(2.0f), 127);
    EXPECT_EQ(FreezeAmountOf(-1.0f), 0);
    EXPECT_EQ(FreezeAmountOf(std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(FreezeAmountsOf({1.0f, 0.5f, 0.0f}, 0.5f), (std::vector<uint8_t>{64, 32, 0}));
}

TEST(FreezeBlend, ModesCombineWithTheExistingMask) {
    EXPECT_EQ(Blended(50, 30, FreezeMode::Raise), 50);
    EXPECT_EQ(Blended(30, 50, FreezeMode::Raise), 50);
    EXPECT_EQ(Blended(50, 0, FreezeMode::Replace), 0);
    EXPECT_EQ(Blended(50, 30, FreezeMode::Add), 80);
    EXPECT_EQ(Blended(100, 100, FreezeMode::Add), 127);
    EXPECT_EQ(Blended(50, 30, FreezeMode::Subtract), 20);
    EXPECT_EQ(Blended(30, 50, FreezeMode::Subtract), 0);
    EXPECT_EQ(Blended(127, 30, FreezeMode::Multiply), 30);
    EXPECT_EQ(Blended(50, 0, FreezeMode::Multiply), 0);
    EXPECT_EQ(Blended(64, 64, FreezeMode::Multiply), 32) << "4096 / 127 = 32.25";
    EXPECT_EQ(Blended(64, 65, FreezeMode::Multiply), 33) << "4160 / 127 = 32.76";
}

TEST(FreezeBlend, FractionInterpolatesBetweenTwoAmounts) {
    EXPECT_EQ(InterpolatedFreeze({0, 100, 10}, {127, 0, 10}, 0.5f),
              (std::vector<uint8_t>{64, 50, 10}));
    EXPECT_EQ(InterpolatedFreeze({0, 100}, {127, 0}, 0.0f), (std::vector<uint8_t>{0, 100}));
    EXPECT_EQ(InterpolatedFreeze({0, 100}, {127, 0}, 1.0f), (std::vector<uint8_t>{127, 0}));
}

TEST(FreezeBlend, UndoStepRestoresTheAmountsBothWays) {
    FreezeGrid grid(2);
    grid.Set(0, 0, 20);
    grid.Set(1, 0, 120);
    std::vector<uint8_t> given(9, 10);
    auto step = BlendFreezeAsStep(grid.Level(), given, FreezeMode::Add);
    ASSERT_NE(step, nullptr);
    EXPECT_EQ(grid.Row(0), (std::vector<int>{30, 127, 10}));
    EXPECT_EQ(grid.Level().FrozenVertexCount(), 9u);
    step->Apply(grid.geometry);
    EXPECT_EQ(grid.Row(0), (std::vector<int>{20, 120, 0}));
    EXPECT_EQ(grid.Level().FrozenVertexCount(), 2u);
    step->Apply(grid.geometry);
    EXPECT_EQ(grid.Row(0), (std::vector<int>{30, 127, 10}));
    EXPECT_EQ(BlendFreezeAsStep(grid.Level(), given, FreezeMode::Raise), nullptr) << "no change";
}

}  // namespace
}  // namespace trovik::test
