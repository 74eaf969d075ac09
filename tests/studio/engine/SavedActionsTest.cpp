// SPDX-License-Identifier: Apache-2.0

/// \file
/// Scripts of the actions on a document, which replay to the same scene.
#include "engine/ActionStart.h"
#include "framework/io/ContentHash.h"
#include "framework/script/ScriptRunner.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/studio/engine/StudioEngine.h"

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
    // Both undo steps can also be from before a save.
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
    // The script and its start remain after the document was closed, and can be moved.
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
