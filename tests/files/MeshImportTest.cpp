// SPDX-License-Identifier: Apache-2.0

/// \file Tests the final stage of every reader, which removes degenerate faces and merges equal
/// UVs.
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshImport.h"
#include "framework/mesh/MeshSource.h"
#include "tests/files/AttributeSamples.h"
#include "tests/files/SampleMeshes.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>
#include <string>

namespace trovik {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Indices = std::vector<std::uint32_t>;
using Names = std::vector<std::string>;

constexpr const char* OneFaceNote =
    "1 face has two corners at the same vertex and was left out: face 1 (counted from 0)";

TEST(MeshImport, ObjFacesThatRepeatAVertexAreDropped) {
    const TemporaryFolder folder;
    const PolygonMesh mesh = ReadMeshFile(folder.Fill(
        "mesh.obj",
        "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 1 1\ng a\nusemtl red\ns 1\n"
        "f 1/1 2/2 3/3\ng b\nusemtl blue\ns 2\nf 1/3 2/2 3/1 1/1\ng c\nusemtl red\ns off\n"
        "f 1/2 3/3 4/1\n"));
    EXPECT_THAT(mesh.notes, ElementsAre(OneFaceNote));
    EXPECT_EQ(mesh.faceSizes, (Indices{3, 3}));
    EXPECT_EQ(mesh.faceVertices, (Indices{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(mesh.attributes.cornerUvs, (Indices{0, 1, 2, 1, 2, 0}));
    EXPECT_EQ(FaceNames(mesh.attributes.faceGroups, mesh.attributes.groupNames), (Names{"a", "c"}));
    EXPECT_EQ(FaceNames(mesh.attributes.faceMaterials, mesh.attributes.materialNames),
              (Names{"red", "red"}));
    EXPECT_EQ(mesh.attributes.faceSmoothing, (Indices{1, 0}));
}

TEST(MeshImport, PlyFacesThatRepeatAVertexAreDropped) {
    const TemporaryFolder folder;
    const PolygonMesh mesh = ReadMeshFile(
        folder.Fill("mesh.ply",
                    "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\n"
                    "property float z\nelement face 3\nproperty list uchar int vertex_indices\n"
                    "property list uchar float texcoord\nend_header\n0 0 0\n1 0 0\n1 1 0\n0 1 0\n"
                    "3 0 1 2 6 0 0 1 0 1 1\n3 0 1 1 6 5 5 6 6 7 7\n3 0 2 3 6 0 0 1 1 0 1\n"));
    EXPECT_THAT(mesh.notes, ElementsAre(OneFaceNote));
    EXPECT_EQ(mesh.faceVertices, (Indices{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(CornerUvValues(mesh),
              (std::vector<std::array<float, 2>>{{0, 0}, {1, 0}, {1, 1}, {0, 0}, {1, 1}, {0, 1}}));
}

TEST(MeshImport, StlTrianglesWithoutAreaAreDropped) {
    const TemporaryFolder folder;
    std::string text = "solid s\n";
    for (const char* corners : {"vertex 0 0 0 vertex 1 0 0 vertex 0 1 0",
                                "vertex 7 7 7 vertex 1 0 0 vertex 7 7 7",
                                "vertex 1 0 0 vertex 1 1 0 vertex 0 1 0"}) {
        text += std::string("facet normal 0 0 1 outer loop ") + corners + " endloop endfacet\n";
    }
    const PolygonMesh mesh = ReadMeshFile(folder.Fill("mesh.stl", text + "endsolid\n"));
    EXPECT_THAT(mesh.notes, ElementsAre(OneFaceNote));
    EXPECT_EQ(mesh.faceVertices, (Indices{0, 1, 2, 1, 3, 2}));
    EXPECT_EQ(mesh.positions.size(), 4u) << "there is a vertex that no face uses";
}

TEST(MeshImport, GltfTrianglesWithoutAreaAreDropped) {
    const TemporaryFolder folder;
    PolygonMesh written;
    written.positions = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {1, 0, 0}};
    written.faceSizes = {3, 3, 3};
    // Vertices 1 and 4 have the same position.
    written.faceVertices = {0, 1, 2, 1, 4, 2, 0, 2, 3};
    written.attributes.groupNames = {"a", "b"};
    written.attributes.faceGroups = {0, 0, 1};
    for (const char* name : {"mesh.glb", "mesh.gltf"}) {
        WriteMeshFile(folder.Path(name), written);
        const PolygonMesh mesh = ReadMeshFile(folder.Path(name));
        EXPECT_THAT(mesh.notes, ElementsAre(OneFaceNote));
        EXPECT_EQ(mesh.faceVertices, (Indices{0, 1, 2, 0, 2, 3}));
        EXPECT_EQ(FaceNames(mesh.attributes.faceGroups, mesh.attributes.groupNames),
                  (Names{"a", "b"}));
    }
}

TEST(MeshImport, DroppedFacesAreCountedAndAMeshWithoutOthersIsRefused) {
    const TemporaryFolder folder;
    const std::string vertices = "v 0 0 0\nv 1 0 0\nv 1 1 0\n";
    const PolygonMesh mesh =
        ReadMeshFile(folder.Fill("mesh.obj", vertices + "f 1 2 3\nf 1 2 2\nf 3 3 3\n"));
    EXPECT_THAT(mesh.notes,
                ElementsAre("2 faces have two corners at the same vertex and were left out: the "
                            "first is face 1 (counted from 0)"));
    const std::string bad = folder.Fill("bad.obj", vertices + "f 1 2 2\n");
    EXPECT_EQ(MessageOf<HostError>([&] { ReadMeshFile(bad); }),
              bad + ": every face of the mesh has two corners at the same vertex (1)");
    EXPECT_TRUE(ReadMeshFile(folder.Fill("good.obj", vertices + "f 1 2 3\n")).notes.empty());
}

/// Returns a grid of 3 by 3 vertices whose UVs follow the positions, except that the right column
/// of faces is a second UV island.
PolygonMesh SeamedGrid() {
    PolygonMesh mesh;
    for (int i = 0; i < 9; ++i) {
        const int row = i / 3;
        mesh.positions.push_back(
            {static_cast<float>(i % 3), static_cast<float>(row), static_cast<float>(i)});
        mesh.attributes.uvs.push_back(
            {static_cast<float>(i % 3) * 0.25f, static_cast<float>(row) * 0.5f});
    }
    for (int row = 0; row < 3; ++row) {
        mesh.attributes.uvs.push_back({0.75f, static_cast<float>(row) * 0.5f});
    }
    for (const std::uint32_t first : {0u, 1u, 3u, 4u}) {
        const bool isRight = first % 3 == 1;
        const std::uint32_t row = first / 3;
        mesh.faceSizes.push_back(4);
        const Indices corners = {first, first + 1, first + 4, first + 3};
        mesh.faceVertices.insert(mesh.faceVertices.end(), corners.begin(), corners.end());
        const Indices uvs = isRight ? Indices{9 + row, first + 1, first + 4, 10 + row} : corners;
        mesh.attributes.cornerUvs.insert(mesh.attributes.cornerUvs.end(), uvs.begin(), uvs.end());
    }
    return mesh;
}

TEST(MeshImport, CornerUvsBecomeOneEntryPerVertexAndSide) {
    const TemporaryFolder folder;
    const PolygonMesh mesh = SeamedGrid();
    ASSERT_FALSE(PolygonSource(mesh).UvsFollowVertices());
    for (const char* name : {"mesh.ply", "mesh.glb", "mesh.gltf"}) {
        SCOPED_TRACE(name);
        WriteMeshFile(folder.Path(name), mesh);
        const PolygonMesh read = ReadMeshFile(folder.Path(name));
        // Nine vertices; the three on the seam have a second UV.
        EXPECT_EQ(read.attributes.uvs.size(), 12u);
        EXPECT_EQ(PolygonSource(read).UvsFollowVertices(), false);
        std::set<std::pair<std::uint32_t, std::uint32_t>> pairs;
        for (std::size_t corner = 0; corner < read.faceVertices.size(); ++corner) {
            pairs.insert({read.faceVertices[corner], read.attributes.cornerUvs[corner]});
        }
        EXPECT_EQ(pairs.size(), 12u);
    }
    WriteMeshFile(folder.Path("again.obj"), ReadMeshFile(folder.Path("mesh.ply")));
    const PolygonMesh again = ReadMeshFile(folder.Path("again.obj"));
    EXPECT_EQ(CornerUvValues(again), CornerUvValues(mesh));
    EXPECT_EQ(again.attributes.uvs.size(), mesh.attributes.uvs.size());
}

TEST(MeshImport, UvsOfDifferentVerticesStayApart) {
    PolygonMesh mesh;
    mesh.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 9}, {1, 0, 9}, {0, 1, 9}};
    mesh.faceSizes = {3, 3};
    mesh.faceVertices = {0, 1, 2, 3, 4, 5};
    // Two triangles on the same part of the texture, with one UV per corner and one unused UV.
    mesh.attributes.uvs = {{9, 9}, {0, 0}, {1, 0}, {0, 1}, {0, 0}, {1, 0}, {0, 1}};
    mesh.attributes.cornerUvs = {1, 2, 3, 4, 5, SurfaceAttributes::none};
    WeldUvs(mesh, nullptr);
    EXPECT_EQ(mesh.attributes.uvs,
              (std::vector<std::array<float, 2>>{{0, 0}, {1, 0}, {0, 1}, {0, 0}, {1, 0}}));
    EXPECT_EQ(mesh.attributes.cornerUvs, (Indices{0, 1, 2, 3, 4, SurfaceAttributes::none}));
}

}  // namespace
}  // namespace trovik
