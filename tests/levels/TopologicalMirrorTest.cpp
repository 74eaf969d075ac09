// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/TopologicalMirror.h"
#include "framework/multires/LevelGeometry.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <map>
#include <set>

namespace trovik::test {
namespace {

/// The mesh with the centre of its box at the origin.
PolygonMesh Centred(PolygonMesh mesh) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        float low = mesh.positions[0][axis];
        float high = low;
        for (const auto& p : mesh.positions) {
            low = std::min(low, p[axis]);
            high = std::max(high, p[axis]);
        }
        for (auto& p : mesh.positions) p[axis] -= (low + high) * 0.5f;
    }
    return mesh;
}

/// Moves everything to the right of the centre up and forward, like a raised arm.
PolygonMesh Posed(PolygonMesh mesh) {
    for (auto& p : mesh.positions) {
        if (p[0] <= 0.01f) continue;
        const float x = p[0];
        p[0] = 0.7f * x;
        p[1] += 0.25f * x * x;
        p[2] += 0.4f * x;
    }
    return mesh;
}

PolygonMesh WithoutFace(const PolygonMesh& mesh, std::size_t dropped) {
    PolygonMesh rest = mesh;
    const auto at = static_cast<std::ptrdiff_t>(dropped * mesh.faceSizes[0]);
    rest.faceSizes.erase(rest.faceSizes.begin() + static_cast<std::ptrdiff_t>(dropped));
    rest.faceVertices.erase(rest.faceVertices.begin() + at,
                            rest.faceVertices.begin() + at + mesh.faceSizes[0]);
    return rest;
}

PolygonMesh Together(PolygonMesh a, const PolygonMesh& b, std::array<float, 3> offset) {
    const auto first = static_cast<std::uint32_t>(a.positions.size());
    for (const auto& p : b.positions)
        a.positions.push_back({p[0] + offset[0], p[1] + offset[1], p[2] + offset[2]});
    for (const std::uint32_t v : b.faceVertices) a.faceVertices.push_back(v + first);
    a.faceSizes.insert(a.faceSizes.end(), b.faceSizes.begin(), b.faceSizes.end());
    return a;
}

/// The results of MirrorVertex for all corners of the bound level; -1 and zeros if there is no
/// image.
std::vector<std::array<int64_t, 3>> AllMirrorVertices(LevelMesh& mesh) {
    std::vector<std::array<int64_t, 3>> answers;
    for (uint32_t face = 0; face < mesh.faceCount; ++face) {
        for (uint32_t k = 0; k < mesh.CornersPerFace(); ++k) {
            uint32_t outFace = 0;
            uint32_t outCorner = 0;
            const int32_t vertex = mesh.MirrorVertex(face, k, &outFace, &outCorner);
            answers.push_back({vertex, outFace, outCorner});
        }
    }
    return answers;
}

/// For each vertex, its mirror image by position: the vertex nearest to its reflection.
std::vector<uint32_t> SpatialMirror(const LevelMesh& mesh, float tolerance) {
    const auto key = [tolerance](const Vector& p) {
        return std::array<long, 3>{std::lround(p.x / tolerance),
                                   std::lround(p.y / tolerance),
                                   std::lround(p.z / tolerance)};
    };
    std::map<std::array<long, 3>, std::vector<uint32_t>> cells;
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) cells[key(mesh.Position(v))].push_back(v);
    std::vector<uint32_t> across(mesh.VertexCount(), openBorder);
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        const Vector p = mesh.Position(v);
        const Vector reflected(-p.x, p.y, p.z);
        const auto middle = key(reflected);
        float nearest = tolerance;
        for (long dx = -1; dx <= 1; ++dx)
            for (long dy = -1; dy <= 1; ++dy)
                for (long dz = -1; dz <= 1; ++dz) {
                    const auto cell = cells.find({middle[0] + dx, middle[1] + dy, middle[2] + dz});
                    if (cell == cells.end()) continue;
                    for (const uint32_t other : cell->second) {
                        const float distance = (mesh.Position(other) - reflected).Length();
                        if (distance >= nearest) continue;
                        nearest = distance;
                        across[v] = other;
                    }
                }
    }
    return across;
}

