// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "tests/brushes/LoopFixture.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/meshes/MirrorAtX.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <utility>

namespace trovik::test {
namespace {

/// A grid of 16 x 16 quads from (0, 0) to (16, 16), mirrored about its centre line x = 8.
class StrokeLoopTest : public testing::Test {
protected:
    StrokeLoopTest() : bench((HostKernel::Instance(), brush), FlatGrid(16)) {}

    RecordingBrush brush;
    LoopFixture bench;
};

TEST_F(StrokeLoopTest, StrokeIsOneBeginItsDabsAndOneEnd) {
    EXPECT_FALSE(bench.loop.IsActive());
    bench.loop.Begin(BrushOperation::ModifierNone);
    EXPECT_TRUE(bench.loop.IsActive());
    bench.loop.Dab(bench.At({3.0f, 3.0f, 0.0f}));
    bench.loop.Dab(bench.At({4.0f, 3.0f, 0.0f}));
    bench.loop.End();
    bench.loop.End();
    EXPECT_FALSE(bench.loop.IsActive());
    EXPECT_EQ(brush.calls, (std::vector<std::string>{"begin", "dab", "dab", "end"}));
    EXPECT_EQ(bench.loop.Totals().dabs, 2u);
}

TEST_F(StrokeLoopTest, CallsOutOfOrderAreRefusedAndKeepTheStroke) {
    EXPECT_THROW(bench.loop.Dab(bench.At({3.0f, 3.0f, 0.0f})), HostError);
    EXPECT_THROW(bench.loop.WholeMesh(1.0f, false), HostError);
    EXPECT_EQ(bench.loop.StrokeNumber(), 0u);
    bench.loop.Begin(BrushOperation::ModifierNone);
    const uint64_t number = bench.loop.StrokeNumber();
    EXPECT_NE(number, 0u);
    bench.loop.Dab(bench.At({3.0f, 3.0f, 0.0f}));
    EXPECT_THROW(bench.loop.Begin(BrushOperation::ModifierNone), HostError);
    EXPECT_THROW(bench.loop.SetMirrors(MirrorConfiguration::PlaneX, {MirrorAtX(8.0f)}), HostError);
    EXPECT_EQ(brush.MirrorConfig().MirrorMode(), MirrorConfiguration::Off);
    bench.loop.Dab(bench.At({4.0f, 3.0f, 0.0f}));
    bench.loop.End();
    EXPECT_EQ(brush.calls, (std::vector<std::string>{"begin", "dab", "dab", "end"}));
    bench.loop.Begin(BrushOperation::ModifierNone);
    EXPECT_GT(bench.loop.StrokeNumber(), number);
    bench.loop.End();
}

// The brush copied the pixels when the stroke began.
TEST_F(StrokeLoopTest, StrokeKeepsItsInitialStamp) {
    const auto matrices = [this](const std::function<void()>& change) {
        brush.dabs.clear();
        brush.EnableStamp(8, 4);
        bench.loop.Begin(BrushOperation::ModifierNone, 3);
        bench.loop.Dab(bench.At({3.0f, 3.0f, 0.0f}));
        change();
        bench.loop.Dab(bench.At({4.0f, 3.0f, 0.0f}));
        bench.loop.End();
        return std::pair(brush.dabs[0].stampMatrix, brush.dabs[1].stampMatrix);
    };
    const auto expected = matrices([] {});
    EXPECT_EQ(matrices([this] { brush.EnableStamp(32, 64); }), expected);
    EXPECT_EQ(matrices([this] { brush.SetStamp(false, QString()); }), expected);
}

TEST_F(StrokeLoopTest, BrushReceivesTheValuesOfTheDab) {
    StrokeDab dab = bench.At({3.25f, 5.5f, 0.0f}, 0.75f, 12.0f);
    dab.pressure = 0.5f;
    bench.loop.Begin(BrushOperation::ModifierNone);
    bench.loop.Dab(dab);
    bench.loop.End();
    ASSERT_EQ(brush.dabs.size(), 1u);
    const RecordingBrush::Dab& seen = brush.dabs[0];
    EXPECT_EQ(seen.hit.mesh, bench.geometry.Bound());
    EXPECT_EQ(seen.hit.face, 5u * 16u + 3u);
    EXPECT_EQ(seen.hit.position, Vector(3.25f, 5.5f, 0.0f));
    EXPECT_EQ(seen.position, Vector(3.25f, 5.5f, 0.0f));
    EXPECT_FALSE(seen.hit.mirror);
    EXPECT_EQ(seen.size, 0.75f);
    EXPECT_EQ(seen.pressure, 0.5f);
    EXPECT_EQ(seen.strength, 12.0f);
    EXPECT_EQ(bench.loop.DirtyBox().minX, 3.25f);
    EXPECT_EQ(bench.loop.DirtyBox().maxY, 5.5f);
}

TEST_F(StrokeLoopTest, MirroredDabFollowsEachDab) {
    bench.loop.SetMirrors(MirrorConfiguration::PlaneX, {MirrorAtX(8.0f)});
    EXPECT_EQ(brush.MirrorConfig().MirrorMode(), MirrorConfiguration::PlaneX);
    StrokeDab dab = bench.At({3.25f, 5.5f, 0.0f});
    dab.hit.normal = {0.6f, 0.0f, 0.8f};
    bench.loop.Begin(BrushOperation::ModifierNone);
    bench.loop.Dab(dab);
    bench.loop.End();
    EXPECT_EQ(brush.calls, (std::vector<std::string>{"begin", "dab", "mirrored", "end"}));
    const RecordingBrush::Dab& mirrored = brush.dabs[1];
    EXPECT_TRUE(mirrored.hit.mirror);
    EXPECT_EQ(mirrored.hit.position, Vector(12.75f, 5.5f, 0.0f));
    EXPECT_EQ(mirrored.position, Vector(12.75f, 5.5f, 0.0f));
    EXPECT_EQ(mirrored.hit.normal, Vector(-0.6f, 0.0f, 0.8f));
    EXPECT_EQ(mirrored.hit.face, 5u * 16u + 12u);
    EXPECT_EQ(mirrored.pointMap, MirrorAtX(8.0f));
    EXPECT_EQ(bench.loop.Totals().dabs, 2u);
}

TEST_F(StrokeLoopTest, EachSideOfAMirrorHasItsOwnPreviousHit) {
    bench.loop.SetMirrors(MirrorConfiguration::PlaneX, {MirrorAtX(8.0f)});
    for (int stroke = 0; stroke < 2; ++stroke) {
        brush.dabs.clear();
        bench.loop.Begin(BrushOperation::ModifierNone);
        bench.loop.Dab(bench.At({2.0f, 5.0f, 0.0f}));
        bench.loop.Dab(bench.At({3.0f, 6.0f, 0.0f}));
        bench.loop.End();
        ASSERT_EQ(brush.dabs.size(), 4u);
        EXPECT_EQ(brush.dabs[0].previous, Vector());
        EXPECT_EQ(brush.dabs[1].previous, Vector());
        EXPECT_EQ(brush.dabs[2].previous, Vector(2.0f, 5.0f, 0.0f));
        EXPECT_EQ(brush.dabs[3].previous, Vector(14.0f, 5.0f, 0.0f));
    }
}

TEST_F(StrokeLoopTest, EachMirrorAddsADab) {
    Matrix other;
    other.m[1][1] = -1.0f;
    other.m[3][1] = 16.0f;
    bench.loop.SetMirrors(4, {MirrorAtX(8.0f), other, MirrorAtX(8.0f) * other});
    bench.loop.Begin(BrushOperation::ModifierNone);
    bench.loop.Dab(bench.At({2.0f, 5.0f, 0.0f}));
    bench.loop.End();
    ASSERT_EQ(brush.dabs.size(), 4u);
    EXPECT_EQ(brush.dabs[1].position, Vector(14.0f, 5.0f, 0.0f));
    EXPECT_EQ(brush.dabs[2].position, Vector(2.0f, 11.0f, 0.0f));
    EXPECT_EQ(brush.dabs[3].position, Vector(14.0f, 11.0f, 0.0f));
}

TEST_F(StrokeLoopTest, MirroredDabAppliesTheMirroredStamp) {
    brush.EnableStamp(8, 8);
    bench.loop.SetMirrors(MirrorConfiguration::PlaneX, {MirrorAtX(8.0f)});
    bench.loop.Begin(BrushOperation::ModifierNone);
    bench.loop.Dab(bench.At({3.0f, 5.0f, 0.0f}, 2.0f));
    bench.loop.End();
    ASSERT_EQ(brush.dabs.size(), 2u);
    // The radius is two units and the stamp eight pixels wide: two pixels per unit.
    const Vector right = PixelOf(brush.dabs[0].stampMatrix, {4.0f, 5.5f, 0.0f});
    EXPECT_EQ(right.x, 5.5f);
    EXPECT_EQ(right.y, 2.5f);
    const Vector left = PixelOf(brush.dabs[1].stampMatrix, {12.0f, 5.5f, 0.0f});
    EXPECT_EQ(left.x, right.x);
    EXPECT_EQ(left.y, right.y);
}

TEST_F(StrokeLoopTest, ExceptionOfTheBrushEndsTheStroke) {
    brush.throwAfter = 1;
    bench.loop.Begin(BrushOperation::ModifierNone);
    bench.loop.Dab(bench.At({2.0f, 5.0f, 0.0f}));
    EXPECT_THROW(bench.loop.Dab(bench.At({3.0f, 5.0f, 0.0f})), std::runtime_error);
    EXPECT_FALSE(bench.loop.IsActive());
    EXPECT_EQ(brush.calls, (std::vector<std::string>{"begin", "dab", "dab", "end"}));
}

/// Records how strokes end.
class EndListener final : public StrokeInputListener {
public:
    void OnStrokeBegun(BrushOperation::Modifier, uint64_t) override {}
    void OnDab(const StrokeDab&, bool) override {}
    void OnWholeMesh(float, bool) override {}
    void OnReverted() override {}
    void OnStrokeEnded(bool brokenOff) override { ends.push_back(brokenOff); }
    std::vector<bool> ends;
};

TEST(StrokeLoopEnd, IsReportedEvenIfTheBrushFailsToEnd) {
    class FailingBrush : public RecordingBrush {
    public:
        void EndStroke() override {
            RecordingBrush::EndStroke();
            if (fails) throw std::runtime_error("no memory");
        }
        bool fails = true;
    };
    HostKernel::Instance();
    FailingBrush brush;
    LoopFixture bench(brush, FlatGrid(16));
    EndListener listener;
    bench.loop.SetInputListener(&listener);
    bench.loop.Begin(BrushOperation::ModifierNone);
    bench.loop.Dab(bench.At({2.0f, 5.0f, 0.0f}));
    EXPECT_THROW(bench.loop.End(), std::runtime_error);
    EXPECT_FALSE(bench.loop.IsActive());
    EXPECT_EQ(listener.ends, (std::vector<bool>{true}));
    brush.fails = false;
    bench.loop.Begin(BrushOperation::ModifierNone);
    bench.loop.End();
    EXPECT_EQ(listener.ends, (std::vector<bool>{true, false}));
}

TEST_F(StrokeLoopTest, MovedMeshIsMirroredAtItsLocalPlane) {
    bench.geometry.Transform().Set({2.0f, 2.0f, 2.0f}, {}, {100.0f, 0.0f, 0.0f});
    bench.loop.SetMirrors(MirrorConfiguration::PlaneX, {MirrorAtX(8.0f)});
    bench.loop.Begin(BrushOperation::ModifierNone);
    bench.loop.Dab(bench.At({106.0f, 10.0f, 0.0f}));
    bench.loop.End();
    ASSERT_EQ(brush.dabs.size(), 2u);
    EXPECT_EQ(brush.dabs[0].hit.position, Vector(3.0f, 5.0f, 0.0f));
    EXPECT_EQ(brush.dabs[1].hit.position, Vector(13.0f, 5.0f, 0.0f));
    EXPECT_EQ(brush.dabs[1].position, Vector(126.0f, 10.0f, 0.0f));
}

}  // namespace
}  // namespace trovik::test
