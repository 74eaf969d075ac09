// SPDX-License-Identifier: Apache-2.0
#include "tests/brushes/LoopFixture.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

class StrokePathTest : public testing::Test {
protected:
    StrokePathTest() : bench((HostKernel::Instance(), brush), FlatGrid(16)) {}

    unsigned AlongSurface(const std::vector<PathSample>& samples, float radius, float spacing) {
        const PathOptions options = bench.Options(radius, spacing);
        bench.loop.Begin(BrushOperation::ModifierNone);
        const unsigned count =
            StrokeAlongSurface(bench.loop, bench.geometry, bench.tree, samples, options);
        bench.loop.End();
        return count;
    }
    unsigned AlongView(const StrokeView& view,
                       const std::vector<PathSample>& samples,
                       float radius,
                       float spacing) {
        const PathOptions options = bench.Options(radius, spacing);
        bench.loop.Begin(BrushOperation::ModifierNone);
        const unsigned count =
            StrokeAlongView(bench.loop, bench.geometry, bench.tree, view, samples, options);
        bench.loop.End();
        return count;
    }
    /// A view centred on the grid: 20 pixels are one unit, and pixel (400, 300) shows the centre
    /// (8, 8).
    static StrokeView ViewFromAbove() {
        StrokeView view;
        view.width = 800;
        view.height = 600;
        view.target = {8.0f, 8.0f, 0.0f};
        view.verticalFieldOfView = 35.0f;
        const float height = 15.0f / std::tan(17.5f * 0.017453293f);
        view.eye = {8.0f, 8.0f, height};
        return view;
    }

    RecordingBrush brush;
    LoopFixture bench;
};

TEST_F(StrokePathTest, DabsAreSpacedIndependentOfThePathLength) {
    for (const float length : {1.0f, 1.2345f, 3.9f, 10.07f}) {
        for (const float spacing : {0.25f, 0.6f, 1.7f}) {
            SCOPED_TRACE(std::to_string(length) + " at " + std::to_string(spacing));
            brush.dabs.clear();
            constexpr float radius = 0.3f;
            const unsigned count = AlongSurface(
                {{{2.0f, 3.0f, 0.0f}}, {{2.0f + length, 3.0f, 0.0f}}}, radius, spacing);
            const float step = radius * spacing;
            EXPECT_EQ(count, static_cast<unsigned>(length / step * 1.0001f) + 1);
            ASSERT_EQ(brush.dabs.size(), count);
            EXPECT_EQ(brush.dabs[0].position, Vector(2.0f, 3.0f, 0.0f));
            for (unsigned i = 1; i < count; ++i) {
                const Vector between = brush.dabs[i].position - brush.dabs[i - 1].position;
                EXPECT_NEAR(between.Length(), step, step * 1e-3f);
                EXPECT_EQ(brush.dabs[i].size, radius);
            }
        }
    }
}

TEST_F(StrokePathTest, StraightDistanceCountsAroundACorner) {
    AlongSurface({{{2.0f, 3.0f, 0.0f}}, {{4.1f, 3.0f, 0.0f}}, {{4.1f, 6.0f, 0.0f}}}, 1.0f, 0.5f);
    ASSERT_GT(brush.dabs.size(), 8u);
    for (std::size_t i = 1; i < brush.dabs.size(); ++i) {
        const Vector between = brush.dabs[i].position - brush.dabs[i - 1].position;
        EXPECT_NEAR(between.Length(), 0.5f, 1e-3f);
    }
    // The last dab before the corner is at x = 4.0. The next one is half a unit away in a straight
    // line, not along the path.
    EXPECT_NEAR(brush.dabs[4].position.x, 4.0f, 1e-2f);
    EXPECT_NEAR(brush.dabs[5].position.y, 3.0f + std::sqrt(0.25f - 0.01f), 1e-2f);
}

TEST_F(StrokePathTest, PressureIsInterpolatedBetweenSamples) {
    AlongSurface(
        {{{2.0f, 3.0f, 0.0f}, 0.2f}, {{6.0f, 3.0f, 0.0f}, 1.0f}, {{8.0f, 3.0f, 0.0f}, 0.0f}},
        0.5f,
        0.5f);
    ASSERT_EQ(brush.dabs.size(), 25u);
    for (const RecordingBrush::Dab& dab : brush.dabs) {
        const float x = dab.position.x;
        const float expected = x < 6.0f ? 0.2f + (x - 2.0f) * 0.2f : 1.0f - (x - 6.0f) * 0.5f;
        EXPECT_NEAR(dab.pressure, expected, 1e-4f) << x;
        EXPECT_EQ(dab.strength, dab.pressure * 10.0f);
    }
}

