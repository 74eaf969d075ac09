// SPDX-License-Identifier: Apache-2.0

/// \file Tests that Ctrl-C and SIGTERM during long operations lead to one line of output, the exit
/// status that shells expect, and unchanged files.
#include "tests/cli/CommandRun.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <set>
#include <thread>

namespace trovik::test {
namespace {

/// The command as a child process that runs in the test's folder.
class Running {
public:
    Running(const fs::path& folder, const std::vector<std::string>& arguments) {
        std::vector<std::string> words = {TROVIK_COMMAND};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> raw;
        raw.reserve(words.size() + 1);
        for (std::string& word : words) raw.push_back(word.data());
        raw.push_back(nullptr);
        child = fork();
        if (child != 0) return;
        // The test process may ignore these signals, as background processes do.
        for (const int number : {SIGINT, SIGTERM}) std::signal(number, SIG_DFL);
        const int out = open((folder / "out.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const int error = open((folder / "error.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (out < 0 || error < 0 || chdir(folder.c_str()) != 0) _exit(126);
        dup2(out, STDOUT_FILENO);
        dup2(error, STDERR_FILENO);
        execv(raw[0], raw.data());
        _exit(127);
    }
    ~Running() {
        if (!over) kill(child, SIGKILL);
        Wait();
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    void Send(int number) const { kill(child, number); }
    bool IsOver() {
        if (!over) over = waitpid(child, &status, WNOHANG) == child;
        return over;
    }
    /// Waits for the process and returns its status as reported by waitpid.
    int Wait() {
        if (!over) over = waitpid(child, &status, 0) == child;
        return status;
    }

private:
    pid_t child = -1;
    int status = 0;
    bool over = false;
};

class Interruption : public Command {
protected:
    /// Writes a script with two steps that write files and, between them, a subdivision into six
    /// million faces.
    void WriteScript() {
        WriteFile("s.json", R"({"mesh": "cube.obj", "levels": 2, "steps": [
            {"tool": "Sculpt", "set": {"radius": 0.6, "strength": 80}},
            {"stroke": {"surface": [[0, 0, 1], [0.5, 0.2, 1]]}},
            {"export": {"file": "before.ply"}},
            {"subdivide": 8},
            {"export": {"file": "after.ply"}}]})");
        WriteFile("after.ply", "what was there");
    }
    /// Starts the command and waits until it reports that it has reached the step.
    std::unique_ptr<Running> RunUntil(const std::string& step,
                                      const std::vector<std::string>& arguments) {
        fs::remove(folder / "error.txt");
        auto running = std::make_unique<Running>(folder, arguments);
        while (!running->IsOver() && !Says(step))
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return running;
    }
    bool Says(const std::string& text) const {
        return ReadAll(folder / "error.txt").find(text) != std::string::npos;
    }
    std::set<std::string> Files() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.insert(entry.path().filename().string());
        return names;
    }
    /// Interrupts a run of the script during the subdivision. \return the status as reported by
    /// waitpid.
    int InterruptInSubdivision(int signal, const std::vector<std::string>& arguments) {
        // If the signal arrived only after the subdivision had ended, the run is inconclusive and
        // is repeated.
        for (int attempt = 0; attempt < 10; ++attempt) {
            WriteScript();
            const auto running = RunUntil("] subdivide\n", arguments);
            running->Send(signal);
            const int status = running->Wait();
            if (!Says("[5/5]")) return status;
        }
        ADD_FAILURE() << "no run was interrupted during its subdivision";
        return 0;
    }
    /// Expects a single error line after the lines that report the steps.
    void ExpectOneLine() const {
        const std::string error = ReadAll(folder / "error.txt");
        const std::string line = "trovik: interrupted\n";
        ASSERT_GE(error.size(), line.size());
        EXPECT_EQ(error.find("trovik: "), error.size() - line.size()) << error;
        EXPECT_EQ(error.substr(error.size() - line.size()), line);
        EXPECT_EQ(ReadAll(folder / "out.txt"), "");
    }
};

TEST_F(Interruption, EndsASubdivisionWithOneLineAndLeavesFilesUnchanged) {
    for (const int signal : {SIGINT, SIGTERM}) {
        const int status = InterruptInSubdivision(signal, {"sculpt", "s.json"});
        ASSERT_TRUE(WIFEXITED(status)) << status;
        EXPECT_EQ(WEXITSTATUS(status), 128 + signal);
        ExpectOneLine();
        EXPECT_EQ(ReadAll(folder / "after.ply"), "what was there");
        EXPECT_EQ(Files(),
                  (std::set<std::string>{
                      "cube.obj", "s.json", "before.ply", "after.ply", "out.txt", "error.txt"}));
    }
}

TEST_F(Interruption, EndsAWalkThatAppliesNoDab) {
    for (const char* stroke : {R"("pointer": [[-9, 0], [-9, 4900000]])",
                               R"("pointer": [[-9, 0], [-9, 4900000]], "path": {})",
                               R"("pen": [[-9, 0, 1, 0], [-9, 4900000, 1, 900]])"}) {
        SCOPED_TRACE(stroke);
        WriteFile(
            "s.json",
            R"({"mesh": "cube.obj", "levels": 7, "steps": [{"tool": "Sculpt"}, {"stroke": {)" +
                std::string(stroke) + R"(}}, {"export": {"file": "out.ply"}}]})");
        const auto running = RunUntil("] Sculpt, stroke 1 of 1\n", {"sculpt", "s.json"});
        running->Send(SIGTERM);
        const int status = running->Wait();
        ASSERT_TRUE(WIFEXITED(status)) << status;
        EXPECT_EQ(WEXITSTATUS(status), 128 + SIGTERM);
        ExpectOneLine();
        EXPECT_FALSE(fs::exists(folder / "out.ply"));
    }
}

TEST_F(Interruption, JournalRecoversFinishedWork) {
    const int status =
        InterruptInSubdivision(SIGINT, {"sculpt", "s.json", "--journal", "s.journal"});
    ASSERT_TRUE(WIFEXITED(status)) << status;
    EXPECT_EQ(WEXITSTATUS(status), 130);
    const Outcome outcome = Run("recover s.journal -o s.trovik -q");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error,
              "trovik: s.journal: the last step, \"subdivide\", was not finished and is "
              "skipped\n");
    // The recovered scene is bit-identical to the state before the subdivision.
    ASSERT_EQ(Run("convert s.trovik again.ply -q").status, 0);
    EXPECT_EQ(ReadAll(folder / "again.ply"), ReadAll(folder / "before.ply"));
}

TEST_F(Interruption, EndsATimeLapseDuringAFrame) {
    WriteFile("s.json", R"({"mesh": "cube.obj", "levels": 2, "steps": [
        {"stroke": {"surface": [[0, 0, 1]]}}]})");
    ASSERT_EQ(Run("sculpt s.json -q --journal s.journal").status, 0);
    const auto running =
        RunUntil("] lapse/frame_0001.png\n",
                 {"history", "s.journal", "--frames", "lapse", "--samples", "4096"});
    running->Send(SIGINT);
    const int status = running->Wait();
    ASSERT_TRUE(WIFEXITED(status)) << status;
    EXPECT_EQ(WEXITSTATUS(status), 130);
    ExpectOneLine();
    EXPECT_FALSE(fs::exists(folder / "lapse"));
}

