// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/ImprintStroke.h"
#include "tests/brushes/LoopFixture.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

/// A view centred on a 16 x 16 grid: 20 pixels are one unit, and pixel (400, 300) shows the centre
/// (8, 8).
StrokeView ViewFromAbove() {
    StrokeView view;
    view.width = 800;
    view.height = 600;
    view.target = {8.0f, 8.0f, 0.0f};
    view.eye = {8.0f, 8.0f, 15.0f / std::tan(17.5f * 0.017453293f)};
    return view;
}

class ImprintPlacing : public testing::Test {
protected:
    ImprintPlacing() : bench((HostKernel::Instance(), brush), FlatGrid(16)) {
        brush.drawMode = 1;
        brush.EnableStamp(8, 8);
    }
    void Imprint(const StrokeView* view, DrawMode mode, const std::vector<PathSample>& samples) {
        const PathOptions options = bench.Options(0.5f, 0.25f);
        brush.dabs.clear();
        bench.loop.Begin(BrushOperation::ModifierNone);
        ImprintStroke imprint(bench.loop, bench.geometry, bench.tree, view, mode, options);
        imprint.Press(samples.front());
        for (std::size_t i = 1; i < samples.size(); ++i) imprint.Drag(samples[i]);
        bench.loop.End();
    }

    RecordingBrush brush;
    LoopFixture bench;
};

TEST_F(ImprintPlacing, FromItsCentreTheCopyGrowsAroundThePress) {
    Imprint(nullptr, DrawMode::FromCenter, {{{4.0f, 4.0f, 0.0f}}, {{7.0f, 8.0f, 0.0f}, 0.5f}});
    ASSERT_EQ(brush.dabs.size(), 2u);
    const RecordingBrush::Dab& last = brush.dabs[1];
    EXPECT_EQ(last.position, Vector(4.0f, 4.0f, 0.0f));
    EXPECT_EQ(last.size, 5.0f);
    EXPECT_EQ(last.pressure, 0.5f);
    // The strength of 5 at the brush radius of 0.5 is a length, so it scales with the copy.
    EXPECT_EQ(last.strength, 50.0f);
    // The top of the image points towards the release position.
    const Vector pixel = PixelOf(last.stampMatrix, {7.0f, 8.0f, 0.0f});
    EXPECT_NEAR(pixel.x, 3.5f, 1e-5f);
    EXPECT_NEAR(pixel.y, -0.5f, 1e-5f);
}

TEST_F(ImprintPlacing, AcrossTwoPointsTheCopyLiesBetweenThem) {
    Imprint(nullptr, DrawMode::AcrossPoints, {{{4.0f, 4.0f, 0.0f}}, {{10.0f, 4.0f, 0.0f}}});
    ASSERT_EQ(brush.dabs.size(), 2u);
    const RecordingBrush::Dab& last = brush.dabs[1];
    EXPECT_EQ(last.position, Vector(7.0f, 4.0f, 0.0f));
    EXPECT_EQ(last.size, 3.0f);
    const Vector release = PixelOf(last.stampMatrix, {10.0f, 4.0f, 0.0f});
    EXPECT_NEAR(release.x, 3.5f, 1e-5f);
    EXPECT_NEAR(release.y, -0.5f, 1e-5f);
    EXPECT_NEAR(PixelOf(last.stampMatrix, {4.0f, 4.0f, 0.0f}).y, 7.5f, 1e-5f);
}

TEST_F(ImprintPlacing, PressAloneGivesAnUprightCopyOfTheBrushSize) {
    for (const DrawMode mode : {DrawMode::FromCenter, DrawMode::AcrossPoints}) {
        Imprint(nullptr, mode, {{{4.0f, 4.0f, 0.0f}}});
        ASSERT_EQ(brush.dabs.size(), 1u);
        EXPECT_EQ(brush.dabs[0].size, 0.5f);
        EXPECT_EQ(brush.dabs[0].strength, 10.0f);
        EXPECT_EQ(PixelOf(brush.dabs[0].stampMatrix, {4.0f, 4.5f, 0.0f}).y, -0.5f);
    }
}

TEST_F(ImprintPlacing, InAViewDistancesAreMeasuredAtTheDepthOfTheMiddle) {
    const StrokeView view = ViewFromAbove();
    Imprint(&view, DrawMode::FromCenter, {{{300.0f, 300.0f, 0.0f}}, {{300.0f, 240.0f, 0.0f}}});
    ASSERT_EQ(brush.dabs.size(), 2u);
    EXPECT_NEAR(brush.dabs[1].position.x, 3.0f, 1e-4f);
    EXPECT_NEAR(brush.dabs[1].position.y, 8.0f, 1e-4f);
    EXPECT_NEAR(brush.dabs[1].size, 3.0f, 1e-4f);
    EXPECT_NEAR(PixelOf(brush.dabs[1].stampMatrix, {3.0f, 11.0f, 0.0f}).y, -0.5f, 1e-4f);

    Imprint(&view, DrawMode::AcrossPoints, {{{300.0f, 300.0f, 0.0f}}, {{400.0f, 300.0f, 0.0f}}});
    EXPECT_NEAR(brush.dabs[1].position.x, 5.5f, 1e-4f);
    EXPECT_NEAR(brush.dabs[1].size, 2.5f, 1e-4f);
}