TEST_F(StrokePathTest, OneSampleIsOneDab) {
    EXPECT_EQ(AlongSurface({{{5.0f, 5.0f, 3.0f}, 0.5f}}, 1.0f, 0.25f), 1u);
    EXPECT_EQ(brush.dabs[0].position, Vector(5.0f, 5.0f, 0.0f)) << "the nearest point";
    EXPECT_EQ(brush.dabs[0].pressure, 0.5f);
    EXPECT_EQ(AlongSurface({}, 1.0f, 0.25f), 0u);
}

TEST_F(StrokePathTest, PointerPathIsSpacedOnTheSurface) {
    const unsigned count = AlongView(
        ViewFromAbove(), {{{300.0f, 300.0f, 0.0f}}, {{500.0f, 260.0f, 0.0f}}}, 0.5f, 0.5f);
    EXPECT_NEAR(brush.dabs[0].position.x, 3.0f, 1e-3f);
    EXPECT_NEAR(brush.dabs[0].position.y, 8.0f, 1e-3f);
    const float length = std::sqrt(10.0f * 10.0f + 2.0f * 2.0f);
    EXPECT_EQ(count, static_cast<unsigned>(length / 0.25f) + 1);
    for (unsigned i = 1; i < count; ++i) {
        const Vector between = brush.dabs[i].position - brush.dabs[i - 1].position;
        EXPECT_NEAR(between.Length(), 0.25f, 1e-3f);
    }
}

TEST_F(StrokePathTest, NoDabsWhereThePathLeavesTheMesh) {
    // The path enters at the left border (x = 0, pixel 240), leaves at the right one (x = 16, pixel
    // 560), and returns.
    const StrokeView view = ViewFromAbove();
    AlongView(view,
              {{{100.0f, 300.0f, 0.0f}}, {{700.0f, 300.0f, 0.0f}}, {{520.0f, 200.0f, 0.0f}}},
              1.0f,
              0.5f);
    ASSERT_GT(brush.dabs.size(), 34u);
    EXPECT_NEAR(brush.dabs[0].position.x, 0.0f, 0.03f);
    float widest = 0.0f;
    for (const RecordingBrush::Dab& dab : brush.dabs) {
        EXPECT_GE(dab.position.x, 0.0f);
        EXPECT_LE(dab.position.x, 16.0f);
        EXPECT_EQ(dab.position.z, 0.0f);
        widest = std::max(widest, dab.position.x);
    }
    EXPECT_GT(widest, 15.5f);
    // The first dab after the gap is at the border again, not one spacing inside it.
    std::size_t back = 1;
    while (back < brush.dabs.size() && brush.dabs[back].position.y < 8.5f) ++back;
    ASSERT_LT(back, brush.dabs.size());
    EXPECT_NEAR(brush.dabs[back].position.x, 16.0f, 0.05f);
    EXPECT_EQ(AlongView(view, {{{10.0f, 10.0f, 0.0f}}, {{200.0f, 20.0f, 0.0f}}}, 1.0f, 0.5f), 0u);
}

TEST_F(StrokePathTest, MovedMeshIsHitAtItsWorldPosition) {
    bench.geometry.Transform().Set({0.5f, 0.5f, 0.5f}, {}, {0.0f, 0.0f, 7.0f});
    AlongSurface({{{2.0f, 3.0f, 7.0f}}, {{4.0f, 3.0f, 7.0f}}}, 1.0f, 1.0f);
    ASSERT_EQ(brush.dabs.size(), 3u);
    EXPECT_NEAR(brush.dabs[1].position.x, 3.0f, 1e-3f);
    EXPECT_EQ(brush.dabs[1].position.z, 7.0f);
    EXPECT_NEAR(brush.dabs[1].hit.position.x, 6.0f, 1e-3f);
}

TEST_F(StrokePathTest, HeadingOfAPointerPathLiesInTheSurface) {
    // Seen at an angle, a motion to the right in the viewport runs along the grid's x axis, and an
    // upward motion runs away from the viewer.
    StrokeView view = ViewFromAbove();
    view.eye = {8.0f, -20.0f, 20.0f};
    const auto hit = HitThrough(bench.geometry, bench.tree, view, {400.0f, 300.0f, 0.0f});
    ASSERT_TRUE(hit.has_value());
    const Vector right = HeadingInView(bench.geometry, view, *hit, {3.0f, 0.0f, 0.0f}).Normalized();
    EXPECT_NEAR(right.x, 1.0f, 1e-4f);
    const Vector away = HeadingInView(bench.geometry, view, *hit, {0.0f, -3.0f, 0.0f}).Normalized();
    EXPECT_NEAR(away.y, 1.0f, 1e-4f);
    EXPECT_NEAR(away.z, 0.0f, 1e-4f);
}

}  // namespace
}  // namespace trovik::test
