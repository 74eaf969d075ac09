// SPDX-License-Identifier: Apache-2.0

/// \file Tests that processes killed at random times lose none of their work.
#include "framework/script/JournalRecovery.h"
#include "tests/journal/JournalWork.h"
#include "tests/random/RandomNumbers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <set>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace trovik::test {
namespace {

namespace fs = std::filesystem;

/// Progress: the number of completed journaled steps, and of completed dabs in the next step.
using Progress = std::pair<uint32_t, uint32_t>;

/// The progress that a process reports, in shared memory that outlives the process.
struct Told {
    std::atomic<uint64_t> progress;
    /// The number of the current step, including steps that are not journaled.
    std::atomic<uint32_t> step;
    /// Before this step, or after this dab of the step, the process waits to be released, so that
    /// it can be killed there.
    uint32_t aim;
    uint32_t aimedDab;
    std::atomic<bool> isWaiting;
    std::atomic<bool> isLetGo;

    Progress Read() const {
        const uint64_t both = progress.load();
        return {static_cast<uint32_t>(both >> 32), static_cast<uint32_t>(both)};
    }
};

bool IsJournaled(const nlohmann::json& step) { return !step.contains("save"); }

/// Returns steps of all kinds: strokes with several tools, layers, levels, masks, undo, saves, and
/// undo of steps before a save.
nlohmann::json Steps() {
    nlohmann::json steps = nlohmann::json::array();
    RandomNumbers random(7);
    const char* tools[] = {"Sculpt", "Smooth", "Flatten", "Wax", "Pinch"};
    const auto stroke = [&] {
        const float x = random.Between(-0.8f, 0.8f);
        const float y = random.Between(-0.8f, 0.8f);
        steps.push_back({{"stroke", {{"surface", {{x, y, 1.0f, 0.4f}, {-x, y * 0.5f, 1.0f}}}}}});
    };
    const auto strokes = [&](int count) {
        for (int i = 0; i < count; ++i) {
            steps.push_back(
                {{"tool", tools[random.Below(5)]}, {"set", {{"radius", 0.25f}, {"strength", 30}}}});
            stroke();
        }
    };
    strokes(5);
    steps.push_back({{"undo", 2}});
    steps.push_back({{"redo", 1}});
    strokes(2);
    steps.push_back({{"save", "work.trovik"}});
    strokes(3);
    steps.push_back({{"undo", 1}});
    steps.push_back({{"layer", {{"add", "wrinkles"}}}});
    strokes(3);
    steps.push_back({{"layer", {{"strength", 0.5}}}});
    steps.push_back({{"mask", {{"center", {0, 0, 1}}, {"radius", 0.5}}}});
    strokes(2);
    steps.push_back({{"save", "work.trovik"}});
    steps.push_back({{"undo", 2}});
    strokes(1);
    steps.push_back({{"undo", 3}});
    steps.push_back({{"redo", 1}});
    steps.push_back({{"mask", "clear"}});
    steps.push_back({{"layer", {{"select", nullptr}}}});
    steps.push_back({{"level", 2}});
    strokes(2);
    steps.push_back({{"level", 3}});
    strokes(2);
    steps.push_back({{"undo", 2}});
    steps.push_back({{"subdivide", 1}});
    strokes(2);
    steps.push_back({{"transform", {{"rotate", {0, 30, 0}}}}});
    strokes(1);
    steps.push_back({{"save", "work.trovik"}});
    strokes(2);
    return steps;
}

class KilledProcess : public ::testing::Test {
protected:
    KilledProcess() : steps(Steps()) {
        // There are no mirrors, because a mirrored stroke applies its mirrored sides when it ends,
        // and recovery ends the last stroke. Without mirrors, the surface does not change between
        // the last dab and the end of the stroke.
        script = FillScript(folder, steps, nlohmann::json::array());
        uint32_t journaled = 0;
        for (const auto& step : steps) {
            journaledBefore.push_back(journaled);
            if (IsJournaled(step)) ++journaled;
        }
        journaledBefore.push_back(journaled);
    }

    /// Runs the steps and calls `cameOn` after each step and each dab, when the journal already
    /// contains it.
    void Work(const std::string& output,
              const std::string& journal,
              const std::function<void(Progress, std::size_t step)>& cameOn,
              ScriptRunner** seen = nullptr) {
        Progress present{0, 0};
        std::size_t at = 0;
        ScriptProgress progress;
        progress.step = [&](std::size_t done, std::size_t, const std::string& what) {
            if (what.rfind("opening", 0) == 0) return;
            at = done;
            present = {journaledBefore[done], 0};
            cameOn(present, at);
        };
        progress.dab = [&] {
            ++present.second;
            cameOn(present, at);
        };
        ScriptRunner runner(script, output, progress);
        if (!journal.empty()) runner.SetJournal({journal, false});
        if (seen != nullptr) *seen = &runner;
        runner.Run();
    }

