// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/picking/MeshDifference.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace trovik::test {
namespace {

void Move(PolygonMesh& mesh, float x, float y, float z) {
    for (auto& p : mesh.positions) p = {p[0] + x, p[1] + y, p[2] + z};
}

DistanceSummary Compare(const PolygonMesh& from,
                        const PolygonMesh& to,
                        double spacing,
                        double tolerance = 0.0) {
    LevelGeometry a(from);
    LevelGeometry b(to);
    const PatchTree tree(b.Bound());
    return DistanceToSurface(
        *a.Bound(), tree, VertexDistances(*a.Bound(), tree), spacing, tolerance);
}

TEST(MeshDifference, SameFacesRequireEqualCornersInTheSameOrder) {
    const PolygonMesh grid = GridMesh(3, 2);
    EXPECT_TRUE(HasSameFaces(grid, grid));
    PolygonMesh moved = grid;
    Move(moved, 1, 2, 3);
    EXPECT_TRUE(HasSameFaces(grid, moved));
    PolygonMesh turned = grid;
    std::swap(turned.faceVertices[0], turned.faceVertices[1]);
    EXPECT_FALSE(HasSameFaces(grid, turned));
    PolygonMesh more = grid;
    more.positions.push_back({0, 0, 0});
    EXPECT_FALSE(HasSameFaces(grid, more));
    EXPECT_FALSE(HasSameFaces(grid, GridMesh(2, 3)));
}

TEST(MeshDifference, VerticesWithTheSameNumber) {
    const PolygonMesh a = SingleQuad();
    PolygonMesh b = a;
    b.positions[1][2] += 3.0f;
    b.positions[2][2] += 4.0f;
    std::vector<float> distances;
    const DistanceSummary result = CompareVertices(a, b, 3.5, &distances);
    EXPECT_EQ(result.samples, 4u);
    EXPECT_EQ(result.beyond, 1u);
    EXPECT_EQ(result.max, 4.0);
    EXPECT_EQ(result.mean, 7.0 / 4.0);
    EXPECT_EQ(result.rms, 2.5);
    EXPECT_EQ(result.position.x, a.positions[2][0]);
    EXPECT_EQ(result.other.z, b.positions[2][2]);
    EXPECT_EQ(distances, (std::vector<float>{0, 3, 4, 0}));
    EXPECT_EQ(CompareVertices(a, b, 3.0).beyond, 1u) << "a distance equal to the tolerance";
    EXPECT_EQ(CompareVertices(a, a, 0.0).max, 0.0);
}

TEST(MeshDifference, ParallelPlanesHaveTheSameDistanceEverywhere) {
    PolygonMesh above = GridMesh(5, 3);
    Move(above, 0, 0, 0.25f);
    const DistanceSummary result = Compare(GridMesh(4, 4), above, 0.1, 0.25);
    // The grids cover [0, 4] x [0, 4] and [0, 5] x [0, 3].
    EXPECT_GT(result.max, 1.0);
    EXPECT_GT(result.mean, 0.25);
    const DistanceSummary inside = Compare(GridMesh(2, 2), above, 0.1, 0.2500001);
    EXPECT_NEAR(inside.max, 0.25, 1e-6);
    EXPECT_NEAR(inside.mean, 0.25, 1e-6);
    EXPECT_NEAR(inside.rms, 0.25, 1e-6);
    EXPECT_EQ(inside.beyond, 0u);
    EXPECT_GT(inside.samples, 800u);
    EXPECT_EQ(Compare(GridMesh(2, 2), above, 0.1, 0.2).beyond, inside.samples);
}

TEST(MeshDifference, MeanIsWeightedByAreaNotByVertex) {
    // Two unit quads at z = 0 and z = 1 above the large plane; one is divided into 64 faces.
    PolygonMesh plane = SingleQuad();
    for (auto& p : plane.positions) p = {p[0] * 40 - 20, p[1] * 40 - 20, 0};
    PolygonMesh both = GridMesh(8, 8);
    for (auto& p : both.positions) p = {p[0] / 8, p[1] / 8, 0};
    const auto first = static_cast<uint32_t>(both.positions.size());
    for (const std::array<float, 3>& p :
         {std::array<float, 3>{3, 3, 1}, {4, 3, 1}, {4, 4, 1}, {3, 4, 1}})
        both.positions.push_back(p);
    both.faceSizes.push_back(4);
    for (const uint32_t corner : {0u, 1u, 2u, 3u}) both.faceVertices.push_back(first + corner);
    const DistanceSummary result = Compare(both, plane, 0.2);
    EXPECT_NEAR(result.mean, 0.5, 1e-6);
    EXPECT_NEAR(result.rms, std::sqrt(0.5), 1e-6);
    EXPECT_NEAR(result.max, 1.0, 1e-6);
    EXPECT_EQ(result.other.z, 0.0f);
}

TEST(MeshDifference, MaximumBetweenVerticesIsFoundByTheSamples) {
    // The centre of the pyramid is far from the square, whose vertices coincide with its base.
    PolygonMesh square = SingleQuad();
    square.positions = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    square.faceVertices = {0, 1, 2, 3};
    PolygonMesh pyramid;
    pyramid.positions = square.positions;
    pyramid.positions.push_back({0, 0, 1});
    pyramid.faceSizes.assign(4, 3);
    pyramid.faceVertices = {0, 1, 4, 1, 2, 4, 2, 3, 4, 3, 0, 4};
    const DistanceSummary up = Compare(pyramid, square, 0.05);
    const DistanceSummary down = Compare(square, pyramid, 0.05);
    EXPECT_NEAR(up.max, 1.0, 1e-6);
    EXPECT_EQ(up.position.z, 1.0f);
    // The distance from the middle of the base to the sides of the pyramid, which rise at 45
    // degrees.
    EXPECT_NEAR(down.max, std::sqrt(0.5), 0.03);
    EXPECT_NEAR(down.position.x, 0.0f, 0.06f);
}

TEST(MeshDifference, ResultsDoNotDependOnTheOrderOfWork) {
    const PolygonMesh sphere = SphereQuads(4);
    const DistanceSummary first = Compare(sphere, Icosahedron(), 0.02);
    for (int i = 0; i < 3; ++i) {
        const DistanceSummary again = Compare(sphere, Icosahedron(), 0.02);
        EXPECT_EQ(again.mean, first.mean);
        EXPECT_EQ(again.rms, first.rms);
        EXPECT_EQ(again.samples, first.samples);
    }
}

TEST(MeshDifference, MixedFacesBecomeTrianglesOfTheSameSurface) {
    PolygonMesh mesh = NgonMix();
    const std::vector<std::array<float, 3>> positions = mesh.positions;
    SplitMixedFaces(mesh);
    EXPECT_EQ(mesh.positions, positions);
    EXPECT_EQ(mesh.faceSizes, std::vector<uint32_t>(6, 3));
    EXPECT_EQ(mesh.faceVertices.size(), 18u);
    PolygonMesh quads = GridMesh(2, 2);
    SplitMixedFaces(quads);
    EXPECT_EQ(quads.faceSizes, std::vector<uint32_t>(4, 4));
}

TEST(MeshDifference, RefusesTooManySamples) {
    EXPECT_THROW(Compare(SingleQuad(), SingleQuad(), 1e-6), HostError);
    EXPECT_THROW(Compare(SingleQuad(), SingleQuad(), std::numeric_limits<double>::min()),
                 HostError);
}

}  // namespace
}  // namespace trovik::test
