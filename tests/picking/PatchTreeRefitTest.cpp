// SPDX-License-Identifier: Apache-2.0
#include "framework/picking/PatchTree.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/picking/BruteForce.h"

#include <gtest/gtest.h>

#include <set>

namespace trovik::test {
namespace {

/// Moves all vertices of a patch (a face of `patchLevel` and its descendants), and returns the
/// patches that contain any of them.
std::vector<FaceVisit> MovePatch(LevelMesh& mesh,
                                 uint32_t patchLevel,
                                 uint32_t patch,
                                 const Vector& step) {
    const LevelMesh& coarse = *mesh.Hierarchy().Level(patchLevel);
    const uint32_t facesPerPatch = mesh.faceCount / coarse.faceCount;
    const uint32_t perPatch = facesPerPatch * mesh.CornersPerFace();
    const uint32_t* slice = mesh.faceVertexIndices.array + std::size_t{patch} * perPatch;
    const std::set<uint32_t> moved(slice, slice + perPatch);
    for (const uint32_t v : moved) mesh.SetPosition(v, mesh.Position(v) + step);
    std::set<uint32_t> patches;
    for (uint32_t slot = 0; slot < mesh.faceCount * mesh.CornersPerFace(); ++slot)
        if (moved.count(mesh.faceVertexIndices.array[slot]) != 0) patches.insert(slot / perPatch);
    std::vector<FaceVisit> visits;
    visits.reserve(patches.size());
    for (const uint32_t touched : patches) visits.push_back({touched, touched == patch});
    return visits;
}

void ExpectTrue(const PatchTree& tree, LevelMesh& mesh, uint32_t seed) {
    const BruteForce reference(mesh);
    RandomPoints points(tree.Bounds(), seed);
    for (int i = 0; i < 150; ++i) {
        const Ray ray = points.NextRay();
        const double expected = reference.Pick(ray);
        const auto hit = tree.Pick(ray);
        ASSERT_EQ(hit.has_value(), expected != BruteForce::none) << "seed " << seed << " ray " << i;
        if (hit) {
            ASSERT_NEAR(double{hit->t}, expected, 1e-6 * (1 + expected)) << i;
        }
    }
}

TEST(PatchTreeRefit, QueriesStayCorrectAfterEditsAtEachPatchLevel) {
    for (const PolygonMesh& polygons : {SphereQuads(1), Torus(6, 5), Icosahedron()}) {
        LevelGeometry geometry(polygons);
        for (int i = 0; i < 4; ++i) geometry.Subdivide();
        LevelMesh& mesh = *geometry.Bound();
        PatchTree tree(&mesh);
        std::mt19937 random(12);
        std::uniform_real_distribution<float> step(-1.0f, 1.0f);
        for (uint32_t patchLevel = 0; patchLevel <= 4; ++patchLevel) {
            for (int i = 0; i < 5; ++i) {
                const uint32_t patch =
                    static_cast<uint32_t>(random()) % geometry.Level(patchLevel)->faceCount;
                tree.Refit(
                    patchLevel,
                    MovePatch(mesh, patchLevel, patch, {step(random), step(random), step(random)}));
            }
            ExpectTrue(tree, mesh, 30 + patchLevel);
            // Queries would also be correct with boxes that are too large, so the bounds are
            // checked.
            const AxisAlignedBoundingBox bounds = tree.Bounds();
            const AxisAlignedBoundingBox fresh = PatchTree(&mesh).Bounds();
            EXPECT_EQ(bounds.minX, fresh.minX);
            EXPECT_EQ(bounds.maxY, fresh.maxY);
            EXPECT_EQ(bounds.maxZ, fresh.maxZ);
        }
    }
}

TEST(PatchTreeRefit, VisitsLeavesBelowAndEachParentOnce) {
    // One base face: the tree above it is a single node.
    LevelGeometry geometry(SingleQuad());
    for (int i = 0; i < 5; ++i) geometry.Subdivide();
    PatchTree tree(geometry.Bound());
    // The leaves are the 64 faces of level 3.
    EXPECT_EQ(tree.BoxesRefitted(), 64u + 16u + 4u + 1u + 1u);
    const auto cost = [&](uint32_t patchLevel, const std::vector<FaceVisit>& visited) {
        const uint64_t before = tree.BoxesRefitted();
        tree.Refit(patchLevel, visited);
        return tree.BoxesRefitted() - before;
    };
    EXPECT_EQ(cost(3, {}), 0u);
    EXPECT_EQ(cost(3, {{7, true}}), 5u) << "leaf, two parents, base face, top";
    EXPECT_EQ(cost(3, {{7, true}, {7, false}, {6, false}}), 6u);
    EXPECT_EQ(cost(2, {{1, true}}), 4u + 4u) << "four leaves";
    EXPECT_EQ(cost(5, {{16 * 9, true}, {16 * 9 + 15, true}}), 5u) << "the leaf above";
    EXPECT_EQ(cost(0, {{0, false}}), 86u) << "all patches, even if the visitor returned false";
}

TEST(PatchTreeRefit, CostDoesNotGrowWithTheMesh) {
    std::vector<uint64_t> costs;
    for (const unsigned n : {16u, 128u}) {
        LevelGeometry geometry(GridMesh(n, n));
        PatchTree tree(geometry.Bound());
        const uint64_t before = tree.BoxesRefitted();
        tree.Refit(0, {{5, true}, {6, true}, {5 + n, true}});
        costs.push_back(tree.BoxesRefitted() - before);
    }
    EXPECT_LE(costs[0], 3u + 3u * 8u);
    // With 64 times as many faces, each of the three patches has six more levels of bisection above
    // it.
    EXPECT_LE(costs[1], costs[0] + 3u * 6u);
}

TEST(PatchTreeRefit, RefitAllFindsUnreportedChanges) {
    LevelGeometry geometry(Torus(8, 6));
    geometry.Subdivide();
    LevelMesh& mesh = *geometry.Bound();
    PatchTree tree(&mesh);
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
        mesh.SetPosition(v, mesh.Position(v) * -3.0f + Vector(1, 2, 3));
    tree.RefitAll();
    ExpectTrue(tree, mesh, 60);
}

}  // namespace
}  // namespace trovik::test
