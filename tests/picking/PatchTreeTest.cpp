// SPDX-License-Identifier: Apache-2.0
#include "framework/picking/PatchTree.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/picking/BruteForce.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

void CompareWithBruteForce(LevelMesh& mesh, int rays, uint32_t seed) {
    const PatchTree tree(&mesh);
    const BruteForce reference(mesh);
    RandomPoints points(tree.Bounds(), seed);
    int hits = 0;
    for (int i = 0; i < rays; ++i) {
        const Ray ray = points.NextRay();
        const double expected = reference.Pick(ray);
        const auto hit = tree.Pick(ray);
        ASSERT_EQ(hit.has_value(), expected != BruteForce::none) << "seed " << seed << " ray " << i;
        if (hit) {
            ++hits;
            const double t = double{hit->t};
            ASSERT_NEAR(t, expected, 1e-6 * (1.0 + expected)) << "seed " << seed << " ray " << i;
            const Vector along = ray.origin + ray.direction * hit->t;
            ASSERT_LT((hit->position - along).Length(), 1e-4f * (1.0f + along.Length()));
            ASSERT_NEAR(hit->normal.Length(), 1.0f, 1e-5f);
        }
        const Vector p = points.Next();
        const auto nearest = tree.Nearest(p);
        ASSERT_TRUE(nearest);
        const double distance = reference.Nearest(p);
        ASSERT_NEAR(double{nearest->t}, distance, 1e-6 * (1.0 + distance)) << i;
        ASSERT_NEAR(double{(nearest->position - p).Length()}, distance, 1e-5 * (1.0 + distance));
    }
    EXPECT_GT(hits, rays / 20) << "enough rays hit";
}

TEST(PatchTree, AgreesWithBruteForceOnTheZoo) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry geometry(zoo.mesh);
        for (uint32_t level = 0; level < 3; ++level) {
            if (level > 0) geometry.Subdivide();
            CompareWithBruteForce(*geometry.Bound(), 150, 100 + level);
        }
    }
}

TEST(PatchTree, AgreesWithBruteForceOnSphereAndTorus) {
    for (const PolygonMesh& polygons : {SphereQuads(2), Torus(12, 8)}) {
        LevelGeometry geometry(polygons);
        for (uint32_t level = 0; level < 4; ++level) {
            if (level > 0) geometry.Subdivide();
            CompareWithBruteForce(*geometry.Bound(), level < 2 ? 1500 : 150, 7 + level);
        }
    }
}

TEST(PatchTree, AgreesWithBruteForceOnAHumanBody) {
    LevelGeometry geometry(ExampleMesh("human.obj"));
    for (uint32_t level = 0; level < 3; ++level) {
        if (level > 0) geometry.Subdivide();
        CompareWithBruteForce(*geometry.Bound(), level == 0 ? 100 : 40, 3 + level);
    }
}

TEST(PatchTree, NoRayPassesThroughVerticesOrEdges) {
    for (const PolygonMesh& polygons : {SphereQuads(2), Cube(), Icosahedron()}) {
        LevelGeometry geometry(polygons);
        geometry.Subdivide();
        LevelMesh& mesh = *geometry.Bound();
        const PatchTree tree(&mesh);
        // From inside a closed surface around the origin, every ray must hit.
        const uint32_t corners = mesh.CornersPerFace();
        std::mt19937 random(9);
        std::uniform_real_distribution<float> share(0.0f, 1.0f);
        std::uniform_real_distribution<float> shift(-0.2f, 0.2f);
        Vector centre;
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
            centre += mesh.Position(v) * (1.0f / static_cast<float>(mesh.VertexCount()));
        for (uint32_t face = 0; face < mesh.faceCount; ++face) {
            const uint32_t* v = mesh.faceVertexIndices.array + face * corners;
            for (uint32_t k = 0; k < corners; ++k) {
                const Vector a = mesh.Position(v[k]);
                const Vector b = mesh.Position(v[(k + 1) % corners]);
                const Vector diagonal = mesh.Position(v[(k + 2) % corners]);
                const float s = share(random);
                for (const Vector& origin :
                     {centre, centre + Vector(shift(random), shift(random), shift(random))}) {
                    for (const Vector& target :
                         {a, a * 0.5f + b * 0.5f, a * (1 - s) + b * s, a * 0.5f + diagonal * 0.5f})
                        ASSERT_TRUE(tree.Pick({origin, target - origin})) << face << ' ' << k;
                }
            }
        }
    }
}

TEST(PatchTree, OfTwoFacesAtEqualDistanceTheLowerIsHit) {
    LevelGeometry geometry(GridMesh(4, 4));
    const PatchTree tree(geometry.Bound());
    // Vertex (2, 2): faces 5, 6, 9 and 10.
    const auto hit = tree.Pick({{2, 2, 5}, {0, 0, -1}});
    ASSERT_TRUE(hit);
    EXPECT_EQ(hit->face, 5u);
    EXPECT_EQ(hit->t, 5.0f);
    EXPECT_EQ(hit->position, Vector(2, 2, 0));
    EXPECT_EQ(hit->normal, Vector(0, 0, 1));
    const auto nearest = tree.Nearest({2, 2, -3});
    ASSERT_TRUE(nearest);
    EXPECT_EQ(nearest->face, 5u);
    EXPECT_EQ(nearest->t, 3.0f);
}

