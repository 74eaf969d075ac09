// SPDX-License-Identifier: Apache-2.0
#include "framework/display/LodChoice.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

constexpr double target = LodChoice::Options{}.targetSeconds;

/// Frame time in seconds: a fixed part, and the time for the triangles at full detail.
struct Load {
    double fixed;
    double full;
    double At(uint32_t strideLog2) const { return fixed + full * std::pow(0.25, strideLog2); }
};

/// Draws some frames while the camera moves. \return the number of stride changes.
int Move(LodChoice& choice, const Load& load, int frames) {
    int changes = 0;
    for (int i = 0; i < frames; ++i) {
        const uint32_t stride = choice.StrideLog2(0.0);
        choice.FrameMeasured(stride, load.At(stride));
        changes += choice.StrideLog2(0.0) != stride ? 1 : 0;
    }
    return changes;
}

TEST(LodChoice, SettlesOnTheStrideThatMeetsTheTarget) {
    for (const double full : {0.001, 0.0079, 0.0081, 0.02, 0.05, 0.13, 0.4, 2.0}) {
        for (const double fixed : {0.0, 0.001, 0.004}) {
            SCOPED_TRACE("full " + std::to_string(full) + ", fixed " + std::to_string(fixed));
            const Load load{fixed, full};
            LodChoice choice;
            Move(choice, load, 6);
            const uint32_t stride = choice.StrideLog2(0.0);
            EXPECT_TRUE(load.At(stride) <= target || stride == 4) << load.At(stride);
            EXPECT_EQ(Move(choice, load, 100), 0) << "the stride does not oscillate";
        }
    }
}

TEST(LodChoice, OneSlowFrameIsEnough) {
    LodChoice choice;
    choice.FrameMeasured(0, 0.1);
    EXPECT_EQ(choice.StrideLog2(0.0), 2u) << "a sixteenth of 100 ms";
}

TEST(LodChoice, ReturnsToSmallerStridesWhenTheLoadShrinks) {
    LodChoice choice;
    Move(choice, {0.0, 0.4}, 10);
    ASSERT_GE(choice.StrideLog2(0.0), 2u);
    Move(choice, {0.0, 0.004}, 10);
    EXPECT_EQ(choice.StrideLog2(0.0), 0u);
}

TEST(LodChoice, HasFullDetailWhileTheCameraIsStill) {
    LodChoice choice;
    Move(choice, {0.0, 0.4}, 10);
    const uint32_t moving = choice.StrideLog2(0.0);
    ASSERT_GT(moving, 0u);
    EXPECT_EQ(choice.StrideLog2(0.149), moving);
    EXPECT_EQ(choice.StrideLog2(0.150), 0u);
    // While the camera is stationary, a frame measures the cost of full detail and does not change
    // the stride for a moving camera.
    choice.FrameMeasured(0, 0.4);
    EXPECT_EQ(choice.StrideLog2(0.0), moving);
    choice.FrameMeasured(0, 0.001);
    EXPECT_EQ(choice.StrideLog2(0.0), moving);
}

TEST(LodChoice, HasAMaximumStride) {
    LodChoice::Options options;
    options.maxStrideLog2 = 2;
    LodChoice choice(options);
    choice.FrameMeasured(0, 100.0);
    EXPECT_EQ(choice.StrideLog2(0.0), 2u);
}

}  // namespace
}  // namespace trovik::test
