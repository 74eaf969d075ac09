// SPDX-License-Identifier: Apache-2.0

/// \file Tests `trovik batch`: variables, failures, the state file and interruption.
#include "tests/cli/CommandRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

namespace trovik::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

class BatchCommand : public Command {
protected:
    BatchCommand() {
        fs::create_directories(folder / "in");
        for (const char* name : {"a.obj", "b.obj", "c.obj"})
            fs::copy_file(folder / "cube.obj", folder / "in" / name);
        WriteFile("in/notes.txt", "not a mesh");
        WriteScript("s.json", R"({"export": {"file": "${output}"}})");
    }

    void WriteScript(const std::string& name, const std::string& lastStep) {
        WriteFile(name,
                  R"({"mesh": "${input}", "levels": 2, "steps": [
                      {"set": {"radius": 0.9}}, {"stroke": {"surface": [[0.2, 0.1, 1]]}}, )" +
                      lastStep + "]}");
    }

    json Batch(const std::string& arguments, int status = 0) {
        const Outcome outcome = Run("batch " + arguments + " --json -q");
        EXPECT_EQ(outcome.status, status) << outcome.error;
        lastError = outcome.error;
        return json::parse(outcome.out);
    }

    /// Returns whether the output folder contains an incomplete mesh.
    bool HasPart() const {
        std::error_code failed;
        for (fs::directory_iterator entry(folder / "out", failed), end; !failed && entry != end;
             entry.increment(failed))
            if (entry->path().string().find(".part.obj") != std::string::npos) return true;
        return false;
    }

    std::string lastError;
};

TEST_F(BatchCommand, ResultsEqualThoseOfSculpt) {
    const json result = Batch("s.json in -o out --format ply --jobs 2");
    EXPECT_EQ(result.at("done"), 3);
    EXPECT_EQ(result.at("failed"), 0);
    ASSERT_EQ(Run("sculpt s.json -q -o alone --set input=in/a.obj --set output=a.ply").status, 0);
    for (const char* name : {"a.ply", "b.ply", "c.ply"})
        EXPECT_EQ(ReadAll(folder / "out" / name), ReadAll(folder / "alone/a.ply")) << name;
    EXPECT_EQ(result.at("inputs").at(1).at("input"), "in/b.obj");
    EXPECT_EQ(result.at("inputs").at(1).at("files"),
              json({fs::canonical(folder / "out/b.ply").string()}));
}

TEST_F(BatchCommand, SetsTheVariablesOfEachInput) {
    WriteScript("s.json", R"({"export": {"file": "${stem}-${side}-${name}"}})");
    Batch("s.json in/a.obj in/b.obj -o out --set side=left");
    EXPECT_TRUE(fs::exists(folder / "out/a-left-a.obj"));
    EXPECT_TRUE(fs::exists(folder / "out/b-left-b.obj"));
    EXPECT_FALSE(fs::exists(folder / "out/c-left-c.obj"));
}

TEST_F(BatchCommand, SkipsWhatHasNotChanged) {
    EXPECT_EQ(Batch("s.json in -o out").at("done"), 3);
    const json again = Batch("s.json in -o out");
    EXPECT_EQ(again.at("skipped"), 3);
    EXPECT_EQ(again.at("inputs").at(0).at("files").size(), 1u);
    // A changed input.
    WriteFile("in/b.obj", ReadAll(folder / "cube.obj") + "# changed\n");
    EXPECT_EQ(Batch("s.json in -o out").at("inputs").at(1).at("status"), "done");
    // A removed result.
    fs::remove(folder / "out/c.obj");
    const json restored = Batch("s.json in -o out");
    EXPECT_EQ(restored.at("skipped"), 2);
    EXPECT_TRUE(fs::exists(folder / "out/c.obj"));
    EXPECT_EQ(Batch("s.json in -o out --set side=left").at("skipped"), 0) << "other variables";
    EXPECT_EQ(Batch("s.json in -o out").at("skipped"), 0);
    EXPECT_EQ(Batch("s.json in -o out --again").at("skipped"), 0);
    // A changed script.
    WriteScript("s.json", R"({"export": {"file": "${output}"}}, {"comment": "changed"})");
    EXPECT_EQ(Batch("s.json in -o out").at("skipped"), 0);
    EXPECT_EQ(Batch("s.json in -o out").at("skipped"), 3);
}

TEST_F(BatchCommand, OtherOutputFoldersAreProcessedAgain) {
    EXPECT_EQ(Batch("s.json in -o out --state s.state").at("done"), 3);
    EXPECT_EQ(Batch("s.json in -o other --state s.state").at("done"), 3);
    EXPECT_EQ(Batch("s.json in -o other/../other/ --state s.state").at("skipped"), 3);
}

