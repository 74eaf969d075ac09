// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/Cancelled.h"
#include "framework/remesh/WallThickness.h"
#include "tests/jobs/TestJob.h"
#include "tests/remesh/EditedMeshes.h"
#include "tests/remesh/ReplacedSurface.h"

namespace trovik::test {
namespace {

/// A box with this size and centre.
PolygonMesh Box(const Vector& size, const Vector& centre = {}) {
    PolygonMesh box = Cube();
    AxisAlignedBoundingBox bounds;
    for (const auto& p : box.positions) bounds.Extend({p[0], p[1], p[2]});
    const float scale[] = {size.x, size.y, size.z};
    const float middle[] = {centre.x, centre.y, centre.z};
    for (auto& p : box.positions)
        for (std::size_t k = 0; k < 3; ++k)
            p[k] =
                (p[k] > 0.5f * (bounds.minX + bounds.maxX) ? 0.5f : -0.5f) * scale[k] + middle[k];
    return box;
}

TEST(WallThickness, MeasuresABox) {
    const PolygonMesh box = Box({10.0f, 4.0f, 0.5f});
    const ThinWalls thin = FindThinWalls(box, 1.0f);
    EXPECT_EQ(thin.faces, 2u);
    EXPECT_NEAR(thin.area, 80.0, 1e-4);
    EXPECT_NEAR(thin.totalArea, 80.0 + 10.0 + 4.0, 1e-4);
    EXPECT_NEAR(thin.thinnest.value(), 0.5f, 1e-5f);
    const ThinWalls more = FindThinWalls(box, 5.0f);
    EXPECT_EQ(more.faces, 4u);
    EXPECT_NEAR(more.area, 90.0, 1e-4);
    const ThinWalls all = FindThinWalls(box, 11.0f);
    EXPECT_EQ(all.faces, 6u);
    const ThinWalls none = FindThinWalls(box, 0.49f);
    EXPECT_EQ(none.faces, 0u);
    EXPECT_FALSE(none.thinnest.has_value());
}

TEST(WallThickness, MeasuresTheWallOfAHollowSphere) {
    PolygonMesh sphere = SphereQuads(5);
    PolygonMesh hollow = sphere;
    const std::size_t faces = sphere.faceSizes.size();
    Append(hollow, sphere, 0.9f, {});
    for (std::size_t face = faces; face < 2 * faces; ++face) Flip(hollow, face);
    const ThinWalls thin = FindThinWalls(hollow, 0.15f);
    EXPECT_EQ(thin.faces, 2 * faces);
    EXPECT_NEAR(thin.area, thin.totalArea, 1e-6);
    EXPECT_NEAR(thin.thinnest.value(), 0.1f, 0.003f);
    EXPECT_EQ(FindThinWalls(hollow, 0.09f).faces, 0u);
}

TEST(WallThickness, GapsAreNotWalls) {
    // Two boxes with a gap of 0.1.
    PolygonMesh pair = Box({2.0f, 2.0f, 2.0f});
    Append(pair, Box({2.0f, 2.0f, 2.0f}), 1.0f, {2.1f, 0.0f, 0.0f});
    EXPECT_EQ(FindThinWalls(pair, 1.0f).faces, 0u);
    EXPECT_EQ(FindThinWalls(pair, 2.5f).faces, 12u);
}

TEST(WallThickness, RaysThatEnterAnotherPartEnd) {
    // The boxes overlap by 0.1, which both sides of the overlap measure.
    PolygonMesh boxes = Box({10.0f, 10.0f, 1.0f});
    Append(boxes, Box({8.0f, 8.0f, 8.0f}, {0.0f, 0.0f, 4.4f}), 1.0f, {});
    // From the lower side of the flat box, the ray enters the other box after 0.9.
    const ThinWalls thin = FindThinWalls(boxes, 0.95f);
    EXPECT_EQ(thin.faces, 2u);
    EXPECT_NEAR(thin.thinnest.value(), 0.1f, 1e-4f);
}

TEST(WallThickness, SurfacesWithoutAnOppositeSideHaveNoWall) {
    EXPECT_EQ(FindThinWalls(GridMesh(3, 3), 10.0f).faces, 0u);
}

TEST(WallThickness, WorksFarFromTheOrigin) {
    const PolygonMesh box = Box({1.0f, 4.0f, 4.0f}, {3000.0f, -5000.0f, 100.0f});
    EXPECT_EQ(FindThinWalls(box, 1.5f).faces, 2u);
    EXPECT_EQ(FindThinWalls(box, 0.9f).faces, 0u);
}

TEST(WallThickness, LevelsAreMeasuredInWorldUnits) {
    Document document("box", Box({4.0f, 4.0f, 1.0f}));
    for (const float z : {0.5f, -0.5f}) {
        MatrixTransform transform;
        transform.Set({10.0f, 10.0f, z}, {20.0f, 30.0f, 40.0f}, {1.0f, 2.0f, 3.0f});
        document.SetTransform(transform);
        const ThinWalls thin = FindThinWalls(document.Geometry(), 0.6f);
        EXPECT_EQ(thin.faces, 2u) << z;
        EXPECT_NEAR(thin.thinnest.value(), 0.5f, 1e-4f);
        EXPECT_NEAR(thin.area, 3200.0, 1e-1);
        EXPECT_EQ(FindThinWalls(document.Geometry(), 0.49f).faces, 0u);
    }
}

TEST(WallThickness, ReportsProgressAndCanBeCancelled) {
    const PolygonMesh sphere = SphereQuads(2);
    TestJob every;
    FindThinWalls(sphere, 3.0f, &every);
    every.ExpectFinished();
    TestJob whole(TestJob::never, TestJob::WithoutClock());
    FindThinWalls(sphere, 3.0f, &whole);
    for (uint64_t at = 1; at <= whole.reports; ++at) {
        TestJob job(at, TestJob::WithoutClock());
        EXPECT_THROW(FindThinWalls(sphere, 3.0f, &job), Cancelled) << at;
    }
}

}  // namespace
}  // namespace trovik::test
