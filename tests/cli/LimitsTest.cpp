// SPDX-License-Identifier: Apache-2.0

/// \file Tests the command under system limits: memory, address space, file size and write
/// permission.
#include "framework/io/FileLock.h"
#include "tests/SourceFolder.h"
#include "tests/cli/CommandRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>

// With a sanitizer, a process maps more address space than the tested limits allow.
#ifdef __SANITIZE_ADDRESS__
#define SKIP_IF_SANITIZED() GTEST_SKIP() << "sanitizers need unlimited address space"
#else
#define SKIP_IF_SANITIZED()
#endif

namespace trovik::test {
namespace {

using testing::HasSubstr;

class Limits : public Command {
protected:
    Limits() {
        WriteFile("s.json", R"({"mesh": "cube.obj", "levels": 3, "steps": [
            {"tool": "Sculpt", "set": {"radius": 0.6, "strength": 80}},
            {"stroke": {"surface": [[0, 0, 1], [0.5, 0.2, 1]]}}]})");
    }

    /// Runs the command under a limit set by the shell's ulimit: "v" is address space in kilobytes,
    /// "f" is file size in blocks of 512 bytes.
    Outcome RunUnder(const std::string& limit, uint64_t value, const std::string& arguments) {
        const std::string line = "cd '" + folder.string() + "' && (ulimit -S" + limit + " " +
                                 std::to_string(value) + " && exec '" + TROVIK_COMMAND + "' " +
                                 arguments + ") > out.txt 2> error.txt";
        const int result = std::system(line.c_str());
        return {WEXITSTATUS(result), ReadAll(folder / "out.txt"), ReadAll(folder / "error.txt")};
    }

    /// Returns the minimum address space, in kilobytes, with which the program starts.
    uint64_t LeastToStart() {
        uint64_t tooLittle = 8 << 10;
        uint64_t enough = 4 << 20;
        while (enough - tooLittle > 512) {
            const uint64_t middle = (tooLittle + enough) / 2;
            (RunUnder("v", middle, "--version").status == 0 ? enough : tooLittle) = middle;
        }
        return enough;
    }

    void ExpectOneLine(const Outcome& outcome) {
        EXPECT_EQ(outcome.status, 1) << outcome.error;
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.error.rfind("trovik: ", 0), 0u) << outcome.error;
        EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
    }

    bool HasUnfinishedFiles() const {
        for (const auto& entry : fs::recursive_directory_iterator(folder))
            if (entry.path().filename().string().find(".part") != std::string::npos) return true;
        return false;
    }

    /// Runs the command with increasing address space until it has succeeded several times. In each
    /// run, the command either succeeds, or fails with one line and leaves `output` unchanged.
    void ExpectSuccessOrOneLineAtEveryLimit(const std::string& arguments,
                                            const std::string& output) {
        const char* finer = std::getenv("TROVIK_LIMIT_STEP_KB");
        const uint64_t step = finer == nullptr ? 16 << 10 : std::strtoull(finer, nullptr, 10);
        ASSERT_GT(step, 0u);
        int failures = 0;
        int successes = 0;
        const uint64_t least = LeastToStart();
        for (uint64_t limit = least; successes < 3; limit += step) {
            ASSERT_LT(limit, least + (4 << 20)) << "no limit is high enough";
            SCOPED_TRACE(std::to_string(limit) + " kB");
            WriteFile(output, "what was there");
            const Outcome outcome = RunUnder("v", limit, arguments);
            EXPECT_FALSE(HasUnfinishedFiles());
            if (outcome.status == 0) {
                ++successes;
                EXPECT_EQ(outcome.error, "");
                EXPECT_NE(ReadAll(folder / output), "what was there");
            } else {
                ++failures;
                ExpectOneLine(outcome);
                EXPECT_EQ(ReadAll(folder / output), "what was there");
            }
            if (HasFailure()) return;
        }
        EXPECT_GT(failures, 0) << "the lowest limit was already high enough";
    }
};

