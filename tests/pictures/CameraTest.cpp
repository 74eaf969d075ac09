// SPDX-License-Identifier: Apache-2.0

/// \file Tests cameras, turntables and their output files.
#include "framework/errors/HostError.h"
#include "framework/images/ImageFile.h"
#include "framework/render/RenderFile.h"
#include "framework/render/RenderViewport.h"
#include "tests/pictures/SphereRender.h"

#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace trovik::test {
namespace {

constexpr float aspect = 120.0f / 90.0f;

TEST(PictureViews, ProjectPointsToThePixelsOfTheirRays) {
    const RenderViewport view({{1, 2, 5}, {0, 0.5f, 0}, {0, 1, 0}, 40.0f}, 320, 200);
    const Vector point = view.Eye() + view.DirectionThrough(37.25f, 150.5f) * 3.0f;
    const Vector pixel = view.ToPixel(view.ToCamera(point));
    EXPECT_NEAR(pixel.x, 37.25f, 1e-3f);
    EXPECT_NEAR(pixel.y, 150.5f, 1e-3f);
    const Vector middle = view.ToPixel(view.ToCamera({0, 0.5f, 0}));
    EXPECT_NEAR(middle.x, 160.0f, 1e-3f);
    EXPECT_NEAR(middle.y, 100.0f, 1e-3f);
    const Vector beside = view.DirectionThrough(160.0f, 100.0f) * 2.0f + view.Right() * 0.1f;
    EXPECT_NEAR(view.ToPixel(view.ToCamera(view.Eye() + beside)).x - 160.0f,
                0.1f / view.PixelSizeAt(2.0f),
                1e-2f);
}

TEST(PictureViews, OrthographicRaysAreParallel) {
    const RenderViewport view({{1, 2, 5}, {0, 0.5f, 0}, {0, 1, 0}, 40.0f, true}, 320, 200);
    const RenderViewport perspective({{1, 2, 5}, {0, 0.5f, 0}, {0, 1, 0}, 40.0f}, 320, 200);
    EXPECT_EQ(view.DirectionThrough(3.0f, 4.0f), view.DirectionThrough(300.0f, 150.0f));
    for (const float depth : {-2.0f, 0.0f, 3.0f}) {
        const Vector point = view.OriginThrough(37.25f, 150.5f, depth);
        EXPECT_NEAR(view.ToCamera(point).z, depth, 1e-5f);
        const Vector pixel = view.ToPixel(view.ToCamera(point));
        EXPECT_NEAR(pixel.x, 37.25f, 1e-3f);
        EXPECT_NEAR(pixel.y, 150.5f, 1e-3f);
    }
    // At the target, the scale is that of the perspective view.
    const float distance = Vector(1, 1.5f, 5).Length();
    EXPECT_NEAR(view.PixelSizeAt(0.1f), perspective.PixelSizeAt(distance), 1e-6f);
}

// The number of pixels in which two transparent renders differ.
std::size_t Differences(const RenderImage& a, const RenderImage& b) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < a.alpha.size(); ++i)
        count += std::abs(a.alpha[i] - b.alpha[i]) > 64 ? 1u : 0u;
    return count;
}

TEST_F(SphereRender, OrthographicSizeDoesNotDependOnDepth) {
    options.transparent = true;
    options.wireframe = true;
    camera.isOrthographic = true;
    const RenderImage centred = Make();
    EXPECT_NE(centred.alpha[PixelAt(centred, 60, 45)], 0);
    // Farther away, around the eye, and behind it.
    for (const float z : {-40.0f, 5.0f, 30.0f}) {
        shown.localToWorld[14] = z;
        const RenderImage moved = Make();
        EXPECT_LE(Differences(centred, moved), 3u) << z;
        EXPECT_NEAR(Brightness(moved, 60, 45), Brightness(centred, 60, 45), 40) << z;
    }
    camera.isOrthographic = false;
    shown.localToWorld[14] = -3.0f;
    EXPECT_GT(Differences(centred, Make()), 300u);
}

TEST_F(SphereRender, OrthographicFramingFillsTheImage) {
    options.transparent = true;
    camera = FrameMeshes({shown}, {0.2f, -0.3f, -1}, 35.0f, aspect, {0, 1, 0}, true);
    EXPECT_TRUE(camera.isOrthographic);
    const RenderImage framed = Make();
    // The margin is 8 percent.
    const int top = static_cast<int>(45.0f * (1.0f - 1.0f / 1.08f));
    for (int x = 0; x < 120; ++x) EXPECT_EQ(framed.alpha[PixelAt(framed, x, top - 2)], 0);
    EXPECT_NE(framed.alpha[PixelAt(framed, 60, top + 2)], 0);
    EXPECT_TRUE(
        FrameTurntable({shown}, {0, 0, -1}, 35.0f, aspect, {0, 1, 0}, 4, true).isOrthographic);
}

