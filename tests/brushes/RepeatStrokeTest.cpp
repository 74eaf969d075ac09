// SPDX-License-Identifier: Apache-2.0
#include "tests/brushes/LoopFixture.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

class RepeatedDabs : public testing::Test {
protected:
    RepeatedDabs() : bench((HostKernel::Instance(), brush), FlatGrid(16)) {
        brush.SetToolName("Repeat");
        brush.EnableStamp(8, 8);
    }
    void Along(const std::vector<PathSample>& samples, float radius, uint64_t seed = 0) {
        brush.dabs.clear();
        const PathOptions options = bench.Options(radius, 0.25f);
        bench.loop.Begin(BrushOperation::ModifierNone, seed);
        StrokeAlongSurface(bench.loop, bench.geometry, bench.tree, samples, options);
        bench.loop.End();
    }
    float DistanceBefore(std::size_t i) const {
        return (brush.dabs[i].position - brush.dabs[i - 1].position).Length();
    }
    /// The unit direction on the grid in which the top of the image points.
    static Vector TopOf(const RecordingBrush::Dab& dab) {
        Matrix back = dab.stampMatrix;
        back.Invert(nullptr);
        return (back.ProjectedTransform({3.5f, -0.5f, 0.0f}, 1.0f) - dab.position).Normalized();
    }

    RecordingBrush brush;
    LoopFixture bench;
};

TEST_F(RepeatedDabs, CopiesAreAdjacentWithTheSpacingBetweenThem) {
    Along({{{1.0f, 8.0f, 0.0f}}, {{14.0f, 8.0f, 0.0f}}}, 0.5f);
    // The centres are two and a quarter radii apart.
    ASSERT_EQ(brush.dabs.size(), 12u);
    for (std::size_t i = 1; i < brush.dabs.size(); ++i)
        EXPECT_NEAR(DistanceBefore(i), 1.125f, 2e-3f);
    brush.strokeFloatA.SetValue(-50.0f, true);
    Along({{{1.0f, 8.0f, 0.0f}}, {{14.0f, 8.0f, 0.0f}}}, 0.5f);
    ASSERT_EQ(brush.dabs.size(), 18u);
    EXPECT_NEAR(DistanceBefore(1), 0.75f, 2e-3f);
}

TEST_F(RepeatedDabs, RandomSpacingIsAddedAndDependsOnTheSeed) {
    brush.strokeFloatA.SetValue(0.0f, true);
    brush.strokeFloatB.SetValue(100.0f, true);
    const std::vector<PathSample> path = {{{0.5f, 8.0f, 0.0f}}, {{15.5f, 8.0f, 0.0f}}};
    Along(path, 0.25f, 11);
    const auto first = brush.dabs;
    float least = 9.0f;
    float most = 0.0f;
    for (std::size_t i = 1; i < first.size(); ++i) {
        least = std::min(least, DistanceBefore(i));
        most = std::max(most, DistanceBefore(i));
    }
    EXPECT_GE(least, 0.499f);
    EXPECT_LE(most, 0.751f);
    EXPECT_GT(most - least, 0.1f);
    Along(path, 0.25f, 11);
    ASSERT_EQ(brush.dabs.size(), first.size());
    for (std::size_t i = 0; i < first.size(); ++i)
        EXPECT_EQ(brush.dabs[i].position, first[i].position);
    Along(path, 0.25f, 12);
    EXPECT_NE(brush.dabs[1].position, first[1].position);
}

TEST_F(RepeatedDabs, TheStampFollowsTheStroke) {
    Along({{{2.0f, 2.0f, 0.0f}}, {{12.0f, 2.0f, 0.0f}}, {{12.0f, 12.0f, 0.0f}}}, 0.5f);
    ASSERT_GT(brush.dabs.size(), 15u);
    for (const RecordingBrush::Dab& dab : brush.dabs) {
        const bool onFirst = dab.position.y < 2.01f;
        const Vector expected = onFirst ? Vector(1.0f, 0.0f, 0.0f) : Vector(0.0f, 1.0f, 0.0f);
        const Vector top = TopOf(dab);
        EXPECT_NEAR(top.x, expected.x, 1e-4f) << dab.position.x << " " << dab.position.y;
        EXPECT_NEAR(top.y, expected.y, 1e-4f);
    }
}

TEST_F(RepeatedDabs, DabsWithoutAPathFollowThePreviousDab) {
    bench.loop.Begin(BrushOperation::ModifierNone);
    bench.loop.Dab(bench.At({4.0f, 4.0f, 0.0f}));
    bench.loop.Dab(bench.At({6.0f, 4.0f, 0.0f}));
    bench.loop.Dab(bench.At({6.0f, 1.0f, 0.0f}));
    bench.loop.End();
    EXPECT_NEAR(TopOf(brush.dabs[0]).y, 1.0f, 1e-4f) << "upright, since there is no previous dab";
    EXPECT_NEAR(TopOf(brush.dabs[1]).x, 1.0f, 1e-4f);
    EXPECT_NEAR(TopOf(brush.dabs[2]).y, -1.0f, 1e-4f);
}

TEST_F(RepeatedDabs, PositioningOverridesTheOrientationOfTheTool) {
    const std::vector<PathSample> path = {{{2.0f, 2.0f, 0.0f}}, {{12.0f, 2.0f, 0.0f}}};
    brush.resetOptionA.SetValue(static_cast<int>(StampPositioning::Upright), true);
    Along(path, 0.5f);
    EXPECT_NEAR(TopOf(brush.dabs[3]).y, 1.0f, 1e-4f);
    // The rotation is added to the stroke direction: after a quarter turn clockwise, the top points
    // to the right of the stroke.
    brush.resetOptionA.SetValue(static_cast<int>(StampPositioning::Stroke), true);
    brush.separatorOption.SetValue(90, true);
    Along(path, 0.5f);
    EXPECT_NEAR(TopOf(brush.dabs[3]).y, -1.0f, 1e-4f);
    brush.SetToolName("Sculpt");
    brush.resetOptionA.SetValue(static_cast<int>(StampPositioning::Tool), true);
    brush.separatorOption.SetValue(0, true);
    Along(path, 0.5f);
    EXPECT_NEAR(TopOf(brush.dabs[3]).y, 1.0f, 1e-4f);
    EXPECT_NEAR(DistanceBefore(1), 0.125f, 1e-3f) << "and dabs like those of any other tool";
    brush.SetToolName("Knife");
    Along(path, 0.5f);
    EXPECT_NEAR(TopOf(brush.dabs[3]).x, 1.0f, 1e-4f);
}

TEST_F(RepeatedDabs, WithoutAStampTheBrushSpacingIsUsed) {
    brush.SetStamp(false, QString());
    Along({{{2.0f, 2.0f, 0.0f}}, {{12.0f, 2.0f, 0.0f}}}, 0.5f);
    EXPECT_NEAR(DistanceBefore(1), 0.125f, 1e-3f);
}

TEST_F(RepeatedDabs, HugeOverlapStillTerminates) {
    brush.strokeFloatA.SetValue(-1000.0f, true);
    Along({{{2.0f, 2.0f, 0.0f}}, {{2.5f, 2.0f, 0.0f}}}, 0.5f);
    EXPECT_GT(brush.dabs.size(), 100u);
    EXPECT_LT(brush.dabs.size(), 2000u);
}

}  // namespace
}  // namespace trovik::test
