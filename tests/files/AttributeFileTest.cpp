// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/mesh/MeshSource.h"
#include "tests/files/AttributeSamples.h"
#include "tests/files/SampleMeshes.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace trovik {
namespace {

using testing::HasSubstr;
using Uvs = std::vector<std::array<float, 2>>;
using Colors = std::vector<std::array<float, 4>>;
using Names = std::vector<std::string>;

constexpr PlyEncoding Encodings[] = {
    PlyEncoding::Text, PlyEncoding::BinaryLittleEndian, PlyEncoding::BinaryBigEndian};

PolygonMesh ReadObjText(std::string_view text) {
    const TemporaryFolder folder;
    return ReadObj(folder.Fill("mesh.obj", text));
}

std::string ObjRefusal(std::string_view text) {
    return MessageOf<HostError>([text] { ReadObjText(text); });
}

/// Returns the mesh without the seam: the right quad uses the left quad's UVs along the common
/// edge.
PolygonMesh SeamlessMesh() {
    PolygonMesh mesh = AttributedMesh();
    mesh.attributes.cornerUvs = {0, 1, 2, 3, 1, 5, 6, 2, 0, 8, 1, 2, 6, 4, 7, 9};
    return mesh;
}

TEST(AttributeFile, ObjKeepsUvsWithSeamsColoursGroupsAndMaterials) {
    const TemporaryFolder folder;
    PolygonMesh mesh = AttributedMesh();
    for (const bool hasAlpha : {false, true}) {
        SCOPED_TRACE(hasAlpha);
        mesh.attributes.hasAlpha = hasAlpha;
        mesh.attributes.colors[3] = {0.1f, 0.7f, 1e-3f, hasAlpha ? 0.25f : 1.0f};
        WriteObj(folder.Path("mesh.obj"), mesh);
        const PolygonMesh read = ReadObj(folder.Path("mesh.obj"));
        ExpectSame(read, mesh);
        EXPECT_EQ(read.attributes.uvs, mesh.attributes.uvs);
        EXPECT_EQ(read.attributes.cornerUvs, mesh.attributes.cornerUvs);
        EXPECT_EQ(read.attributes.colors, mesh.attributes.colors);
        EXPECT_EQ(read.attributes.hasAlpha, hasAlpha);
        ExpectSameGroups(read, mesh);
    }
}

TEST(AttributeFile, ObjCornersMayLackTextureCoordinates) {
    const PolygonMesh mesh = ReadObjText(
        "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3\nvt 0.5 0.25 9\nvt 1\nf 1/1 3/-1 4//\n");
    EXPECT_EQ(mesh.attributes.uvs, (Uvs{{0.5f, 0.25f}, {1, 0}}));
    constexpr std::uint32_t none = SurfaceAttributes::none;
    EXPECT_EQ(mesh.attributes.cornerUvs,
              (std::vector<std::uint32_t>{none, none, none, 0, 1, none}));
    const TemporaryFolder folder;
    WriteObj(folder.Path("again.obj"), mesh);
    EXPECT_EQ(CornerUvValues(ReadObj(folder.Path("again.obj"))), CornerUvValues(mesh));
}

TEST(AttributeFile, ObjNamesPartsByGroupOrElseByObject) {
    const PolygonMesh mesh = ReadObjText(
        "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3\no first\nf 1 2 4\nusemtl red\ng part two\n"
        "f 1 3 4\no second\nusemtl\nf 2 3 4\ng unused\n");
    EXPECT_EQ(mesh.name, "first");
    EXPECT_EQ(FaceNames(mesh.attributes.faceGroups, mesh.attributes.groupNames),
              (Names{"-", "first", "part two", "second"}));
    EXPECT_EQ(FaceNames(mesh.attributes.faceMaterials, mesh.attributes.materialNames),
              (Names{"-", "-", "red", "-"}));
    EXPECT_EQ(mesh.attributes.groupNames, (Names{"first", "part two", "second"}));
    const PolygonMesh single = ReadObjText("o all\nv 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3\n");
    EXPECT_TRUE(single.attributes.groupNames.empty());
    EXPECT_TRUE(single.attributes.faceGroups.empty());
}

TEST(AttributeFile, BadObjTextureCoordinatesNameLineAndReason) {
    const std::string vertices = "v 0 0 0\nv 1 0 0\nv 1 1 0\nvt 0 0\n";
    EXPECT_THAT(ObjRefusal(vertices + "f 1/1 2/1 3/2\n"),
                HasSubstr("line 5: face refers to texture coordinate 2, but only 1 are defined"));
    EXPECT_THAT(ObjRefusal(vertices + "f 1/1 2/-2 3/1\n"),
                HasSubstr("line 5: face refers to texture coordinate -2, but only 1 are defined"));
    EXPECT_THAT(ObjRefusal(vertices + "vt 0 q\nf 1 2 3\n"),
                HasSubstr("line 5: texture coordinate 'q' is not a finite number"));
    EXPECT_THAT(ObjRefusal("vt inf 0\n"), HasSubstr("line 1: texture coordinate 'inf'"));
}

TEST(AttributeFile, PlyKeepsSeamsAsListsOfFaces) {
    const TemporaryFolder folder;
    PolygonMesh mesh = AttributedMesh();
    mesh.attributes.cornerUvs[9] = SurfaceAttributes::none;
    for (const PlyEncoding encoding : Encodings) {
        SCOPED_TRACE(static_cast<int>(encoding));
        WritePly(folder.Path("mesh.ply"), mesh, encoding);
        const PolygonMesh read = ReadPly(folder.Path("mesh.ply"));
        ExpectSame(read, mesh);
        Uvs expected = CornerUvValues(mesh);
        // If any corner of a face has no UV, the face is stored without UVs.
        expected[8] = expected[9] = expected[10] = {-1, -1};
        EXPECT_EQ(CornerUvValues(read), expected);
        EXPECT_EQ(read.attributes.colors, mesh.attributes.colors);
        EXPECT_THAT(TemporaryFolder::Content(folder.Path("mesh.ply")),
                    HasSubstr("property list uchar float texcoord\n"));
    }
}

TEST(AttributeFile, PlyWritesTextureCoordinatesOfVerticesWithoutSeams) {
    const TemporaryFolder folder;
    const PolygonMesh mesh = SeamlessMesh();
    for (const PlyEncoding encoding : Encodings) {
        SCOPED_TRACE(static_cast<int>(encoding));
        WritePly(folder.Path("mesh.ply"), mesh, encoding);
        const std::string content = TemporaryFolder::Content(folder.Path("mesh.ply"));
        EXPECT_THAT(content,
                    HasSubstr("property float s\nproperty float t\nproperty uchar red\n"
                              "property uchar green\nproperty uchar blue\nelement face"));
        const PolygonMesh read = ReadPly(folder.Path("mesh.ply"));
        EXPECT_EQ(CornerUvValues(read), CornerUvValues(mesh));
        EXPECT_EQ(read.attributes.cornerUvs, mesh.faceVertices);
        EXPECT_EQ(read.attributes.colors, mesh.attributes.colors);
        EXPECT_FALSE(read.attributes.hasAlpha);
    }
}

TEST(AttributeFile, PlyColoursOutsideTheByteRangeAreFloats) {
    const TemporaryFolder folder;
    PolygonMesh mesh = SeamlessMesh();
    mesh.attributes.hasAlpha = true;
    mesh.attributes.colors[2] = {0.3f, 2.5f, -1.0f, 0.5f};
    WritePly(folder.Path("mesh.ply"), mesh, PlyEncoding::BinaryLittleEndian);
    EXPECT_THAT(TemporaryFolder::Content(folder.Path("mesh.ply")),
                HasSubstr("property float alpha\n"));
    const PolygonMesh read = ReadPly(folder.Path("mesh.ply"));
    EXPECT_EQ(read.attributes.colors, mesh.attributes.colors);
    EXPECT_TRUE(read.attributes.hasAlpha);
}

TEST(AttributeFile, PlyColoursOfOtherTypesAndNamesOfTextureCoordinatesAreRead) {
    const TemporaryFolder folder;
    const PolygonMesh mesh = ReadPly(folder.Fill(
        "mesh.ply",
        "ply\nformat ascii 1.0\nobj_info units in\nobj_info up z\nelement vertex 3\n"
        "property float x\nproperty float y\nproperty float z\nproperty float u\n"
        "property double v\nproperty ushort red\nproperty uchar green\nproperty float blue\n"
        "property uchar alpha\nelement face 1\nproperty list uchar int vertex_indices\n"
        "end_header\n0 0 0 0.5 1 65535 51 0.5 255\n1 0 0 0 0.25 0 0 0 0\n"
        "1 1 0 1 1 13107 255 1 51\n3 2 1 0\n"));
    EXPECT_EQ(mesh.attributes.uvs, (Uvs{{0.5f, 1}, {0, 0.25f}, {1, 1}}));
    EXPECT_EQ(mesh.attributes.cornerUvs, (std::vector<std::uint32_t>{2, 1, 0}));
    EXPECT_EQ(mesh.attributes.colors,
              (Colors{{1, 0.2f, 0.5f, 1}, {0, 0, 0, 0}, {0.2f, 1, 1, 0.2f}}));
    EXPECT_TRUE(mesh.attributes.hasAlpha);
    EXPECT_EQ(mesh.attributes.space, (MeshSpace{0.0254, UpAxis::Z}));
}

TEST(AttributeFile, SplitVerticesKeepTheirColour) {
    PolygonMesh mesh;
    mesh.positions = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {-1, 0, 0}, {-1, -1, 0}};
    mesh.faceSizes = {3, 3};
    mesh.faceVertices = {0, 1, 2, 0, 3, 4};
    for (int i = 0; i < 5; ++i) {
        mesh.attributes.colors.push_back({static_cast<float>(i), 0, 0, 1});
    }
    mesh.attributes.colors[0] = {7, 8, 9, 1};
    EXPECT_EQ(MakeOrientedManifold(mesh).addedVertices, 1u);
    ASSERT_EQ(mesh.attributes.colors.size(), 6u);
    EXPECT_EQ(mesh.attributes.colors[5], (std::array<float, 4>{7, 8, 9, 1}));
    EXPECT_NO_THROW(CheckPolygonMesh(mesh, "here"));
}

