// SPDX-License-Identifier: Apache-2.0

/// \file Tests mirrored strokes on a surface that is exactly symmetric.
#include "tests/mirror/Ball.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

/// A path that crosses all three planes, so that dabs and their images overlap.
const std::vector<Vector> overThePlanes = {{0.3f, 0.25f, 1.0f},
                                           {0.15f, 0.1f, 1.0f},
                                           {0.03f, 0.02f, 1.0f},
                                           {-0.1f, -0.04f, 1.0f},
                                           {1.0f, 0.04f, 0.03f},
                                           {0.05f, 1.0f, -0.02f}};

struct Mirrored {
    std::vector<int> planes;
    int direction;
};

class MirroredSculpt : public testing::TestWithParam<Mirrored> {};

TEST_P(MirroredSculpt, KeepsASymmetricSurfaceExactlySymmetric) {
    BallDocument ball;
    for (const int axis : GetParam().planes) ball.Across(axis);
    ball->SetMirrors({GetParam().planes, 1, 1});
    ball.Tool("Sculpt", GetParam().direction);
    const std::vector<Vector> before = ball.Positions();
    ball.Stroke(overThePlanes, 0.3f);
    ball.Stroke({{0.2f, 0.0f, 1.0f}, {0.05f, 0.2f, 1.0f}}, 0.25f);
    std::size_t moved = 0;
    for (uint32_t v = 0; v < before.size(); ++v) moved += before[v] != ball.Mesh().Position(v);
    EXPECT_GT(moved, 100u);
    for (const int axis : GetParam().planes) EXPECT_EQ(0.0f, ball.Asymmetry(axis)) << axis;
    ASSERT_TRUE(ball->Undo());
    ASSERT_TRUE(ball->Undo());
    EXPECT_TRUE(ball.Positions() == before);
    EXPECT_FALSE(ball->Undo());
}

INSTANTIATE_TEST_SUITE_P(PlanesAndDirections,
                         MirroredSculpt,
                         testing::Values(Mirrored{{0}, 0},
                                         Mirrored{{1}, 0},
                                         Mirrored{{2}, 0},
                                         Mirrored{{0, 1}, 0},
                                         Mirrored{{2, 0}, 0},
                                         Mirrored{{0, 1, 2}, 0},
                                         Mirrored{{0}, 1},
                                         Mirrored{{0, 1}, 2},
                                         Mirrored{{0}, 3},
                                         Mirrored{{0}, 4},
                                         Mirrored{{0, 2}, 5},
                                         Mirrored{{0}, 8}),
                         [](const auto& one) {
                             std::string name = "Direction" + std::to_string(one.param.direction);
                             for (const int axis : one.param.planes) name += "xyz"[axis];
                             return name;
                         });

// Otherwise the tests above would pass without the symmetry being restored.
TEST(StrokeSymmetry, ADabAndItsImageThatOverlapDifferByMoreThanRounding) {
    BallDocument ball;
    ball.Across(0);
    Matrix slightlyTurned;
    slightlyTurned.m[0][0] = -1.0f;
    // The stroke loop does not recognise this matrix as a coordinate plane, but the difference does
    // not affect a dab.
    slightlyTurned.m[0][1] = 1e-30f;
    ball->Loop().SetMirrors(MirrorConfiguration::PlaneX, {slightlyTurned});
    ball.Tool("Sculpt");
    ball.Stroke(overThePlanes, 0.3f);
    EXPECT_GT(ball.Asymmetry(0), 1e-5f);
}

TEST(StrokeSymmetry, HoldsForEveryTool) {
    for (const std::string& tool : BallDocument(2)->ToolNames()) {
        SCOPED_TRACE(tool);
        BallDocument ball;
        ball.Across(0);
        ball->SetMirrors({{0}, 1, 1});
        ball.Tool("Sculpt");
        ball.Stroke({{0.4f, 0.3f, 0.9f}, {0.0f, 0.1f, 1.0f}}, 0.3f);
        ball->SelectTool(tool);
        if (tool == "Spray" || tool == "Imprint") continue;
        const bool byLength = tool == "Sculpt" || tool == "Wax" || tool == "Bulge" ||
                              tool == "Foamy" || tool == "Repeat" || tool == "Knife";
        ball.Stroke(overThePlanes, 0.3f, byLength ? 0.03f : 40.0f);
        EXPECT_EQ(0.0f, ball.Asymmetry(0));
    }
}

