// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeParts.h"
#include "tests/freeze/FreezeGrid.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace trovik::test {
namespace {

/// Two grids next to each other.
PolygonMesh TwoParts() {
    PolygonMesh mesh = GridMesh(2, 2);
    const PolygonMesh other = GridMesh(3, 1);
    const auto first = static_cast<uint32_t>(mesh.positions.size());
    for (const auto& p : other.positions) mesh.positions.push_back({p[0] + 10.0f, p[1], p[2]});
    for (const uint32_t v : other.faceVertices) mesh.faceVertices.push_back(first + v);
    mesh.faceSizes.insert(mesh.faceSizes.end(), other.faceSizes.begin(), other.faceSizes.end());
    return mesh;
}

TEST(FreezeParts, ConnectedComponentsAreTheSameOnEveryLevel) {
    LevelGeometry geometry(TwoParts());
    geometry.Subdivide();
    geometry.Subdivide();
    for (uint32_t index = 0; index < 3; ++index) {
        const LevelMesh& level = *geometry.Level(index);
        const auto left = WeightsOfComponent(level, 0);
        const auto right = WeightsOfComponent(level, 9);
        for (uint32_t v = 0; v < level.VertexCount(); ++v) {
            EXPECT_EQ(left[v], level.Position(v).x < 5.0f ? 1.0f : 0.0f);
            EXPECT_EQ(right[v], level.Position(v).x < 5.0f ? 0.0f : 1.0f);
        }
    }
}

TEST(FreezeParts, GroupIsTheVerticesOfItsFacesOnEveryLevel) {
    PolygonMesh mesh = GridMesh(4, 1);
    mesh.attributes.groupNames = {"left", "middle"};
    const uint32_t none = SurfaceAttributes::none;
    mesh.attributes.faceGroups = {0, 1, 1, none};
    LevelGeometry geometry(mesh);
    geometry.Subdivide();
    geometry.Subdivide();
    for (uint32_t index = 0; index < 3; ++index) {
        const LevelMesh& level = *geometry.Level(index);
        const auto middle = WeightsOfGroup(geometry, index, 1);
        const auto rest = WeightsOfGroup(geometry, index, none);
        std::size_t found = 0;
        for (uint32_t v = 0; v < level.VertexCount(); ++v) {
            // The corners of the open grid do not move under refinement, and its inner grid lines
            // keep their x coordinates.
            const float x = level.Position(v).x;
            EXPECT_EQ(middle[v], x >= 0.999f && x <= 3.001f ? 1.0f : 0.0f) << x;
            EXPECT_EQ(rest[v], x >= 2.999f ? 1.0f : 0.0f) << x;
            found += middle[v] > 0.0f ? 1u : 0u;
        }
        EXPECT_GT(found, 4u << index);
    }
}

TEST(FreezeParts, MeshWithoutGroupsIsEntirelyUngrouped) {
    LevelGeometry geometry(TriangleStrip(4));
    geometry.Subdivide();
    const auto shares = WeightsOfGroup(geometry, 1, SurfaceAttributes::none);
    EXPECT_TRUE(std::all_of(shares.begin(), shares.end(), [](float s) { return s == 1.0f; }));
    const auto other = WeightsOfGroup(geometry, 1, 0);
    EXPECT_TRUE(std::all_of(other.begin(), other.end(), [](float s) { return s == 0.0f; }));
}

TEST(FreezeParts, BallFadesTowardsItsRimInWorldSpace) {
    FreezeGrid grid(4);
    grid.geometry.Transform().Set({2.0f, 2.0f, 2.0f}, Vector(), Vector());
    const auto shares = WeightsInSphere(grid.geometry, {0.0f, 0.0f, 0.0f}, 4.0f, 0.5f);
    EXPECT_EQ(shares[grid.At(0, 0)], 1.0f);
    EXPECT_EQ(shares[grid.At(1, 0)], 1.0f) << "halfway to the rim";
    EXPECT_EQ(shares[grid.At(2, 0)], 0.0f) << "on the rim";
    EXPECT_EQ(shares[grid.At(3, 0)], 0.0f);
    const auto hard = WeightsInSphere(grid.geometry, {0.0f, 0.0f, 0.0f}, 4.0f, 0.0f);
    EXPECT_EQ(hard[grid.At(2, 0)], 1.0f);
    EXPECT_EQ(hard[grid.At(2, 1)], 0.0f);
    const auto box = WeightsInBox(grid.geometry, {2.0f, 0.0f, -1.0f}, {4.0f, 2.0f, 1.0f});
    EXPECT_EQ(box[grid.At(1, 0)], 1.0f);
    EXPECT_EQ(box[grid.At(2, 1)], 1.0f);
    EXPECT_EQ(box[grid.At(2, 2)], 0.0f);
    EXPECT_EQ(box[grid.At(0, 0)], 0.0f);
}

}  // namespace
}  // namespace trovik::test
