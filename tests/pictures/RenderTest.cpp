// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/Cancelled.h"
#include "tests/jobs/TestJob.h"
#include "tests/pictures/SphereRender.h"

#include <gmock/gmock.h>
#include <tbb/global_control.h>

#include <cmath>
#include <limits>
#include <thread>

namespace trovik::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST_F(SphereRender, CoversTheDiscOfTheSphere) {
    const RenderImage with = Make();
    const RenderImage without = RenderOnce({}, camera, options);
    int covered = 0;
    for (std::size_t i = 0; i < with.rgb.size(); i += 3)
        if (with.rgb[i] != without.rgb[i] || with.rgb[i + 2] != without.rgb[i + 2]) ++covered;
    // The rim appears at an angle of asin(1/5) from the centre.
    const double pixels = 45.0 / std::tan(17.5 * 3.14159265 / 180.0);
    const double radius = std::tan(std::asin(0.2)) * pixels;
    const double disc = 3.14159265 * radius * radius;
    EXPECT_NEAR(covered, disc + 3.14159265 * radius, disc * 0.04);
}

TEST_F(SphereRender, IsLitFromTheUpperLeft) {
    const RenderImage picture = Make();
    EXPECT_GT(Brightness(picture, 50, 35), 300);
    EXPECT_GT(Brightness(picture, 50, 35), Brightness(picture, 72, 57) + 60);
}

TEST_F(SphereRender, GivesTheSameBytesWithOneThread) {
    const RenderImage several = Make();
    const tbb::global_control one(tbb::global_control::max_allowed_parallelism, 1);
    EXPECT_EQ(Make().rgb, several.rgb);
}

TEST_F(SphereRender, RendersCanBeCancelled) {
    const RenderImage expected = Make();
    for (const uint64_t at : {1u, 2u, 3u, 10u, 100u}) {
        TestJob job(at);
        EXPECT_THROW(Make(&job), Cancelled);
        EXPECT_EQ(job.reports, at);
    }
    TestJob whole;
    EXPECT_EQ(Make(&whole).rgb, expected.rgb);
    whole.ExpectFinished();
    EXPECT_GT(whole.reports, 200u);
    EXPECT_EQ(whole.phases,
              (std::set<std::string>{"Building the ray tree", "Rendering", "Smoothing shadows"}));
}

TEST_F(SphereRender, WireframeDarkensEdges) {
    const RenderImage plain = Make();
    options.wireframe = true;
    const RenderImage wired = Make();
    long sumPlain = 0, sumWired = 0;
    for (int y = 30; y < 60; ++y) {
        for (int x = 45; x < 75; ++x) {
            sumPlain += Brightness(plain, x, y);
            sumWired += Brightness(wired, x, y);
        }
    }
    EXPECT_LT(sumWired, sumPlain * 9 / 10);
    EXPECT_EQ(Brightness(plain, 2, 2), Brightness(wired, 2, 2));
}

TEST_F(SphereRender, MaskedAreasAreBluer) {
    const RenderImage clay = Make();
    LevelMesh& mesh = *geometry.Bound();
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) mesh.SetFreeze(v, 127);
    shown.freeze = &mesh.vertices.array->freeze;
    shown.freezeStride = sizeof(Vertex);
    const RenderImage ice = Make();
    const std::size_t middle = (45 * 120 + 60) * 3;
    EXPECT_GT(clay.rgb[middle], clay.rgb[middle + 2]);
    EXPECT_LT(ice.rgb[middle], ice.rgb[middle + 2]);
}

TEST_F(SphereRender, NaNVertexRemovesOnlyItsFaces) {
    geometry.Bound()->SetPosition(0, {std::numeric_limits<float>::quiet_NaN(), 0, 0});
    const RenderImage picture = Make();
    EXPECT_GT(Brightness(picture, 60, 45), 150);
}

TEST_F(SphereRender, SizeOfTheMeshDoesNotMatter) {
    options.wireframe = true;
    const RenderImage usual = Make();
    // The scales are powers of two, so that the relative positions are bit-identical.
    for (const int exponent : {-60, -40, 20, 40, 56}) {
        SCOPED_TRACE(exponent);
        const float scale = std::ldexp(1.0f, exponent);
        for (const int i : {0, 5, 10}) shown.localToWorld[i] = scale;
        camera.eye = Vector(0, 0, 5) * scale;
        EXPECT_TRUE(Make().rgb == usual.rgb);
    }
}

TEST_F(SphereRender, VerticesBeyondTheRangeAreRefused) {
    for (const int i : {0, 5, 10}) shown.localToWorld[i] = 1.1e18f;
    EXPECT_THAT(Refusal(), HasSubstr("cannot render: vertex "));
    EXPECT_THAT(Refusal(), HasSubstr(" in world space; coordinates must be from -1e+18 to 1e+18"));
    // The position is finite in mesh-local space, but not in world space.
    geometry.Bound()->SetPosition(0, {3e38f, 0, 0});
    for (const int i : {0, 5, 10}) shown.localToWorld[i] = 10.0f;
    EXPECT_THAT(Refusal(), StartsWith("cannot render: vertex 0 is at (inf, 0, 0) in world space"));
}

