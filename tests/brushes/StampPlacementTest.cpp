// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/StampPlacement.h"
#include "tests/brushes/LoopFixture.h"
#include "tests/meshes/MirrorAtX.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

/// A camera at this height above the plane z = 0, looking along -z with +y up.
Matrix CameraAbove(float height) {
    Matrix camera;
    camera.m[3][2] = height;
    return camera;
}

const Vector outOfPlane(0.0f, 0.0f, 1.0f);

void ExpectPixel(const Matrix& matrix, const Vector& place, float u, float v, float tolerance) {
    const Vector pixel = PixelOf(matrix, place);
    EXPECT_NEAR(pixel.x, u, tolerance) << place.x << " " << place.y << " " << place.z;
    EXPECT_NEAR(pixel.y, v, tolerance) << place.x << " " << place.y << " " << place.z;
}

TEST(StampPlacement, DabIsCentredInTheStampAndItsRimIsTheBorder) {
    const auto placement =
        StampPlacement::OnSurface({2.0f, 3.0f, 0.0f}, outOfPlane, 0.5f, {}, CameraAbove(4.0f));
    const Matrix matrix = placement.ToPixels(8, 8, Matrix());
    ExpectPixel(matrix, {2.0f, 3.0f, 0.0f}, 3.5f, 3.5f, 0.0f);
    ExpectPixel(matrix, {2.5f, 3.0f, 0.0f}, 7.5f, 3.5f, 0.0f);
    ExpectPixel(matrix, {1.5f, 3.0f, 0.0f}, -0.5f, 3.5f, 0.0f);
    ExpectPixel(matrix, {2.0f, 3.5f, 0.0f}, 3.5f, -0.5f, 0.0f);
    ExpectPixel(matrix, {2.0f, 2.5f, 0.0f}, 3.5f, 7.5f, 0.0f);
}

TEST(StampPlacement, LongerSideSpansTheDabAndPixelsAreSquare) {
    const auto placement = StampPlacement::OnSurface({}, outOfPlane, 1.0f, {}, CameraAbove(4.0f));
    const Matrix wide = placement.ToPixels(8, 4, Matrix());
    ExpectPixel(wide, {1.0f, 0.5f, 0.0f}, 7.5f, -0.5f, 0.0f);
    const Matrix tall = placement.ToPixels(2, 4, Matrix());
    ExpectPixel(tall, {-0.5f, -1.0f, 0.0f}, -0.5f, 3.5f, 0.0f);
}

TEST(StampPlacement, HeightOverTheSurfaceIsTheThirdCoordinateInPixels) {
    const auto placement =
        StampPlacement::OnSurface({1.0f, 1.0f, 5.0f}, outOfPlane, 2.0f, {}, CameraAbove(9.0f));
    const Matrix matrix = placement.ToPixels(8, 8, Matrix());
    EXPECT_EQ(PixelOf(matrix, {1.0f, 1.0f, 5.0f}).z, 0.0f);
    EXPECT_EQ(PixelOf(matrix, {1.0f, 1.0f, 6.0f}).z, 2.0f);
    EXPECT_EQ(PixelOf(matrix, {3.0f, 0.0f, 4.0f}).z, -2.0f);
}

TEST(StampPlacement, TopPointsAlongTheGivenDirectionInTheSurface) {
    // The direction's component perpendicular to the surface and its length are ignored.
    const auto placement =
        StampPlacement::OnSurface({}, outOfPlane, 1.0f, {20.0f, 0.0f, 7.0f}, CameraAbove(4.0f));
    const Matrix matrix = placement.ToPixels(8, 8, Matrix());
    ExpectPixel(matrix, {1.0f, 0.0f, 0.0f}, 3.5f, -0.5f, 1e-6f);
    ExpectPixel(matrix, {0.0f, -1.0f, 0.0f}, 7.5f, 3.5f, 1e-6f);
}

TEST(StampPlacement, WithoutADirectionItIsUprightInTheView) {
    const Matrix camera = CameraAbove(4.0f);
    // The camera's up direction lies in the plane of a wall that faces +x.
    const auto wall = StampPlacement::OnSurface({}, {3.0f, 0.0f, 0.0f}, 1.0f, {}, camera);
    EXPECT_EQ(wall.Up(), Vector(0.0f, 1.0f, 0.0f));
    EXPECT_EQ(wall.Right(), Vector(0.0f, 0.0f, -1.0f));
    // On a floor seen from above its edge, up points away from the viewer.
    const auto floor = StampPlacement::OnSurface({}, {0.0f, 1.0f, 0.0f}, 1.0f, {}, camera);
    EXPECT_EQ(floor.Up(), Vector(0.0f, 0.0f, -1.0f));
    EXPECT_EQ(floor.Right(), Vector(1.0f, 0.0f, 0.0f));
    // A direction perpendicular to the surface is ignored.
    const auto still =
        StampPlacement::OnSurface({}, {0.0f, 1.0f, 0.0f}, 1.0f, {0.0f, 5.0f, 0.0f}, camera);
    EXPECT_EQ(still.Up(), floor.Up());
}

