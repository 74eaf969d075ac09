// SPDX-License-Identifier: Apache-2.0
#include "framework/display/PatchLayout.h"
#include "tests/display/PackedLevel.h"
#include "tests/fixture/Triangles.h"

#include <gtest/gtest.h>

#include <set>

namespace trovik::test {
namespace {

TEST(PatchLayout, PatchesAre33By33WhereTheLevelIsDeepEnough) {
    LevelGeometry quads(SingleQuad());
    const uint32_t patchLevels[] = {0, 0, 0, 0, 0, 0, 1, 2};
    for (uint32_t level = 0; level < 8; ++level) {
        SCOPED_TRACE(level);
        if (level > 0) quads.Subdivide();
        const PatchLayout layout(*quads.Bound());
        EXPECT_EQ(layout.Level(), level);
        EXPECT_EQ(layout.IsGrid(), level >= 2);
        if (level < 2) {
            EXPECT_EQ(layout.PatchCount(), 1u);
            continue;
        }
        EXPECT_EQ(layout.PatchLevel(), patchLevels[level]);
        EXPECT_EQ(layout.PatchCount(), quads.Level(patchLevels[level])->faceCount);
        const uint32_t side = (1u << (level - patchLevels[level])) + 1;
        EXPECT_EQ(layout.VertexCount(0), side * side);
        EXPECT_LE(side, 33u);
    }
}

TEST(PatchLayout, OfTrianglesHasNoPatchAboveLevelOne) {
    LevelGeometry triangles(Icosahedron());
    for (uint32_t level = 0; level < 5; ++level) {
        if (level > 0) triangles.Subdivide();
        const PatchLayout layout(*triangles.Bound());
        EXPECT_EQ(layout.IsGrid(), level >= 3) << level;
        if (layout.IsGrid()) {
            EXPECT_EQ(layout.PatchLevel(), 1u);
            EXPECT_EQ(layout.PatchCount(), 60u);
        }
    }
}

TEST(PatchLayout, PatchesAreContiguous) {
    ForEachLevel(4, [](LevelMesh& level, const std::string& name) {
        SCOPED_TRACE(name);
        const PatchLayout layout(level);
        uint64_t vertices = 0;
        std::vector<uint32_t> all;
        for (uint32_t patch = 0; patch < layout.PatchCount(); ++patch) {
            ASSERT_EQ(layout.FirstVertex(patch), vertices);
            vertices += layout.VertexCount(patch);
            all.push_back(patch);
        }
        ASSERT_EQ(layout.TotalVertexCount(), vertices);
        ASSERT_EQ(layout.VertexCount(all), vertices);
    });
}

/// Expects the patches to contain each triangle of the level exactly once, together with its
/// vertices.
void ExpectEachTriangleOnce(const LevelMesh& level, const PatchLayout& layout) {
    std::multimap<Triangle, uint32_t> expected = TrianglesOf(level);
    for (uint32_t patch = 0; patch < layout.PatchCount(); ++patch) {
        const std::vector<uint32_t> vertices = MeshVerticesOf(level, layout, patch);
        ASSERT_EQ(vertices.size(), layout.VertexCount(patch));
        const auto indices = layout.Triangles(patch);
        ASSERT_EQ(indices.size() % 3, 0u);
        for (std::size_t i = 0; i < indices.size(); i += 3) {
            for (std::size_t k = i; k < i + 3; ++k) ASSERT_LT(indices[k], vertices.size());
            const auto found = expected.find(Canonical(
                {vertices[indices[i]], vertices[indices[i + 1]], vertices[indices[i + 2]]}));
            ASSERT_TRUE(found != expected.end()) << "patch " << patch << ", index " << i;
            expected.erase(found);
        }
    }
    ASSERT_TRUE(expected.empty()) << expected.size() << " triangles are missing";
}

TEST(PatchLayout, HasEachPickingTriangleExactlyOnce) {
    ForEachLevel(4, [](LevelMesh& level, const std::string& name) {
        SCOPED_TRACE(name);
        ExpectEachTriangleOnce(level, PatchLayout(level));
    });
    LevelGeometry deep(Pillow());
    for (int i = 0; i < 6; ++i) deep.Subdivide();
    ExpectEachTriangleOnce(*deep.Bound(), PatchLayout(*deep.Bound()));
}

TEST(PatchLayout, BucketsAreCompactAndOfAbout4096Faces) {
    for (const bool triangles : {false, true}) {
        SCOPED_TRACE(triangles);
        const unsigned n = triangles ? 120 : 150;
        LevelGeometry geometry(triangles ? FlatTriangles(n) : GridMesh(n, n));
        const LevelMesh& level = *geometry.Bound();
        const PatchLayout layout(level);
        ASSERT_FALSE(layout.IsGrid());
        ExpectEachTriangleOnce(level, layout);
        const uint32_t faces = level.faceCount;
        EXPECT_GE(layout.PatchCount(), faces / FaceBuckets::maxFaces);
        EXPECT_LE(layout.PatchCount(), 2 * faces / FaceBuckets::maxFaces + 1);
        const std::size_t perFace = level.CornersPerFace() == 4 ? 6 : 3;
        double area = 0.0;
        for (uint32_t patch = 0; patch < layout.PatchCount(); ++patch) {
            const std::size_t inPatch = layout.Triangles(patch).size() / perFace;
            EXPECT_LE(inPatch, FaceBuckets::maxFaces);
            EXPECT_GE(inPatch, FaceBuckets::maxFaces / 2);
            EXPECT_LE(layout.VertexCount(patch), 65536u);
            AxisAlignedBoundingBox box;
            for (const uint32_t v : layout.Buckets()->Vertices(patch))
                box.Extend(level.Position(v));
            area += static_cast<double>((box.maxX - box.minX) * (box.maxY - box.minY));
        }
        EXPECT_LT(area, 1.1 * n * n) << "the buckets overlap";
        // Quad meshes need extra vertices only at patch borders; triangle meshes need one for each
        // face.
        const auto total = static_cast<double>(layout.TotalVertexCount());
        EXPECT_LT(total, (triangles ? 1.1 : 1.06) * faces);
    }
}

TEST(PatchLayout, NoVertexHasTheFlagsOfTwoFaces) {
    ForEachLevel(1, [](LevelMesh& level, const std::string& name) {
        SCOPED_TRACE(name);
        const PatchLayout layout(level);
        if (layout.IsGrid()) return;
        std::set<uint32_t> seen;
        for (uint32_t patch = 0; patch < layout.PatchCount(); ++patch)
            for (const uint32_t face : layout.Buckets()->FlagFaces(patch))
                if (face != FaceBuckets::noFace) {
                    EXPECT_TRUE(seen.insert(face).second);
                }
        EXPECT_EQ(seen.size(), level.faceCount);
    });
}

TEST(PatchLayout, BucketsStayCompactWithNonFinitePositions) {
    LevelGeometry geometry(GridMesh(8, 4000));
    LevelMesh& level = *geometry.Bound();
    level.SetPosition(17, {INFINITY, NAN, 0});
    const PatchLayout layout(level);
    ExpectEachTriangleOnce(level, layout);
    // The cuts must not always choose the axis with the infinite extent.
    EXPECT_LT(layout.TotalVertexCount(), 1.01 * level.VertexCount());
}

TEST(PatchLayout, VisitsThePatchesWithDescendantsOfAFace) {
    ForEachLevel(4, [](LevelMesh& level, const std::string& name) {
        SCOPED_TRACE(name);
        const PatchLayout layout(level);
        // Parents are identified by vertices: child k of a face contains its corner k.
        std::vector<uint32_t> ancestor(level.faceCount);
        for (uint32_t face = 0; face < level.faceCount; ++face) ancestor[face] = face;
        const auto patchOf = [&](uint32_t face) {
            return layout.IsGrid() ? face >> (2 * layout.Depth())
                                   : layout.Buckets()->BucketOf(face);
        };
        for (uint32_t above = layout.Level() + 1; above-- > 0;) {
            std::map<uint32_t, std::set<uint32_t>> expected;
            for (uint32_t face = 0; face < level.faceCount; ++face)
                expected[ancestor[face]].insert(patchOf(face));
            ASSERT_EQ(expected.size(), level.Hierarchy().Level(above)->faceCount);
            for (const auto& [face, patches] : expected) {
                std::set<uint32_t> visited;
                layout.VisitPatchesUnder(
                    above, face, [&](uint32_t patch) { visited.insert(patch); });
                ASSERT_EQ(visited, patches) << "face " << face << " of level " << above;
            }
            if (above == 0) break;
            const uint32_t children = above == 1 ? level.Hierarchy().Level(0)->CornersPerFace() : 4;
            for (uint32_t& face : ancestor) face /= children;
        }
    });
}

}  // namespace
}  // namespace trovik::test
