// SPDX-License-Identifier: Apache-2.0

/// \file Tests runs that are cancelled at arbitrary progress reports: files are complete or
/// unchanged, and all completed steps can be recovered from the journal.
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/math/SameBits.h"
#include "framework/script/JournalRecovery.h"
#include "tests/jobs/TestJob.h"
#include "tests/journal/JournalWork.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
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

/// A run of the script that is cancelled at progress report number `at`.
class StoppedRun {
public:
    StoppedRun(const TemporaryFolder& folder, uint64_t at) : job(at, TestJob::WithoutClock()) {
        ScriptProgress progress;
        progress.job = &job;
        runner =
            std::make_unique<ScriptRunner>(FillScript(folder, Steps()), folder.Path(""), progress);
        runner->SetJournal({folder.Path("work.journal"), false});
        try {
            runner->Run();
        } catch (const Cancelled&) {
            stopped = true;
        }
    }
    TestJob job;
    bool stopped = false;
    std::unique_ptr<ScriptRunner> runner;
};

std::set<std::string> Files(const TemporaryFolder& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.Path("")))
        names.insert(entry.path().filename().string());
    return names;
}

TEST(StoppedWork, LeavesCompleteFilesAndAJournalOfTheFinishedWork) {
    const QuickDisk disk;
    const TemporaryFolder whole;
    const StoppedRun all(whole, TestJob::never);
    ASSERT_FALSE(all.stopped);
    const std::string obj = TemporaryFolder::Content(whole.Path("mesh.obj"));
    const std::string glb = TemporaryFolder::Content(whole.Path("mesh.glb"));
    // Every step, dab, level and file reports progress.
    ASSERT_GT(all.job.reports, 100u);
    std::size_t recovered = 0;
    std::set<std::size_t> steps;
    for (uint64_t at = 1; at <= all.job.reports; ++at) {
        SCOPED_TRACE("stopped at " + std::to_string(at));
        const TemporaryFolder folder;
        for (const char* name : {"mesh.obj", "mesh.glb"}) std::ofstream(folder.Path(name)) << old;
        StoppedRun run(folder, at);
        ASSERT_TRUE(run.stopped);
        EXPECT_EQ(run.job.reports, at) << "there are reports after the cancellation";
        const std::string nowObj = TemporaryFolder::Content(folder.Path("mesh.obj"));
        const std::string nowGlb = TemporaryFolder::Content(folder.Path("mesh.glb"));
        EXPECT_TRUE(nowObj == old || nowObj == obj);
        EXPECT_TRUE(nowGlb == old || nowGlb == glb);
        if (!fs::exists(folder.Path("work.journal"))) continue;
        for (const std::string& name : Files(folder))
            EXPECT_TRUE(fs::exists(whole.Path(name))) << name << " is a leftover file";
        RecoveredWork work = RedoJournal(folder.Path("work.journal"));
        EXPECT_EQ(StateOf(work.runner->GetDocument()), StateOf(run.runner->GetDocument()));
        ++recovered;
        steps.insert(work.steps);
    }
    EXPECT_GT(recovered, 15u);
    EXPECT_GT(steps.size(), 5u);
}

TEST(StoppedWork, RecoveryCanBeStopped) {
    const QuickDisk disk;
    const TemporaryFolder folder;
    const StoppedRun all(folder, TestJob::never);
    RecoveryOptions options;
    TestJob whole(TestJob::never, TestJob::WithoutClock());
    options.progress.job = &whole;
    RecoverJournal(folder.Path("work.journal"), folder.Path("w.trovik"), options);
    const std::string recovered = TemporaryFolder::Content(folder.Path("w.trovik"));
    fs::remove(folder.Path("w.trovik"));
    EXPECT_GT(whole.reports, 60u);
    const std::set<std::string> files = Files(folder);
    std::mt19937 random(8);
    for (uint64_t at = 1; at <= whole.reports; at += 1 + random() % 5) {
        TestJob job(at, TestJob::WithoutClock());
        options.progress.job = &job;
        EXPECT_THROW(RecoverJournal(folder.Path("work.journal"), folder.Path("w.trovik"), options),
                     Cancelled);
        EXPECT_EQ(job.reports, at);
        EXPECT_EQ(Files(folder), files);
    }
    options.progress.job = nullptr;
    RecoverJournal(folder.Path("work.journal"), folder.Path("w.trovik"), options);
    EXPECT_EQ(TemporaryFolder::Content(folder.Path("w.trovik")), recovered);
}

}  // namespace
}  // namespace trovik::test
