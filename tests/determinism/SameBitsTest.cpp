// SPDX-License-Identifier: Apache-2.0

/// \file Tests that the same script gives bit-identical results when it is repeated in one process,
/// in another process, in every build, and in locales with decimal commas.
#include "framework/script/ScriptRunner.h"
#include "tests/SourceFolder.h"
#include "tests/brush/ToolNames.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

namespace trovik::test {
namespace {

namespace fs = std::filesystem;

std::string ReadAll(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/// FNV-1a with 64 bits.
uint64_t HashOf(const std::string& bytes) {
    uint64_t hash = 0xcbf29ce484222325ull;
    for (const char byte : bytes) {
        hash ^= static_cast<unsigned char>(byte);
        hash *= 0x100000001b3ull;
    }
    return hash;
}

/// Returns a script with one stroke for every tool and with everything that affects the results:
/// mirrors, a transform with three different scales, a layer, masks, facing, pressure, coarser
/// levels and undo.
std::string ScriptText() {
    std::ostringstream script;
    script << R"({"mesh": ")" << SourceFolder() << R"(/examples/meshes/spot.obj", "levels": 2,
        "mirror": ["x"],
        "transform": {"scale": [1.5, 0.75, 1.25], "rotate": [10.5, 20.25, 30.125],
                      "translate": [0.5, 0.25, -0.125]},
        "camera": {"from": [0.3, 0.2, 1], "width": 320, "height": 240},
        "steps": [{"layer": {"add": "relief", "strength": 0.75}},
                  {"mask": {"center": [0.5, 0.5, 0.5], "radius": 0.5, "softness": 0.5}})";
    int k = 0;
    for (const char* tool : toolNames) {
        script << ",\n{\"tool\": \"" << tool << R"(", "set": {"radius": 0.3, "strength": 35.5,
            "buildUpRate": 0.7, "stamp": false,
            "facing": {"enabled": )"
               << (k % 3 == 0 ? "true" : "false") << R"(, "start": 20.5, "range": 70}}},
            {"stroke": {"pointer": [[)"
               << 90 + 5 * k << R"(, 120, 0.3], [)" << 150 + 5 * k
               << R"(, 110.5, 0.9], [200.25, 140, 0.6]]}})";
        if (++k % 5 == 0)
            script << R"(,{"layer": {"select": null}}, {"level": 1},
                         {"stroke": {"pointer": [[150, 60, 0.5], [170, 180, 1]]}}, {"level": 2})";
        if (k % 4 == 0) script << R"(,{"undo": 1}, {"redo": 1}, {"undo": 1})";
    }
    script << R"(, {"export": {"file": "shape.ply", "world": true}}]})";
    return script.str();
}

class SameBits : public ::testing::Test {
protected:
    SameBits() {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        folder = fs::temp_directory_path() / ("trovik-determinism-" + std::string(info->name()) +
                                              "-" + std::to_string(getpid()));
        fs::create_directories(folder);
        script = (folder / "script.json").string();
        std::ofstream(script, std::ios::binary) << ScriptText();
    }
    ~SameBits() override { fs::remove_all(folder); }

    std::string RunHere() {
        const ScriptResult result = ScriptRunner(script, folder.string(), {}).Run();
        EXPECT_GT(result.totals.verticesMoved, 10000u);
        return ReadAll(folder / "shape.ply");
    }
    std::string RunElsewhere(const std::string& environment) {
        fs::remove(folder / "shape.ply");
        const std::string line = environment + " '" + TROVIK_COMMAND + "' sculpt '" + script +
                                 "' -q --output '" + folder.string() + "'";
        EXPECT_EQ(std::system(line.c_str()), 0) << line;
        return ReadAll(folder / "shape.ply");
    }

    fs::path folder;
    std::string script;
};

TEST_F(SameBits, RepeatInOneProcessAndInAnother) {
    const std::string first = RunHere();
    ASSERT_GT(first.size(), 100000u);
    EXPECT_TRUE(RunHere() == first);
    EXPECT_TRUE(RunElsewhere("") == first);
}

TEST_F(SameBits, AreEqualInEveryBuild) {
    // All builds produce this value, optimised or not, with or without sanitizers. A different
    // value means that strokes give different results, which the change log must mention.
    EXPECT_EQ(HashOf(RunHere()), 10946052926034741426ull);
}

TEST_F(SameBits, DoNotDependOnDecimalCommas) {
    const std::string expected = RunHere();
    const std::string locales = (folder / "locales").string();
    fs::create_directories(locales);
    // localedef exits with status 1 if there were only warnings.
    ASSERT_NE(
        std::system(
            ("localedef -i de_DE -f UTF-8 '" + locales + "/de_DE.UTF-8' 2>/dev/null").c_str()),
        -1);
    ASSERT_EQ(setenv("LOCPATH", locales.c_str(), 1), 0);
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    char text[8] = {};
    std::snprintf(text, sizeof text, "%.1f", 0.5);
    EXPECT_STREQ(text, "0,5");
    const std::string here = RunHere();
    std::setlocale(LC_ALL, "C");
    EXPECT_TRUE(here == expected);
    // The C library caches data for LOCPATH, which a leak check would report.
    EXPECT_TRUE(RunElsewhere("ASAN_OPTIONS=detect_leaks=0 LC_ALL=de_DE.UTF-8 LANG=de_DE.UTF-8") ==
                expected);
    unsetenv("LOCPATH");
}

}  // namespace
}  // namespace trovik::test
