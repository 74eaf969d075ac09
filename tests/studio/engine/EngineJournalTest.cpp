// SPDX-License-Identifier: Apache-2.0
#include "engine/JournalFolder.h"
#include "framework/io/ContentHash.h"
#include "framework/script/JournalRecovery.h"
#include "tests/studio/engine/StudioEngine.h"
#include "window/RecoveryDialog.h"

#include <filesystem>
#include <fstream>

namespace trovik::studio {

namespace {

TEST_F(StudioEngine, ReportsAJournalThatCannotBeWrittenAndContinuesIt) {
    namespace fs = std::filesystem;
    OpenBust();
    Draw({}, 0.4f);
    engine->EndStroke();
    Finish();
    EXPECT_EQ(engine->JournalFailure(), "");
    // The failure is detected without another request. A new journal cannot be written either,
    // because a file has replaced the folder.
    fs::remove_all(Path("journals"));
    std::ofstream(Path("journals")) << "not a folder";
    ASSERT_TRUE(WaitFor([this] { return !engine->JournalFailure().isEmpty(); }));
    Draw({}, 0.5f);
    engine->EndStroke();
    Finish();
    notes.clear();
    engine->ResumeJournal();
    Finish();
    EXPECT_FALSE(engine->JournalFailure().isEmpty());
    EXPECT_EQ(notes.size(), 1);
    fs::remove(Path("journals"));
    ASSERT_TRUE(WaitFor([this] { return engine->JournalFailure().isEmpty(); }));
    Draw({}, 0.45f);
    engine->EndStroke();
    Finish();
    EXPECT_TRUE(failures.empty());

    const auto copied = fs::copy_options::recursive;
    fs::copy(Path("journals"), Path("crashed"), copied);
    engine->Save(Path("work.trovik"));
    Finish();
    for (const auto& file : fs::directory_iterator(Path("crashed"))) {
        if (file.path().extension() != ".journal") continue;
        RecoverJournal(file.path().string(), Path("recovered.trovik"));
    }
    EXPECT_EQ(HashFile(Path("work.trovik")), HashFile(Path("recovered.trovik")));
    engine.reset();
    EXPECT_TRUE(fs::is_empty(Path("journals")));
}

TEST_F(StudioEngine, OffersOnlyWorkThatIsNotInASavedScene) {
    OpenBust();
    Draw({}, 0.4f);
    engine->EndStroke();
    engine->Save(Path("work.trovik"));
    Finish();
    const auto offered = [&] {
        const QTemporaryDir copy;
        for (const auto& file : std::filesystem::directory_iterator(Path("journals")))
            std::filesystem::copy(file.path(), copy.path().toStdString());
        const auto works = FindRecoverableWork(copy.path());
        return works.empty() ? qsizetype(-1) : works.front().steps.size();
    };
    // Finish has run only the step "set", for which no recovery is offered.
    EXPECT_EQ(offered(), -1);
    Draw({}, 0.5f);
    engine->EndStroke();
    engine->Run({{"undo", 1}});
    Finish();
    EXPECT_EQ(offered(), 2);
    std::filesystem::remove(Path("work.trovik"));
    EXPECT_EQ(offered(), 3);
}

TEST_F(StudioEngine, RecoversTheWorkOfAJournalThatWasNotClosed) {
    OpenBust();
    engine->Run({{"set", {{"radius", 0.12}}}});
    Draw({}, 0.4f);
    engine->EndStroke();
    engine->Run({{"mirror", {"x"}}});
    Draw({}, 0.5f);
    Finish();
    // This is the state that a crash leaves, because a process that crashes cannot close its
    // journal.
    std::filesystem::copy(Path("journals"), Path("crashed"));
    engine->Save(Path("work.trovik"));
    Finish();
    engine.reset();
    EXPECT_TRUE(std::filesystem::is_empty(Path("journals")));

    engine = std::make_unique<Engine>(Path("journals"));
    Listen();
    OpenRequest request;
    request.journalPath = std::filesystem::directory_iterator(Path("crashed"))->path().string();
    engine->Open(request);
    ASSERT_TRUE(WaitFor([this] { return engine->HasDocument() || !failures.empty(); }));
    ASSERT_TRUE(failures.empty()) << failures.first().toStdString();
    EXPECT_TRUE(engine->Document().isRecovered);
    const std::string scene = RecoveredScenePathOf(request.journalPath);
    EXPECT_EQ(CountFiles("crashed"), 2u) << "the recovered journal, and its scene";
    engine->Save(Path("recovered.trovik"));
    Finish();
    EXPECT_EQ(HashFile(Path("work.trovik")), HashFile(Path("recovered.trovik")));
    // The journal of this work starts from the recovered scene.
    EXPECT_EQ(CountFiles("crashed"), 1u);
    EXPECT_TRUE(std::filesystem::exists(scene));
    engine.reset();
    EXPECT_EQ(CountFiles("crashed"), 0u);
    EXPECT_EQ(CountFiles("journals"), 0u);
}

}  // namespace

}  // namespace trovik::studio
