// SPDX-License-Identifier: Apache-2.0
#include "engine/JournalFolder.h"
#include "framework/journal/Journal.h"

#include <QTemporaryDir>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

namespace trovik::studio {

namespace {

namespace fs = std::filesystem;

class JournalFolder : public testing::Test {
protected:
    QTemporaryDir folder;

    std::string Path(const std::string& name) const {
        return (fs::path(folder.path().toStdString()) / name).string();
    }
    void Fill(std::initializer_list<const char*> names) const {
        for (const char* name : names) std::ofstream(Path(name)) << name;
    }
    /// A journal of a process that has ended.
    void FillJournal(const char* name,
                     const std::string& source,
                     bool isClosed = false,
                     const nlohmann::json& step = {{"subdivide", 1}}) const {
        JournalBase base;
        base.setup = nlohmann::json::object();
        base.source = source;
        Journal journal({.path = Path(name)}, base);
        journal.BeginStep(step);
        journal.EndStep({}, "");
        if (isClosed) journal.Close();
    }
    std::set<std::string> Names() const {
        std::set<std::string> names;
        for (const auto& file : fs::directory_iterator(folder.path().toStdString()))
            names.insert(file.path().filename().string());
        return names;
    }
};

TEST_F(JournalFolder, KeepsOnlyTheFilesThatRecoveryNeeds) {
    FillJournal("open.journal", Path("before.journal.trovik"));
    FillJournal("closed.journal", "cube.obj", true);
    FillJournal("unchanged.journal", "cube.obj", false, {{"tool", "Wax"}});
    FillJournal("recovered.journal", Path("before.journal.trovik"), false, {{"tool", "Wax"}});
    Fill({"open.png",
          "open.journal.1.trovik",
          "open.journal.base.obj",
          "before.journal.trovik",
          "before.journal.recovered",
          "closed.png",
          "closed.journal.1.trovik",
          "gone.journal.recovered",
          "gone.journal.trovik",
          "gone.png",
          "torn.12-0.part.journal",
          "notes.txt"});
    RemoveLeftovers(folder.path().toStdString());
    EXPECT_THAT(Names(),
                testing::ElementsAre("before.journal.recovered",
                                     "before.journal.trovik",
                                     "notes.txt",
                                     "open.journal",
                                     "open.journal.1.trovik",
                                     "open.journal.base.obj",
                                     "open.png",
                                     "recovered.journal"));
}

TEST_F(JournalFolder, KeepsAJournalThatAProcessIsWriting) {
    JournalBase base;
    base.setup = nlohmann::json::object();
    base.source = "cube.obj";
    const Journal journal({.path = Path("work.journal")}, base);
    RemoveLeftovers(folder.path().toStdString());
    EXPECT_EQ(Names().size(), 1u);
}

TEST_F(JournalFolder, KeepsEverythingIfAJournalCannotBeRead) {
    Fill({"damaged.journal", "gone.journal.trovik", "gone.png"});
    RemoveLeftovers(folder.path().toStdString());
    EXPECT_EQ(Names().size(), 3u);
}

TEST_F(JournalFolder, RemovesAJournalWithWhatBelongsToIt) {
    FillJournal("work.journal", "cube.obj");
    Fill({"work.png", "work.journal.trovik", "work.journal.2.trovik", "workshop.journal.trovik"});
    RemoveRecovered(Path("work.journal"));
    EXPECT_THAT(Names(), testing::ElementsAre("work.journal.trovik", "workshop.journal.trovik"));
    RemoveJournal(Path("work.journal"));
    EXPECT_THAT(Names(), testing::ElementsAre("workshop.journal.trovik"));
}

TEST_F(JournalFolder, NamesNewJournalsDifferently) {
    const std::string folderPath = folder.path().toStdString();
    EXPECT_NE(NewJournalPath(folderPath), NewJournalPath(folderPath));
    RemoveLeftovers(Path("missing"));
}

}  // namespace

}  // namespace trovik::studio