TEST(StampPlacement, RotationsAreClockwiseAndQuarterTurnsAreExact) {
    auto placement = StampPlacement::OnSurface({}, outOfPlane, 1.0f, {}, CameraAbove(4.0f));
    placement.Turn(0.25f);
    EXPECT_EQ(placement.Up(), Vector(1.0f, 0.0f, 0.0f));
    EXPECT_EQ(placement.Right(), Vector(0.0f, -1.0f, 0.0f));
    ExpectPixel(placement.ToPixels(8, 8, Matrix()), {1.0f, 0.0f, 0.0f}, 3.5f, -0.5f, 0.0f);
    placement.Turn(-0.75f);
    EXPECT_EQ(placement.Up(), Vector(0.0f, -1.0f, 0.0f));
    placement.Turn(5.5f);
    EXPECT_EQ(placement.Up(), Vector(0.0f, 1.0f, 0.0f));
    placement.Turn(0.125f);
    const float half = std::sqrt(0.5f);
    EXPECT_NEAR(placement.Up().x, half, 1e-7f);
    EXPECT_NEAR(placement.Up().y, half, 1e-7f);
}

TEST(StampPlacement, DirectionsOfRotationsLieOnTheUnitCircle) {
    for (int i = -720; i <= 720; ++i) {
        const float turns = static_cast<float>(i) / 360.0f;
        const TurnDirection direction = DirectionOfTurn(turns);
        const double angle = static_cast<double>(turns) * 2.0 * std::acos(-1.0);
        EXPECT_NEAR(direction.cosine, std::cos(angle), 1e-7);
        EXPECT_NEAR(direction.sine, std::sin(angle), 1e-7);
    }
}

TEST(StampPlacement, MatrixIncludesTheTransformOfTheMesh) {
    MatrixTransform place;
    place.Set({2.0f, 2.0f, 2.0f}, {0.0f, 0.0f, 0.0f}, {10.0f, 0.0f, 0.0f});
    // World (12, 4, 0) is mesh-local (1, 2, 0).
    const auto placement =
        StampPlacement::OnSurface({12.0f, 4.0f, 0.0f}, outOfPlane, 1.0f, {}, CameraAbove(4.0f));
    const Matrix matrix = placement.ToPixels(8, 8, place.ToWorld());
    ExpectPixel(matrix, {1.0f, 2.0f, 0.0f}, 3.5f, 3.5f, 0.0f);
    ExpectPixel(matrix, {1.5f, 2.0f, 0.0f}, 7.5f, 3.5f, 0.0f);
}

TEST(StampPlacement, OrthographicLinesOfSightAreParallelToTheViewDirection) {
    // The position of the camera, here far to the side, has no effect.
    Matrix camera = CameraAbove(4.0f);
    camera.m[3][0] = 1e6f;
    const auto placement = StampPlacement::ByCamera({}, 0.5f, {}, camera, true);
    const Matrix matrix = placement.ToPixels(8, 8, Matrix());
    for (const float z : {-3.0f, 0.0f, 2.0f, 9.0f}) {
        ExpectPixel(matrix, {0.5f, 0.0f, z}, 7.5f, 3.5f, 0.0f);
        ExpectPixel(matrix, {0.0f, 0.5f, z}, 3.5f, -0.5f, 0.0f);
        EXPECT_EQ(PixelOf(matrix, {0.0f, 0.0f, z}).z, z * 8.0f);
    }
}

TEST(StampPlacement, ByCameraEachLineOfSightHasOnePixel) {
    const auto placement =
        StampPlacement::ByCamera({0.0f, 0.0f, 0.0f}, 0.5f, {}, CameraAbove(4.0f));
    const Matrix matrix = placement.ToPixels(8, 8, Matrix());
    ExpectPixel(matrix, {}, 3.5f, 3.5f, 0.0f);
    ExpectPixel(matrix, {0.5f, 0.0f, 0.0f}, 7.5f, 3.5f, 0.0f);
    ExpectPixel(matrix, {0.0f, 0.5f, 0.0f}, 3.5f, -0.5f, 0.0f);
    // At half the distance from the eye, the same pixel is half as far from the view axis; at twice
    // the distance, it is twice as far.
    ExpectPixel(matrix, {0.25f, 0.0f, 2.0f}, 7.5f, 3.5f, 0.0f);
    ExpectPixel(matrix, {1.0f, 0.0f, -4.0f}, 7.5f, 3.5f, 0.0f);
    EXPECT_EQ(PixelOf(matrix, {}).z, 0.0f);
    EXPECT_GT(PixelOf(matrix, {0.0f, 0.0f, 1.0f}).z, 0.0f);
}

