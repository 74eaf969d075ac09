// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeInView.h"
#include "tests/freeze/FreezeGrid.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

/// A unit sphere seen from a distance of five units, in a viewport where one unit in the plane
/// through the sphere's centre measures 100 pixels.
class FreezeInView : public testing::Test {
protected:
    FreezeInView() : geometry(SphereQuads(4)), tree(geometry.Bound()) {
        view.width = 400;
        view.height = 400;
        // tan(f / 2) = 2 / 5.
        view.verticalFieldOfView = 43.602818f;
    }
    std::vector<float> Shares(ViewReach reach, const ViewBox& box) {
        return WeightsInView(geometry, tree, view, reach, [&box](const ViewPoint& place) {
            return box.Holds(place) ? 1.0f : 0.0f;
        });
    }

    LevelGeometry geometry;
    PatchTree tree;
    StrokeView view;
};

TEST_F(FreezeInView, ViewPositionsMatchThePickingRays) {
    const auto middle = ProjectToView(view, {0.0f, 0.0f, 0.0f});
    ASSERT_TRUE(middle);
    EXPECT_FLOAT_EQ(middle->x, 200.0f);
    EXPECT_FLOAT_EQ(middle->y, 200.0f);
    const auto right = ProjectToView(view, {1.0f, 0.5f, 0.0f});
    EXPECT_NEAR(right->x, 300.0f, 1e-2f);
    EXPECT_NEAR(right->y, 150.0f, 1e-2f);
    EXPECT_FALSE(ProjectToView(view, {0.0f, 0.0f, 6.0f})) << "behind the eye";
    const Ray ray = view.Through(37.0f, 311.0f);
    const auto back = ProjectToView(view, ray.origin + ray.direction * 3.0f);
    EXPECT_NEAR(back->x, 37.0f, 1e-2f);
    EXPECT_NEAR(back->y, 311.0f, 1e-2f);
}

TEST_F(FreezeInView, ReachSelectsTheSideOfTheSurface) {
    const ViewBox all{{0.0f, 0.0f}, {400.0f, 400.0f}};
    const auto through = Shares(ViewReach::Through, all);
    const auto facing = Shares(ViewReach::Facing, all);
    const auto visible = Shares(ViewReach::Visible, all);
    for (uint32_t v = 0; v < geometry.Bound()->VertexCount(); ++v) {
        EXPECT_EQ(through[v], 1.0f);
        // A unit sphere at a distance of five units is visible down to z = 1 / 5.
        const float z = geometry.Bound()->Position(v).z;
        if (z > 0.25f) {
            EXPECT_EQ(facing[v], 1.0f);
            EXPECT_EQ(visible[v], 1.0f);
        } else if (z < 0.1f) {
            EXPECT_EQ(facing[v], 0.0f);
            EXPECT_EQ(visible[v], 0.0f);
        }
    }
}

TEST_F(FreezeInView, OrthographicLinesOfSightAreParallel) {
    view.isOrthographic = true;
    for (const float z : {-30.0f, -1.0f, 0.0f, 0.9f, 4.9f, 7.0f}) {
        const auto point = ProjectToView(view, {1.0f, 0.5f, z});
        ASSERT_TRUE(point);
        EXPECT_NEAR(point->x, 300.0f, 1e-3f);
        EXPECT_NEAR(point->y, 150.0f, 1e-3f);
        EXPECT_NEAR(view.PixelSizeAt({1.0f, 0.5f, z}), 0.01f, 1e-7f);
    }
    const Ray ray = view.Through(37.0f, 311.0f);
    EXPECT_EQ(ray.direction, Vector(0.0f, 0.0f, -1.0f));
    const auto point = ProjectToView(view, ray.origin + ray.direction * 3.0f);
    EXPECT_NEAR(point->x, 37.0f, 1e-3f);
    EXPECT_NEAR(point->y, 311.0f, 1e-3f);
}

