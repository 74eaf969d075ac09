// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/layers/LayerStack.h"
#include "framework/mesh/MeshSource.h"
#include "framework/multires/LevelSource.h"
#include "tests/files/AttributeSamples.h"
#include "tests/files/FileRefusal.h"
#include "tests/files/SampleMeshes.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstring>
#include <string>

namespace trovik {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using Indices = std::vector<std::uint32_t>;
using Points = std::vector<std::array<float, 3>>;

/// Returns a .gltf document with one triangle. Its 40-byte buffer contains the positions 0 0 0, 1 0
/// 0 and 0 1 0 at byte 0, the indices 0 1 2 as bytes at byte 36, and padding.
json TriangleDocument() {
    return json::parse(R"({
        "asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0]}],
        "nodes": [{"mesh": 0, "name": "tri"}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}, "indices": 1}]}],
        "accessors": [
            {"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3",
             "min": [0, 0, 0], "max": [1, 1, 0]},
            {"bufferView": 1, "componentType": 5121, "count": 3, "type": "SCALAR"}],
        "bufferViews": [{"buffer": 0, "byteLength": 36},
                        {"buffer": 0, "byteOffset": 36, "byteLength": 3}],
        "buffers": [{"byteLength": 40, "uri": "data:application/octet-stream;base64,AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAAAAECAA=="}]
    })");
}

PolygonMesh ReadDocument(const json& document) {
    const TemporaryFolder folder;
    return ReadGltf(folder.Fill("mesh.gltf", document.dump()));
}

std::string Refusal(const json& document) {
    return FileRefusal(
        "mesh.gltf", document.dump(), [](const std::string& path) { ReadGltf(path); });
}

/// Returns the JSON of a .glb file.
json DocumentOf(const std::string& content) {
    std::uint32_t length = 0;
    std::memcpy(&length, content.data() + 12, sizeof length);
    return json::parse(content.substr(20, length));
}

std::uint32_t WordAt(const std::string& content, std::size_t place) {
    std::uint32_t word = 0;
    std::memcpy(&word, content.data() + place, sizeof word);
    return word;
}

TEST(GltfFile, TrianglesUvSeamsColoursAndNormalsRoundTrip) {
    const TemporaryFolder folder;
    PolygonMesh mesh = AttributedMesh();
    for (std::size_t vertex = 0; vertex < mesh.positions.size(); ++vertex) {
        mesh.normals.push_back({0.0f, 0.6f, vertex % 2 == 0 ? 0.8f : -0.8f});
    }
    mesh.attributes.hasAlpha = true;
    mesh.attributes.colors[4] = {0.25f, 0.5f, 0.75f, 0.125f};
    const Indices written = {0, 1, 4, 0, 4, 3, 1, 2, 5, 1, 5, 4,
                             0, 6, 1, 4, 5, 9, 4, 9, 8, 4, 8, 7};
    // The corners in the order in which they are written: quads 0 to 7, triangle 8 to 10, pentagon
    // 11 to 15.
    const Indices corners = {0, 1, 2,  0,  2,  3,  4,  5,  6,  4,  6,  7,
                             8, 9, 10, 11, 12, 13, 11, 13, 14, 11, 14, 15};
    for (const char* name : {"mesh.glb", "mesh.gltf"}) {
        SCOPED_TRACE(name);
        WriteMeshFile(folder.Path(name), mesh);
        const PolygonMesh read = ReadMeshFile(folder.Path(name));
        EXPECT_EQ(Bits(read.positions), Bits(mesh.positions));
        EXPECT_EQ(Bits(read.normals), Bits(mesh.normals));
        EXPECT_EQ(read.faceVertices, written);
        EXPECT_EQ(read.attributes.colors, mesh.attributes.colors);
        EXPECT_TRUE(read.attributes.hasAlpha);
        EXPECT_EQ(read.name, "sheet");
        EXPECT_EQ(read.attributes.space, (MeshSpace{1.0, UpAxis::Y}));
        const auto before = CornerUvValues(mesh);
        const auto after = CornerUvValues(read);
        ASSERT_EQ(after.size(), corners.size());
        for (std::size_t corner = 0; corner < corners.size(); ++corner) {
            EXPECT_EQ(after[corner][0], before[corners[corner]][0]);
            EXPECT_NEAR(after[corner][1], before[corners[corner]][1], 1e-7);
        }
    }
}

