// SPDX-License-Identifier: Apache-2.0

/// \file
/// Tests that the script of the actions on a document replays to the same scene.
#include "engine/ActionStart.h"
#include "framework/files/MeshFiles.h"
#include "framework/io/ContentHash.h"
#include "framework/script/ScriptRunner.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/studio/engine/StudioEngine.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <filesystem>

namespace trovik::studio {

namespace {

/// Replays saved actions with trovik's script runner. \return the hash of the resulting scene.
ContentHash HashOfReplay(const std::string& script, const std::string& scene) {
    const std::string folder = std::filesystem::path(scene).parent_path().string();
    ScriptRunner runner(script, folder, {});
    EXPECT_GT(runner.Run().totals.dabs, 20u);
    runner.Save(scene);
    return HashFile(scene);
}

TEST_F(StudioEngine, SavedActionsReplayToTheSameScene) {
    OpenBust();
    engine->Run({{"tool", "Wax"}, {"set", {{"radius", 0.12}, {"strength", 60}}}});
    Draw({}, 0.4f);
    engine->EndStroke();
    StrokeStart smooth;
    smooth.modifier = BrushOperation::ModifierSmooth;
    Draw(smooth, 0.42f);
    engine->EndStroke();
    StrokeStart mask;
    mask.tool = "Freeze";
    Draw(mask, 0.5f);
    engine->EndStroke();
    StrokeStart line;
    line.isLine = true;
    Draw(line, 0.45f);
    engine->EndStroke();
    engine->Run({{"layer", {{"add", "Skin"}}}});
    Draw({}, 0.55f);
    engine->EndStroke();
    engine->Run({{"undo", 1}});
    engine->Save(Path("work.trovik"));
    engine->SaveActions(Path("work.json"));
    Finish();
    ASSERT_TRUE(failures.empty()) << failures.first().toStdString();

    EXPECT_EQ(HashOfReplay(Path("work.json"), Path("replayed.trovik")),
              HashFile(Path("work.trovik")));
}

/// A scene that is opened, saved over itself, and changed further.
class SavedOverItself : public StudioEngine, public testing::WithParamInterface<bool> {
protected:
    void SetUp() override {
        if (!GetParam()) engine = std::make_unique<Engine>(std::string());
        Listen();
    }
};

TEST_P(SavedOverItself, SavedActionsStartFromTheOriginalScene) {
    OpenBust();
    Draw({}, 0.35f);
    engine->EndStroke();
    engine->Save(Path("head.trovik"));
    Finish();
    OpenRequest request;
    request.scenePath = Path("head.trovik");
    bool isOpened = false;
    QObject::connect(engine.get(), &Engine::Opened, [&] { isOpened = true; });
    engine->Open(request);
    ASSERT_TRUE(WaitFor([&] { return isOpened || !failures.empty(); }));
    engine->Run({{"set", {{"radius", 0.12}, {"strength", 60}}}});
    Draw({}, 0.4f);
    engine->EndStroke();
    engine->Save(Path("head.trovik"));
    Draw({}, 0.5f);
    engine->EndStroke();
    // Undo also reverts steps from before a save.
    engine->Save(Path("head.trovik"));
    engine->Run({{"undo", 2}});
    Draw({}, 0.45f);
    engine->EndStroke();
    QString start = "none";
    engine->SaveActions(Path("actions.json"),
                        [&](const QString&, const QString& copy) { start = copy; });
    engine->Save(Path("result.trovik"));
    Finish();
    ASSERT_TRUE(failures.empty()) << failures.first().toStdString();
    EXPECT_EQ(start.toStdString(), Path("actions.start.trovik"));
    const ContentHash expected = HashFile(Path("result.trovik"));
    EXPECT_NE(expected, HashFile(Path("head.trovik")));
    // The script and its start file remain after the document has been closed, and can be moved.
    engine.reset();
    std::filesystem::create_directory(Path("moved"));
    for (const char* name : {"actions.json", "actions.start.trovik"})
        std::filesystem::rename(Path(name), std::filesystem::path(Path("moved")) / name);
    EXPECT_EQ(HashOfReplay(Path("moved/actions.json"), Path("replayed.trovik")), expected);
    if (GetParam()) {
        EXPECT_EQ(CountFiles("journals"), 0u);
    }
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutJournal, SavedOverItself, testing::Bool());

TEST_F(StudioEngine, SavedActionsNeedNoCopyWhileTheOpenedFileRemains) {
    OpenBust();
    Draw({}, 0.4f);
    engine->EndStroke();
    engine->Save(Path("head.trovik"));
    engine->Save(Path("head.trovik"));
    engine->Run({{"export", {{"file", Path("head.obj")}}}});
    QString start = "none";
    engine->SaveActions(Path("actions.json"),
                        [&](const QString&, const QString& copy) { start = copy; });
    Finish();
    EXPECT_EQ(start, QString());
    EXPECT_FALSE(std::filesystem::exists(Path("actions.start.obj")));
}

TEST(ActionStart, ContainsTheBuffersAndImagesOfAGltfFile) {
    const TemporaryFolder folder;
    const auto path = [&](const char* name) { return folder.Path(name); };
    std::filesystem::create_directories(path("model/images"));
    std::filesystem::create_directories(path("elsewhere"));
    // A triangle: three positions and three indices.
    const float positions[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const uint16_t indices[4] = {0, 1, 2, 0};
    folder.Fill("model/a b.bin",
                std::string(reinterpret_cast<const char*>(positions), sizeof positions) +
                    std::string(reinterpret_cast<const char*>(indices), sizeof indices));
    folder.Fill("model/images/skin.png", "image");
    folder.Fill("model/head.gltf", R"({"asset": {"version": "2.0"}, "scene": 0,
        "scenes": [{"nodes": [0]}], "nodes": [{"mesh": 0}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}, "indices": 1}]}],
        "buffers": [{"uri": "a%20b.bin", "byteLength": 44}],
        "bufferViews": [{"buffer": 0, "byteLength": 36},
                        {"buffer": 0, "byteOffset": 36, "byteLength": 6}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3",
                       "min": [0, 0, 0], "max": [1, 1, 0]},
                      {"bufferView": 1, "componentType": 5123, "count": 3, "type": "SCALAR"}],
        "images": [{"uri": "images/skin.png"}, {"uri": "images/none.png"}]})");
    ActionStart start(path("model/head.gltf"), path("work.journal"), false);
    EXPECT_EQ(start.FileFor(path("elsewhere/script.json")), path("model/head.gltf"));
    start.KeepBeforeWriting(path("model/head.gltf"));
    std::filesystem::rename(folder.Fill("new.gltf", "replaced"), path("model/head.gltf"));
    for (int times = 0; times < 2; ++times)
        ASSERT_EQ(start.FileFor(path("elsewhere/script.json")),
                  path("elsewhere/script.start.gltf"));
    const std::string copy = TemporaryFolder::Content(path("elsewhere/script.start.gltf"));
    const nlohmann::json document = nlohmann::json::parse(copy);
    EXPECT_EQ(document["images"][0]["uri"], "data:image/png;base64,aW1hZ2U=");
    EXPECT_EQ(document["images"][1]["uri"], "images/none.png") << "the file does not exist";
    // The copy can be read without the folder of the original.
    std::filesystem::remove_all(path("model"));
    const PolygonMesh mesh = ReadMeshFile(path("elsewhere/script.start.gltf"));
    ASSERT_EQ(mesh.positions.size(), 3u);
    EXPECT_EQ(mesh.positions[1][0], 1.0f);
}