TEST_F(Limits, SculptSucceedsOrFailsWithOneLineInAnyAddressSpace) {
    SKIP_IF_SANITIZED();
    const std::string mesh = SourceFolder() + "/examples/meshes/spot.obj";
    WriteFile("spot.json", R"({"mesh": ")" + mesh + R"(", "levels": 4, "mirror": ["x"], "steps": [
        {"tool": "Wax", "set": {"radius": 0.3, "strength": 50}},
        {"stroke": {"pointer": [[400, 300], [440, 320]]}},
        {"layer": {"add": "more"}},
        {"stroke": {"pointer": [[400, 300], [420, 310]]}},
        {"undo": 1}, {"redo": 1},
        {"level": 2},
        {"export": {"file": "other.glb"}},
        {"render": {"file": "other.png", "width": 32, "height": 24, "samples": 1}},
        {"save": "out.trovik"}]})");
    ExpectSuccessOrOneLineAtEveryLimit("sculpt spot.json -q", "out.trovik");
}

TEST_F(Limits, ConvertSucceedsOrFailsWithOneLineInAnyAddressSpace) {
    SKIP_IF_SANITIZED();
    const std::string mesh = SourceFolder() + "/examples/meshes/spot.obj";
    ExpectSuccessOrOneLineAtEveryLimit("convert '" + mesh + "' out.ply --levels 4 -q", "out.ply");
}

TEST_F(Limits, LevelsBeyondFreeMemoryAreRefusedAtOnceByEveryVerb) {
    SKIP_IF_SANITIZED();
    const std::string mesh = SourceFolder() + "/examples/meshes/human.obj";
    WriteFile("deep.json", R"({"mesh": ")" + mesh + R"(", "levels": 7, "steps": []})");
    const std::string verbs[] = {"sculpt deep.json -q",
                                 "convert '" + mesh + "' out.obj --levels 7 -q",
                                 "render '" + mesh + "' out.png --levels 7 -q"};
    for (const std::string& verb : verbs) {
        SCOPED_TRACE(verb);
        const Outcome outcome = RunUnder("v", 4 << 20, verb);
        ExpectOneLine(outcome);
        EXPECT_THAT(outcome.error,
                    HasSubstr("subdividing to level 7 would give 219185152 faces and 219185154 "
                              "vertices and take "));
        EXPECT_THAT(outcome.error, HasSubstr(" bytes of memory are free (address space limit)"));
    }
    // Even without a limit, level counts that overflow are rejected before any level is created.
    const std::string uncountable[] = {"convert '" + mesh + "' out.obj",
                                       "render '" + mesh + "' out.png"};
    for (const std::string& verb : uncountable)
        EXPECT_THAT(Run(verb + " --levels 12 -q").error, HasSubstr("a level holds at most"));
    EXPECT_FALSE(fs::exists(folder / "out.obj"));
    EXPECT_FALSE(fs::exists(folder / "out.png"));
}

TEST_F(Limits, RendersInTheMinimumAddressSpaceAreIdentical) {
    SKIP_IF_SANITIZED();
    ASSERT_EQ(Run("render cube.obj free.png --levels 2 --width 64 --height 48 -q").status, 0);
    // With just enough address space to start, none is left for the stacks of additional threads.
    const uint64_t least = LeastToStart();
    for (uint64_t limit = least;; limit += 16 << 10) {
        ASSERT_LT(limit, least + (4 << 20)) << "no limit is high enough";
        const Outcome outcome =
            RunUnder("v", limit, "render cube.obj small.png --levels 2 --width 64 --height 48 -q");
        if (outcome.status == 0) break;
        ExpectOneLine(outcome);
    }
    EXPECT_EQ(ReadAll(folder / "small.png"), ReadAll(folder / "free.png"));
}

TEST_F(Limits, FilesBeyondTheSizeLimitFailWithAnError) {
    WriteFile("big.json",
              R"({"mesh": "cube.obj", "levels": 6, "steps": [{"save": "out.trovik"}]})");
    const std::pair<std::string, std::string> writers[] = {
        {"sculpt big.json -q", "out.trovik"},
        {"convert cube.obj out.obj --levels 6 -q", "out.obj"},
        {"convert cube.obj out.glb --levels 6 -q", "out.glb"},
        {"render cube.obj out.png --levels 1 -q", "out.png"}};
    for (const auto& [arguments, output] : writers) {
        SCOPED_TRACE(arguments);
        WriteFile(output, "what was there");
        const Outcome outcome = RunUnder("f", 8, arguments);
        ExpectOneLine(outcome);
        EXPECT_THAT(outcome.error, HasSubstr("cannot write " + output + ": File too large"));
        EXPECT_EQ(ReadAll(folder / output), "what was there");
        EXPECT_FALSE(HasUnfinishedFiles());
    }
}