TEST(GltfFile, BinaryFilesHaveTheLayoutOfTheFormat) {
    const TemporaryFolder folder;
    WriteMeshFile(folder.Path("mesh.glb"), AttributedMesh());
    const std::string content = TemporaryFolder::Content(folder.Path("mesh.glb"));
    EXPECT_EQ(content.substr(0, 4), "glTF");
    EXPECT_EQ(WordAt(content, 4), 2u);
    EXPECT_EQ(WordAt(content, 8), content.size());
    EXPECT_EQ(content.substr(16, 4), "JSON");
    const std::uint32_t jsonBytes = WordAt(content, 12);
    EXPECT_EQ(jsonBytes % 4, 0u);
    EXPECT_EQ(WordAt(content, 20 + jsonBytes), content.size() - 28 - jsonBytes);
    const json document = DocumentOf(content);
    // Vertices 1 and 4 are on the seam, so there are 10 vertices plus their copies. Vertices 9, 8
    // and 7 have the same UV.
    const json& position = document["accessors"][0];
    EXPECT_EQ(position["count"], 12);
    EXPECT_EQ(position["min"], json({0.0, -1.0, 0.0}));
    EXPECT_EQ(position["max"], json({2.0, 2.5, 0.5}));
    EXPECT_EQ(document["buffers"][0]["byteLength"], WordAt(content, 20 + jsonBytes));
    EXPECT_EQ(document["asset"]["version"], "2.0");
}

TEST(GltfFile, LayersBecomeMorphTargets) {
    PolygonMesh mesh = AttributedMesh();
    mesh.positions.resize(6);
    mesh.faceSizes = {4, 4};
    mesh.faceVertices.resize(8);
    mesh.attributes = {};
    LevelGeometry geometry(mesh);
    geometry.Subdivide();
    LevelMesh& level = *geometry.Bound();
    geometry.Layers().Insert(std::make_shared<SculptLayer>(&level, "wrinkles"));
    geometry.Layers().Insert(std::make_shared<SculptLayer>(geometry.Level(0), "elsewhere"));
    const Vector before = level.Position(7);
    const Vector untouched = level.Position(3);
    SculptLayer& layer = *geometry.Layers().OfLevel(level).front();
    layer.SetStrength(0.5f);
    Vector out;
    const Vector offsets[] = {{0, 0, 2}, {0.25f, -1, 0}};
    layer.set(&out, layer.SlotOf(7), 7, &offsets[0], true);
    layer.set(&out, layer.SlotOf(2), 2, &offsets[1], true);
    ASSERT_EQ(level.Position(7).z, before.z + 1.0f);

    const TemporaryFolder folder;
    const std::string path = folder.Path("mesh.glb");
    WriteMeshFile(path, LevelSource(geometry, {}));
    const std::string content = TemporaryFolder::Content(path);
    const json document = DocumentOf(content);
    const json& shown = document["meshes"][0];
    EXPECT_EQ(shown["weights"], json({0.5}));
    EXPECT_EQ(shown["extras"]["targetNames"], json({"wrinkles"}));
    ASSERT_EQ(shown["primitives"][0]["targets"].size(), 1u);
    const json& target =
        document["accessors"][shown["primitives"][0]["targets"][0]["POSITION"].get<std::size_t>()];
    EXPECT_EQ(target["count"], level.VertexCount());
    EXPECT_EQ(target["min"], json({0.0, -1.0, 0.0}));
    EXPECT_EQ(target["max"], json({0.25, 0.0, 2.0}));
    EXPECT_EQ(target["sparse"]["count"], 2);
    const std::size_t buffer =
        content.size() - document["buffers"][0]["byteLength"].get<std::size_t>();
    const auto view = [&](const json& part) {
        return buffer + document["bufferViews"][part["bufferView"].get<std::size_t>()]["byteOffset"]
                            .get<std::size_t>();
    };
    const std::size_t indices = view(target["sparse"]["indices"]);
    EXPECT_EQ(WordAt(content, indices), 2u);
    EXPECT_EQ(WordAt(content, indices + 4), 7u);
    float values[6];
    std::memcpy(values, content.data() + view(target["sparse"]["values"]), sizeof values);
    EXPECT_EQ(values[0], 0.25f);
    EXPECT_EQ(values[1], -1.0f);
    EXPECT_EQ(values[5], 2.0f);
    // Positions exclude the layer, which the reader adds again.
    float base = 0.0f;
    std::memcpy(&base, content.data() + view(document["accessors"][0]) + 7 * 12 + 8, sizeof base);
    EXPECT_EQ(base, before.z);
    const PolygonMesh read = ReadGltf(path);
    EXPECT_EQ(read.positions[7][2], before.z + 1.0f);
    EXPECT_EQ(read.positions[3][0], untouched.x);
}