/// Meshes whose positions are symmetric about x = 0.
std::vector<ZooMesh> SymmetricMeshes() {
    return {{"sphere", SphereQuads(2)},
            {"torus", Centred(Torus(12, 6))},
            {"cube", Centred(Cube())},
            {"even grid", Centred(GridMesh(6, 5))},
            {"odd grid", Centred(GridMesh(5, 4))},
            {"turned grid", Centred(RotatedCornerGrid(4))},
            {"icosahedron", Icosahedron()},
            {"two spheres",
             Together(Together(SphereQuads(1), SphereQuads(1), {-3.0f, 1.0f, 0.0f}),
                      SphereQuads(1),
                      {3.0f, 1.0f, 0.0f})}};
}

TEST(TopologicalMirror, IsTheReflectionOnMeshesThatAreSymmetricInSpace) {
    for (const ZooMesh& entry : SymmetricMeshes()) {
        SCOPED_TRACE(entry.name);
        LevelGeometry geometry(entry.mesh);
        ASSERT_TRUE(geometry.FindMirror());
        EXPECT_TRUE(geometry.Mirror()->IsWhole());
        for (int level = 0; level <= 2; ++level) {
            if (level != 0) geometry.Subdivide();
            LevelMesh& mesh = *geometry.Bound();
            const std::vector<uint32_t> across = SpatialMirror(mesh, 1e-4f);
            for (uint32_t face = 0; face < mesh.faceCount; ++face) {
                for (uint32_t k = 0; k < mesh.CornersPerFace(); ++k) {
                    uint32_t outFace = openBorder;
                    uint32_t outCorner = openBorder;
                    const uint32_t v = mesh.faceVertexIndices[face * mesh.CornersPerFace() + k];
                    ASSERT_EQ(across[v], mesh.MirrorVertex(face, k, &outFace, &outCorner))
                        << "level " << level << ", face " << face << ", corner " << k;
                    ASSERT_EQ(across[v],
                              mesh.faceVertexIndices[outFace * mesh.CornersPerFace() + outCorner]);
                }
            }
        }
    }
}

TEST(TopologicalMirror, MapsCornersInReversedOrderAndBack) {
    for (const ZooMesh& entry : SymmetricMeshes()) {
        SCOPED_TRACE(entry.name);
        LevelGeometry geometry(entry.mesh);
        ASSERT_TRUE(geometry.FindMirror());
        for (uint32_t level = 0; level <= 3; ++level) {
            if (level != 0) geometry.Subdivide();
            LevelMesh& mesh = *geometry.Bound();
            const uint32_t corners = mesh.CornersPerFace();
            for (uint32_t face = 0; face < mesh.faceCount; ++face) {
                const auto first = geometry.Mirror()->Across(level, face, 0);
                ASSERT_TRUE(first);
                for (uint32_t k = 0; k < corners; ++k) {
                    const auto across = geometry.Mirror()->Across(level, face, k);
                    ASSERT_EQ(first->face, across->face);
                    ASSERT_EQ((first->corner + corners - k) % corners, across->corner);
                    const auto back =
                        geometry.Mirror()->Across(level, across->face, across->corner);
                    ASSERT_EQ(face, back->face);
                    ASSERT_EQ(k, back->corner);
                }
            }
        }
    }
}

TEST(TopologicalMirror, PairsTheSameVerticesInAPose) {
    for (const ZooMesh& entry : SymmetricMeshes()) {
        SCOPED_TRACE(entry.name);
        // A torus has a mirror plane through each spoke, and the plane that fits the posed torus
        // best may be a different one.
        if (entry.name == "torus") continue;
        LevelGeometry atRest(entry.mesh);
        LevelGeometry posed(Posed(entry.mesh));
        ASSERT_TRUE(atRest.FindMirror());
        ASSERT_TRUE(posed.FindMirror());
        atRest.Subdivide();
        posed.Subdivide();
        EXPECT_EQ(AllMirrorVertices(*atRest.Bound()), AllMirrorVertices(*posed.Bound()));
    }
}

TEST(TopologicalMirror, PairsABodyWithItsRightHalfMoved) {
    PolygonMesh human = ExampleMesh("human.obj");
    LevelGeometry atRest(human);
    ASSERT_TRUE(atRest.FindMirror());
    EXPECT_TRUE(atRest.Mirror()->IsWhole());
    const auto expected = AllMirrorVertices(*atRest.Bound());
    // The left and right halves of the body are mirror images to within three digits.
    const std::vector<uint32_t> across = SpatialMirror(*atRest.Bound(), 0.02f);
    std::size_t different = 0;
    for (std::size_t slot = 0; slot < expected.size(); ++slot)
        if (expected[slot][0] !=
            across[atRest.Bound()->faceVertexIndices[static_cast<uint32_t>(slot)]])
            ++different;
    EXPECT_EQ(0u, different);

    for (auto& p : human.positions)
        if (p[0] > 0.0f) p = {p[0], p[1] + 0.5f * p[0], p[2] - 0.25f * p[0] * p[0]};
    LevelGeometry posed(human);
    ASSERT_TRUE(posed.FindMirror());
    EXPECT_EQ(expected, AllMirrorVertices(*posed.Bound()));
}

