// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/LevelGeometry.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <map>

namespace trovik::test {
namespace {

/// The neighbours across all sides, found by matching vertex pairs.
std::vector<uint32_t> NeighboursByMatching(const LevelMesh& mesh) {
    const uint32_t corners = mesh.CornersPerFace();
    std::map<std::pair<uint32_t, uint32_t>, uint32_t> sideOf;
    for (uint32_t face = 0; face < mesh.faceCount; ++face)
        for (uint32_t k = 0; k < corners; ++k)
            sideOf[{mesh.faceVertexIndices[face * corners + k],
                    mesh.faceVertexIndices[face * corners + (k + 1) % corners]}] = face * 4 + k;
    std::vector<uint32_t> neighbours;
    for (uint32_t face = 0; face < mesh.faceCount; ++face) {
        for (uint32_t k = 0; k < corners; ++k) {
            const auto across =
                sideOf.find({mesh.faceVertexIndices[face * corners + (k + 1) % corners],
                             mesh.faceVertexIndices[face * corners + k]});
            neighbours.push_back(across == sideOf.end() ? openBorder : across->second);
        }
    }
    return neighbours;
}

TEST(Topology, ImplicitNeighboursHaveTheCommonEdge) {
    for (const ZooMesh& entry : AllMeshes()) {
        LevelGeometry geometry(entry.mesh);
        for (int level = 0; level <= 3; ++level) {
            SCOPED_TRACE(entry.name + ", level " + std::to_string(level));
            if (level != 0) geometry.Subdivide();
            LevelMesh& mesh = *geometry.Bound();
            const std::vector<uint32_t> expected = NeighboursByMatching(mesh);
            std::size_t slot = 0;
            for (uint32_t face = 0; face < mesh.faceCount; ++face)
                for (uint32_t k = 0; k < mesh.CornersPerFace(); ++k, ++slot)
                    ASSERT_EQ(mesh.QuadEdgeNeighbour(face, k), expected[slot])
                        << "face " << face << " side " << k;
        }
    }
}

TEST(Topology, ChildrenAreAtTheCornersOfTheirParent) {
    for (const ZooMesh& entry : AllMeshes()) {
        SCOPED_TRACE(entry.name);
        LevelGeometry geometry(entry.mesh);
        for (int level = 0; level < 2; ++level) geometry.Subdivide();
        for (uint32_t level = 0; level < 2; ++level) {
            const LevelMesh& coarse = *geometry.Level(level);
            const LevelMesh& fine = *geometry.Level(level + 1);
            const uint32_t n = coarse.CornersPerFace();
            for (uint32_t face = 0; face < coarse.faceCount; ++face)
                for (uint32_t k = 0; k < n; ++k)
                    EXPECT_EQ(fine.faceVertexIndices[(face * n + k) * 4 + (n == 4 ? k : 0)],
                              coarse.faceVertexIndices[face * n + k]);
        }
    }
}

TEST(Topology, LowestFaceOfAVertexIsFoundWithoutATable) {
    for (const ZooMesh& entry : AllMeshes()) {
        SCOPED_TRACE(entry.name);
        LevelGeometry geometry(entry.mesh);
        for (int level = 0; level < 3; ++level) geometry.Subdivide();
        for (uint32_t level = 0; level <= 3; ++level) {
            LevelMesh& mesh = *geometry.Level(level);
            std::vector<uint32_t> lowest(mesh.VertexCount(), openBorder);
            const uint32_t n = mesh.CornersPerFace();
            for (uint32_t slot = mesh.faceCount * n; slot-- > 0;)
                lowest[mesh.faceVertexIndices[slot]] = slot / n;
            for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
                ASSERT_EQ(mesh.LowestFaceOf(v), lowest[v]) << "vertex " << v;
        }
    }
}

TEST(Topology, FreezeCountFollowsTheAmounts) {
    LevelGeometry geometry(GridMesh(3, 3));
    LevelMesh& mesh = *geometry.Bound();
    EXPECT_EQ(mesh.FreezeQuery(), 0);
    mesh.SetFreeze(2, 200);
    mesh.SetFreeze(5, 1);
    mesh.SetFreeze(5, 2);
    EXPECT_EQ(mesh.Freeze(2), 127);
    EXPECT_EQ(mesh.FrozenVertexCount(), 2u);
    EXPECT_NE(mesh.FreezeQuery(), 0);
    mesh.SetFreeze(2, 0);
    mesh.SetFreeze(5, 0);
    EXPECT_EQ(mesh.FreezeQuery(), 0);
}

TEST(Levels, GoingDownAndUpChangesNoBit) {
    for (const ZooMesh& entry : AllMeshes()) {
        SCOPED_TRACE(entry.name);
        LevelGeometry geometry(entry.mesh);
        for (int level = 0; level < 3; ++level) geometry.Subdivide();
        const PolygonMesh before = geometry.ToPolygons(false);
        for (const uint32_t level : {0u, 2u, 1u, 3u})
            EXPECT_TRUE(geometry.BindLevel(level).empty());
        const PolygonMesh after = geometry.ToPolygons(false);
        EXPECT_EQ(after.positions, before.positions);
        EXPECT_EQ(after.normals, before.normals);
    }
}

TEST(Levels, CoarseChangeIsCarriedUpWhereItReaches) {
    LevelGeometry geometry(GridMesh(8, 8));
    geometry.Subdivide();
    geometry.Subdivide();
    const PolygonMesh before = geometry.ToPolygons(false);
    geometry.BindLevel(0);
    LevelMesh& base = *geometry.Level(0);
    base.SetPosition(0, {0.0f, 0.0f, 1.0f});
    geometry.BindLevel(2);
    const PolygonMesh after = geometry.ToPolygons(false);
    // Refinement keeps the corner vertex, so it gets the whole change.
    EXPECT_EQ(after.positions[0], (std::array<float, 3>{0.0f, 0.0f, 1.0f}));
    // The far corner of the grid is not affected.
    EXPECT_EQ(after.positions[80], before.positions[80]);
    EXPECT_EQ(after.normals[80], before.normals[80]);
}

}  // namespace
}  // namespace trovik::test