TEST(GltfFile, NodesAreMergedWithTheirTransforms) {
    json document = TriangleDocument();
    document["scenes"][0]["nodes"] = {0, 2};
    document["nodes"] = json::parse(R"([
        {"translation": [10, 0, 0], "children": [1], "name": "only a parent"},
        {"mesh": 0, "name": "turned", "scale": [2, 2, 2], "rotation": [0, 0, 0.70710678, 0.70710678]},
        {"mesh": 0, "name": "mirrored", "matrix": [-1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,5,1]}])");
    const PolygonMesh mesh = ReadDocument(document);
    ASSERT_EQ(mesh.positions.size(), 6u);
    const Points expected = {{10, 0, 0}, {10, 2, 0}, {8, 0, 0}, {0, 0, 5}, {-1, 0, 5}, {0, 1, 5}};
    for (std::size_t vertex = 0; vertex < 6; ++vertex) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            EXPECT_NEAR(mesh.positions[vertex][axis], expected[vertex][axis], 1e-6) << vertex;
        }
    }
    // The corner order of a mirrored triangle is reversed to preserve its front side.
    EXPECT_EQ(mesh.faceVertices, (Indices{0, 1, 2, 3, 5, 4}));
    EXPECT_EQ(mesh.attributes.groupNames, (std::vector<std::string>{"turned", "mirrored"}));
    EXPECT_EQ(mesh.attributes.faceGroups, (Indices{0, 1}));
    EXPECT_EQ(mesh.name, "turned");
}

TEST(GltfFile, PrimitivesOfOneMeshShareTheirVertices) {
    json document = TriangleDocument();
    // The same triangle as an indexed list, as a strip without indices, and as lines, which are
    // skipped.
    document["materials"] = {{{"name", "gold"}}, json::object()};
    document["meshes"][0]["primitives"] = json::parse(R"([
        {"attributes": {"POSITION": 0}, "indices": 1, "material": 1},
        {"attributes": {"POSITION": 0}, "mode": 5, "material": 0},
        {"attributes": {"POSITION": 0}, "mode": 1}])");
    const PolygonMesh mesh = ReadDocument(document);
    EXPECT_EQ(mesh.positions.size(), 3u);
    EXPECT_EQ(mesh.faceVertices, (Indices{0, 1, 2, 0, 1, 2}));
    EXPECT_EQ(FaceNames(mesh.attributes.faceMaterials, mesh.attributes.materialNames),
              (std::vector<std::string>{"material 1", "gold"}));
    EXPECT_EQ(mesh.name, "tri");
}

TEST(GltfFile, SparseNormalizedAndMissingNumbersAreRead) {
    json document = TriangleDocument();
    // Colours without a buffer view. The sparse data sets one colour: bytes 0 to 2 of the indices,
    // divided by 255.
    document["accessors"].push_back(json::parse(
        R"({"componentType": 5121, "normalized": true, "count": 3, "type": "VEC3", "sparse": {
            "count": 1, "indices": {"bufferView": 2, "componentType": 5121},
            "values": {"bufferView": 1}}})"));
    document["bufferViews"].push_back({{"buffer", 0}, {"byteOffset", 38}, {"byteLength", 1}});
    document["meshes"][0]["primitives"][0]["attributes"]["COLOR_0"] = 2;
    const PolygonMesh mesh = ReadDocument(document);
    const std::vector<std::array<float, 4>> expected = {
        {0, 0, 0, 1}, {0, 0, 0, 1}, {0, 1.0f / 255.0f, 2.0f / 255.0f, 1}};
    EXPECT_EQ(mesh.attributes.colors, expected);
    EXPECT_FALSE(mesh.attributes.hasAlpha);
}

