// SPDX-License-Identifier: Apache-2.0

/// \file Tests live strokes of the grab brush.
#include "framework/strokes/DragStroke.h"
#include "framework/strokes/LiveStroke.h"
#include "tests/grab/GrabFixture.h"

#include <algorithm>

namespace trovik::test {
namespace {

/// A stroke in a view from (0, 0, 5) with 100 pixels per unit at the origin.
class GrabStroke : public GrabBrushTest {
protected:
    GrabStroke() {
        settings.view.verticalFieldOfView = 43.602818f;
        settings.view.width = 400;
        settings.view.height = 400;
        settings.options.radius = 0.4f;
        settings.options.strength = [](float) { return 100.0f; };
    }
    std::vector<PathSample> Samples() const {
        std::vector<PathSample> samples;
        for (int i = 0; i < 40; ++i) {
            const auto way = static_cast<float>(i);
            PathSample sample({215.0f + 2.0f * way, 190.0f - 0.05f * way * way, 0.0f},
                              0.2f + 0.02f * way);
            sample.time = 0.008 * i;
            samples.push_back(sample);
        }
        return samples;
    }
    /// \param chunk  number of samples per call.
    Surface Draw(const char* tool, std::size_t chunk) {
        Open(SphereQuads(4));
        Select(tool);
        settings.mode = static_cast<DrawMode>(brush.StrokeDrawMode());
        loop->Begin(BrushOperation::ModifierNone);
        LiveStroke live(*loop, *geometry, *tree, settings);
        const std::vector<PathSample> samples = Samples();
        for (std::size_t i = 0; i < samples.size(); i += chunk)
            live.Add(std::vector<PathSample>(samples.begin() + static_cast<std::ptrdiff_t>(i),
                                             samples.begin() + static_cast<std::ptrdiff_t>(std::min(
                                                                   i + chunk, samples.size()))));
        live.Release();
        loop->End();
        return Surface(Level());
    }

    LiveStrokeSettings settings;
};

TEST_F(GrabStroke, ResultDoesNotDependOnHowSamplesArrive) {
    for (const char* tool : {"Grab", "ElasticGrab", "SnakeHook"}) {
        const Surface whole = Draw(tool, 1000);
        EXPECT_FALSE(whole == Surface((Open(SphereQuads(4)), Level()))) << tool;
        EXPECT_TRUE(Draw(tool, 1) == whole) << tool;
        EXPECT_TRUE(Draw(tool, 7) == whole) << tool;
    }
}

TEST_F(GrabStroke, AbandonedStrokesLeaveNoTrace) {
    for (const char* tool : {"Grab", "ElasticGrab", "SnakeHook"}) {
        Open(SphereQuads(4));
        Select(tool);
        const Surface before(Level());
        settings.mode = static_cast<DrawMode>(brush.StrokeDrawMode());
        loop->Begin(BrushOperation::ModifierNone);
        LiveStroke live(*loop, *geometry, *tree, settings);
        live.Add(Samples());
        EXPECT_FALSE(Surface(Level()) == before) << tool;
        live.Abandon();
        loop->End();
        EXPECT_TRUE(Surface(Level()) == before) << tool;
        EXPECT_EQ(geometry->History().StepCount(), 0u) << tool;
    }
}

TEST_F(GrabStroke, HeldPointFollowsThePointerInTheViewPlane) {
    settings.isFiltered = false;
    settings.mode = DrawMode::Drag;
    const uint32_t tip = NearestVertex({0.0f, 0.0f, 1.0f});
    const Vector center = Level().Position(tip);
    loop->Begin(BrushOperation::ModifierNone);
    LiveStroke live(*loop, *geometry, *tree, settings);
    live.Add(PathSample({200.0f, 200.0f, 0.0f}));
    // The pointer leaves the sphere: at a distance of 4, a pixel is 0.008 units.
    live.Add(PathSample({400.0f, 100.0f, 0.0f}));
    EXPECT_LT((Level().Position(tip) - (center + Vector(1.6f, 0.8f, 0.0f))).Length(), 1e-3f);
    live.Add(PathSample({200.0f, 200.0f, 0.0f}));
    EXPECT_EQ(Level().Position(tip), center);
    live.Release();
    loop->End();
    EXPECT_EQ(geometry->History().StepCount(), 0u);
}

TEST_F(GrabStroke, AlongNormalMovesOnlyAlongTheNormal) {
    settings.isFiltered = false;
    settings.mode = DrawMode::Drag;
    brush.SetActiveConfiguration(QStringLiteral("Grab"));
    brush.alongNormal = true;
    const uint32_t tip = NearestVertex({0.8f, 0.0f, 0.6f});
    const Vector center = Level().Position(tip);
    const Ray sight = {settings.view.eye, center - settings.view.eye};
    ASSERT_GT(sight.direction.Length(), 0.0f);
    loop->Begin(BrushOperation::ModifierNone);
    DragStroke drag(
        *loop, *geometry, *tree, settings.view, PathSpace::Surface, settings.options, {});
    drag.Press(PathSample(center));
    drag.Drag(PathSample(center + Vector(0.3f, 0.2f, 0.0f)), 1.0f);
    loop->End();
    const Vector way = Level().Position(tip) - center;
    EXPECT_GT(way.Length(), 0.1f);
    EXPECT_LT((way & center).Length(), 0.02f * way.Length());
}

TEST_F(GrabStroke, SnakeHookTipFollowsThePointer) {
    Select("SnakeHook");
    settings.isFiltered = false;
    settings.mode = DrawMode::Pull;
    const uint32_t tip = NearestVertex({0.0f, 0.0f, 1.0f});
    const Vector center = Level().Position(tip);
    loop->Begin(BrushOperation::ModifierNone);
    LiveStroke live(*loop, *geometry, *tree, settings);
    live.Add(PathSample({200.0f, 200.0f, 0.0f}));
    for (int i = 0; i <= 100; ++i)
        live.Add(PathSample({200.0f + static_cast<float>(i), 200.0f, 0.0f}));
    EXPECT_GT(live.Count(), 5u);
    live.Release();
    loop->End();
    EXPECT_LT((Level().Position(tip) - (center + Vector(0.8f, 0.0f, 0.0f))).Length(), 1e-3f);
    ExpectCurrentNormals();
}

}  // namespace
}  // namespace trovik::test
