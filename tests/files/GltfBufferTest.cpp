// SPDX-License-Identifier: Apache-2.0

/// \file Tests the buffers of glTF files: allowed locations and lengths, and the targets of buffer
/// views.
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/layers/LayerStack.h"
#include "framework/multires/LevelSource.h"
#include "tests/files/AttributeSamples.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

namespace trovik {
namespace {

using nlohmann::json;
using testing::HasSubstr;
namespace fs = std::filesystem;

/// Returns a document with one triangle, whose 36-byte buffer is in another file.
json Document(const std::string& uri, unsigned byteLength = 36) {
    json document = json::parse(R"({
        "asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0]}], "nodes": [{"mesh": 0}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}}]}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3"}],
        "bufferViews": [{"buffer": 0, "byteLength": 36}]})");
    document["buffers"] = {{{"byteLength", byteLength}, {"uri", uri}}};
    return document;
}

std::string Triangle() {
    const float numbers[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    return {reinterpret_cast<const char*>(numbers), sizeof numbers};
}

std::string Glb(const json& document, const std::string& binary) {
    std::string text = document.dump();
    text.resize((text.size() + 3) / 4 * 4, ' ');
    const auto word = [](std::size_t number) {
        const auto value = static_cast<std::uint32_t>(number);
        return std::string(reinterpret_cast<const char*>(&value), sizeof value);
    };
    std::string file = "glTF" + word(2) + word(20 + text.size() + 8 + binary.size()) +
                       word(text.size()) + "JSON" + text + word(binary.size());
    return file + std::string("BIN\0", 4) + binary;
}

class GltfBufferFiles : public ::testing::Test {
protected:
    GltfBufferFiles() {
        fs::create_directories(folder.Path("in/data"));
        folder.Fill("outside.bin", Triangle());
    }
    PolygonMesh Read(const json& document) const {
        return ReadGltf(folder.Fill("in/mesh.gltf", document.dump()));
    }
    std::string Refusal(const json& document) const {
        std::string message = MessageOf<HostError>([&] { Read(document); });
        EXPECT_THAT(message, testing::StartsWith(folder.Path("in/mesh.gltf") + ": "));
        return message;
    }

    TemporaryFolder folder;
};

TEST_F(GltfBufferFiles, MayBeLongerThanTheirByteLength) {
    folder.Fill("in/data/long one.bin", Triangle() + "and more");
    EXPECT_EQ(Read(Document("data/long%20one.bin")).positions.size(), 3u);
    // 36 bytes plus three more.
    const std::string base64 = "AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAAAQID";
    EXPECT_EQ(Read(Document("data:application/octet-stream;base64," + base64)).positions[2],
              (std::array<float, 3>{0, 1, 0}));
    // Buffer views cannot access bytes past `byteLength`.
    EXPECT_THAT(Refusal(Document("data/long%20one.bin", 35)), HasSubstr("extend past the end of"));
    // A binary file with an internal and an external buffer.
    json document = Document("data/long%20one.bin");
    document["buffers"].insert(document["buffers"].begin(), json::object({{"byteLength", 36}}));
    for (const int buffer : {0, 1}) {
        document["bufferViews"][0]["buffer"] = buffer;
        const std::string path =
            folder.Fill("in/mesh.glb", Glb(document, Triangle() + std::string(4, '\0')));
        EXPECT_EQ(ReadGltf(path).positions[1], (std::array<float, 3>{1, 0, 0}));
    }
}

TEST_F(GltfBufferFiles, TooShortOrMissingOnesAreNamed) {
    folder.Fill("in/data/short.bin", Triangle().substr(1));
    EXPECT_THAT(Refusal(Document("data/short.bin")),
                HasSubstr("buffer 0: 'data/short.bin' has 35 bytes, fewer than its byteLength of "
                          "36"));
    EXPECT_THAT(Refusal(Document("none.bin")),
                HasSubstr("buffer 0: 'none.bin': No such file or directory"));
    EXPECT_THAT(Refusal(Document("data")), HasSubstr("buffer 0: cannot read "));
    EXPECT_THAT(Refusal(Document("data:application/octet-stream;base64,AAAA")),
                HasSubstr("buffer 0: its data URI has 3 bytes, fewer than its byteLength of 36"));
    EXPECT_THAT(Refusal(Document("data:who/knows,AAAA")),
                HasSubstr("buffer 0: its data URI 'data:who/knows,AAAA' cannot be decoded"));
}

TEST_F(GltfBufferFiles, OutsideTheFolderAreNotReadEvenThroughLinks) {
    const char* reason = "is outside the folder of the file; only files in that folder";
    EXPECT_THAT(Refusal(Document("../outside.bin")), HasSubstr(reason));
    EXPECT_THAT(Refusal(Document("data/../../outside.bin")), HasSubstr(reason));
    EXPECT_THAT(Refusal(Document("%2e%2e/outside.bin")), HasSubstr(reason));
    EXPECT_THAT(Refusal(Document(folder.Path("outside.bin"))), HasSubstr(reason));
    // The message does not reveal whether the file exists.
    EXPECT_THAT(Refusal(Document("../missing.bin")), HasSubstr(reason));
    EXPECT_THAT(Refusal(Document(folder.Path("missing.bin"))), HasSubstr(reason));
    fs::create_symlink("../outside.bin", folder.Path("in/link.bin"));
    EXPECT_THAT(Refusal(Document("link.bin")), HasSubstr(reason));
    fs::create_directory_symlink("..", folder.Path("in/up"));
    EXPECT_THAT(Refusal(Document("up/outside.bin")), HasSubstr(reason));
    // A symbolic link to a file inside the folder is followed, and so is a link to the document's
    // folder.
    folder.Fill("in/data/inside.bin", Triangle());
    fs::create_symlink("data/inside.bin", folder.Path("in/good.bin"));
    EXPECT_EQ(Read(Document("good.bin")).positions.size(), 3u);
    fs::create_directory_symlink("in", folder.Path("same"));
    EXPECT_EQ(ReadGltf(folder.Path("same/mesh.gltf")).positions.size(), 3u);
}

json Written(const TemporaryFolder& folder, const MeshSource& source) {
    WriteMeshFile(folder.Path("head of a bust.gltf"), source);
    return json::parse(TemporaryFolder::Content(folder.Path("head of a bust.gltf")));
}

TEST(GltfDescriptions, HaveTheTargetsOfViews) {
    const TemporaryFolder folder;
    LevelGeometry geometry(TwoQuads());
    LevelMesh& level = *geometry.Bound();
    geometry.Layers().Insert(std::make_shared<SculptLayer>(&level, "wrinkles"));
    SculptLayer& layer = *geometry.Layers().OfLevel(level).front();
    const Vector offset(0, 0, 1);
    Vector out;
    layer.set(&out, layer.SlotOf(2), 2, &offset, true);
    const json document = Written(folder, LevelSource(geometry, {}));
    const json& views = document["bufferViews"];
    const json& accessors = document["accessors"];
    const json& primitives = document["meshes"][0]["primitives"];
    ASSERT_EQ(primitives.size(), 2u);
    for (const json& primitive : primitives) {
        for (const auto& [name, accessor] : primitive["attributes"].items()) {
            const json& view =
                views[accessors[accessor.get<std::size_t>()]["bufferView"].get<std::size_t>()];
            EXPECT_EQ(view["target"], 34962) << name;
        }
        const json& indices = accessors[primitive["indices"].get<std::size_t>()];
        EXPECT_EQ(views[indices["bufferView"].get<std::size_t>()]["target"], 34963);
        const json& sparse =
            accessors[primitive["targets"][0]["POSITION"].get<std::size_t>()]["sparse"];
        for (const char* part : {"indices", "values"}) {
            EXPECT_FALSE(views[sparse[part]["bufferView"].get<std::size_t>()].contains("target"));
        }
    }
}

TEST(GltfDescriptions, NameMeshNodeAndMaterials) {
    const TemporaryFolder folder;
    PolygonMesh mesh = AttributedMesh();
    json document = Written(folder, PolygonSource(mesh));
    EXPECT_EQ(document["meshes"][0]["name"], "sheet");
    EXPECT_EQ(document["nodes"][0]["name"], "sheet");
    EXPECT_EQ(document["materials"][0]["name"], "cloth");
    EXPECT_EQ(document["materials"][1]["name"], "skin");
    // An unnamed mesh gets the name of its file.
    mesh.name.clear();
    document = Written(folder, PolygonSource(mesh));
    EXPECT_EQ(document["meshes"][0]["name"], "head of a bust");
    EXPECT_EQ(document["nodes"][0]["name"], "head of a bust");
}

}  // namespace
}  // namespace trovik