TEST_F(ImprintPlacing, PointerMayLeaveTheMeshButTheMiddleMayNot) {
    const StrokeView view = ViewFromAbove();
    // x = 0 is at pixel 240, so the press is off the mesh but the centre of the copy is on it.
    Imprint(&view, DrawMode::AcrossPoints, {{{200.0f, 300.0f, 0.0f}}, {{320.0f, 300.0f, 0.0f}}});
    ASSERT_EQ(brush.dabs.size(), 1u);
    EXPECT_NEAR(brush.dabs[0].position.x, 1.0f, 1e-4f);
    EXPECT_NEAR(brush.dabs[0].size, 3.0f, 1e-4f);
    Imprint(&view, DrawMode::FromCenter, {{{260.0f, 300.0f, 0.0f}}, {{200.0f, 300.0f, 0.0f}}});
    ASSERT_EQ(brush.dabs.size(), 2u);
    EXPECT_NEAR(brush.dabs[1].size, 3.0f, 1e-4f);
    Imprint(&view, DrawMode::FromCenter, {{{200.0f, 300.0f, 0.0f}}, {{320.0f, 300.0f, 0.0f}}});
    EXPECT_TRUE(brush.dabs.empty());
}

TEST_F(ImprintPlacing, WholeDragAtOnceAppliesOnlyTheLastCopy) {
    const std::vector<PathSample> samples = {
        {{4.0f, 4.0f, 0.0f}}, {{12.0f, 1.0f, 0.0f}}, {{7.0f, 8.0f, 0.0f}, 0.5f}};
    for (const DrawMode mode : {DrawMode::FromCenter, DrawMode::AcrossPoints}) {
        Imprint(nullptr, mode, samples);
        ASSERT_EQ(brush.dabs.size(), 3u);
        const RecordingBrush::Dab last = brush.dabs[2];
        brush.dabs.clear();
        const PathOptions options = bench.Options(0.5f, 0.25f);
        bench.loop.Begin(BrushOperation::ModifierNone);
        ImprintStroke imprint(bench.loop, bench.geometry, bench.tree, nullptr, mode, options);
        imprint.Start(samples.front().position);
        imprint.Drag(samples.back());
        EXPECT_EQ(imprint.Count(), 1u);
        bench.loop.End();
        ASSERT_EQ(brush.dabs.size(), 1u);
        EXPECT_EQ(brush.dabs[0].position, last.position);
        EXPECT_EQ(brush.dabs[0].size, last.size);
        EXPECT_EQ(brush.dabs[0].strength, last.strength);
        EXPECT_EQ(brush.dabs[0].stampMatrix, last.stampMatrix);
    }
}

/// The real brush on a sphere with two levels.
class ImprintedSurface : public testing::Test {
protected:
    ImprintedSurface() : bench(SphereQuads(3), 2) {
        bench.Activate(Tool::Imprint);
        bench.brush->directionAttribute.SetValue(1, true);
        SetStampImage(*bench.brush, NumberedImage(8, 8));
        loop = std::make_unique<LoopFixture>(*bench.brush, *bench.geometry);
    }
    void Imprint(DrawMode mode, const std::vector<PathSample>& samples) {
        const PathOptions options = loop->Options(0.2f, 0.25f);
        loop->loop.Begin(BrushOperation::ModifierNone, 5);
        ImprintStroke imprint(loop->loop, *bench.geometry, loop->tree, nullptr, mode, options);
        imprint.Press(samples.front());
        for (std::size_t i = 1; i < samples.size(); ++i) imprint.Drag(samples[i]);
        loop->loop.End();
    }

    const std::vector<PathSample> direct = {{{0.1f, 0.2f, 1.0f}}, {{0.4f, 0.3f, 0.9f}}};
    const std::vector<PathSample> wandering = {{{0.1f, 0.2f, 1.0f}},
                                               {{0.9f, 0.2f, 0.4f}},
                                               {{0.1f, 0.9f, 0.3f}},
                                               {{-0.4f, -0.3f, 0.8f}},
                                               {{0.4f, 0.3f, 0.9f}}};
    StrokeFixture bench;
    std::unique_ptr<LoopFixture> loop;
};