TEST(PictureViews, RefuseCamerasWithoutADirection) {
    EXPECT_THROW(RenderViewport({{1, 2, 3}, {1, 2, 3}, {0, 1, 0}, 35.0f}, 10, 10), HostError);
    EXPECT_THROW(RenderViewport({{1, 2, 3}, {}, {0, 1, 0}, 180.0f}, 10, 10), HostError);
    EXPECT_THROW(RenderViewport({{1, 2, 3}, {}, {0, 1, 0}, 0.0f}, 10, 10), HostError);
    // For a view along the up direction, another up direction is chosen.
    const RenderViewport steep({{0, 3, 0}, {}, {0, 1, 0}, 35.0f}, 10, 10);
    EXPECT_NEAR(steep.Right().Length(), 1.0f, 1e-5f);
}

TEST_F(SphereRender, FramedWithAnotherUpIsRotated) {
    camera = FrameMeshes({shown}, {0, 0, -1}, 35.0f, aspect, {1, 0, 0});
    EXPECT_EQ(camera.up.x, 1.0f);
    EXPECT_NEAR((camera.eye - camera.target) | Vector(0, 0, 1),
                (camera.eye - camera.target).Length(),
                1e-5f);
}

TEST(Turntable, RotatesTheEyeOnceAboutTheTarget) {
    const RenderCamera first{{1, 2, 3}, {1, 0, 0}, {0, 2, 0}, 35.0f};
    const float distance = (first.eye - first.target).Length();
    EXPECT_EQ(TurntableFrame(first, 0, 8).eye.z, 3.0f);
    for (int i = 0; i < 8; ++i) {
        const RenderCamera frame = TurntableFrame(first, i, 8);
        EXPECT_NEAR((frame.eye - frame.target).Length(), distance, 1e-5f);
        EXPECT_NEAR(frame.eye.y, 2.0f, 1e-5f);
        EXPECT_EQ(frame.target.x, 1.0f);
    }
    // The mesh appears to rotate counter-clockwise when seen from above, so the eye moves
    // clockwise.
    const RenderCamera quarter = TurntableFrame(first, 2, 8);
    EXPECT_NEAR(quarter.eye.x, 1.0f - 3.0f, 1e-5f);
    EXPECT_NEAR(quarter.eye.z, 0.0f, 1e-5f);
}

TEST_F(SphereRender, TurntableShowsAllOfTheMeshInEveryFrame) {
    shown.localToWorld[0] = 4.0f;
    const RenderCamera alone = FrameMeshes({shown}, {-1, 0, 0}, 35.0f, aspect);
    camera = FrameTurntable({shown}, {-1, 0, 0}, 35.0f, aspect, {0, 1, 0}, 6);
    EXPECT_GT((camera.eye - camera.target).Length(), (alone.eye - alone.target).Length());
    const RenderCamera first = camera;
    options.transparent = true;
    for (int i = 0; i < 6; ++i) {
        camera = TurntableFrame(first, i, 6);
        const RenderImage frame = Make();
        for (int y = 0; y < 90; ++y) {
            EXPECT_EQ(frame.alpha[PixelAt(frame, 0, y)], 0);
            EXPECT_EQ(frame.alpha[PixelAt(frame, 119, y)], 0);
        }
        EXPECT_EQ(frame.alpha[PixelAt(frame, 60, 45)], 255);
    }
}

TEST(PictureFiles, FramesAreNumbered) {
    EXPECT_EQ(FramePath("out/spin.png", 1), "out/spin_0001.png");
    EXPECT_EQ(FramePath("spin.v2.tif", 9999), "spin.v2_9999.tif");
}

TEST(PictureFiles, StoreTransparencyOrRefuseIt) {
    EXPECT_NO_THROW(CheckRenderPath("a.jpg", false));
    EXPECT_NO_THROW(CheckRenderPath("a.PNG", true));
    EXPECT_THROW(CheckRenderPath("a.jpg", true), HostError);
    const RenderImage cut{2, 1, {10, 20, 30, 40, 50, 60}, {255, 51}};
    const std::filesystem::path file = std::filesystem::temp_directory_path() /
                                       ("trovik-cut-" + std::to_string(getpid()) + ".png");
    EXPECT_THROW(WriteRender("cut.jpg", cut), HostError);
    WriteRender(file.string(), cut);
    const FloatImage read = ReadImageFile(file.string());
    std::filesystem::remove(file);
    ASSERT_EQ(read.channels, 4u);
    EXPECT_FLOAT_EQ(read.pixels[4], 40.0f / 255.0f);
    EXPECT_FLOAT_EQ(read.pixels[7], 0.2f);
}

}  // namespace
}  // namespace trovik::test
