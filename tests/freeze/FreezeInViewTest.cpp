// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeInView.h"
#include "tests/freeze/FreezeGrid.h"

#include <gtest/gtest.h>

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
