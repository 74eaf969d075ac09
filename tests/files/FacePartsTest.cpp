// SPDX-License-Identifier: Apache-2.0

/// \file Tests groups and materials in formats that store them as parts of a mesh.
#include "framework/files/FaceParts.h"
#include "framework/files/MeshFiles.h"
#include "framework/files/UsdText.h"
#include "framework/multires/LevelSource.h"
#include "tests/files/AttributeSamples.h"
#include "tests/files/SampleMeshes.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstring>
#include <map>
#include <string>

namespace trovik {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Indices = std::vector<std::uint32_t>;
using Names = std::vector<std::string>;

/// Returns a strip of `count` triangles whose groups and materials cycle through the lists.
PolygonMesh Strip(std::uint32_t count, const Indices& groups, const Indices& materials) {
    PolygonMesh mesh;
    mesh.name = "strip";
    for (std::uint32_t vertex = 0; vertex < count + 2; ++vertex) {
        const std::uint32_t column = vertex / 2;
        mesh.positions.push_back(
            {static_cast<float>(column), static_cast<float>(vertex % 2), 0.0f});
    }
    for (std::uint32_t face = 0; face < count; ++face) {
        mesh.faceSizes.push_back(3);
        const std::uint32_t turned = face % 2;
        mesh.faceVertices.insert(mesh.faceVertices.end(),
                                 {face + turned, face + 1 - turned, face + 2});
        if (!groups.empty()) {
            mesh.attributes.faceGroups.push_back(groups[face % groups.size()]);
        }
        if (!materials.empty()) {
            mesh.attributes.faceMaterials.push_back(materials[face % materials.size()]);
        }
    }
    for (std::uint32_t number = 0; number < 40; ++number) {
        if (!groups.empty()) {
            mesh.attributes.groupNames.push_back("g" + std::to_string(number));
        }
        if (!materials.empty()) {
            mesh.attributes.materialNames.push_back("m" + std::to_string(number));
        }
    }
    return mesh;
}

/// Returns the corners of each face with its group and material, in a canonical order.
std::map<Indices, Names> NamedFaces(const PolygonMesh& mesh) {
    std::map<Indices, Names> faces;
    const SurfaceAttributes& more = mesh.attributes;
    const Names groups = FaceNames(more.faceGroups, more.groupNames);
    const Names materials = FaceNames(more.faceMaterials, more.materialNames);
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face) {
        const auto first = mesh.faceVertices.begin() + static_cast<std::ptrdiff_t>(face * 3);
        faces[Indices(first, first + 3)] = {groups.empty() ? "-" : groups[face],
                                            materials.empty() ? "-" : materials[face]};
    }
    return faces;
}

json GlbDocument(const std::string& path) {
    const std::string content = TemporaryFolder::Content(path);
    std::uint32_t length = 0;
    std::memcpy(&length, content.data() + 12, sizeof length);
    return json::parse(content.substr(20, length));
}

