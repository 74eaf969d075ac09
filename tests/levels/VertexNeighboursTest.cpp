// SPDX-License-Identifier: Apache-2.0
#include "framework/math/SameBits.h"
#include "framework/mesh/VertexNeighbours.h"
#include "framework/multires/LevelGeometry.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/random/RandomNumbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace trovik::test {
namespace {

/// Random vertices of a level: individual vertices, a run of consecutive numbers, and all corners
/// of a few faces.
std::vector<uint32_t> SomeVertices(RandomNumbers& random, const LevelMesh& mesh) {
    std::vector<uint32_t> vertices;
    const uint32_t lone = random.Below(4);
    for (uint32_t i = 0; i < lone; ++i) vertices.push_back(random.Below(mesh.VertexCount()));
    const uint32_t first = random.Below(mesh.VertexCount());
    const uint32_t end = std::min(mesh.VertexCount(), first + random.Below(40));
    for (uint32_t vertex = first; vertex < end; ++vertex) vertices.push_back(vertex);
    const uint32_t firstFace = random.Below(mesh.faceCount);
    const uint32_t faces = std::min(random.Below(20), mesh.faceCount - firstFace);
    const uint32_t corners = mesh.CornersPerFace();
    for (uint32_t slot = firstFace * corners; slot < (firstFace + faces) * corners; ++slot)
        vertices.push_back(mesh.faceVertexIndices[slot]);
    return vertices;
}

std::vector<uint32_t> FacesWith(const LevelMesh& mesh, const std::set<uint32_t>& vertices) {
    std::vector<uint32_t> faces;
    const uint32_t corners = mesh.CornersPerFace();
    for (uint32_t slot = 0; slot < mesh.faceCount * corners; ++slot)
        if (vertices.count(mesh.faceVertexIndices[slot]) != 0) faces.push_back(slot / corners);
    faces.erase(std::unique(faces.begin(), faces.end()), faces.end());
    return faces;
}

TEST(VertexNeighbours, FacesAroundVerticesAreThoseOfASearch) {
    RandomNumbers random(11);
    for (const ZooMesh& entry : AllMeshes()) {
        SCOPED_TRACE(entry.name);
        LevelGeometry geometry(entry.mesh);
        while (geometry.LevelCount() < 5) geometry.Subdivide();
        for (int i = 0; i < 30; ++i) {
            LevelMesh& mesh = *geometry.Level(random.Below(5));
            const std::vector<uint32_t> vertices = SomeVertices(random, mesh);
            const std::vector<uint32_t> faces = FacesAt(mesh, vertices);
            ASSERT_EQ(faces, FacesWith(mesh, {vertices.begin(), vertices.end()}));
            const std::vector<uint32_t> corners = CornersOf(mesh, faces);
            ASSERT_EQ(WithFacesAround(mesh, faces),
                      FacesWith(mesh, {corners.begin(), corners.end()}));
        }
    }
}

TEST(VertexNeighbours, ANearFaceDoesNotChangeTheLowestOne) {
    RandomNumbers random(12);
    for (const ZooMesh& entry : AllMeshes()) {
        SCOPED_TRACE(entry.name);
        LevelGeometry geometry(entry.mesh);
        while (geometry.LevelCount() < 4) geometry.Subdivide();
        for (uint32_t level = 0; level < 4; ++level) {
            LevelMesh& mesh = *geometry.Level(level);
            for (uint32_t vertex = 0; vertex < mesh.VertexCount(); ++vertex)
                ASSERT_EQ(mesh.LowestFaceOf(vertex, random.Below(mesh.faceCount)),
                          mesh.LowestFaceOf(vertex));
        }
    }
}

TEST(VertexNeighbours, NormalsOfSomeVerticesAreThoseOfTheLevel) {
    RandomNumbers random(13);
    for (const ZooMesh& entry : AllMeshes()) {
        SCOPED_TRACE(entry.name);
        LevelGeometry geometry(entry.mesh);
        while (geometry.LevelCount() < 4) geometry.Subdivide();
        LevelMesh& mesh = *geometry.Bound();
        for (int i = 0; i < 10; ++i) {
            const std::vector<uint32_t> moved = SomeVertices(random, mesh);
            for (const uint32_t vertex : moved)
                mesh.SetPosition(vertex, mesh.Position(vertex) + random.In(-0.1f, 0.1f));
            mesh.ComputeNormalsOf(WithNeighbours(mesh, moved));
            const std::vector<PackedNormal> normals(mesh.vertexNormals.array,
                                                    mesh.vertexNormals.array + mesh.VertexCount());
            mesh.ComputeNormals();
            for (uint32_t vertex = 0; vertex < mesh.VertexCount(); ++vertex)
                ASSERT_TRUE(SameBits(normals[vertex], mesh.vertexNormals.array[vertex])) << vertex;
        }
    }
}

TEST(IndexSet, RanksItsMembersInAscendingOrder) {
    RandomNumbers random(14);
    for (int i = 0; i < 50; ++i) {
        std::vector<uint32_t> numbers;
        const uint32_t spread = random.OneOf({100u, 5000u, 20000000u});
        for (uint32_t count = random.Below(200); count > 0; --count)
            numbers.push_back(1000 + random.Below(spread));
        const std::set<uint32_t> expected(numbers.begin(), numbers.end());
        const IndexSet set(numbers);
        EXPECT_EQ(set.Members(), std::vector<uint32_t>(expected.begin(), expected.end()));
        EXPECT_EQ(set.Count(), expected.size());
        uint32_t rank = 0;
        for (const uint32_t number : expected) ASSERT_EQ(set.RankOf(number), rank++);
        for (uint32_t n = 0; n < 100; ++n) {
            const uint32_t number = random.Below(2000 + spread);
            ASSERT_EQ(set.Has(number), expected.count(number) != 0) << number;
        }
    }
}

}  // namespace
}  // namespace trovik::test
