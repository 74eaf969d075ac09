// SPDX-License-Identifier: Apache-2.0

/// \file Tests cameras, turntables and their output files.
#include "framework/errors/HostError.h"
#include "framework/images/ImageFile.h"
#include "framework/render/RenderFile.h"
#include "framework/render/RenderViewport.h"
#include "tests/pictures/SphereRender.h"

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