TEST(FaceParts, AreReturnedInOrderWhateverTheSizeOfAPass) {
    Indices groups;
    for (std::uint32_t i = 0; i < 37; ++i) {
        groups.push_back(i * i % 11);
    }
    // More than one block of faces, some in a group and some without one.
    groups.push_back(SurfaceAttributes::none);
    const PolygonMesh mesh = Strip(10000, groups, {});
    const PolygonSource source(mesh);
    const FaceParts parts(source, FaceParts::ByGroup | FaceParts::ByMaterial);
    std::map<std::uint32_t, Indices> expected;
    for (std::uint32_t face = 0; face < 10000; ++face) {
        expected[mesh.attributes.faceGroups[face]].push_back(face);
    }
    ASSERT_EQ(parts.Parts().size(), expected.size());
    for (const std::uint64_t maxWords :
         {std::uint64_t{1}, std::uint64_t{900}, std::uint64_t{1} << 20}) {
        SCOPED_TRACE(maxWords);
        std::vector<Indices> got(parts.Parts().size());
        std::size_t last = 0;
        parts.ForEachWord([](const FaceParts::Part& part) { return part.faces; },
                          0,
                          [](const FaceBlock&, const FaceParts::Face& face, Indices& words) {
                              words.push_back(static_cast<std::uint32_t>(face.number));
                          },
                          [&](std::size_t part, const Indices& words) {
                              EXPECT_GE(part, last);
                              last = part;
                              got[part].insert(got[part].end(), words.begin(), words.end());
                          },
                          maxWords);
        std::uint32_t before = 0;
        for (std::size_t part = 0; part < got.size(); ++part) {
            EXPECT_EQ(got[part], expected[parts.Parts()[part].group]);
            EXPECT_EQ(parts.Parts()[part].faces, got[part].size());
            EXPECT_EQ(parts.Parts()[part].corners, got[part].size() * 3);
            EXPECT_GE(got[part][0], before) << "parts are not ordered by their first face";
            before = got[part][0];
        }
    }
}

TEST(FaceParts, RoundTripAsPrimitivesWithNamedMaterials) {
    const TemporaryFolder folder;
    PolygonMesh mesh =
        Strip(24, {2, 0, SurfaceAttributes::none}, {1, 1, SurfaceAttributes::none, 3});
    AddNormals(mesh);
    for (const char* name : {"mesh.glb", "mesh.gltf"}) {
        SCOPED_TRACE(name);
        WriteMeshFile(folder.Path(name), mesh);
        const PolygonMesh read = ReadMeshFile(folder.Path(name));
        EXPECT_EQ(Bits(read.positions), Bits(mesh.positions));
        EXPECT_EQ(Bits(read.normals), Bits(mesh.normals));
        EXPECT_EQ(NamedFaces(read), NamedFaces(mesh));
        EXPECT_EQ(read.name, "strip");
        // Round trip through an OBJ file.
        WriteMeshFile(folder.Path("again.obj"), read);
        EXPECT_EQ(NamedFaces(ReadMeshFile(folder.Path("again.obj"))), NamedFaces(mesh));
    }
    const json document = GlbDocument(folder.Path("mesh.glb"));
    EXPECT_EQ(document["materials"].size(), 2u);
    EXPECT_EQ(document["materials"][0]["name"], "m1");
    EXPECT_EQ(document["materials"][0]["pbrMetallicRoughness"]["metallicFactor"], 0);
    const json& primitives = document["meshes"][0]["primitives"];
    // Three groups and three materials; the faces cycle through all nine combinations.
    EXPECT_EQ(primitives.size(), 9u);
    EXPECT_EQ(primitives[0]["extras"]["group"], "g2");
    EXPECT_EQ(primitives[0]["material"], 0);
    for (const json& primitive : primitives) {
        EXPECT_EQ(primitive["attributes"], primitives[0]["attributes"]);
    }
}

TEST(FaceParts, OfASingleKindRoundTripThroughGltf) {
    const TemporaryFolder folder;
    for (const PolygonMesh& mesh :
         {Strip(10, {3, 1}, {}), Strip(10, {}, {4, 0, 2}), Strip(10, {}, {}), Strip(5, {7}, {})}) {
        WriteMeshFile(folder.Path("mesh.glb"), mesh);
        const PolygonMesh read = ReadMeshFile(folder.Path("mesh.glb"));
        EXPECT_EQ(NamedFaces(read), NamedFaces(mesh));
    }
}