TEST(TopologicalMirror, StaysValidAfterTheWholeMeshIsMoved) {
    PolygonMesh aside = SphereQuads(2);
    LevelGeometry atRest(aside);
    for (auto& p : aside.positions) p[0] += 0.4f;
    LevelGeometry moved(aside);
    ASSERT_TRUE(atRest.FindMirror());
    ASSERT_TRUE(moved.FindMirror());
    EXPECT_EQ(AllMirrorVertices(*atRest.Bound()), AllMirrorVertices(*moved.Bound()));
}

TEST(TopologicalMirror, OfARefinedLevelEqualsANewSearchOnItsFaces) {
    for (const ZooMesh& entry : SymmetricMeshes()) {
        SCOPED_TRACE(entry.name);
        LevelGeometry geometry(entry.mesh);
        ASSERT_TRUE(geometry.FindMirror());
        geometry.Subdivide();
        geometry.Subdivide();
        LevelGeometry anew(geometry.ToPolygons(false));
        ASSERT_TRUE(anew.FindMirror());
        EXPECT_EQ(AllMirrorVertices(*geometry.Bound()), AllMirrorVertices(*anew.Bound()));
    }
}

TEST(TopologicalMirror, IsNotFoundOnAMeshWithoutSymmetry) {
    const PolygonMesh sphere = SphereQuads(2);
    for (std::size_t face = 0; face < sphere.faceSizes.size(); face += 7) {
        SCOPED_TRACE(face);
        const std::array<float, 3>& a = sphere.positions[sphere.faceVertices[face * 4]];
        const std::array<float, 3>& b = sphere.positions[sphere.faceVertices[face * 4 + 2]];
        // The hole is away from the middle, but the mesh may still be symmetric from front to back.
        if (std::fabs(a[0] + b[0]) < 0.2f) continue;
        LevelGeometry geometry(WithoutFace(sphere, face));
        EXPECT_FALSE(geometry.FindMirror());
        EXPECT_EQ(nullptr, geometry.Mirror());
        for (const auto& answer : AllMirrorVertices(*geometry.Bound())) ASSERT_EQ(-1, answer[0]);
    }
}

TEST(TopologicalMirror, ExcludesOnlyThePartWithoutAnImage) {
    // The left part has a hole, so the right part has no mirror image.
    const PolygonMesh sphere = SphereQuads(1);
    std::size_t lopsided = 0;
    while (sphere.positions[sphere.faceVertices[lopsided * 4]][0] +
               sphere.positions[sphere.faceVertices[lopsided * 4 + 2]][0] <
           0.5f)
        ++lopsided;
    const PolygonMesh mesh = Together(sphere, WithoutFace(sphere, lopsided), {-3.0f, 0.0f, 0.0f});
    LevelGeometry geometry(mesh);
    ASSERT_TRUE(geometry.FindMirror());
    EXPECT_FALSE(geometry.Mirror()->IsWhole());
    geometry.Subdivide();
    const auto answers = AllMirrorVertices(*geometry.Bound());
    const std::size_t firstCorners = sphere.faceSizes.size() * 16;
    for (std::size_t slot = 0; slot < answers.size(); ++slot)
        ASSERT_EQ(slot >= firstCorners, answers[slot][0] == -1) << slot;
}

TEST(TopologicalMirror, IsUnknownBeforeTheSearchAndAfterItIsDropped) {
    LevelGeometry geometry(SphereQuads(1));
    uint32_t face = 77;
    uint32_t corner = 78;
    EXPECT_EQ(-1, geometry.Bound()->MirrorVertex(0, 0, &face, &corner));
    EXPECT_EQ(77u, face);
    EXPECT_EQ(78u, corner);
    ASSERT_TRUE(geometry.FindMirror());
    EXPECT_NE(-1, geometry.Bound()->MirrorVertex(0, 0, &face, &corner));
    geometry.ClearMirror();
    EXPECT_EQ(-1, geometry.Bound()->MirrorVertex(0, 0, &face, &corner));
}

}  // namespace
}  // namespace trovik::test