TEST_F(ImprintedSurface, OnlyTheLastCopyRemains) {
    const auto before = BitsOf(bench.Mesh());
    for (const DrawMode mode : {DrawMode::FromCenter, DrawMode::AcrossPoints}) {
        Imprint(mode, direct);
        const auto expected = BitsOf(bench.Mesh());
        EXPECT_NE(expected, before);
        ASSERT_TRUE(bench.geometry->History().Undo(*bench.geometry));
        ASSERT_EQ(BitsOf(bench.Mesh()), before);
        loop->tree.RefitAll();
        Imprint(mode, wandering);
        EXPECT_EQ(BitsOf(bench.Mesh()), expected);
        EXPECT_EQ(bench.geometry->History().StepCount(), 1u)
            << "one undo step restores the surface";
        ASSERT_TRUE(bench.geometry->History().Undo(*bench.geometry));
        EXPECT_EQ(BitsOf(bench.Mesh()), before);
        loop->tree.RefitAll();
    }
}

TEST_F(ImprintedSurface, PickTreeFollowsTheReverts) {
    Imprint(DrawMode::FromCenter, wandering);
    const PatchTree fresh(bench.geometry->Bound());
    EXPECT_EQ(loop->tree.Bounds().maxX, fresh.Bounds().maxX);
    EXPECT_EQ(loop->tree.Bounds().maxY, fresh.Bounds().maxY);
    EXPECT_EQ(loop->tree.Bounds().maxZ, fresh.Bounds().maxZ);
    for (int i = 0; i < 200; ++i) {
        const float x = static_cast<float>(i % 20) * 0.1f - 1.0f;
        const int row = i / 20;
        const float y = static_cast<float>(row) * 0.2f - 1.0f;
        const auto a = loop->tree.Pick({{x, y, 5.0f}, {0.0f, 0.0f, -1.0f}});
        const auto b = fresh.Pick({{x, y, 5.0f}, {0.0f, 0.0f, -1.0f}});
        ASSERT_EQ(a.has_value(), b.has_value());
        if (a) {
            EXPECT_EQ(a->face, b->face);
            EXPECT_EQ(a->position, b->position);
        }
    }
}

TEST_F(ImprintedSurface, LayerKeepsOnlyTheLastCopy) {
    SculptLayer& layer = bench.AddLayer();
    Imprint(DrawMode::FromCenter, wandering);
    const auto expected = BitsOf(bench.Mesh());
    std::vector<Vector> offsets;
    for (uint32_t v = 0; v < bench.Mesh().VertexCount(); ++v) offsets.push_back(layer.Offset(v));
    ASSERT_TRUE(bench.geometry->History().Undo(*bench.geometry));
    loop->tree.RefitAll();
    for (uint32_t v = 0; v < bench.Mesh().VertexCount(); ++v)
        ASSERT_EQ(layer.Offset(v), Vector()) << v;
    Imprint(DrawMode::FromCenter, direct);
    EXPECT_EQ(BitsOf(bench.Mesh()), expected);
    for (uint32_t v = 0; v < bench.Mesh().VertexCount(); ++v)
        ASSERT_EQ(layer.Offset(v), offsets[v]) << v;
}

TEST_F(ImprintedSurface, RevertingWithoutANewCopyLeavesNoUndoStep) {
    const auto before = BitsOf(bench.Mesh());
    loop->loop.Begin(BrushOperation::ModifierNone);
    loop->loop.Dab(loop->At({0.0f, 0.0f, 1.0f}, 0.3f, 0.2f));
    EXPECT_NE(BitsOf(bench.Mesh()), before);
    loop->loop.RevertStroke();
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
    loop->loop.End();
    EXPECT_EQ(bench.geometry->History().StepCount(), 0u);
    EXPECT_EQ(loop->loop.Totals().verticesMoved, 0u);
}

TEST_F(ImprintedSurface, RenderersAreNotifiedOfReverts) {
    RecordingRenderer& renderer = bench.AddRenderer(0.0f);
    loop->loop.Begin(BrushOperation::ModifierNone);
    loop->loop.Dab(loop->At({0.0f, 0.0f, 1.0f}, 0.3f, 0.2f));
    renderer.notices.clear();
    loop->loop.RevertStroke();
    EXPECT_EQ(renderer.notices.size(), bench.Mesh().changeRecordCount);
    EXPECT_GT(renderer.notices.size(), 10u);
    loop->loop.End();
}

TEST_F(ImprintedSurface, BrushSettingSelectsTheDrawMode) {
    EXPECT_EQ(static_cast<DrawMode>(bench.brush->StrokeDrawMode()), DrawMode::FromCenter);
    bench.brush->drawFromCenter.SetValue(false, true);
    EXPECT_EQ(static_cast<DrawMode>(bench.brush->StrokeDrawMode()), DrawMode::AcrossPoints);
    bench.Activate(Tool::Repeat);
    EXPECT_EQ(static_cast<DrawMode>(bench.brush->StrokeDrawMode()), DrawMode::AlongPath);
}

}  // namespace
}  // namespace trovik::test