TEST(StampPlacement, ByCameraAnOffAxisMiddleKeepsItsSize) {
    const auto placement =
        StampPlacement::ByCamera({1.0f, 2.0f, 0.0f}, 0.5f, {}, CameraAbove(4.0f));
    const Matrix matrix = placement.ToPixels(8, 8, Matrix());
    ExpectPixel(matrix, {1.0f, 2.0f, 0.0f}, 3.5f, 3.5f, 0.0f);
    ExpectPixel(matrix, {1.5f, 2.0f, 0.0f}, 7.5f, 3.5f, 0.0f);
    ExpectPixel(matrix, {1.0f, 1.5f, 0.0f}, 3.5f, 7.5f, 0.0f);
    ExpectPixel(matrix, {0.5f, 1.0f, 2.0f}, 3.5f, 3.5f, 0.0f);
}

TEST(StampPlacement, ByCameraTheStampRotatesInTheImagePlane) {
    const auto placement =
        StampPlacement::ByCamera({}, 0.5f, {-1.0f, 0.0f, 3.0f}, CameraAbove(4.0f));
    const Matrix matrix = placement.ToPixels(8, 8, Matrix());
    ExpectPixel(matrix, {-0.5f, 0.0f, 0.0f}, 3.5f, -0.5f, 1e-6f);
    ExpectPixel(matrix, {0.0f, 0.5f, 0.0f}, 7.5f, 3.5f, 1e-6f);
}

TEST(StampPlacement, NearTheEyeLinesOfSightAreParallel) {
    for (const float height : {0.5f, 0.25f, 0.0f, -3.0f}) {
        const auto placement = StampPlacement::ByCamera({}, 0.5f, {}, CameraAbove(height));
        const Matrix matrix = placement.ToPixels(8, 8, Matrix());
        ExpectPixel(matrix, {0.5f, 0.0f, 0.0f}, 7.5f, 3.5f, 0.0f);
        ExpectPixel(matrix, {0.5f, 0.0f, -9.0f}, 7.5f, 3.5f, 0.0f);
    }
}

TEST(StampPlacement, MatrixHasAnInverse) {
    const Matrix camera = CameraAbove(4.0f);
    for (const bool projected : {false, true}) {
        const auto placement = projected
                                   ? StampPlacement::ByCamera({1.0f, 0.5f, 0.25f}, 0.5f, {}, camera)
                                   : StampPlacement::OnSurface(
                                         {1.0f, 0.5f, 0.25f}, {1.0f, 1.0f, 1.0f}, 0.5f, {}, camera);
        Matrix back = placement.ToPixels(64, 32, Matrix());
        bool invertible = false;
        back.Invert(&invertible);
        ASSERT_TRUE(invertible);
        // The brush computes the image's sides in this way.
        const Vector origin = back.ProjectedTransform({0.0f, 0.0f, 0.0f}, 1.0f);
        const Vector right = back.ProjectedTransform({64.0f, 0.0f, 0.0f}, 1.0f);
        const Vector below = back.ProjectedTransform({0.0f, 32.0f, 0.0f}, 1.0f);
        EXPECT_NEAR((right - origin).Length(), 1.0f, 1e-5f);
        EXPECT_NEAR((below - origin).Length(), 0.5f, 1e-5f);
        EXPECT_NEAR((right - origin) | (below - origin), 0.0f, 1e-5f);
    }
}

TEST(StampPlacement, MirroredPointReadsThePixelOfItsImageExactly) {
    const Matrix map = MirrorAtX(0.0f);
    for (const bool projected : {false, true}) {
        const Matrix camera = CameraAbove(4.0f);
        const auto placement = projected
                                   ? StampPlacement::ByCamera({0.7f, 0.2f, 0.1f}, 0.3f, {}, camera)
                                   : StampPlacement::OnSurface(
                                         {0.7f, 0.2f, 0.1f}, {0.2f, 0.3f, 1.0f}, 0.3f, {}, camera);
        const Matrix main = placement.ToPixels(33, 17, Matrix());
        const Matrix mirrored = StampPlacement::Mirrored(main, map);
        for (int i = 0; i < 50; ++i) {
            const Vector p(0.5f + static_cast<float>(i) * 0.013f,
                           static_cast<float>(i) * 0.007f,
                           static_cast<float>(i % 7) * 0.02f);
            const Vector q(-p.x, p.y, p.z);
            EXPECT_EQ(PixelOf(mirrored, q), PixelOf(main, p));
        }
    }
}

TEST(StampPlacement, AnyInvertibleMapCanMirror) {
    const Matrix map = MirrorAtX(8.0f);
    const auto placement =
        StampPlacement::OnSurface({4.0f, 8.0f, 0.0f}, outOfPlane, 2.0f, {}, CameraAbove(4.0f));
    const Matrix mirrored = StampPlacement::Mirrored(placement.ToPixels(8, 8, Matrix()), map);
    ExpectPixel(mirrored, {12.0f, 8.0f, 0.0f}, 3.5f, 3.5f, 0.0f);
    ExpectPixel(mirrored, {10.0f, 8.0f, 0.0f}, 7.5f, 3.5f, 0.0f);
}

}  // namespace
}  // namespace trovik::test
