// SPDX-License-Identifier: Apache-2.0

/// \file Tests `trovik info` with several files, and its notes about the contents of files.
#include "tests/cli/CommandRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace trovik::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr const char* herringbone = "(a herringbone pattern)";

class InfoCommand : public Command {
protected:
    InfoCommand() {
        WriteFile("tri.obj",
                  "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 1 3 2\nf 1 2 4\nf 2 3 4\nf 3 1 4\n");
        WriteFile("odd.obj",
                  "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nmtllib odd.mtl\nusemtl red\ns 1\n"
                  "f 1 2 3 4\nf 1 2 2\n");
        WriteFile("broken.obj", "v 0 0\n");
        WriteFile("s.json",
                  R"({"mesh": "cube.obj", "levels": 1, "steps": [{"save": "cube.trovik"}]})");
    }
};

TEST_F(InfoCommand, ReportsSeveralFilesInTheirOrder) {
    ASSERT_EQ(Run("sculpt s.json -q").status, 0);
    const Outcome outcome = Run("info cube.obj cube.trovik tri.obj");
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.out,
              Run("info cube.obj").out + Run("info cube.trovik").out + Run("info tri.obj").out);
    const json list = json::parse(Run("info cube.obj cube.trovik tri.obj --json").out);
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0], json::parse(Run("info cube.obj --json").out));
    EXPECT_EQ(list[1], json::parse(Run("info cube.trovik --json").out));
    EXPECT_EQ(list[2]["file"], "tri.obj");
    EXPECT_EQ(Run("info cube.obj tri.obj -q").out, "");
}

TEST_F(InfoCommand, ReportsThinWalls) {
    WriteFile("thin.json", R"({"mesh": "cube.obj", "transform": {"scale": [1, 1, 0.125]},
                               "steps": [{"save": "thin.trovik"}]})");
    ASSERT_EQ(Run("sculpt thin.json -q").status, 0);
    EXPECT_EQ(json::parse(Run("info cube.obj --json").out).at("thickness"), nullptr);
    const json cube = json::parse(Run("info cube.obj --json").out);
    const double size = cube.at("high")[2].get<double>() - cube.at("low")[2].get<double>();
    const auto walls = [&](const std::string& file, double limit) {
        return json::parse(
                   Run("info " + file + " --json --min-thickness " + std::to_string(limit)).out)
            .at("thickness");
    };
    EXPECT_EQ(walls("cube.obj", size * 0.9).at("thinFaces"), 0);
    EXPECT_EQ(walls("cube.obj", size * 0.9).at("thinnest"), nullptr);
    EXPECT_EQ(walls("cube.obj", size * 1.1).at("thinFaces"), 6);
    const json thin = walls("thin.trovik", size * 0.5);
    EXPECT_EQ(thin.at("thinFaces"), 2);
    EXPECT_NEAR(thin.at("thinnest").get<double>(), size * 0.125, size * 1e-4);
    EXPECT_NEAR(thin.at("thinArea").get<double>(), 2.0 * size * size, size * 1e-3);
    EXPECT_THAT(Run("info thin.trovik --min-thickness 0.001").out,
                HasSubstr("thickness no wall is thinner than 0.001"));
    EXPECT_THAT(Run("info thin.trovik --min-thickness 1").out,
                HasSubstr("thickness 2 faces are thinner than 1, with 80 % of the area"));
    EXPECT_EQ(Run("info cube.obj --min-thickness 0").status, 2);
}

TEST_F(InfoCommand, ContinuesAfterUnreadableFiles) {
    const Outcome outcome = Run("info broken.obj cube.obj none.obj tri.obj");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, Run("info cube.obj").out + Run("info tri.obj").out);
    EXPECT_EQ(outcome.error,
              "trovik: broken.obj, line 1: vertex has fewer than three coordinates\n"
              "trovik: cannot read none.obj: No such file or directory\n");
    const Outcome forPrograms = Run("info broken.obj cube.obj --json");
    EXPECT_EQ(forPrograms.status, 1);
    const json list = json::parse(forPrograms.out);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0],
              (json{{"file", "broken.obj"},
                    {"error", "broken.obj, line 1: vertex has fewer than three coordinates"}}));
    EXPECT_EQ(list[1]["vertices"], 8);
}

TEST_F(InfoCommand, NotesOmissionsAndTheRefinementOfTriangles) {
    const Outcome odd = Run("info odd.obj");
    EXPECT_EQ(odd.status, 0) << odd.error;
    EXPECT_THAT(odd.out,
                HasSubstr("  note      1 face has two corners at the same vertex and was left out: "
                          "face 1 (counted from 0)\n"));
    EXPECT_THAT(odd.out, HasSubstr("  materials 1, defined in odd.mtl\n"));
    EXPECT_THAT(odd.out, Not(HasSubstr(herringbone)));
    const json carried = json::parse(Run("info odd.obj --json").out);
    EXPECT_EQ(carried["notes"].size(), 1u);
    EXPECT_EQ(carried["carries"]["materialFiles"], json({"odd.mtl"}));
    EXPECT_EQ(carried["carries"]["smoothingGroups"], true);
    EXPECT_THAT(Run("info tri.obj").out, HasSubstr(herringbone));
    EXPECT_THAT(Run("info cube.obj").out, Not(HasSubstr("note")));
}

