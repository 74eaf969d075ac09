// SPDX-License-Identifier: Apache-2.0

/// \file Compares the drawn geometry with picking rays.
#include "tests/meshes/MeshZoo.h"
#include "tests/studio/render/OffscreenViewport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace trovik::studio {
namespace {

using test::OffscreenViewport;
using test::ShownDocument;

constexpr int width = 240;
constexpr int height = 180;

/// A sculpted sphere, rotated and scaled, with hidden faces.
struct Scene {
    explicit Scene(int levels)
        : shown(std::make_unique<Document>("sphere", trovik::test::SphereQuads(2))) {
        if (levels > 0) shown.runner.Do({{"subdivide", levels}});
        shown.Do(R"({"camera": {"eye": [2.5, 1.2, 5.2], "target": [0.2, 0, 0], "fieldOfView": 30,
                                "width": 240, "height": 180}})");
        shown.Do(R"({"tool": "Bulge", "set": {"radius": 0.3, "strength": 80}})");
        shown.Do(R"({"stroke": {"pointer": [[90, 80], [150, 100]]}})");
        viewport.camera.SetView(shown.document->View());
        Show();
    }
    void Show() {
        viewport.Add(shown.feed);
        viewport.Draw();
    }
    IdImage Ids(uint32_t strideLog2 = 0) {
        return viewport.Renderer().Ids(viewport.frame.view, strideLog2);
    }

    ShownDocument shown;
    OffscreenViewport viewport{width, height};
};

void ExpectPicked(Scene& scene) {
    const IdImage ids = scene.Ids();
    ASSERT_EQ(ids.width, width);
    ASSERT_EQ(ids.height, height);
    const StrokeView view = scene.viewport.camera.ToStrokeView();
    const LevelGeometry& geometry = scene.shown.document->Geometry();
    const PatchLayout& layout = *scene.viewport.Renderer().Buffers().Layout();
    const Vector forward = scene.viewport.frame.view.forward;
    unsigned same = 0;
    unsigned hits = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto at = static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x);
            const auto hit =
                HitThrough(geometry,
                           scene.shown.document->Tree(),
                           view,
                           {static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f, 0.0f});
            hits += hit.has_value() ? 1u : 0u;
            if (ids.faces[at] != (hit.has_value() ? hit->face : IdImage::none)) continue;
            ++same;
            if (!hit.has_value()) continue;
            Vector world;
            geometry.Transform().LocalToWorld(&world, &hit->position, 1.0f);
            const float depth = (world - view.eye) | forward;
            // In orthographic projection, surfaces at the depth of the eye and behind it are
            // visible.
            const float tolerance = std::max(std::fabs(depth), 1.0f) * 1e-4f;
            ASSERT_NEAR(ids.depths[at], depth, tolerance) << "pixel " << x << ", " << y;
            bool isInPatch = false;
            layout.VisitPatchesUnder(layout.Level(), hit->face, [&](uint32_t patch) {
                isInPatch |= patch == ids.patches[at];
            });
            ASSERT_TRUE(isInPatch);
        }
    }
    EXPECT_GT(hits, width * height / 5u);
    EXPECT_GE(same, width * height * 995u / 1000u);
}

TEST(SurfaceIds, FacesAndDepthsAreThoseOfPicking) {
    for (const int levels : {0, 1, 2, 4}) {
        SCOPED_TRACE("levels: " + std::to_string(levels));
        Scene scene(levels);
        ExpectPicked(scene);
        scene.shown.Do(
            R"({"transform": {"scale": 1.2, "rotate": [10, 30, 0], "translate": [0.1, 0, 0]}})");
        scene.shown.feed.SendTransform();
        scene.shown.Do(R"({"hide": {"box": [100, 70, 150, 110]}})");
        scene.Show();
        ExpectPicked(scene);
        scene.viewport.camera.SetOrthographic(true);
        scene.viewport.Draw();
        ExpectPicked(scene);
        // Surfaces behind the eye are visible, too.
        CameraPose pose = scene.viewport.camera.Pose();
        const Vector forward = pose.target - pose.eye;
        pose.eye += forward;
        pose.target += forward;
        scene.viewport.camera.SetPose(pose);
        scene.viewport.Draw();
        ExpectPicked(scene);
    }
}

// Through a crack, the far side of the sphere or the background would be visible.
TEST(SurfaceIds, StridesHaveNoCracks) {
    Scene scene(5);
    const Vector centre = scene.viewport.camera.ToPixel({0.0f, 0.0f, 0.0f});
    const IdImage full = scene.Ids();
    for (uint32_t stride = 0; stride <= 5; ++stride) {
        SCOPED_TRACE("stride: " + std::to_string(1u << stride));
        const IdImage ids = scene.Ids(stride);
        unsigned inside = 0;
        for (std::size_t at = 0; at < ids.depths.size(); ++at) {
            const float x = static_cast<float>(at % width) + 0.5f - centre.x;
            const std::size_t row = at / width;
            const float y = static_cast<float>(row) + 0.5f - centre.y;
            // Coarse silhouettes are smaller.
            if (std::hypot(x, y) > 38.0f) continue;
            ++inside;
            ASSERT_NE(ids.faces[at], IdImage::none);
            ASSERT_LT(ids.depths[at], centre.z);
        }
        EXPECT_GT(inside, 3000u);
        EXPECT_EQ(ids.faces == full.faces, stride == 0);
    }
}

}  // namespace
}  // namespace trovik::studio
