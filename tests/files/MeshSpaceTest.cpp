// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/mesh/MeshSource.h"
#include "framework/multires/LevelSource.h"
#include "tests/files/AttributeSamples.h"
#include "tests/files/SampleMeshes.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace trovik {
namespace {

using testing::HasSubstr;
using testing::Not;
using Point = std::array<float, 3>;

PolygonMesh InInchesZUp() {
    PolygonMesh mesh = AttributedMesh();
    mesh.positions[4] = {1, 2, 3};
    for (std::size_t vertex = 0; vertex < mesh.positions.size(); ++vertex) {
        mesh.normals.push_back({0.0f, 0.6f, 0.8f});
    }
    mesh.attributes.space = {0.0254, UpAxis::Z};
    return mesh;
}

TEST(MeshSpace, UnitsHaveTheirNamesAndLengths) {
    EXPECT_EQ(MetersPerUnit("mm"), 0.001);
    EXPECT_EQ(MetersPerUnit("in"), 0.0254);
    EXPECT_EQ(MetersPerUnit("parsec"), 0.0);
    EXPECT_EQ(UnitName(0.3048), "ft");
    EXPECT_EQ(UnitName(0.5), "");
    EXPECT_EQ(UpAxisOf("z"), UpAxis::Z);
    EXPECT_EQ(UpAxisOf("x"), UpAxis::Unknown);
    EXPECT_EQ(UpAxisName(UpAxis::Y), "y");
}

TEST(MeshSpace, ConversionScalesAndRotates) {
    const SpaceConversion toYUp({0.001, UpAxis::Z}, {0.01, UpAxis::Y});
    EXPECT_EQ(toYUp.Point({10, 20, 30}), (Point{1, 3, -2}));
    EXPECT_EQ(toYUp.Direction({0, 0.6f, 0.8f}), (Point{0, 0.8f, -0.6f}));
    const SpaceConversion toZUp({1.0, UpAxis::Y}, {0.001, UpAxis::Z});
    EXPECT_EQ(toZUp.Point({1, 3, -2}), (Point{1000, 2000, 3000}));
    EXPECT_TRUE(SpaceConversion({}, {1.0, UpAxis::Y}).IsIdentity());
    EXPECT_TRUE(SpaceConversion({1.0, UpAxis::Y}, {}).IsIdentity());
    EXPECT_FALSE(SpaceConversion({1.0, UpAxis::Unknown}, {0.01, UpAxis::Y}).IsIdentity());
}

TEST(MeshSpace, FilesStateTheirSpaceAndKeepNumbersByDefault) {
    const TemporaryFolder folder;
    const PolygonMesh mesh = InInchesZUp();
    for (const char* name : {"mesh.obj", "mesh.ply"}) {
        SCOPED_TRACE(name);
        WriteMeshFile(folder.Path(name), mesh);
        const PolygonMesh read = ReadMeshFile(folder.Path(name));
        EXPECT_EQ(Bits(read.positions), Bits(mesh.positions));
        EXPECT_EQ(read.attributes.space, mesh.attributes.space);
    }
    WriteMeshFile(folder.Path("plain.obj"), AttributedMesh());
    EXPECT_EQ(ReadObj(folder.Path("plain.obj")).attributes.space, MeshSpace());
}

TEST(MeshSpace, WritingConvertsToTheRequestedSpace) {
    const TemporaryFolder folder;
    const PolygonMesh mesh = InInchesZUp();
    const MeshSpace asked = {0.3048, UpAxis::Y};
    WriteMeshFile(folder.Path("mesh.obj"), PolygonSource(mesh, asked));
    const PolygonMesh read = ReadObj(folder.Path("mesh.obj"));
    EXPECT_EQ(read.attributes.space, asked);
    const float twelfth = static_cast<float>(0.0254 / 0.3048);
    EXPECT_EQ(read.positions[4], (Point{twelfth, 3 * twelfth, -2 * twelfth}));
    EXPECT_EQ(read.normals[4], (Point{0, 0.8f, -0.6f}));
}

TEST(MeshSpace, GltfIsInMetresWithYUp) {
    const TemporaryFolder folder;
    WriteMeshFile(folder.Path("mesh.glb"), InInchesZUp());
    const PolygonMesh read = ReadGltf(folder.Path("mesh.glb"));
    EXPECT_EQ(read.positions[4], (Point{0.0254f, 3 * 0.0254f, -2 * 0.0254f}));
    const MeshSpace gltf = {1.0, UpAxis::Y};
    EXPECT_EQ(SpaceForFile("a.GLB", {}, {}), gltf);
    EXPECT_EQ(SpaceForFile("a.gltf", {0.01, UpAxis::Z}, {1.0, UpAxis::Unknown}), gltf);
    EXPECT_THAT(MessageOf<HostError>([] {
                    SpaceForFile("a.glb", {}, {0.01, UpAxis::Y});
                }),
                HasSubstr("a.glb: glTF files are always in metres with y up"));
    EXPECT_THAT(MessageOf<HostError>([] {
                    SpaceForFile("a.gltf", {}, {1.0, UpAxis::Z});
                }),
                HasSubstr("a.gltf: glTF files"));
    // If the space of the mesh is unknown, coordinates are written unchanged.
    WriteMeshFile(folder.Path("as-is.glb"), AttributedMesh());
    EXPECT_EQ(Bits(ReadGltf(folder.Path("as-is.glb")).positions), Bits(AttributedMesh().positions));
}

TEST(MeshSpace, LevelsConvertAfterTheirTransform) {
    PolygonMesh mesh = InInchesZUp();
    mesh.normals.clear();
    mesh.faceSizes = {4, 4};
    mesh.faceVertices.resize(8);
    mesh.attributes = {};
    mesh.attributes.space = {0.01, UpAxis::Z};
    LevelGeometry geometry(mesh);
    geometry.Transform().Set({2, 2, 2}, {0, 0, 0}, {0, 0, 100});
    const LevelSource source(geometry, {true, {1.0, UpAxis::Y}});
    // The point (1, 2, 3), doubled and moved up, is (2, 4, 106) in centimetres with z up.
    const Point p = source.Position(4);
    EXPECT_FLOAT_EQ(p[0], 0.02f);
    EXPECT_FLOAT_EQ(p[1], 1.06f);
    EXPECT_FLOAT_EQ(p[2], -0.04f);
    EXPECT_EQ(source.Space(), (MeshSpace{1.0, UpAxis::Y}));
    EXPECT_EQ(LevelSource(geometry, {}).Position(4), (Point{1, 2, 3}));
}

TEST(UsdFile, EveryPartFollowsTheFormat) {
    const TemporaryFolder folder;
    PolygonMesh mesh;
    mesh.name = "2 quads";
    mesh.positions = {{0, 0, 0}, {1, 0, 0}, {1, 0.5f, 0}, {0, 1, 0}, {2, 2, -1}};
    mesh.faceSizes = {4, 3};
    mesh.faceVertices = {0, 1, 2, 3, 2, 4, 3};
    mesh.attributes.uvs = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    mesh.attributes.cornerUvs = {0, 1, 2, 3, 2, SurfaceAttributes::none, 3};
    mesh.attributes.colors.assign(5, {0.5f, 0.25f, 1, 0.75f});
    mesh.attributes.hasAlpha = true;
    mesh.attributes.space = {0.001, UpAxis::Z};
    WriteMeshFile(folder.Path("mesh.usda"), mesh);
    EXPECT_EQ(TemporaryFolder::Content(folder.Path("mesh.usda")),
              "#usda 1.0\n(\n    defaultPrim = \"_2_quads\"\n    metersPerUnit = 0.001\n"
              "    upAxis = \"Z\"\n)\n\ndef Mesh \"_2_quads\"\n{\n"
              "    uniform token subdivisionScheme = \"catmullClark\"\n"
              "    int[] faceVertexCounts = [4, 3]\n"
              "    int[] faceVertexIndices = [0, 1, 2, 3, 2, 4, 3]\n"
              "    point3f[] points = [(0, 0, 0), (1, 0, 0), (1, 0.5, 0), (0, 1, 0), (2, 2, -1)]\n"
              "    float3[] extent = [(0, 0, -1), (2, 2, 0)]\n"
              "    color3f[] primvars:displayColor = [(0.5, 0.25, 1), (0.5, 0.25, 1), "
              "(0.5, 0.25, 1), (0.5, 0.25, 1), (0.5, 0.25, 1)] (\n"
              "        interpolation = \"vertex\"\n    )\n"
              "    float[] primvars:displayOpacity = [0.75, 0.75, 0.75, 0.75, 0.75] (\n"
              "        interpolation = \"vertex\"\n    )\n"
              "    texCoord2f[] primvars:st = [(0, 0), (1, 0), (1, 1), (0, 1), (0, 0)] (\n"
              "        interpolation = \"faceVarying\"\n    )\n"
              "    int[] primvars:st:indices = [0, 1, 2, 3, 2, 4, 3]\n}\n");
}

TEST(UsdFile, MeshesWithNormalsAreNotSubdivided) {
    const TemporaryFolder folder;
    PolygonMesh mesh = AttributedMesh();
    mesh.name.clear();
    mesh.attributes = {};
    mesh.normals.assign(10, {0, 0, 1});
    WriteMeshFile(folder.Path("mesh.usda"), mesh);
    const std::string content = TemporaryFolder::Content(folder.Path("mesh.usda"));
    EXPECT_THAT(content, HasSubstr("subdivisionScheme = \"none\""));
    EXPECT_THAT(content, HasSubstr("normal3f[] normals = [(0, 0, 1), (0, 0, 1),"));
    EXPECT_THAT(content,
                HasSubstr("defaultPrim = \"mesh\"\n    metersPerUnit = 1\n    upAxis = \"Y\""));
    EXPECT_THAT(content, Not(HasSubstr("primvars")));
    EXPECT_THAT(MessageOf<HostError>([&] { ReadMeshFile(folder.Path("mesh.usda")); }),
                HasSubstr("cannot be read as a mesh"));
}

}  // namespace
}  // namespace trovik