TEST_F(FreezeInView, OrthographicPicksDoNotDependOnThePositionOfTheEye) {
    view.isOrthographic = true;
    // In front of the sphere, inside it, behind it and far away, with the same direction and scale.
    for (const float z : {5.0f, 0.5f, -20.0f, 4000.0f}) {
        SCOPED_TRACE(z);
        view.eye = {0.0f, 0.0f, z};
        view.target = {0.0f, 0.0f, z - 5.0f};
        const auto hit = HitThrough(geometry, tree, view, {250.0f, 170.0f, 0.0f});
        ASSERT_TRUE(hit);
        EXPECT_NEAR(hit->position.x, 0.5f, 1e-4f);
        EXPECT_NEAR(hit->position.y, 0.3f, 1e-4f);
        EXPECT_NEAR(hit->position.z, std::sqrt(1.0f - 0.34f), 0.01f);
        EXPECT_FALSE(HitThrough(geometry, tree, view, {301.0f, 200.0f, 0.0f}));
        const Vector heading = HeadingInView(geometry, view, *hit, {1.0f, 0.0f, 0.0f});
        EXPECT_NEAR(heading | hit->normal, 0.0f, 1e-4f) << "on the surface";
        EXPECT_NEAR(heading.y / heading.x, 0.0f, 1e-4f);
        const ViewBox all{{0.0f, 0.0f}, {400.0f, 400.0f}};
        for (const ViewReach reach : {ViewReach::Facing, ViewReach::Visible}) {
            const auto weights = Shares(reach, all);
            for (uint32_t v = 0; v < geometry.Bound()->VertexCount(); ++v) {
                const float height = geometry.Bound()->Position(v).z;
                if (std::fabs(height) > 0.05f) {
                    ASSERT_EQ(weights[v], height > 0.0f ? 1.0f : 0.0f) << height;
                }
            }
        }
    }
}

TEST_F(FreezeInView, OrthographicBrushesSeeTheSameDirectionEverywhere) {
    view.eye = {3.0f, 4.0f, 12.0f};
    EXPECT_EQ(view.BrushCameraToWorld(), view.ToWorld());
    view.isOrthographic = true;
    const Matrix camera = view.BrushCameraToWorld();
    const Vector eye(camera.m[3][0], camera.m[3][1], camera.m[3][2]);
    const Vector back = view.eye.Normalized();
    for (const Vector& point : {Vector(), Vector(5.0f, -3.0f, 1.0f), Vector(0.0f, 9.0f, 20.0f)})
        EXPECT_LT(((eye - point).Normalized() - back).Length(), 5e-7f);
    // Other values are unchanged, and squared distances are finite, even for a distant eye.
    for (int row = 0; row < 3; ++row)
        for (int k = 0; k < 3; ++k) EXPECT_EQ(camera.m[row][k], view.ToWorld().m[row][k]);
    view.eye = view.eye * 1e14f;
    const Matrix distant = view.BrushCameraToWorld();
    EXPECT_TRUE(std::isfinite(Vector(distant.m[3][0], distant.m[3][1], distant.m[3][2]).Length()));
}

TEST(StartingBefore, MovesTheStartInFrontOfTheBox) {
    AxisAlignedBoundingBox box;
    box.Extend({-1.0f, -1.0f, -1.0f});
    box.Extend({1.0f, 1.0f, 1.0f});
    for (const float z : {0.0f, -7.0f, 50.0f}) {
        const Ray moved = StartingBefore({{0.25f, 0.5f, z}, {0.0f, 0.0f, -2.0f}}, box);
        EXPECT_NEAR(moved.origin.x, 0.25f, 1e-6f);
        EXPECT_GT(moved.origin.z, 1.0f);
        EXPECT_LT(moved.origin.z, 1.01f);
    }
    const Ray still = StartingBefore({{1.0f, 2.0f, 3.0f}, {}}, box);
    EXPECT_EQ(still.origin, Vector(1.0f, 2.0f, 3.0f));
    EXPECT_EQ(StartingBefore({{1.0f, 2.0f, 3.0f}, {0.0f, 1.0f, 0.0f}}, {}).origin,
              Vector(1.0f, 2.0f, 3.0f));
}

TEST_F(FreezeInView, OccludedFrontFacesAreNotVisible) {
    // A small sphere behind a large one.
    PolygonMesh two = SphereQuads(3);
    const PolygonMesh small = SphereQuads(2);
    const auto first = static_cast<uint32_t>(two.positions.size());
    for (const auto& p : small.positions)
        two.positions.push_back({p[0] * 0.3f, p[1] * 0.3f, p[2] * 0.3f - 3.0f});
    for (const uint32_t v : small.faceVertices) two.faceVertices.push_back(first + v);
    two.faceSizes.insert(two.faceSizes.end(), small.faceSizes.begin(), small.faceSizes.end());
    LevelGeometry both(two);
    const PatchTree bothTree(both.Bound());
    const auto all = [](const ViewPoint&) { return 1.0f; };
    const auto visible = WeightsInView(both, bothTree, view, ViewReach::Visible, all);
    const auto facing = WeightsInView(both, bothTree, view, ViewReach::Facing, all);
    std::size_t facingBehind = 0;
    for (uint32_t v = first; v < both.Bound()->VertexCount(); ++v) {
        EXPECT_EQ(visible[v], 0.0f);
        facingBehind += facing[v] > 0.0f ? 1u : 0u;
    }
    EXPECT_GT(facingBehind, 5u);
}