TEST_F(InfoCommand, OtherCommandsPrintNotesToStandardErrorUnlessQuiet) {
    const char* note = "note: odd.obj: 1 face has two corners at the same vertex";
    EXPECT_THAT(Run("convert odd.obj odd.ply").error, HasSubstr(note));
    EXPECT_THAT(Run("convert odd.obj odd.ply --levels 1").error, HasSubstr(note));
    EXPECT_THAT(Run("render odd.obj odd.png --width 32 --height 32 --samples 1").error,
                HasSubstr(note));
    WriteFile("odd.json", R"({"mesh": "odd.obj", "steps": []})");
    EXPECT_THAT(Run("sculpt odd.json").error, HasSubstr(note));
    EXPECT_EQ(Run("sculpt odd.json -q").error, "");
    EXPECT_EQ(Run("convert odd.obj odd.ply -q").error, "");
    const json converted = json::parse(Run("convert odd.obj out.obj --json -q").out);
    EXPECT_EQ(converted["files"], json({"out.obj"}));
    EXPECT_EQ(converted["notes"].size(), 1u);
}

TEST_F(InfoCommand, SculptReportsTheRefinementOfTrianglesOnce) {
    const auto count = [this](const std::string& script) {
        WriteFile("t.json", script);
        const std::string error = Run("sculpt t.json").error;
        std::size_t found = 0;
        for (std::size_t at = 0; (at = error.find(herringbone, at)) != std::string::npos; ++at)
            ++found;
        return found;
    };
    EXPECT_EQ(count(R"({"mesh": "tri.obj", "steps": []})"), 0u);
    EXPECT_EQ(count(R"({"mesh": "tri.obj", "levels": 2, "steps": [{"subdivide": 1}]})"), 1u);
    EXPECT_EQ(count(R"({"mesh": "tri.obj", "steps": [{"subdivide": 1}, {"undo": 1},
                        {"subdivide": 1}]})"),
              1u);
    EXPECT_EQ(count(R"({"mesh": "cube.obj", "levels": 2, "steps": []})"), 0u);
    EXPECT_THAT(Run("convert tri.obj tri.ply --levels 1").error, HasSubstr(herringbone));
    EXPECT_EQ(Run("convert tri.obj tri.ply").error, "");
}

TEST_F(InfoCommand, ExportsOfMaterialsNameEveryFile) {
    WriteFile("odd.mtl", "newmtl red\nmap_Kd red.png\n");
    fs::create_directories(folder / "out");
    const Outcome outcome = Run("convert odd.obj out/odd.obj");
    EXPECT_THAT(outcome.out,
                HasSubstr("wrote out/odd.obj: 4 vertices, 1 faces\nwrote out/odd.mtl\n"));
    EXPECT_THAT(ReadAll(folder / "out/odd.mtl"), HasSubstr("map_Kd ../red.png\n"));
    EXPECT_THAT(ReadAll(folder / "out/odd.obj"), HasSubstr("mtllib odd.mtl\n"));
    WriteFile("e.json", R"({"mesh": "odd.obj", "levels": 1, "steps": [
                            {"export": {"file": "fine.obj"}}, {"save": "fine.trovik"}]})");
    fs::remove_all(folder / "out");
    const json summary = json::parse(Run("sculpt e.json -o out --json -q").out);
    EXPECT_EQ(summary["files"], json({"out/fine.obj", "out/odd.mtl", "out/fine.trovik"}));
    // After a scene and the files that it references are moved together, the files are still found.
    fs::create_directories(folder / "moved");
    fs::rename(folder / "out", folder / "moved/out");
    fs::rename(folder / "odd.mtl", folder / "moved/odd.mtl");
    EXPECT_EQ(Run("convert moved/out/fine.trovik again.obj").status, 0);
    EXPECT_THAT(ReadAll(folder / "again.obj"), HasSubstr("s 1\n"));
    EXPECT_THAT(ReadAll(folder / "again.obj"), HasSubstr("mtllib moved/odd.mtl\n"));
}

TEST_F(InfoCommand, PositionsBeyondFloatsAreNotExported) {
    WriteFile("far.obj",
              "v -3e38 -1 0\nv 3e38 -1 0\nv 3e38 1 0\nv -3e38 1 0\nv 3e38 2 0\nv -3e38 2 0\n"
              "f 1 2 3 4\nf 4 3 5 6\n");
    WriteFile("far.json", R"({"mesh": "far.obj", "levels": 1, "transform": {"scale": 10}, "steps": [
                              {"export": {"file": "far-fine.obj", "world": true}}]})");
    const Outcome outcome = Run("sculpt far.json -q");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.error, HasSubstr("only finite numbers can be exported"));
    EXPECT_FALSE(fs::exists(folder / "far-fine.obj"));
}

}  // namespace
}  // namespace trovik::test