TEST_F(BatchCommand, InputsAreNotOverwritten) {
    const std::string before = ReadAll(folder / "in/a.obj");
    fs::copy_file(folder / "in/a.obj", folder / "a.obj");
    WriteScript("name.json", R"({"export": {"file": "x/../${name}"}})");
    WriteScript("other.json", R"({"export": {"file": "b${stem}.obj"}})");
    fs::copy_file(folder / "in/a.obj", folder / "ba.obj");
    for (const char* arguments :
         {"s.json a.obj", "s.json in/a.obj -o in", "name.json a.obj", "other.json a.obj ba.obj"}) {
        const Outcome outcome = Run(std::string("batch ") + arguments);
        EXPECT_EQ(outcome.status, 1) << arguments;
        EXPECT_THAT(outcome.error, HasSubstr("in the output folder is the input")) << arguments;
    }
    for (const char* name : {"a.obj", "ba.obj", "in/a.obj"})
        EXPECT_EQ(ReadAll(folder / name), before) << name;
    EXPECT_EQ(Batch("s.json a.obj --format ply").at("done"), 1);
    EXPECT_EQ(Batch("s.json a.obj -o out").at("done"), 1);
}

TEST_F(BatchCommand, InputsThatWriteTheSameFileFail) {
    WriteScript("same.json", R"({"export": {"file": "result.obj"}})");
    const json result = Batch("same.json in/a.obj in/b.obj -o out --jobs 1", 1);
    EXPECT_EQ(result.at("done"), 1);
    EXPECT_EQ(result.at("failed"), 1);
    EXPECT_THAT(lastError, HasSubstr("result.obj was also written by in/a.obj; use ${stem}"));
    // The file contains the result of the second input, so the first one is not skipped.
    EXPECT_EQ(Batch("same.json in/a.obj -o out").at("done"), 1);
    // The result of a skipped input.
    EXPECT_EQ(Batch("same.json in/a.obj in/b.obj -o out --jobs 1", 1).at("failed"), 1);
}

TEST_F(BatchCommand, VariablesMayStandForWordsOfTheScript) {
    WriteFile("word.json", R"({"mesh": "${input}", "up": "${up}", "steps": [
        {"export": {"file": "${output}"}}]})");
    EXPECT_EQ(Batch("word.json in/a.obj -o out --set up=z").at("done"), 1);
    const Outcome wrong = Run("batch word.json in/a.obj -o out --set up=w");
    EXPECT_EQ(wrong.status, 1);
    EXPECT_THAT(wrong.error, HasSubstr("word.json: /up"));
}

TEST_F(BatchCommand, FailuresOfTheBatchItselfAreReported) {
    // The state file cannot be written.
    EXPECT_EQ(Run("batch s.json in -o out --state missing/s.state").status, 1);
    EXPECT_FALSE(fs::exists(folder / "out/a.obj"));
    // A parent process that ignores SIGCHLD.
    const std::string line = "cd '" + folder.string() + "' && trap '' CHLD && exec '" +
                             TROVIK_COMMAND + "' batch s.json in -o out -q 2> error.txt";
    EXPECT_EQ(WEXITSTATUS(std::system(line.c_str())), 0) << ReadAll(folder / "error.txt");
    EXPECT_TRUE(fs::exists(folder / "out/c.obj"));
}

TEST_F(BatchCommand, RefusesTextThatIsNotUtf8) {
    fs::copy_file(folder / "cube.obj", folder / "in/\xff.obj");
    const Outcome input = Run("batch s.json in -o out");
    EXPECT_EQ(input.status, 1);
    EXPECT_THAT(input.error, HasSubstr("\\xff.obj: the path is not UTF-8"));
    EXPECT_EQ(std::count(input.error.begin(), input.error.end(), '\n'), 1) << input.error;
    const Outcome value = Run("batch s.json in/a.obj -o out --set side=\xff");
    EXPECT_EQ(value.status, 2);
    EXPECT_THAT(value.error, HasSubstr("not UTF-8"));
}

TEST_F(BatchCommand, FailuresAffectOnlyTheirInput) {
    WriteFile("in/b.obj", "v 0 0 0\nf 1 2 3\n");
    const json result = Batch("s.json in -o out", 1);
    EXPECT_EQ(result.at("done"), 2);
    EXPECT_EQ(result.at("failed"), 1);
    EXPECT_EQ(result.at("inputs").at(1).at("status"), "failed");
    EXPECT_THAT(result.at("inputs").at(1).at("error").get<std::string>(), HasSubstr("line 2"));
    // One line for the input, and one for the batch.
    EXPECT_EQ(std::count(lastError.begin(), lastError.end(), '\n'), 2) << lastError;
    EXPECT_THAT(lastError, HasSubstr("trovik: in/b.obj: "));
    EXPECT_THAT(lastError, HasSubstr("\ntrovik: 1 of 3 inputs failed\n"));
    // The failed input is processed again.
    fs::copy_file(folder / "cube.obj", folder / "in/b.obj", fs::copy_options::overwrite_existing);
    const json again = Batch("s.json in -o out");
    EXPECT_EQ(again.at("skipped"), 2);
    EXPECT_EQ(again.at("done"), 1);
    const Outcome text = Run("batch s.json in -o out");
    EXPECT_EQ(text.out, "3 inputs: 0 done, 3 skipped, 0 failed; wrote 0 files to out\n");
}