TEST_F(FreezeInView, BoxIncludesItsUpperAndLeftSides) {
    const ViewBox box{{300.0f, 200.0f}, {200.0f, 100.0f}};
    EXPECT_TRUE(box.Holds({200.0f, 100.0f}));
    EXPECT_FALSE(box.Holds({300.0f, 150.0f}));
    EXPECT_FALSE(box.Holds({250.0f, 200.0f}));
    const auto shares = Shares(ViewReach::Through, box);
    for (uint32_t v = 0; v < geometry.Bound()->VertexCount(); ++v) {
        const Vector p = geometry.Bound()->Position(v);
        // Nearer points appear farther from the centre.
        const float x = p.x * 5.0f / (5.0f - p.z);
        const float y = p.y * 5.0f / (5.0f - p.z);
        if (std::abs(x) > 0.01f && std::abs(y) > 0.01f) {
            EXPECT_EQ(shares[v], x > 0.0f && y > 0.0f && x < 1.0f && y < 1.0f ? 1.0f : 0.0f);
        }
    }
}

TEST(ViewLasso, ContainsItsInsideWithoutTheHole) {
    // A square with a square hole, drawn as one line.
    const ViewLasso lasso(
        {{0, 0}, {9, 0}, {9, 9}, {0, 9}, {0, 0}, {3, 3}, {6, 3}, {6, 6}, {3, 6}, {3, 3}});
    EXPECT_TRUE(lasso.Holds({1, 2}));
    EXPECT_TRUE(lasso.Holds({8, 5}));
    EXPECT_FALSE(lasso.Holds({4, 5}));
    EXPECT_FALSE(lasso.Holds({-1, 5}));
    EXPECT_FALSE(lasso.Holds({10, 3})) << "at the same height as corners";
    const ViewLasso triangle({{0, 0}, {4, 4}, {0, 8}});
    EXPECT_TRUE(triangle.Holds({2, 4})) << "at the same height as a corner";
    EXPECT_FALSE(triangle.Holds({-2, 4}));
    EXPECT_FALSE(triangle.Holds({5, 4}));
}

TEST(ViewImage, IsInterpolatedLinearlyBetweenPixelCentres) {
    FloatImage image;
    image.width = 2;
    image.height = 1;
    image.channels = 1;
    image.pixels = {0.0f, 1.0f};
    const ViewImage shown(image, ViewImage::Channel::Luminance, false, {{100, 0}, {300, 100}});
    EXPECT_EQ(shown.WeightAt({150.0f, 50.0f}), 0.0f);
    EXPECT_EQ(shown.WeightAt({200.0f, 50.0f}), 0.5f);
    EXPECT_EQ(shown.WeightAt({225.0f, 10.0f}), 0.75f);
    EXPECT_EQ(shown.WeightAt({299.0f, 99.0f}), 1.0f);
    EXPECT_EQ(shown.WeightAt({99.0f, 50.0f}), 0.0f) << "outside";
    EXPECT_EQ(shown.WeightAt({250.0f, 101.0f}), 0.0f);
    const ViewImage inverted(image, ViewImage::Channel::Luminance, true, {{100, 0}, {300, 100}});
    EXPECT_EQ(inverted.WeightAt({225.0f, 10.0f}), 0.25f);
    EXPECT_EQ(inverted.WeightAt({99.0f, 50.0f}), 0.0f);
}

TEST(ViewImage, UsesLuminanceOrAlpha) {
    FloatImage image;
    image.width = 1;
    image.height = 1;
    image.channels = 4;
    image.pixels = {1.0f, 0.5f, 0.25f, 0.75f};
    const ViewBox over{{0, 0}, {10, 10}};
    EXPECT_FLOAT_EQ(ViewImage(image, ViewImage::Channel::Luminance, false, over).WeightAt({5, 5}),
                    0.2126f + 0.3576f + 0.01805f);
    EXPECT_EQ(ViewImage(image, ViewImage::Channel::Alpha, false, over).WeightAt({5, 5}), 0.75f);
    image.channels = 2;
    image.pixels = {0.125f, 0.5f};
    EXPECT_EQ(ViewImage(image, ViewImage::Channel::Luminance, false, over).WeightAt({5, 5}),
              0.125f);
    EXPECT_EQ(ViewImage(image, ViewImage::Channel::Alpha, false, over).WeightAt({5, 5}), 0.5f);
    image.channels = 1;
    image.pixels = {0.125f};
    EXPECT_EQ(ViewImage(image, ViewImage::Channel::Alpha, false, over).WeightAt({5, 5}), 1.0f);
}

}  // namespace
}  // namespace trovik::test
