// SPDX-License-Identifier: Apache-2.0
#include "tests/random/RandomNumbers.h"
#include "viewport/Camera.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace trovik::studio {
namespace {

using trovik::test::RandomNumbers;

constexpr int width = 1280;
constexpr int height = 800;

Camera RandomCamera(RandomNumbers& random, bool isOrthographic) {
    Camera camera;
    StrokeView view;
    view.target = random.In(-2.0f, 2.0f);
    view.eye = view.target + random.In(-1.0f, 1.0f).Normalized() * random.Between(3.0f, 9.0f);
    view.up = {0.0f, 1.0f, 0.0f};
    view.verticalFieldOfView = random.Between(20.0f, 70.0f);
    camera.SetView(view);
    camera.SetSize(width, height);
    camera.SetOrthographic(isOrthographic);
    return camera;
}

/// A point in front of the camera, near its target.
Vector PointInView(RandomNumbers& random, const Camera& camera) {
    return camera.Target() + random.In(-0.8f, 0.8f);
}

float Distance(const Vector& a, const Vector& b) { return (a - b).Length(); }

float PixelDistance(const Vector& a, const Vector& b) { return std::hypot(a.x - b.x, a.y - b.y); }

/// Projects a point with the GPU's matrix, in double precision. \return the position in pixels, and
/// z / w in clip space.
std::array<double, 3> ThroughMatrix(const RenderView& view, const Vector& p) {
    double clip[4];
    for (int column = 0; column < 4; ++column)
        clip[column] = double{p.x} * view.worldToClip.m[0][column] +
                       double{p.y} * view.worldToClip.m[1][column] +
                       double{p.z} * view.worldToClip.m[2][column] + view.worldToClip.m[3][column];
    return {(clip[0] / clip[3] + 1.0) * 0.5 * view.width,
            (1.0 - clip[1] / clip[3]) * 0.5 * view.height,
            clip[2] / clip[3]};
}

/// The parameter is whether the projection is orthographic.
class CameraTest : public testing::TestWithParam<bool> {};

TEST_P(CameraTest, OrbitKeepsThePixelAndTheDistanceOfThePivot) {
    RandomNumbers random(1);
    for (int i = 0; i < 200; ++i) {
        Camera camera = RandomCamera(random, GetParam());
        const Vector pivot = PointInView(random, camera);
        const Vector pixel = camera.ToPixel(pivot);
        const float distance = Distance(camera.Eye(), pivot);
        const Vector eye = camera.Eye();
        for (int step = 0; step < 20; ++step)
            camera.Orbit(pivot, random.Between(-90.0f, 90.0f), random.Between(-90.0f, 90.0f));
        EXPECT_LT(PixelDistance(camera.ToPixel(pivot), pixel), 0.05f);
        EXPECT_NEAR(Distance(camera.Eye(), pivot), distance, distance * 1e-5f);
        EXPECT_GT(Distance(camera.Eye(), eye), 0.01f);
    }
}

TEST_P(CameraTest, OrbitTurnsTheSurfaceWithThePointer) {
    Camera camera;
    camera.SetSize(width, height);
    camera.SetOrthographic(GetParam());
    const Vector nearPoint(0.0f, 0.0f, 0.5f);
    const Vector before = camera.ToPixel(nearPoint);
    camera.Orbit({}, 30.0f, 0.0f);
    EXPECT_GT(camera.ToPixel(nearPoint).x, before.x + 5.0f);
    EXPECT_NEAR(camera.ToPixel(nearPoint).y, before.y, 0.01f);
    camera = {};
    camera.SetSize(width, height);
    camera.Orbit({}, 0.0f, 30.0f);
    EXPECT_GT(camera.ToPixel(nearPoint).y, before.y + 5.0f);
    // A drag across the viewport's height rotates by half a turn.
    camera = {};
    camera.SetSize(width, height);
    camera.Orbit({}, static_cast<float>(height), 0.0f);
    EXPECT_LT(Distance(camera.Eye(), {0.0f, 0.0f, -5.0f}), 1e-4f);
}

TEST_P(CameraTest, DollyKeepsThePixelOfTheAnchor) {
    RandomNumbers random(2);
    for (int i = 0; i < 200; ++i) {
        Camera camera = RandomCamera(random, GetParam());
        const Vector anchor = PointInView(random, camera);
        const Vector before = camera.ToPixel(anchor);
        const float factor = random.Between(0.3f, 2.0f);
        camera.Dolly(anchor, factor);
        const Vector after = camera.ToPixel(anchor);
        EXPECT_LT(PixelDistance(after, before), 0.05f);
        EXPECT_NEAR(after.z, before.z * factor, before.z * 1e-4f);
    }
}

TEST_P(CameraTest, DollyStaysFinite) {
    Camera camera;
    for (int i = 0; i < 2000; ++i) camera.Dolly({0.1f, 0.0f, 0.0f}, 0.8f);
    EXPECT_GT(Distance(camera.Eye(), camera.Target()), 0.0f);
    for (int i = 0; i < 4000; ++i) camera.Dolly({0.1f, 0.0f, 0.0f}, 1.25f);
    EXPECT_TRUE(std::isfinite(camera.Eye().z));
    const Camera before = camera;
    camera.Dolly({}, 0.0f);
    EXPECT_EQ(camera, before);
}

TEST_P(CameraTest, PanMovesTheAnchorWithThePointer) {
    RandomNumbers random(3);
    for (int i = 0; i < 200; ++i) {
        Camera camera = RandomCamera(random, GetParam());
        const Vector anchor = PointInView(random, camera);
        const Vector before = camera.ToPixel(anchor);
        const float dx = random.Between(-300.0f, 300.0f);
        const float dy = random.Between(-300.0f, 300.0f);
        camera.Pan(anchor, dx, dy);
        const Vector after = camera.ToPixel(anchor);
        EXPECT_NEAR(after.x, before.x + dx, 0.05f);
        EXPECT_NEAR(after.y, before.y + dy, 0.05f);
    }
}

TEST_P(CameraTest, RollTurnsThePictureTheOtherWay) {
    Camera camera;
    camera.SetSize(width, height);
    camera.SetOrthographic(GetParam());
    camera.Roll(std::acos(0.0f));
    // The camera rolls a quarter turn counter-clockwise, so a point on the right moves to the
    // bottom.
    const Vector pixel = camera.ToPixel({1.0f, 0.0f, 0.0f});
    EXPECT_NEAR(pixel.x, width * 0.5f, 0.01f);
    EXPECT_GT(pixel.y, height * 0.6f);
}

TEST_P(CameraTest, StrokesPicturesAndPixelsAgree) {
    RandomNumbers random(4);
    for (int i = 0; i < 500; ++i) {
        const Camera camera = RandomCamera(random, GetParam());
        const StrokeView strokes = camera.ToStrokeView();
        EXPECT_EQ(strokes.width, width);
        EXPECT_EQ(strokes.height, height);
        const RenderView picture = camera.ToRenderView({-2.0f, -2.0f, -2.0f, 2.0f, 2.0f, 2.0f});
        const float x = random.Between(0.0f, width);
        const float y = random.Between(0.0f, height);
        const Ray ray = strokes.Through(x, y);
        // A point on the ray at about the distance of the target.
        const Vector toTarget = camera.Target() - ray.origin;
        const float t = toTarget.Length() * random.Between(0.95f, 1.05f);
        const Vector point(static_cast<float>(ray.origin.x + double{ray.direction.x} * t),
                           static_cast<float>(ray.origin.y + double{ray.direction.y} * t),
                           static_cast<float>(ray.origin.z + double{ray.direction.z} * t));
        const Vector pixel = camera.ToPixel(point);
        const float tolerance = 0.01f;
        EXPECT_NEAR(pixel.x, x, tolerance);
        EXPECT_NEAR(pixel.y, y, tolerance);
        const auto drawn = ThroughMatrix(picture, point);
        EXPECT_NEAR(drawn[0], x, double{tolerance});
        EXPECT_NEAR(drawn[1], y, double{tolerance});
    }
}

TEST_P(CameraTest, LooksAlongTheAxes) {
    const struct {
        Vector direction, up;
    } looks[] = {{{0, 0, -1}, {0, 1, 0}},
                 {{0, 0, 1}, {0, 1, 0}},
                 {{-1, 0, 0}, {0, 1, 0}},
                 {{1, 0, 0}, {0, 1, 0}},
                 {{0, -1, 0}, {0, 0, -1}},
                 {{0, 1, 0}, {0, 0, 1}}};
    for (const auto& look : looks) {
        RandomNumbers random(5);
        Camera camera = RandomCamera(random, GetParam());
        const Vector target = camera.Target();
        const float distance = Distance(camera.Eye(), target);
        camera.LookAlong(look.direction, look.up);
        EXPECT_EQ(camera.Target(), target);
        EXPECT_NEAR(Distance(camera.Eye(), target), distance, 1e-4f);
        const RenderView view = camera.ToRenderView({});
        EXPECT_LT(Distance(view.forward, look.direction), 1e-5f);
        EXPECT_LT(Distance(view.up, look.up), 1e-5f);
        EXPECT_LT(Distance(view.right, look.direction & look.up), 1e-5f);
        // An up direction parallel to the view direction still gives a valid view.
        camera.LookAlong(look.direction, look.direction);
        const Vector pixel = camera.ToPixel(target);
        EXPECT_NEAR(pixel.x, width * 0.5f, 0.01f);
        EXPECT_NEAR(pixel.y, height * 0.5f, 0.01f);
    }
}

TEST_P(CameraTest, FramesTheWholeBox) {
    RandomNumbers random(6);
    for (int i = 0; i < 200; ++i) {
        Camera camera = RandomCamera(random, GetParam());
        if (i % 2 == 0) camera.SetSize(400, 900);
        AxisAlignedBoundingBox box;
        const Vector corner = random.In(-50.0f, 50.0f);
        box.Extend(corner);
        box.Extend(corner + random.In(0.001f, 30.0f));
        const Vector forward = camera.ToRenderView(box).forward;
        camera.Frame(box);
        const RenderView view = camera.ToRenderView(box);
        EXPECT_LT(Distance(view.forward, forward), 1e-4f);
        double least = 1.0;
        for (int c = 0; c < 8; ++c) {
            const auto at = ThroughMatrix(view,
                                          {(c & 1) != 0 ? box.maxX : box.minX,
                                           (c & 2) != 0 ? box.maxY : box.minY,
                                           (c & 4) != 0 ? box.maxZ : box.minZ});
            const double free = std::min({at[0] / view.width,
                                          1.0 - at[0] / view.width,
                                          at[1] / view.height,
                                          1.0 - at[1] / view.height});
            EXPECT_GE(free, 0.0);
            EXPECT_LE(std::abs(at[2]), 1.0) << "near and far planes enclose the box";
            least = std::min(least, free);
        }
        EXPECT_LT(least, 0.15) << "the box fills the viewport";
    }
    Camera camera;
    const Camera before = camera;
    camera.Frame({});
    EXPECT_EQ(camera, before);
}

INSTANTIATE_TEST_SUITE_P(Projections, CameraTest, testing::Bool(), [](const auto& tested) {
    return tested.param ? "Orthographic" : "Perspective";
});

TEST(Camera, FieldOfViewKeepsTheSizeAtTheTarget) {
    RandomNumbers random(7);
    Camera camera = RandomCamera(random, false);
    const Vector beside = camera.Target() + camera.ToRenderView({}).right * 0.7f;
    const Vector before = camera.ToPixel(beside);
    camera.SetFieldOfView(90.0f);
    EXPECT_LT(PixelDistance(camera.ToPixel(beside), before), 0.02f);
    camera.SetOrthographic(true);
    EXPECT_LT(PixelDistance(camera.ToPixel(beside), before), 0.02f);
    camera.SetFieldOfView(1000.0f);
    EXPECT_EQ(camera.FieldOfView(), 120.0f);
}

TEST(Camera, OrthographicLinesOfSightAreParallel) {
    Camera camera;
    camera.SetSize(width, height);
    camera.SetOrthographic(true);
    const Vector middle = camera.ToPixel({1.0f, 0.5f, 0.0f});
    // In front of the target, behind it, and behind the eye.
    for (const float z : {0.5f, -0.5f, -1000.0f, 4.9f, 5.0f, 80.0f}) {
        const Vector pixel = camera.ToPixel({1.0f, 0.5f, z});
        EXPECT_LT(PixelDistance(pixel, middle), 1e-3f);
        EXPECT_NEAR(pixel.z, 5.0f - z, 1e-3f);
        // The whole box is within the depth range, at the same pixels.
        const RenderView picture =
            camera.ToRenderView({-1.0f, -1.0f, std::min(z, 0.0f), 1.0f, 1.0f, std::max(z, 0.0f)});
        const auto drawn = ThroughMatrix(picture, {1.0f, 0.5f, z});
        EXPECT_NEAR(drawn[0], middle.x, 0.01);
        EXPECT_NEAR(drawn[1], middle.y, 0.01);
        EXPECT_LT(std::abs(drawn[2]), 1.0);
    }
    const StrokeView view = camera.ToStrokeView();
    EXPECT_TRUE(view.isOrthographic);
    EXPECT_EQ(view.Through(3.0f, 500.0f).direction, view.Through(900.0f, 20.0f).direction);
    // Earlier versions stored orthographic views with a distant eye and a narrow field of view.
    StrokeView other;
    other.eye = {0.0f, 0.0f, 40.0f};
    other.verticalFieldOfView = 0.2f;
    other.width = width;
    other.height = height;
    camera.SetView(other);
    EXPECT_TRUE(camera.IsOrthographic());
    EXPECT_NEAR(camera.ToPixel({0.0f, 0.5f, 0.0f}).y,
                height * (0.5f - 0.5f / (2.0f * 40.0f * std::tan(0.0017453293f))),
                0.1f);
    // The field of view at 1/256 of the distance.
    EXPECT_NEAR(camera.FieldOfView(), 48.15f, 0.02f);
    // Longer lenses remain perspective.
    other.verticalFieldOfView = 2.0f;
    camera.SetView(other);
    EXPECT_FALSE(camera.IsOrthographic());
    EXPECT_EQ(camera.FieldOfView(), 2.0f);
    camera = {};
    camera.SetSize(width, height);
    EXPECT_GT(
        PixelDistance(camera.ToPixel({1.0f, 0.5f, 0.5f}), camera.ToPixel({1.0f, 0.5f, -0.5f})),
        20.0f);
}

TEST(Camera, KeepsTheProjectionInADocumentsView) {
    RandomNumbers random(8);
    for (const bool isOrthographic : {false, true}) {
        const Camera camera = RandomCamera(random, isOrthographic);
        Camera restored;
        restored.SetSize(width, height);
        restored.SetView(camera.ToStrokeView());
        EXPECT_EQ(restored.IsOrthographic(), isOrthographic);
        EXPECT_NEAR(restored.FieldOfView(), camera.FieldOfView(), 1e-3f);
        EXPECT_LT(Distance(restored.Eye(), camera.Eye()), 1e-4f);
    }
}

}  // namespace
}  // namespace trovik::studio