TEST(StrokeSymmetry, AppliesToLayerOffsets) {
    BallDocument ball;
    ball.Across(0);
    ball->SetMirrors({{0}, 1, 1});
    ball.Tool("Sculpt");
    const std::vector<Vector> before = ball.Positions();
    ball->AddLayer("bumps");
    ball.Stroke(overThePlanes, 0.3f);
    EXPECT_EQ(0.0f, ball.Asymmetry(0));
    ball->SetLayerStrength(0.0f);
    EXPECT_LT(ball.Asymmetry(0), 1e-6f);
    for (uint32_t v = 0; v < before.size(); ++v)
        ASSERT_LT((ball.Mesh().Position(v) - before[v]).Length(), 1e-6f) << v;
    ball->SetLayerStrength(1.0f);
    EXPECT_EQ(0.0f, ball.Asymmetry(0));
}

TEST(StrokeSymmetry, SkipsTwinsWithDifferentMasks) {
    BallDocument ball;
    const std::vector<uint32_t>& across = ball.Across(0);
    ball->SetMirrors({{0}, 1, 1});
    ball.Tool("Sculpt");
    const std::vector<Vector> before = ball.Positions();
    ball.Freeze([&](uint32_t v) { return before[v].x > 0.0f ? uint8_t{127} : uint8_t{0}; });
    ball.Stroke(overThePlanes, 0.3f);
    std::size_t moved = 0;
    for (uint32_t v = 0; v < before.size(); ++v) {
        const bool isFrozen = before[v].x > 0.0f;
        EXPECT_TRUE(!isFrozen || before[v] == ball.Mesh().Position(v)) << v;
        moved += before[across[v]].x > 0.0f && before[v] != ball.Mesh().Position(v);
    }
    EXPECT_GT(moved, 50u);
}

TEST(StrokeSymmetry, SkipsPartsThatWereNotSymmetric) {
    BallDocument ball;
    ball.Across(0);
    ball.Tool("Sculpt");
    ball.Stroke({{0.5f, 0.3f, 0.8f}}, 0.3f);
    const float before = ball.Asymmetry(0);
    ASSERT_GT(before, 0.001f);
    ball->SetMirrors({{0}, 1, 1});
    ball.Stroke({{0.5f, 0.3f, 0.8f}}, 0.1f, 0.001f);
    EXPECT_NEAR(before, ball.Asymmetry(0), 0.001f);
}

TEST(StrokeSymmetry, PlaneToolsKeepOnePlanePerSide) {
    struct Case {
        std::vector<int> planes;
        int copies;
    };
    for (const Case& one : {Case{{0, 1}, 1}, Case{{0, 1, 2}, 1}, Case{{}, 4}, Case{{}, 3}}) {
        SCOPED_TRACE(std::to_string(one.planes.size()) + " " + std::to_string(one.copies));
        for (const char* setting : {"globalplane", "updateplane"}) {
            SCOPED_TRACE(setting);
            BallDocument ball;
            for (const int axis : one.planes) ball.Across(axis);
            ball->SetMirrors({one.planes, one.copies, 2});
            ball.Tool("Flatten");
            auto* flag = dynamic_cast<AttributeInstance<bool>*>(
                ball->Brush().AttributeByName(QString::fromLatin1(setting)));
            ASSERT_NE(nullptr, flag);
            flag->SetValue(std::string(setting) == "globalplane", true);
            const std::vector<Vector> before = ball.Positions();
            ball.Stroke({{0.6f, 0.4f, 0.7f}, {0.7f, 0.5f, 0.5f}}, 0.25f, 60.0f);
            float most = 0.0f;
            float sums[3] = {0.0f, 0.0f, 0.0f};
            for (uint32_t v = 0; v < before.size(); ++v) {
                const Vector move = ball.Mesh().Position(v) - before[v];
                most = std::max(most, move.Length());
                sums[0] += move.x;
                sums[1] += move.y;
            }
            EXPECT_GT(most, 0.003f);
            EXPECT_LT(most, 0.05f) << "a side was flattened towards another side's plane";
            for (const int axis : one.planes) EXPECT_LT(ball.Asymmetry(axis), 1e-6f) << axis;
            // For rotations about z, the moves cancel only if the mesh itself is invariant under
            // the rotation.
            if (one.copies != 3) {
                EXPECT_LT(std::fabs(sums[0]) + std::fabs(sums[1]), 1e-3f);
            }
            const uint64_t sides = one.planes.empty() ? static_cast<uint64_t>(one.copies)
                                                      : uint64_t{1} << one.planes.size();
            EXPECT_EQ(2 * sides, ball->Totals().dabs);
            ASSERT_TRUE(ball->Undo());
            EXPECT_TRUE(ball.Positions() == before) << "the sides are not one undo step";
            EXPECT_FALSE(ball->Undo());
        }
    }
}

}  // namespace
}  // namespace trovik::test
