// SPDX-License-Identifier: Apache-2.0
#include "tests/cli/CommandRun.h"

#include <algorithm>

namespace trovik::test {
namespace {

class RenderLimits : public Command {
protected:
    Outcome RunWithin(unsigned mebibytes, const std::string& arguments) {
        const std::string line = "cd '" + folder.string() + "' && (ulimit -Sv " +
                                 std::to_string(mebibytes * 1024u) + " && exec '" + TROVIK_COMMAND +
                                 "' " + arguments + ") > out.txt 2> error.txt";
        const int result = std::system(line.c_str());
        return {WEXITSTATUS(result), ReadAll(folder / "out.txt"), ReadAll(folder / "error.txt")};
    }
};

TEST_F(RenderLimits, RenderInLittleAddressSpaceSucceedsOrFailsWithOneLine) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer maps more address space than any limit allows";
#endif
    const std::string render =
        "render cube.obj cube.png --levels 5 --width 32 --height 24 --samples 1 -q";
    constexpr unsigned step = 20;
    unsigned limit = 20;
    while (limit < 1000 && RunWithin(limit, "--version").status != 0) limit += step;
    int refusals = 0;
    int renders = 0;
    for (; renders < 2; limit += step) {
        SCOPED_TRACE(std::to_string(limit) + " MiB");
        ASSERT_LT(limit, 4000u) << "no limit is high enough";
        const Outcome outcome = RunWithin(limit, render);
        if (outcome.status == 0) {
            ++renders;
            EXPECT_EQ(outcome.error, "");
            continue;
        }
        ++refusals;
        ASSERT_EQ(outcome.status, 1) << outcome.error;
        EXPECT_EQ(outcome.error.rfind("trovik: ", 0), 0u) << outcome.error;
        EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
        EXPECT_FALSE(fs::exists(folder / "cube.png"));
    }
    // Loading the libraries for renders and images takes several increments of address space.
    EXPECT_GT(refusals, 5);
}

TEST_F(RenderLimits, CoordinatesOutOfRangeAreRefusedWithOneLine) {
    WriteFile("far.obj", "v 0 0 0\nv 2e18 0 0\nv 0 2e18 0\nf 1 2 3\n");
    const Outcome far = Run("render far.obj far.png --width 32 --height 24");
    EXPECT_EQ(far.status, 1);
    EXPECT_EQ(far.error,
              "trovik: cannot render: vertex 1 is at (2e+18, 0, 0) in world space; coordinates "
              "must be from -1e+18 to 1e+18\n");
    // The camera options have the same range, even if --up is given.
    for (const char* options : {"--eye 1e20 0 0", "--eye 1e20 0 0 --up 0 0 1"}) {
        SCOPED_TRACE(options);
        const Outcome eye =
            Run(std::string("render cube.obj eye.png --width 32 --height 24 ") + options);
        EXPECT_EQ(eye.status, 1);
        EXPECT_EQ(eye.error,
                  "trovik: cannot render: the eye of the camera is at (1e+20, 0, 0) in world "
                  "space; coordinates must be from -1e+18 to 1e+18\n");
    }
    const Outcome target =
        Run("render cube.obj eye.png --width 32 --height 24 --eye 5 0 0 --target 0 2e18 0");
    EXPECT_EQ(target.status, 1);
    EXPECT_EQ(target.error,
              "trovik: cannot render: the target of the camera is at (0, 2e+18, 0) in world "
              "space; coordinates must be from -1e+18 to 1e+18\n");
    // For the most distant vertices that are accepted, the eye is out of range.
    WriteFile("edge.obj", "v 0 0 0\nv 9e17 0 0\nv 0 9e17 0\nf 1 2 3\n");
    const Outcome edge = Run("render edge.obj edge.png --width 32 --height 24");
    EXPECT_EQ(edge.status, 1);
    EXPECT_EQ(edge.error.rfind("trovik: cannot render: the eye of the camera is at (", 0), 0u)
        << edge.error;
    ExpectScriptError(R"({"mesh": "edge.obj", "steps": [{"render": {"file": "edge.png",
                          "width": 32, "height": 24, "camera": {"from": [0, 0, 1]}}}]})",
                      "/steps/0/render: cannot render: the eye of the camera is at (");
}

}  // namespace
}  // namespace trovik::test