TEST(GltfFile, BadDocumentsNamePartAndReason) {
    const auto changed = [](const char* pointer, const json& value) {
        json document = TriangleDocument();
        document[json::json_pointer(pointer)] = value;
        return Refusal(document);
    };
    EXPECT_EQ(ReadDocument(TriangleDocument()).faceVertices, (Indices{0, 1, 2}));
    EXPECT_THAT(changed("/nodes/0/mesh", 1),
                HasSubstr("node 0: it refers to mesh 1, but there are only 1"));
    EXPECT_THAT(changed("/scenes/0/nodes", {7}), HasSubstr("scene 0: it refers to node 7"));
    EXPECT_THAT(changed("/scene", 3), HasSubstr("scene 3 is the default scene"));
    EXPECT_THAT(changed("/nodes/0/children", {0}), HasSubstr("node 0: it has several parents"));
    EXPECT_THAT(
        changed("/accessors/0/count", 4),
        HasSubstr("mesh 0, primitive 0: accessor 0: its 4 elements extend past the end of"));
    EXPECT_THAT(changed("/accessors/0/count", 4000000000u), HasSubstr("extend past the end of"));
    EXPECT_THAT(changed("/accessors/0/byteOffset", 4000000000u),
                HasSubstr("extend past the end of"));
    EXPECT_THAT(changed("/accessors/0/type", "VEC2"),
                HasSubstr("does not contain 3-component vectors"));
    EXPECT_THAT(changed("/accessors/0/bufferView", 9), HasSubstr("refers to buffer view 9"));
    EXPECT_THAT(changed("/accessors/1/componentType", 5126),
                HasSubstr("not a list of whole numbers"));
    EXPECT_THAT(changed("/bufferViews/0/buffer", 2), HasSubstr("buffer 2"));
    EXPECT_THAT(changed("/bufferViews/1/byteOffset", 14),
                HasSubstr("accessor 1 refers to vertex 128 of 3"));
    EXPECT_THAT(changed("/bufferViews/0/byteOffset", 8), HasSubstr("extend past the end of"));
    EXPECT_THAT(changed("/nodes/0/matrix", {1, 2}), HasSubstr("mesh.gltf: "));
    EXPECT_THAT(changed("/extensionsRequired", {"KHR_draco_mesh_compression"}),
                HasSubstr("requires the extension 'KHR_draco_mesh_compression'"));
    EXPECT_THAT(changed("/meshes/0/primitives/0/mode", 1), HasSubstr("no faces"));
    EXPECT_THAT(changed("/meshes/0/primitives/0/attributes", {{"NORMAL", 0}}),
                HasSubstr("no attribute POSITION"));
    EXPECT_THAT(changed("/buffers/0/uri", "../../outside.bin"), HasSubstr("mesh.gltf: "));
    const TemporaryFolder folder;
    const std::string deep = folder.Fill("deep.gltf", std::string(100000, '['));
    EXPECT_THAT(MessageOf<HostError>([&] { ReadGltf(deep); }),
                HasSubstr("nested more than 64 levels deep"));
    const std::string empty = folder.Fill("empty.glb", "");
    EXPECT_THAT(MessageOf<HostError>([&] { ReadGltf(empty); }), HasSubstr("the file is empty"));
}

TEST(GltfFile, ExternalBuffersAreRead) {
    json document = TriangleDocument();
    document["buffers"][0]["uri"] = "data/part.bin";
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.Path("data"));
    std::string bytes(40, '\0');
    bytes.replace(14, 2, "\x80\x3f");
    bytes.replace(30, 2, "\x80\x3f");
    bytes.replace(37, 2, "\1\2");
    folder.Fill("data/part.bin", bytes);
    EXPECT_EQ(ReadGltf(folder.Fill("mesh.gltf", document.dump())).positions,
              (Points{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
    // The file is shorter than its `byteLength`.
    folder.Fill("data/part.bin", bytes.substr(0, 39));
    EXPECT_THAT(MessageOf<HostError>([&] { ReadGltf(folder.Path("mesh.gltf")); }),
                HasSubstr("mesh.gltf"));
}

TEST(GltfFile, EveryDamagedByteAndTruncationIsReadOrRefused) {
    const TemporaryFolder folder;
    for (const char* name : {"mesh.glb", "mesh.gltf"}) {
        SCOPED_TRACE(name);
        WriteMeshFile(folder.Path(name), AttributedMesh());
        const std::string whole = TemporaryFolder::Content(folder.Path(name));
        int refused = 0;
        for (std::size_t place = 0; place < whole.size(); place += 3) {
            std::string damaged = whole;
            damaged[place] = static_cast<char>(damaged[place] ^ (place % 2 == 0 ? 0xFF : 0x11));
            for (const std::string& content : {whole.substr(0, place), damaged}) {
                const std::string path = folder.Fill(std::string("damaged-") + name, content);
                try {
                    CheckPolygonMesh(ReadMeshFile(path), path);
                } catch (const HostError& error) {
                    ++refused;
                    EXPECT_THAT(error.what(), HasSubstr(path));
                    EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
                }
            }
        }
        EXPECT_GT(refused, 300);
    }
}

}  // namespace
}  // namespace trovik