TEST(AttributeFile, MismatchedListsAreRefused) {
    const auto refusal = [](auto change) {
        PolygonMesh mesh = AttributedMesh();
        change(mesh.attributes);
        return MessageOf<HostError>([&mesh] { CheckPolygonMesh(mesh, "here"); });
    };
    EXPECT_EQ(refusal([](SurfaceAttributes& a) { a.cornerUvs.pop_back(); }),
              "here: the list of corner texture coordinates has 15 entries instead of 16");
    EXPECT_EQ(refusal([](SurfaceAttributes& a) { a.cornerUvs[4] = 10; }),
              "here: the list of corner texture coordinates refers to index 10, but valid indices "
              "are below 10");
    EXPECT_EQ(refusal([](SurfaceAttributes& a) { a.faceGroups[1] = 2; }),
              "here: the list of face groups refers to index 2, but valid indices are below 2");
    EXPECT_EQ(refusal([](SurfaceAttributes& a) { a.faceMaterials.resize(5); }),
              "here: the list of face materials has 5 entries instead of 4");
    EXPECT_EQ(refusal([](SurfaceAttributes& a) { a.colors.resize(3); }),
              "here: 3 colours for 10 vertices");
    EXPECT_EQ(refusal([](SurfaceAttributes& a) { a.uvs[1][1] = 1.0f / 0.0f; }),
              "here: a texture coordinate is not finite");
    EXPECT_EQ(refusal([](SurfaceAttributes& a) { a.colors[9][2] = 0.0f / 0.0f; }),
              "here: a colour is not finite");
}

