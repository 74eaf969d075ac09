// SPDX-License-Identifier: Apache-2.0

/// \file
/// Work that is asked to stop, at each moment at which it asks: files are whole or as they were,
/// and the journal gives back all that was finished.
#include "framework/errors/HostError.h"
#include "framework/errors/WorkStopped.h"
#include "framework/math/SameBits.h"
#include "framework/script/JournalRecovery.h"
#include "tests/journal/JournalWork.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

namespace trovik::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr const char* old = "what was there";

json Steps() {
    return {{{"tool", "Sculpt"}, {"set", {{"radius", 0.4}, {"strength", 40}}}},
            {{"stroke", {{"surface", {{0.3, 0.2, 1.0}, {-0.4, 0.5, 1.0}}}}}},
            {{"layer", {{"add", "a"}}}},
            {{"stroke", {{"dabs", {{{"face", 3}}, {{"face", 40}}, {{"face", 77}}}}}}},
            {{"subdivide", 2}},
            {{"export", {{"file", "mesh.obj"}}}},
            {{"stroke", {{"wholeMesh", {{"strength", 0.1}}}}}},
            {{"export", {{"file", "mesh.glb"}}}},
            {{"subdivide", 1}}};
}

/// A run of the script that is stopped when it asks for the `at`-th time.
class StoppedRun {
public:
    StoppedRun(const TemporaryFolder& folder, unsigned at) {
        ScriptProgress progress;
        progress.stop = [this, at] { return ++asked >= at; };
        runner =
            std::make_unique<ScriptRunner>(FillScript(folder, Steps()), folder.Path(""), progress);
        runner->SetJournal({folder.Path("work.journal"), false});
        try {
            runner->Run();
        } catch (const WorkStopped&) {
            stopped = true;
        }
    }
    unsigned asked = 0;
    bool stopped = false;
    std::unique_ptr<ScriptRunner> runner;
};

std::set<std::string> Files(const TemporaryFolder& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.Path("")))
        names.insert(entry.path().filename().string());
    return names;
}

TEST(StoppedWork, LeavesFilesWholeAndAJournalThatGivesBackWhatWasFinished) {
    const QuickDisk disk;
    const TemporaryFolder whole;
    const StoppedRun all(whole, 1u << 30);
    ASSERT_FALSE(all.stopped);
    const std::string obj = TemporaryFolder::Content(whole.Path("mesh.obj"));
    const std::string glb = TemporaryFolder::Content(whole.Path("mesh.glb"));
    // Each step, each dab, each level and each file asks.
    ASSERT_GT(all.asked, 20u);
    std::size_t recovered = 0;
    std::set<std::size_t> steps;
    for (unsigned at = 1; at <= all.asked; ++at) {
        SCOPED_TRACE("stopped at " + std::to_string(at));
        const TemporaryFolder folder;
        for (const char* name : {"mesh.obj", "mesh.glb"}) std::ofstream(folder.Path(name)) << old;
        StoppedRun run(folder, at);
        ASSERT_TRUE(run.stopped);
        EXPECT_EQ(run.asked, at) << "nothing goes on after it was told to stop";
        const std::string nowObj = TemporaryFolder::Content(folder.Path("mesh.obj"));
        const std::string nowGlb = TemporaryFolder::Content(folder.Path("mesh.glb"));
        EXPECT_TRUE(nowObj == old || nowObj == obj);
        EXPECT_TRUE(nowGlb == old || nowGlb == glb);
        if (!fs::exists(folder.Path("work.journal"))) continue;
        for (const std::string& name : Files(folder))
            EXPECT_TRUE(fs::exists(whole.Path(name))) << name << " was left over";
        RecoveredWork work = RedoJournal(folder.Path("work.journal"));
        EXPECT_EQ(StateOf(work.runner->GetDocument()), StateOf(run.runner->GetDocument()));
        ++recovered;
        steps.insert(work.steps);
    }
    EXPECT_GT(recovered, 15u);
    EXPECT_GT(steps.size(), 5u);
}

TEST(StoppedWork, RecoveryStopsToo) {
    const QuickDisk disk;
    const TemporaryFolder folder;
    const StoppedRun all(folder, 1u << 30);
    RecoveryOptions options;
    unsigned asked = 0;
    options.progress.stop = [&asked] {
        ++asked;
        return false;
    };
    RedoJournal(folder.Path("work.journal"), options);
    const unsigned most = asked;
    EXPECT_GT(most, 10u);
    for (unsigned at = 1; at <= most; ++at) {
        asked = 0;
        options.progress.stop = [&asked, at] { return ++asked >= at; };
        EXPECT_THROW(RecoverJournal(folder.Path("work.journal"), folder.Path("w.trovik"), options),
                     WorkStopped);
        EXPECT_EQ(asked, at);
        EXPECT_FALSE(fs::exists(folder.Path("w.trovik")));
    }
}

}  // namespace
}  // namespace trovik::test