TEST_F(SphereRender, InvalidCamerasAreRefused) {
    const RenderCamera good = camera;
    camera.eye = {0, 0, 2e18f};
    EXPECT_THAT(Refusal(), StartsWith("cannot render: the eye of the camera is at (0, 0, 2e+18)"));
    camera.eye.z = std::numeric_limits<float>::quiet_NaN();
    EXPECT_THAT(Refusal(), StartsWith("cannot render: the eye of the camera is at (0, 0, nan)"));
    camera = good;
    camera.target = {0, -1e19f, 0};
    EXPECT_THAT(Refusal(), StartsWith("cannot render: the target of the camera is at (0, -1e+19"));
    camera.target = camera.eye;
    EXPECT_EQ(Refusal(), "cannot render: eye and target of the camera are both at (0, 0, 5)");
    camera = good;
    camera.up.y = std::numeric_limits<float>::infinity();
    EXPECT_THAT(Refusal(), HasSubstr("the up direction of the camera is (0, inf, 0)"));
    camera = good;
    camera.verticalFieldOfView = 180.0f;
    EXPECT_THAT(Refusal(), HasSubstr("field of view of the camera is 180 degrees"));
}

TEST_F(SphereRender, CameraFarFromATinyMeshShowsTheBackdrop) {
    for (const int i : {0, 5, 10}) shown.localToWorld[i] = 1e-20f;
    camera.eye = {0, 0, 1e17f};
    EXPECT_TRUE(Make().rgb == RenderOnce({}, camera, options).rgb);
}

TEST_F(SphereRender, FramedMeshDoesNotTouchTheBorder) {
    camera = FrameMeshes({shown}, {0, -0.3f, -1}, 35.0f, 120.0f / 90.0f);
    const RenderImage with = Make();
    const RenderImage without = RenderOnce({}, camera, options);
    for (int x = 0; x < 120; ++x) {
        EXPECT_EQ(Brightness(with, x, 0), Brightness(without, x, 0));
        EXPECT_EQ(Brightness(with, x, 89), Brightness(without, x, 89));
    }
    EXPECT_NE(Brightness(with, 60, 45), Brightness(without, 60, 45));
}

TEST_F(SphereRender, TransparentRenderHasTheCoverageAsAlpha) {
    const RenderImage opaque = Make();
    EXPECT_TRUE(opaque.alpha.empty());
    options.transparent = true;
    const RenderImage cut = Make();
    ASSERT_EQ(cut.alpha.size(), 120u * 90u);
    EXPECT_EQ(cut.alpha[PixelAt(cut, 2, 2)], 0);
    EXPECT_EQ(cut.alpha[PixelAt(cut, 60, 45)], 255);
    EXPECT_EQ(Brightness(cut, 60, 45), Brightness(opaque, 60, 45));
    bool hasEdge = false;
    for (const uint8_t alpha : cut.alpha) hasEdge |= alpha == 64 || alpha == 128 || alpha == 191;
    EXPECT_TRUE(hasEdge);
}

TEST(ContactSheet, BlendsTransparentRendersOverItsBackground) {
    RenderImage cut{2, 1, {200, 200, 200, 200, 200, 200}, {255, 0}};
    const RenderImage sheet = MakeContactSheet({cut}, 1, 4, {});
    EXPECT_EQ(sheet.rgb[PixelAt(sheet, 4, 4) * 3], 200);
    EXPECT_EQ(sheet.rgb[PixelAt(sheet, 5, 4) * 3], sheet.rgb[0]);
    EXPECT_TRUE(sheet.alpha.empty());
}

TEST(ContactSheet, HasACellAndACaptionForEachRender) {
    RenderImage white{20, 10, std::vector<uint8_t>(600, 255)};
    const RenderImage plain = MakeContactSheet({white, white, white}, 2, 4, {});
    EXPECT_EQ(plain.width, 2 * 20 + 3 * 4);
    EXPECT_EQ(plain.height, 2 * 10 + 3 * 4);
    const RenderImage captioned = MakeContactSheet({white}, 1, 4, {"I"});
    EXPECT_GT(captioned.height, 10 + 2 * 4);
    int lit = 0;
    for (std::size_t i = static_cast<std::size_t>(captioned.width) * 14 * 3;
         i < captioned.rgb.size();
         i += 3)
        if (captioned.rgb[i] == 220) ++lit;
    // The letter I: a stem of seven dots with two bars of three dots; each dot is two pixels wide
    // and high.
    EXPECT_EQ(lit, (5 + 3 + 3) * 4);
}

}  // namespace
}  // namespace trovik::test