TEST_F(Interruption, SecondSignalEndsTheProgramAtOnce) {
    for (int attempt = 0; attempt < 10; ++attempt) {
        WriteScript();
        const auto running = RunUntil("] subdivide\n", {"sculpt", "s.json"});
        // Both signals are pending when the process continues.
        running->Send(SIGSTOP);
        running->Send(SIGINT);
        running->Send(SIGTERM);
        running->Send(SIGCONT);
        const int status = running->Wait();
        if (Says("[5/5]")) continue;
        ASSERT_TRUE(WIFSIGNALED(status)) << status;
        EXPECT_EQ(WTERMSIG(status), SIGTERM);
        EXPECT_FALSE(Says("trovik: "));
        EXPECT_EQ(ReadAll(folder / "after.ply"), "what was there");
        return;
    }
    ADD_FAILURE() << "no run was interrupted during its subdivision";
}

TEST_F(Interruption, SignalsIgnoredAtTheStartStayIgnored) {
    WriteFile("s.json", R"({"mesh": "cube.obj", "steps": [{"export": {"file": "OUT.ply"}}]})");
    // The shell sends the command a signal that both ignore, and the command continues.
    const std::string line = "cd '" + folder.string() + "' && trap '' INT && ('" + TROVIK_COMMAND +
                             "' sculpt s.json -q & p=$!; kill -INT $p; wait $p)";
    const int status = std::system(line.c_str());
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_TRUE(fs::exists(folder / "OUT.ply"));
}

TEST_F(Interruption, EndsRefinementAndWritingOfAConversion) {
    // This command does not report steps, so the test searches for a delay after which the command
    // is running. No matter when the signal arrives, the output is either the complete old file or
    // the complete new one, and no other file is left.
    const std::set<std::string> files = {"cube.obj", "fine.ply", "out.txt", "error.txt"};
    bool met = false;
    int wait = 50;
    for (int attempt = 0; attempt < 200 && !met; ++attempt) {
        WriteFile("fine.ply", "what was there");
        Running running(folder, {"convert", "cube.obj", "fine.ply", "--levels", "9", "-q"});
        std::this_thread::sleep_for(std::chrono::milliseconds(wait));
        running.Send(SIGINT);
        const int status = running.Wait();
        EXPECT_EQ(Files(), files);
        if (!WIFEXITED(status)) {
            // The signal handler was not installed yet.
            wait += 50;
            continue;
        }
        if (WEXITSTATUS(status) == 0) {
            wait = std::max(wait - 20, 1);
            continue;
        }
        met = true;
        EXPECT_EQ(WEXITSTATUS(status), 130);
        ExpectOneLine();
        EXPECT_EQ(ReadAll(folder / "fine.ply"), "what was there");
    }
    EXPECT_TRUE(met);
}

}  // namespace
}  // namespace trovik::test