TEST_F(BatchCommand, WarningsAreReportedWithTheirInput) {
    WriteFile("w.json", R"({"mesh": "${input}", "steps": [
        {"stroke": {"surface": [[9, 9, 9]]}}, {"export": {"file": "${output}"}}]})");
    const Outcome strict = Run("batch w.json in/a.obj -o out -q --strict");
    EXPECT_EQ(strict.status, 1);
    const Outcome outcome = Run("batch w.json in/a.obj -o out -q");
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_THAT(outcome.error, HasSubstr("warning: in/a.obj: "));
}

TEST_F(BatchCommand, RefusesWhatCannotWork) {
    const auto expectError = [this](const std::string& arguments, const std::string& reason) {
        const Outcome outcome = Run("batch " + arguments);
        EXPECT_EQ(outcome.status, 1) << arguments;
        EXPECT_THAT(outcome.error, HasSubstr(reason)) << arguments;
    };
    expectError("s.json in -o in", "must not be an input folder");
    expectError("s.json missing.obj", "missing.obj");
    expectError("s.json cube.obj in/a.obj in/../cube.obj", "have the same stem");
    expectError("- in", "standard input");
    expectError("s.json in -o out --set stem=x", "\"stem\" is set by the batch");
    fs::create_directories(folder / "empty");
    expectError("s.json empty -o out", "there is no mesh file");
    WriteScript("typo.json", R"({"export": {"file": "${outptu}"}})");
    expectError(
        "typo.json in -o out",
        "typo.json: /steps/2/export/file: unknown variable \"outptu\"; did you mean \"output\"?");
    WriteFile("fixed.json", R"({"mesh": "cube.obj", "steps": []})");
    expectError("fixed.json in -o out", "does not use ${input}");
    WriteFile("escaped.json", R"({"mesh": "$${input}", "steps": []})");
    expectError("escaped.json in -o out", "does not use ${input}");
    fs::create_directories(folder / "out");
    WriteFile("out/trovik-batch.json", "[]");
    expectError("s.json in -o out", "not the state file of a batch");
    EXPECT_EQ(Run("batch s.json").status, 2);
    EXPECT_EQ(Run("batch s.json in --jobs 0").status, 2);
}

TEST_F(BatchCommand, InterruptionEndsAllProcessesAndTheNextRunContinues) {
    // Ctrl-C in a terminal sends SIGINT to the whole process group.
    for (const bool isWholeGroup : {false, true}) {
        SCOPED_TRACE(isWholeGroup);
        WriteScript("quick.json", R"({"export": {"file": "${output}"}})");
        fs::remove_all(folder / "out");
        EXPECT_EQ(Batch("quick.json in/b.obj in/c.obj -o out").at("done"), 2);
        // Each input is written several times, so that the signal arrives during an export.
        std::string script = R"({"mesh": "${input}", "levels": 8, "steps": [)";
        for (int i = 0; i < 20; ++i) script += R"({"export": {"file": "${output}"}}, )";
        WriteFile("slow.json", script + R"({"comment": "end"}]})");
        const std::string line = "cd '" + folder.string() + "' && exec '" + TROVIK_COMMAND +
                                 "' batch slow.json in/b.obj in/c.obj -o out --jobs 2 --again > "
                                 "out.txt 2> error.txt";
        const pid_t child = fork();
        if (child == 0) {
            setpgid(0, 0);
            for (const int number : {SIGINT, SIGTERM}) std::signal(number, SIG_DFL);
            execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
            _exit(127);
        }
        while (!HasPart() && waitpid(child, nullptr, WNOHANG) == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        kill(isWholeGroup ? -child : child, isWholeGroup ? SIGINT : SIGTERM);
        int status = 0;
        waitpid(child, &status, 0);
        const std::string error = ReadAll(folder / "error.txt");
        EXPECT_EQ(WEXITSTATUS(status), isWholeGroup ? 130 : 143) << error;
        EXPECT_THAT(error, HasSubstr("trovik: interrupted\n"));
        EXPECT_THAT(error, HasSubstr("0 of 2 inputs are done; run again without --again"));
        // All processes have ended and removed their incomplete files.
        EXPECT_FALSE(HasPart());
        // The results of the first run have been forgotten.
        const json next = Batch("quick.json in/b.obj in/c.obj -o out");
        EXPECT_EQ(next.at("done"), 2);
        EXPECT_EQ(lastError, "");
    }
}

}  // namespace
}  // namespace trovik::test
