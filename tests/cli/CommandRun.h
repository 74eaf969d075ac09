// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace trovik::test {

namespace fs = std::filesystem;

inline std::string ReadAll(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

struct Outcome {
    int status;
    std::string out;
    std::string error;
};

/// A test that runs the command in its own folder, which contains a cube.
class Command : public ::testing::Test {
protected:
    Command() {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        folder = fs::temp_directory_path() /
                 ("trovik-cli-" + std::string(info->name()) + "-" + std::to_string(getpid()));
        fs::create_directories(folder);
        WriteFile("cube.obj",
                  "v -1 -1 -1\nv 1 -1 -1\nv -1 1 -1\nv 1 1 -1\nv -1 -1 1\nv 1 -1 1\nv -1 1 1\n"
                  "v 1 1 1\nf 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n");
    }
    ~Command() override { fs::remove_all(folder); }

    void WriteFile(const std::string& name, const std::string& text) {
        std::ofstream(folder / name, std::ios::binary) << text;
    }

    Outcome Run(const std::string& arguments) {
        const std::string line = "cd '" + folder.string() + "' && '" + TROVIK_COMMAND + "' " +
                                 arguments + " > out.txt 2> error.txt";
        const int result = std::system(line.c_str());
        return {WEXITSTATUS(result), ReadAll(folder / "out.txt"), ReadAll(folder / "error.txt")};
    }

    /// Runs a script and expects it to fail with a single line on standard error that contains this
    /// reason.
    void ExpectScriptError(const std::string& script, const std::string& reason) {
        SCOPED_TRACE(script);
        WriteFile("bad.json", script);
        const Outcome outcome = Run("sculpt bad.json -q");
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        ASSERT_FALSE(outcome.error.empty());
        EXPECT_EQ(outcome.error.find('\n'), outcome.error.size() - 1) << outcome.error;
        EXPECT_NE(outcome.error.find("trovik: bad.json: "), std::string::npos) << outcome.error;
        EXPECT_NE(outcome.error.find(reason), std::string::npos) << outcome.error;
    }

    fs::path folder;
};

}  // namespace trovik::test