TEST_F(Limits, UnwritableJournalIsAWarningThatQuietDoesNotHide) {
    // Each step adds several kilobytes to the journal, so that it exceeds the limit.
    std::string samples = "1";
    for (int i = 0; i < 400; ++i) samples += ", 0.5";
    std::string steps;
    for (int i = 0; i < 8; ++i)
        steps +=
            (i == 0 ? R"({"set": {"falloff": [)" : R"(, {"set": {"falloff": [)") + samples + "]}}";
    WriteFile("long.json", R"({"mesh": "cube.obj", "steps": [)" + steps + "]}");
    const Outcome quiet = RunUnder("f", 8, "sculpt long.json -q --journal w.journal");
    EXPECT_EQ(quiet.status, 0) << quiet.error;
    EXPECT_EQ(
        quiet.error.rfind("warning: cannot write w.journal: File too large; the journal ends", 0),
        0u)
        << quiet.error;
    EXPECT_EQ(std::count(quiet.error.begin(), quiet.error.end(), '\n'), 1) << quiet.error;
    fs::remove(folder / "w.journal");
    const Outcome json = RunUnder("f", 8, "sculpt long.json -q --json --journal w.journal");
    EXPECT_EQ(json.status, 0) << json.error;
    const auto warnings = nlohmann::json::parse(json.out).at("warnings");
    ASSERT_EQ(warnings.size(), 1u);
    EXPECT_THAT(warnings[0].get<std::string>(), HasSubstr("cannot write w.journal"));
    EXPECT_EQ(nlohmann::json::parse(Run("sculpt s.json --json").out).at("warnings").size(), 0u);
}

TEST_F(Limits, SecondRunWithTheSameJournalIsRefused) {
    WriteFile("w.journal", "");
    const FileLock firstRun((folder / "w.journal").string());
    ASSERT_EQ(firstRun.State(), FileLock::Result::Locked);
    const Outcome outcome = Run("sculpt s.json -q --journal w.journal");
    ExpectOneLine(outcome);
    EXPECT_THAT(outcome.error, HasSubstr("w.journal: another run is writing this journal"));
}

TEST_F(Limits, FilesOfKilledRunsAreRemovedWithANote) {
    WriteFile("out.99999-3.part.ply", "half of a mesh");
    const Outcome outcome = Run("convert cube.obj out.ply");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error,
              "note: out.99999-3.part.ply: removed; it was left by a process that was killed\n");
    EXPECT_FALSE(HasUnfinishedFiles());
    WriteFile("out.99999-3.part.png", "half of a picture");
    EXPECT_THAT(Run("render cube.obj out.png --width 16 --height 16").error, HasSubstr("removed"));
    EXPECT_FALSE(HasUnfinishedFiles());
    WriteFile("out.99999-3.part.ply", "half of a mesh");
    EXPECT_EQ(Run("convert cube.obj out.ply -q").error, "");
    EXPECT_FALSE(HasUnfinishedFiles());
}

TEST_F(Limits, RecoverChecksItsOutputBeforeItStarts) {
    ASSERT_EQ(Run("sculpt s.json -q --journal w.journal").status, 0);
    for (const char* target : {"missing/out.trovik", "cube.obj/out.trovik", "w.journal.obj"}) {
        SCOPED_TRACE(target);
        const Outcome outcome = Run(std::string("recover w.journal -o ") + target);
        // There is no progress output, so no step was replayed.
        ExpectOneLine(outcome);
        EXPECT_THAT(outcome.error, HasSubstr(target));
    }
    EXPECT_EQ(Run("recover w.journal -o out.trovik -q").status, 0);
}

}  // namespace
}  // namespace trovik::test