TEST(AttributeFile, EveryDamagedByteAndTruncationIsReadOrRefused) {
    const TemporaryFolder folder;
    WriteObj(folder.Path("mesh.obj"), AttributedMesh());
    WritePly(folder.Path("seam.ply"), AttributedMesh(), PlyEncoding::BinaryLittleEndian);
    WritePly(folder.Path("plain.ply"), SeamlessMesh(), PlyEncoding::Text);
    for (const char* name : {"mesh.obj", "seam.ply", "plain.ply"}) {
        SCOPED_TRACE(name);
        const std::string whole = TemporaryFolder::Content(folder.Path(name));
        const std::string path = folder.Path(std::string("damaged-") + name);
        int refused = 0;
        const auto attempt = [&](const std::string& content) {
            folder.Fill(std::string("damaged-") + name, content);
            try {
                CheckPolygonMesh(ReadMeshFile(path), path);
            } catch (const HostError& error) {
                ++refused;
                EXPECT_THAT(error.what(), HasSubstr(path));
            }
        };
        for (std::size_t place = 0; place < whole.size(); place += 3) {
            attempt(whole.substr(0, place));
            std::string damaged = whole;
            damaged[place] = static_cast<char>(damaged[place] ^ (place % 2 == 0 ? 0xFF : 0x11));
            attempt(damaged);
        }
        EXPECT_GT(refused, 100);
    }
}

}  // namespace
}  // namespace trovik
