// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeCurvature.h"
#include "tests/freeze/FreezeGrid.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace trovik::test {
namespace {

/// A unit sphere, which is convex everywhere.
class FreezeCurvature : public testing::Test {
protected:
    FreezeCurvature() : geometry(SphereQuads(4)) {}
    LevelGeometry geometry;
};

TEST_F(FreezeCurvature, SphereHasTheCurvatureOfItsRadius) {
    const auto curvatures = ScaledCurvatures(geometry, 0.25f, 0);
    for (const float bend : curvatures) EXPECT_NEAR(bend, -0.25f, 0.02f);
}

TEST_F(FreezeCurvature, IsMeasuredInWorldSpace) {
    geometry.Transform().Set({2.0f, 2.0f, 2.0f}, {30.0f, 0.0f, 0.0f}, {5.0f, 0.0f, 0.0f});
    const auto curvatures = ScaledCurvatures(geometry, 1.0f, 0);
    for (const float bend : curvatures) EXPECT_NEAR(bend, -0.5f, 0.04f);
}

TEST_F(FreezeCurvature, IsAlmostEqualOnEveryLevel) {
    geometry.Subdivide();
    const auto curvatures = ScaledCurvatures(geometry, 1.0f, 0);
    std::size_t near = 0;
    for (const float bend : curvatures) near += bend > -1.1f && bend < -0.9f ? 1u : 0u;
    // The eight vertices of valence 3 may differ.
    EXPECT_GT(near, curvatures.size() * 98 / 100);
}

TEST_F(FreezeCurvature, SignAndRangeSelectAndSoftnessFades) {
    CurvatureRange range;
    range.from = 0.5f;
    const auto all = [&](float from, float to) {
        const auto shares = WeightsByCurvature(geometry, range);
        return std::all_of(shares.begin(), shares.end(), [from, to](float share) {
            return share >= from && share <= to;
        });
    };
    EXPECT_TRUE(all(0.0f, 0.0f)) << "a sphere has no cavities";
    range.sign = CurvatureSign::Ridge;
    EXPECT_TRUE(all(1.0f, 1.0f));
    range.sign = CurvatureSign::Both;
    EXPECT_TRUE(all(1.0f, 1.0f));
    range.to = 0.8f;
    EXPECT_TRUE(all(0.0f, 0.0f)) << "the sphere's curvature is 1";
    range.softness = 0.4f;
    EXPECT_TRUE(all(0.3f, 0.7f));
    range.from = 1.2f;
    range.to = 2.0f;
    EXPECT_TRUE(all(0.3f, 0.7f));
}

TEST(FreezeCurvatureOfAValley, OnlyItsFloorIsACavity) {
    FreezeGrid grid(6);
    // A V-shaped valley along the line x = 3.
    for (uint32_t v = 0; v < grid.Level().VertexCount(); ++v) {
        const Vector p = grid.Level().Position(v);
        grid.Level().SetPosition(v, {p.x, p.y, std::max(p.x - 3.0f, 3.0f - p.x) * 0.75f});
    }
    grid.Level().ComputeNormals();
    const auto curvatures = ScaledCurvatures(grid.geometry, 1.0f, 0);
    for (uint32_t v = 0; v < grid.Level().VertexCount(); ++v) {
        const Vector p = grid.Level().Position(v);
        if (p.y < 1.0f || p.y > 5.0f || p.x < 1.0f || p.x > 5.0f) continue;
        // Two of the neighbours rise by 0.75 over distances of 1.25, and two are level.
        if (p.x == 3.0f) {
            EXPECT_NEAR(curvatures[v], 2.0f * 0.75f / 1.5625f / 2.0f, 1e-4f);
        } else {
            EXPECT_NEAR(curvatures[v], 0.0f, p.x == 2.0f || p.x == 4.0f ? 0.3f : 1e-4f);
        }
    }
    CurvatureRange range;
    range.from = 0.4f;
    const auto shares = WeightsByCurvature(grid.geometry, range);
    for (uint32_t v = 0; v < grid.Level().VertexCount(); ++v)
        EXPECT_EQ(shares[v], grid.Level().Position(v).x == 3.0f ? 1.0f : 0.0f) << v;
    // Averaging over one ring spreads the curvature: the result is half the vertex's own value plus
    // half the mean of its neighbours, two of which have the same value.
    const auto spread = ScaledCurvatures(grid.geometry, 1.0f, 1);
    for (uint32_t v = 0; v < grid.Level().VertexCount(); ++v) {
        const Vector p = grid.Level().Position(v);
        if (p.x == 3.0f && p.y == 3.0f) {
            EXPECT_NEAR(spread[v], curvatures[v] * 0.75f, 1e-4f);
        }
    }
}

}  // namespace
}  // namespace trovik::test