TEST(PatchTree, NormalIsInterpolatedAndNotFlippedToTheViewer) {
    LevelGeometry geometry(SingleQuad());
    LevelMesh& mesh = *geometry.Bound();
    const uint32_t* v = mesh.faceVertexIndices.array;
    for (uint32_t k = 0; k < 4; ++k) mesh.vertexNormals.array[v[k]] = {0, 0, 32767, 0};
    mesh.vertexNormals.array[v[1]] = {32767, 0, 0, 0};
    const PatchTree tree(&mesh);
    const Vector middle = (mesh.Position(v[0]) + mesh.Position(v[1])) * 0.5f;
    for (const float side : {1.0f, -1.0f}) {
        const auto hit = tree.Pick({middle + Vector(0, 0, side), {0, 0, -side}});
        ASSERT_TRUE(hit);
        EXPECT_NEAR(hit->normal.x, std::sqrt(0.5f), 1e-6f);
        EXPECT_NEAR(hit->normal.z, std::sqrt(0.5f), 1e-6f);
    }
    for (uint32_t k = 0; k < 4; ++k) mesh.vertexNormals.array[v[k]] = {0, 0, 0, 0};
    const auto hit = tree.Pick({middle + Vector(0, 0, 1), {0, 0, -1}});
    ASSERT_TRUE(hit);
    EXPECT_EQ(std::fabs(hit->normal.z), 1.0f) << "the normal of the triangle";
}

TEST(PatchTree, MaxTIsInclusive) {
    LevelGeometry geometry(GridMesh(2, 2));
    const PatchTree tree(geometry.Bound());
    EXPECT_TRUE(tree.Pick({{0.3f, 0.4f, 4}, {0, 0, -2}, 2.0f}));
    EXPECT_FALSE(tree.Pick({{0.3f, 0.4f, 4}, {0, 0, -2}, 1.999f}));
    EXPECT_FALSE(tree.Pick({{0.3f, 0.4f, 4}, {0, 0, 2}}));
    EXPECT_TRUE(tree.Pick({{0.3f, 0.4f, 0}, {0, 0, 2}, 0.0f}));
    EXPECT_FALSE(tree.Pick({{0.3f, 0.4f, 0}, {0, 0, 2}, -1.0f}));
    EXPECT_FALSE(tree.Pick({{0.3f, 0.4f, 0}, {0, 0, 2}, notANumber}));
}

TEST(PatchTree, InvalidRaysHitNothing) {
    LevelGeometry geometry(Cube());
    const PatchTree tree(geometry.Bound());
    EXPECT_FALSE(tree.Pick({{0, 0, 0}, {0, 0, 0}}));
    for (const float bad : {notANumber, infinity, -infinity}) {
        EXPECT_FALSE(tree.Pick({{bad, 0, 0}, {0, 0, 1}}));
        EXPECT_FALSE(tree.Pick({{0, 0, 0}, {0, bad, 1}}));
        EXPECT_FALSE(tree.Nearest({0, 0, bad}));
    }
    EXPECT_TRUE(tree.Pick({{0.1f, 0.2f, 0}, {0, 0, 1e-38f}})) << "tiny, but still a direction";
}

TEST(PatchTree, FacesWithNonFinitePositionsAreIgnored) {
    for (const float bad : {notANumber, infinity, -infinity}) {
        LevelGeometry geometry(GridMesh(8, 8));
        LevelMesh& mesh = *geometry.Bound();
        mesh.SetPosition(0, {bad, 0, bad});
        const PatchTree tree(&mesh);
        EXPECT_FALSE(tree.Pick({{0.5f, 0.5f, 1}, {0, 0, -1}}));
        const auto hit = tree.Pick({{1.5f, 0.5f, 1}, {0, 0, -1}});
        ASSERT_TRUE(hit);
        EXPECT_EQ(hit->face, 1u);
        const auto nearest = tree.Nearest({0.2f, 0.1f, 0});
        ASSERT_TRUE(nearest);
        EXPECT_NE(nearest->face, 0u);
    }
}

TEST(PatchTree, BoundsEncloseTheMesh) {
    LevelGeometry geometry(GridMesh(5, 3));
    const AxisAlignedBoundingBox bounds = PatchTree(geometry.Bound()).Bounds();
    EXPECT_EQ(bounds.minX, 0.0f);
    EXPECT_EQ(bounds.maxX, 5.0f);
    EXPECT_EQ(bounds.maxY, 3.0f);
    EXPECT_EQ(bounds.minZ, 0.0f);
    EXPECT_EQ(bounds.maxZ, 0.0f);
}

}  // namespace
}  // namespace trovik::test