TEST(ActionStart, CopiesTheMaterialFilesOfAnObjFile) {
    const TemporaryFolder folder;
    const auto path = [&](const char* name) { return folder.Path(name); };
    std::filesystem::create_directories(path("model"));
    std::filesystem::create_directories(path("elsewhere"));
    folder.Fill("model/skin 1.mtl", "newmtl skin\nmap_Kd skin.png\n");
    const std::string faces = "v 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl skin\nf 1 2 3\n";
    folder.Fill("model/head.obj", "# a comment\nmtllib skin 1.mtl\n" + faces);
    ActionStart start(path("model/head.obj"), path("work.journal"), false);
    start.KeepBeforeWriting(path("model/head.obj"));
    std::filesystem::rename(folder.Fill("new.obj", "replaced"), path("model/head.obj"));
    for (int times = 0; times < 2; ++times)
        ASSERT_EQ(start.FileFor(path("elsewhere/script.json")), path("elsewhere/script.start.obj"));
    EXPECT_EQ(TemporaryFolder::Content(path("elsewhere/script.start.obj")),
              "# a comment\nmtllib skin 1.mtl\n" + faces);
    const std::string materials = TemporaryFolder::Content(path("elsewhere/skin 1.mtl"));
    EXPECT_THAT(materials, testing::HasSubstr("newmtl skin"));
    EXPECT_THAT(materials, testing::HasSubstr("../model/skin.png"));
    // Next to the original, its material file is used.
    EXPECT_EQ(start.FileFor(path("model/script.json")), path("model/script.start.obj"));
    EXPECT_EQ(TemporaryFolder::Content(path("model/script.start.obj")),
              "# a comment\nmtllib skin 1.mtl\n" + faces);
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& file : std::filesystem::directory_iterator(path("elsewhere")))
        ++files;
    EXPECT_EQ(files, 2u) << "no temporary file remains";
}