    TemporaryFolder folder;
    nlohmann::json steps;
    std::string script;
    std::vector<uint32_t> journaledBefore;
};

TEST_F(KilledProcess, LosesNothingAtAHundredMoments) {
    constexpr int processes = 100;
    auto* told = static_cast<Told*>(mmap(nullptr,
                                         sizeof(Told) * processes,
                                         PROT_READ | PROT_WRITE,
                                         MAP_SHARED | MAP_ANONYMOUS,
                                         -1,
                                         0));
    ASSERT_NE(told, MAP_FAILED);
    RandomNumbers random(20260101);
    // Every second process is killed in a random step; in a stroke, it is killed during or after a
    // dab. The others are killed in steps of the rarer kinds.
    const std::set<std::string> seldom[] = {
        {"save"}, {"undo", "redo"}, {"layer", "mask"}, {"level", "subdivide", "transform"}};
    std::vector<uint32_t> chosen[4];
    for (uint32_t step = 0; step < steps.size(); ++step)
        for (std::size_t k = 0; k < 4; ++k)
            if (seldom[k].count(steps[step].begin().key()) != 0) chosen[k].push_back(step);

    std::vector<Progress> killedAt;
    std::set<std::string> kindsHit;
    for (int i = 0; i < processes; ++i) {
        const std::string place = folder.Path("p" + std::to_string(i));
        fs::create_directories(place);
        const auto& few = chosen[static_cast<std::size_t>(i / 2) % 4];
        const uint32_t step = i % 2 == 0 ? few[random.Below(static_cast<uint32_t>(few.size()))]
                                         : random.Below(static_cast<uint32_t>(steps.size()));
        const bool isSave = !IsJournaled(steps[step]);
        const auto delay = random.Below(isSave ? 4000 : 200);
        told[i].aim = step;
        told[i].aimedDab = steps[step].contains("stroke") ? random.Below(6) : 0;
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            // The disk is slow enough that the process can be killed during the step.
            const QuickDisk disk(300);
            try {
                Work(place, place + "/w.journal", [&](Progress at, std::size_t now) {
                    told[i].step.store(static_cast<uint32_t>(now) + 1);
                    told[i].progress.store(uint64_t{at.first} << 32 | at.second);
                    if (now != told[i].aim || at.second != told[i].aimedDab) return;
                    told[i].isWaiting.store(true);
                    while (!told[i].isLetGo.load())
                        std::this_thread::sleep_for(std::chrono::microseconds(20));
                });
            } catch (...) {
                _exit(9);
            }
            _exit(0);
        }
        int status = 0;
        bool isGone = false;
        // If the stroke has fewer dabs, the process does not wait.
        while (!told[i].isWaiting.load() && told[i].step.load() <= step + 1 && !isGone) {
            isGone = waitpid(child, &status, WNOHANG) == child;
            std::this_thread::sleep_for(std::chrono::microseconds(20));
        }
        const auto start = std::chrono::steady_clock::now();
        told[i].isLetGo.store(true);
        while (std::chrono::steady_clock::now() - start < std::chrono::microseconds(delay)) {
        }
        if (!isGone) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
        }
        ASSERT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0) << status;
        killedAt.push_back(told[i].Read());
        // The process was killed during the step or shortly after it: some steps take less time
        // than killing the process.
        const uint32_t at = told[i].step.load() - 1;
        if (at <= step + 1) kindsHit.insert(steps[step].begin().key());
    }
    munmap(told, sizeof(Told) * processes);
    for (const char* kind : {"stroke", "save", "undo", "layer", "level", "subdivide"})
        EXPECT_TRUE(kindsHit.count(kind) == 1)
            << "no process was killed in a step of kind  " << kind;

    // Records the state after each step and each dab of an uninterrupted run.
    const QuickDisk disk;
    std::map<Progress, uint32_t> states;
    std::map<uint32_t, std::string> scenes;
    ScriptRunner* runner = nullptr;
    fs::create_directories(folder.Path("undisturbed"));
    Work(
        folder.Path("undisturbed"),
        "",
        [&](Progress at, std::size_t) {
            states[at] = StateOf(runner->GetDocument());
            if (at.second != 0) return;
            runner->Save(folder.Path("undisturbed/at.trovik"));
            scenes[at.first] = TemporaryFolder::Content(folder.Path("undisturbed/at.trovik"));
        },
        &runner);

    int withinStrokes = 0;
    for (int i = 0; i < processes; ++i) {
        SCOPED_TRACE("process " + std::to_string(i));
        const std::string place = folder.Path("p" + std::to_string(i));
        const std::string journal = place + "/w.journal";
        // The process was killed before it had done any work.
        if (!fs::exists(journal)) {
            EXPECT_EQ(killedAt[static_cast<std::size_t>(i)], Progress(0, 0));
            continue;
        }
        const RecoveredWork work = RecoverJournal(journal, place + "/recovered.trovik");
        auto over = static_cast<uint32_t>(work.content.past.size() + work.content.steps.size());
        uint32_t dabs = 0;
        if (!work.content.steps.empty() && !work.content.steps.back().isOver) {
            --over;
            dabs = work.content.steps.back().dabs;
        }
        const Progress at{over, dabs};
        EXPECT_GE(at, killedAt[static_cast<std::size_t>(i)]);
        ASSERT_EQ(states.count(at), 1u) << at.first << " steps, " << at.second << " dabs";
        EXPECT_EQ(StateOf(work.runner->GetDocument()), states[at])
            << at.first << " steps, " << at.second << " dabs";
        if (dabs != 0)
            ++withinStrokes;
        else
            EXPECT_EQ(TemporaryFolder::Content(place + "/recovered.trovik"), scenes[over]) << over;
    }
    EXPECT_GE(withinStrokes, 5);
}

}  // namespace
}  // namespace trovik::test