TEST(FaceParts, KeepUvSeamsAndMorphTargets) {
    const TemporaryFolder folder;
    LevelGeometry geometry(TwoQuads());
    geometry.Subdivide();
    WriteMeshFile(folder.Path("mesh.glb"), LevelSource(geometry, {}));
    const PolygonMesh fine = GatherPolygons(LevelSource(geometry, {}));
    const PolygonMesh read = ReadMeshFile(folder.Path("mesh.glb"));
    // Two primitives, in face order.
    EXPECT_EQ(GlbDocument(folder.Path("mesh.glb"))["meshes"][0]["primitives"].size(), 2u);
    const auto before = CornerUvValues(fine);
    const auto after = CornerUvValues(read);
    ASSERT_EQ(after.size(), 48u);
    for (std::size_t face = 0; face < 8; ++face) {
        const std::size_t corners[] = {0, 1, 2, 0, 2, 3};
        for (std::size_t i = 0; i < 6; ++i) {
            EXPECT_EQ(read.faceVertices[face * 6 + i], fine.faceVertices[face * 4 + corners[i]]);
            EXPECT_NEAR(after[face * 6 + i][1], before[face * 4 + corners[i]][1], 1e-6);
            EXPECT_EQ(after[face * 6 + i][0], before[face * 4 + corners[i]][0]);
        }
    }
}

TEST(FaceParts, BecomeSubsetsOfAUsdMesh) {
    const TemporaryFolder folder;
    PolygonMesh mesh = AttributedMesh();
    mesh.attributes.groupNames = {"left arm", "skin"};
    mesh.attributes.faceMaterials = {1, 1, 0, SurfaceAttributes::none};
    WriteMeshFile(folder.Path("mesh.usda"), mesh);
    const std::string content = TemporaryFolder::Content(folder.Path("mesh.usda"));
    EXPECT_THAT(content,
                HasSubstr("    uniform token subsetFamily:group:familyType = \"nonOverlapping\"\n\n"
                          "    def GeomSubset \"left_arm\" (\n"
                          "        displayName = \"left arm\"\n    )\n    {\n"
                          "        uniform token elementType = \"face\"\n"
                          "        uniform token familyName = \"group\"\n"
                          "        int[] indices = [0, 2]\n    }\n\n"
                          "    def GeomSubset \"skin\"\n    {\n"
                          "        uniform token elementType = \"face\"\n"
                          "        uniform token familyName = \"group\"\n"
                          "        int[] indices = [1, 3]\n    }\n"
                          "    uniform token subsetFamily:materialBind:familyType = "
                          "\"nonOverlapping\"\n\n"
                          "    def GeomSubset \"cloth\" (\n"
                          "        prepend apiSchemas = [\"MaterialBindingAPI\"]\n    )\n    {\n"
                          "        uniform token elementType = \"face\"\n"
                          "        uniform token familyName = \"materialBind\"\n"
                          "        int[] indices = [0, 1]\n"
                          "        rel material:binding = </sheet/Materials/cloth>\n    }\n\n"
                          "    def GeomSubset \"skin_1\" (\n"
                          "        prepend apiSchemas = [\"MaterialBindingAPI\"]\n"
                          "        displayName = \"skin\"\n    )\n    {\n"
                          "        uniform token elementType = \"face\"\n"
                          "        uniform token familyName = \"materialBind\"\n"
                          "        int[] indices = [2]\n"
                          "        rel material:binding = </sheet/Materials/skin_1>\n    }\n\n"
                          "    def Scope \"Materials\"\n    {\n"
                          "    def Material \"cloth\"\n    {\n    }\n"
                          "    def Material \"skin_1\" (\n"
                          "        displayName = \"skin\"\n    )\n    {\n    }\n    }\n}\n"));
    mesh.attributes = {};
    WriteMeshFile(folder.Path("plain.usda"), mesh);
    EXPECT_THAT(TemporaryFolder::Content(folder.Path("plain.usda")),
                testing::AllOf(Not(HasSubstr("GeomSubset")), Not(HasSubstr("Material"))));
    EXPECT_EQ(UsdQuoted("a \"b\"\\\n\x7f ü"), "\"a \\\"b\\\"\\\\__ ü\"");
}

}  // namespace
}  // namespace trovik