TEST(ActionStart, FindsMaterialFilesWithAllKindsOfLineEnds) {
    const TemporaryFolder folder;
    const auto path = [&](const char* name) { return folder.Path(name); };
    std::filesystem::create_directories(path("model"));
    std::filesystem::create_directories(path("elsewhere"));
    folder.Fill("model/a.mtl", "newmtl skin\n");
    folder.Fill("model/b.mtl", "newmtl eyes\n");
    // Line endings of older systems, and a statement that continues on the next line.
    const std::string faces = "v 0 0 0\rv 1 0 0\rv 0 1 \\\r0\rf 1 2 3";
    folder.Fill("model/head.obj", "mtllib a.mtl \\\r\n  b.mtl\r" + faces);
    std::filesystem::permissions(path("model/head.obj"), std::filesystem::perms(0644));
    ActionStart start(path("model/head.obj"), path("work.journal"), false);
    start.KeepBeforeWriting(path("model/head.obj"));
    std::filesystem::rename(folder.Fill("new.obj", "replaced"), path("model/head.obj"));
    const std::string copy = start.FileFor(path("elsewhere/script.json"));
    EXPECT_EQ(TemporaryFolder::Content(copy), "mtllib a.mtl\nmtllib b.mtl\n" + faces);
    EXPECT_EQ(std::filesystem::status(copy).permissions(), std::filesystem::perms(0644));
    EXPECT_EQ(ReadMeshFile(copy).positions.size(), 3u);
}

TEST(ActionStart, KeepsExistingFilesThatHaveTheNameOfItsCopy) {
    const TemporaryFolder folder;
    const auto path = [&](const char* name) { return folder.Path(name); };
    folder.Fill("head.obj", "original");
    ActionStart start(path("head.obj"), path("work.journal"), false);
    start.KeepBeforeWriting(path("head.obj"));
    // Files are replaced as a whole; writing into a kept file would change its link.
    std::filesystem::rename(folder.Fill("new.obj", "replaced"), path("head.obj"));
    folder.Fill("script.start.obj", "of the user");
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(start.FileFor(path("script.json")), path("script.start-2.obj"));
        EXPECT_EQ(TemporaryFolder::Content(path("script.start-2.obj")), "original");
        EXPECT_EQ(TemporaryFolder::Content(path("script.start.obj")), "of the user");
    }
}

}  // namespace

}  // namespace trovik::studio
