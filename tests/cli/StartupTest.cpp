// SPDX-License-Identifier: Apache-2.0

/// \file Tests which libraries the command loads: large libraries are loaded only if they are
/// needed.
#include "tests/cli/CommandRun.h"

#include <gmock/gmock.h>

namespace trovik::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class Startup : public Command {
protected:
    /// Returns the files that the dynamic loader reports as loaded during a run.
    std::string LoadedFiles(const std::string& arguments, int expectedStatus) {
        const std::string line = "cd '" + folder.string() +
                                 "' && LD_DEBUG=files LD_DEBUG_OUTPUT=loads '" + TROVIK_COMMAND +
                                 "' " + arguments + " > out.txt 2> error.txt";
        const int result = std::system(line.c_str());
        EXPECT_EQ(WEXITSTATUS(result), expectedStatus) << ReadAll(folder / "error.txt");
        // The loader appends the process ID to the name.
        std::string loads;
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().stem() != "loads") continue;
            loads += ReadAll(entry.path());
            fs::remove(entry.path());
        }
        EXPECT_THAT(loads, HasSubstr("libTrovikFramework"));
        return loads;
    }
};

TEST_F(Startup, LoadsNoLargeLibraryWithoutNeed) {
    WriteFile("wrong.json", R"({"mesh": "cube.obj", "steps": [{"set": {"raduis": 1}}]})");
    const std::pair<std::string, int> runs[] = {{"--version", 0},
                                                {"--help", 0},
                                                {"info cube.obj", 0},
                                                {"convert cube.obj cube.ply --levels 1", 0},
                                                {"sculpt wrong.json", 1},
                                                {"sculpt missing.json", 1}};
    for (const auto& [arguments, status] : runs) {
        SCOPED_TRACE(arguments);
        const std::string loads = LoadedFiles(arguments, status);
        EXPECT_THAT(loads, Not(HasSubstr("libOpenImageIO")));
        EXPECT_THAT(loads, Not(HasSubstr("libembree")));
        EXPECT_THAT(loads, Not(HasSubstr("libopenvdb")));
        EXPECT_THAT(loads, Not(HasSubstr("SwiftStroke")));
    }
}

TEST_F(Startup, LoadsPluginsOnlyForStrokes) {
    WriteFile("wave.json", R"({"mesh": "cube.obj", "levels": 2, "steps": [
        {"stroke": {"surface": [[0, 0, 1], [0.2, 0, 1]]}}]})");
    const std::string loads = LoadedFiles("sculpt wave.json -q", 0);
    EXPECT_THAT(loads, HasSubstr("SwiftStroke"));
    EXPECT_THAT(loads, Not(HasSubstr("libOpenImageIO")));
    EXPECT_THAT(loads, Not(HasSubstr("libembree")));
    EXPECT_THAT(loads, Not(HasSubstr("libopenvdb")));
}

TEST_F(Startup, RendersLoadTheLibrariesTheyNeed) {
    const std::string loads = LoadedFiles("render cube.obj cube.png --width 8 --height 8", 0);
    EXPECT_THAT(loads, HasSubstr("libOpenImageIO"));
    EXPECT_THAT(loads, HasSubstr("libembree"));
}

}  // namespace
}  // namespace trovik::test
