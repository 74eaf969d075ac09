// SPDX-License-Identifier: Apache-2.0
#include "framework/files/MeshFiles.h"
#include "framework/mesh/MeshSource.h"
#include "framework/multires/LevelSource.h"
#include "tests/files/AttributeSamples.h"
#include "tests/files/SampleMeshes.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/jobs/TestJob.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace trovik {
namespace {

using Uvs = std::vector<std::array<float, 2>>;
using Color = std::array<float, 4>;

PolygonMesh Refined(const PolygonMesh& mesh, int levels) {
    LevelGeometry geometry(mesh);
    for (int i = 0; i < levels; ++i) {
        geometry.Subdivide();
    }
    return GatherPolygons(LevelSource(geometry, {}));
}

Uvs FaceUvs(const PolygonMesh& mesh, std::size_t face) {
    const Uvs all = CornerUvValues(mesh);
    const auto first = all.begin() + static_cast<std::ptrdiff_t>(face * 4);
    return {first, first + 4};
}

TEST(RefinedAttributes, Level0EqualsTheImport) {
    const PolygonMesh mesh = TwoQuads();
    const PolygonMesh same = Refined(mesh, 0);
    EXPECT_EQ(Bits(same.positions), Bits(mesh.positions));
    EXPECT_EQ(same.faceVertices, mesh.faceVertices);
    EXPECT_EQ(same.attributes.uvs, mesh.attributes.uvs);
    EXPECT_EQ(same.attributes.cornerUvs, mesh.attributes.cornerUvs);
    EXPECT_EQ(same.attributes.colors, mesh.attributes.colors);
    ExpectSameGroups(same, mesh);
}

TEST(RefinedAttributes, TextureCoordinatesAreBilinearAndKeepTheSeam) {
    const PolygonMesh fine = Refined(TwoQuads(), 1);
    // q0 covers (0, 0) to (0.5, 0.5), and q1 covers (0.75, 0.125) to (1, 0.625). Child face k is at
    // corner k.
    EXPECT_EQ(FaceUvs(fine, 0), (Uvs{{0, 0}, {0.25f, 0}, {0.25f, 0.25f}, {0, 0.25f}}));
    EXPECT_EQ(FaceUvs(fine, 1), (Uvs{{0.25f, 0}, {0.5f, 0}, {0.5f, 0.25f}, {0.25f, 0.25f}}));
    EXPECT_EQ(FaceUvs(fine, 2), (Uvs{{0.25f, 0.25f}, {0.5f, 0.25f}, {0.5f, 0.5f}, {0.25f, 0.5f}}));
    EXPECT_EQ(FaceUvs(fine, 3), (Uvs{{0, 0.25f}, {0.25f, 0.25f}, {0.25f, 0.5f}, {0, 0.5f}}));
    EXPECT_EQ(FaceUvs(fine, 4),
              (Uvs{{0.75f, 0.125f}, {0.875f, 0.125f}, {0.875f, 0.375f}, {0.75f, 0.375f}}));
    EXPECT_EQ(FaceUvs(fine, 7),
              (Uvs{{0.75f, 0.375f}, {0.875f, 0.375f}, {0.875f, 0.625f}, {0.75f, 0.625f}}));
    // The new vertex on the seam has one position but two UVs.
    const std::uint32_t onSeam = fine.faceVertices[1 * 4 + 2];
    EXPECT_EQ(onSeam, fine.faceVertices[4 * 4 + 3]);
    EXPECT_EQ(FaceUvs(fine, 1)[2], (std::array<float, 2>{0.5f, 0.25f}));
    EXPECT_EQ(FaceUvs(fine, 4)[3], (std::array<float, 2>{0.75f, 0.375f}));
}

TEST(RefinedAttributes, DeeperLevelsFollowTheChildOrder) {
    const PolygonMesh fine = Refined(TwoQuads(), 3);
    // Face 64 + 2 * 16 + 1 * 4 + 3 is child 3 of child 1 of child 2 of q1. Its offset from corner 0
    // of q1 is half the width and height, plus a quarter to the right, plus an eighth upwards.
    EXPECT_EQ(FaceUvs(fine, 64 + 39),
              (Uvs{{0.9375f, 0.4375f}, {0.96875f, 0.4375f}, {0.96875f, 0.5f}, {0.9375f, 0.5f}}));
    const Uvs all = CornerUvValues(fine);
    // 9 by 9 distinct points per quad.
    EXPECT_EQ(std::set(all.begin(), all.end()).size(), 162u);
    EXPECT_EQ(fine.attributes.uvs.size(), 162u);
}

TEST(RefinedAttributes, ColoursAreEdgeAndFaceMeans) {
    PolygonMesh mesh = TwoQuads();
    mesh.attributes.colors = {{0, 0, 0, 1},
                              {1, 0, 0, 1},
                              {0, 0, 1, 0.5f},
                              {0, 1, 0, 1},
                              {0.5f, 0.5f, 0, 1},
                              {1, 1, 1, 0}};
    const PolygonMesh fine = Refined(mesh, 1);
    const std::vector<Color>& colors = fine.attributes.colors;
    ASSERT_EQ(colors.size(), 15u);
    for (std::size_t vertex = 0; vertex < 6; ++vertex) {
        EXPECT_EQ(colors[vertex], mesh.attributes.colors[vertex]);
    }
    // The new vertices are on the edges of q0 (0 1 4 3), at its centre, on the new edges of q1 (1 2
    // 5 4), and at its centre, in this order.
    const std::vector<Color> added = {{0.5f, 0, 0, 1},
                                      {0.75f, 0.25f, 0, 1},
                                      {0.25f, 0.75f, 0, 1},
                                      {0, 0.5f, 0, 1},
                                      {0.375f, 0.375f, 0, 1},
                                      {0.5f, 0, 0.5f, 0.75f},
                                      {0.5f, 0.5f, 1, 0.25f},
                                      {0.75f, 0.75f, 0.5f, 0.5f},
                                      {0.625f, 0.375f, 0.5f, 0.625f}};
    EXPECT_EQ(std::vector<Color>(colors.begin() + 6, colors.end()), added);
    // On the next level, each vertex has one colour; this is the centre of child 0 of q0.
    const PolygonMesh finer = Refined(mesh, 2);
    ASSERT_EQ(finer.attributes.colors.size(), finer.positions.size());
    EXPECT_EQ(finer.attributes.colors[finer.faceVertices[2]], (Color{0.21875f, 0.21875f, 0, 1}));
}

TEST(RefinedAttributes, GroupsAndMaterialsAreInheritedByAllDescendants) {
    const PolygonMesh fine = Refined(TwoQuads(), 2);
    const auto groups = FaceNames(fine.attributes.faceGroups, fine.attributes.groupNames);
    const auto materials = FaceNames(fine.attributes.faceMaterials, fine.attributes.materialNames);
    ASSERT_EQ(groups.size(), 32u);
    for (std::size_t face = 0; face < 32; ++face) {
        EXPECT_EQ(groups[face], face < 16 ? "left arm" : "rest");
        EXPECT_EQ(materials[face], face < 16 ? "cloth" : "-");
    }
}

TEST(RefinedAttributes, OtherPolygonsAreSplitWithTheirAttributes) {
    const PolygonMesh mesh = AttributedMesh();
    const PolygonMesh quads = Refined(mesh, 0);
    ASSERT_EQ(quads.faceSizes.size(), 16u);
    EXPECT_NO_THROW(CheckPolygonMesh(quads, "here"));
    // The triangle has the UVs (0, 0), (0.25, -0.25) and (0.5, 0); its first quad is face 8.
    const Uvs first = FaceUvs(quads, 8);
    EXPECT_EQ(first[0], (std::array<float, 2>{0, 0}));
    EXPECT_EQ(first[1], (std::array<float, 2>{0.125f, -0.125f}));
    EXPECT_FLOAT_EQ(first[2][0], 0.25f);
    EXPECT_FLOAT_EQ(first[2][1], -0.25f / 3.0f);
    EXPECT_EQ(first[3], (std::array<float, 2>{0.25f, 0}));
    EXPECT_EQ(FaceNames(quads.attributes.faceGroups, quads.attributes.groupNames)[8], "left arm");
    EXPECT_EQ(FaceNames(quads.attributes.faceMaterials, quads.attributes.materialNames)[15],
              "skin");
    // Every vertex has a colour, including new ones, and green is 1 everywhere.
    ASSERT_EQ(quads.attributes.colors.size(), quads.positions.size());
    for (const Color& color : quads.attributes.colors) {
        EXPECT_FLOAT_EQ(color[1], 1.0f);
        EXPECT_FLOAT_EQ(color[0] + color[2], 1.0f);
    }
}

TEST(RefinedAttributes, TrianglesRefineIntoQuads) {
    PolygonMesh mesh;
    mesh.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    mesh.faceSizes = {3};
    mesh.faceVertices = {0, 1, 2};
    mesh.attributes.uvs = {{0, 0}, {1, 0}, {0, 1}};
    mesh.attributes.cornerUvs = {0, 1, 2};
    EXPECT_EQ(CornerUvValues(Refined(mesh, 0)), (Uvs{{0, 0}, {1, 0}, {0, 1}}));
    const float third = 1.0f / 3.0f;
    const PolygonMesh fine = Refined(mesh, 1);
    EXPECT_EQ(FaceUvs(fine, 0), (Uvs{{0, 0}, {0.5f, 0}, {third, third}, {0, 0.5f}}));
    EXPECT_EQ(FaceUvs(fine, 1), (Uvs{{1, 0}, {0.5f, 0.5f}, {third, third}, {0.5f, 0}}));
    EXPECT_EQ(FaceUvs(fine, 2), (Uvs{{0, 1}, {0, 0.5f}, {third, third}, {0.5f, 0.5f}}));
    const PolygonMesh finer = Refined(mesh, 2);
    // Child 1 of child 2.
    EXPECT_EQ(FaceUvs(finer, 9)[1], (std::array<float, 2>{0, 0.5f}));
    // There are no seams, so the UVs can also be compared vertex by vertex.
    std::vector<std::array<float, 2>> byVertex;
    LevelGeometry geometry(mesh);
    geometry.Subdivide();
    geometry.Subdivide();
    const LevelSource source(geometry, {});
    ASSERT_TRUE(source.UvsFollowVertices());
    source.ReadVertices(MeshSource::Uvs, [&byVertex](const VertexBlock& block) {
        byVertex.insert(byVertex.end(), block.uvs.begin(), block.uvs.end());
    });
    ASSERT_EQ(byVertex.size(), finer.positions.size());
    const Uvs corners = CornerUvValues(finer);
    for (std::size_t corner = 0; corner < corners.size(); ++corner) {
        EXPECT_EQ(byVertex[finer.faceVertices[corner]], corners[corner]) << corner;
    }
}

TEST(RefinedAttributes, FilesOfRefinedLevelsKeepSeamsAndValues) {
    LevelGeometry geometry(TwoQuads());
    geometry.Subdivide();
    geometry.Subdivide();
    const LevelSource source(geometry, {});
    const PolygonMesh gathered = GatherPolygons(source);
    const TemporaryFolder folder;
    for (const char* name : {"fine.obj", "fine.ply"}) {
        SCOPED_TRACE(name);
        test::TestJob job;
        WriteMeshFile(folder.Path(name), source, &job);
        job.ExpectFinished();
        EXPECT_TRUE(job.phases.count("Writing vertices") == 1);
        EXPECT_TRUE(job.phases.count("Writing faces") == 1);
        const PolygonMesh read = ReadMeshFile(folder.Path(name));
        EXPECT_EQ(Bits(read.positions), Bits(gathered.positions));
        EXPECT_EQ(Bits(read.normals), Bits(gathered.normals));
        EXPECT_EQ(read.faceVertices, gathered.faceVertices);
        EXPECT_EQ(CornerUvValues(read), CornerUvValues(gathered));
        ASSERT_EQ(read.attributes.colors.size(), gathered.attributes.colors.size());
        for (std::size_t vertex = 0; vertex < read.attributes.colors.size(); ++vertex) {
            EXPECT_NEAR(
                read.attributes.colors[vertex][0], gathered.attributes.colors[vertex][0], 0.002f);
        }
    }
    ExpectSameGroups(ReadMeshFile(folder.Path("fine.obj")), gathered);
}

TEST(RefinedAttributes, BlocksAreCompleteAndInOrder) {
    PolygonMesh mesh;
    mesh.positions = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    mesh.faceSizes = {4};
    mesh.faceVertices = {0, 1, 2, 3};
    mesh.attributes.colors = {{0, 0, 0, 1}, {1, 0, 0, 1}, {1, 1, 0, 1}, {0, 1, 0, 1}};
    LevelGeometry geometry(mesh);
    for (int level = 0; level < 7; ++level) {
        geometry.Subdivide();
    }
    const LevelSource source(geometry, {});
    std::size_t vertices = 0;
    std::size_t largest = 0;
    source.ReadVertices(MeshSource::Positions | MeshSource::Colors, [&](const VertexBlock& block) {
        ASSERT_EQ(block.positions.size(), block.colors.size());
        ASSERT_TRUE(block.normals.empty());
        largest = std::max(largest, block.positions.size());
        vertices += block.positions.size();
    });
    EXPECT_EQ(vertices, 129u * 129u);
    EXPECT_EQ(largest, MeshSource::blockSize);
    std::size_t faces = 0;
    source.ReadFaces(0, [&](const FaceBlock& block) {
        EXPECT_LE(block.sizes.size(), MeshSource::blockSize);
        EXPECT_TRUE(block.uvs.empty());
        faces += block.sizes.size();
    });
    EXPECT_EQ(faces, 128u * 128u);
}

}  // namespace
}  // namespace trovik
