// SPDX-License-Identifier: Apache-2.0

/// \file Tests `trovik batch`: variables, failures, the state file and interruption.
#include "tests/cli/CommandRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

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
    fs::create_directories(folder / "out");
    WriteFile("out/trovik-batch.json", "[]");
    expectError("s.json in -o out", "not the state file of a batch");
    EXPECT_EQ(Run("batch s.json").status, 2);
    EXPECT_EQ(Run("batch s.json in --jobs 0").status, 2);
}

TEST_F(BatchCommand, InterruptionEndsAllProcessesAndTheNextRunContinues) {
    // The inputs are subdivided into millions of faces, which takes longer than the test waits.
    WriteFile(
        "slow.json",
        R"({"mesh": "${input}", "levels": 10, "steps": [{"export": {"file": "${output}"}}]})");
    const std::string line = "cd '" + folder.string() + "' && exec '" + TROVIK_COMMAND +
                             "' batch slow.json in/b.obj in/c.obj -o out --jobs 2 > out.txt 2> "
                             "error.txt";
    const pid_t child = fork();
    if (child == 0) {
        for (const int number : {SIGINT, SIGTERM}) std::signal(number, SIG_DFL);
        execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
        _exit(127);
    }
    // The folder is created when the signal handlers exist and before the first process starts.
    while (!fs::exists(folder / "out")) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    kill(child, SIGTERM);
    int status = 0;
    waitpid(child, &status, 0);
    const std::string error = ReadAll(folder / "error.txt");
    EXPECT_EQ(WEXITSTATUS(status), 143) << error;
    EXPECT_THAT(error, HasSubstr("trovik: interrupted\n"));
    EXPECT_THAT(error, HasSubstr("0 of 2 inputs are done"));
    EXPECT_FALSE(fs::exists(folder / "out/b.obj"));
    // No process still writes into the folder.
    for (const auto& entry : fs::directory_iterator(folder / "out"))
        EXPECT_EQ(entry.path().string().find(".part"), std::string::npos) << entry.path();
}

}  // namespace
}  // namespace trovik::test
