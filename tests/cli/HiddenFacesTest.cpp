// SPDX-License-Identifier: Apache-2.0

/// \file Tests hidden faces in scripts, in the scenes they save, and in renders and exports of
/// these scenes.
#include "tests/cli/CommandRun.h"

#include <nlohmann/json.hpp>

namespace trovik::test {
namespace {

class HiddenFacesCommand : public Command {
protected:
    uint64_t FacesIn(const std::string& conversion) {
        const Outcome outcome = Run("convert " + conversion + " --json");
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        return nlohmann::json::parse(outcome.out).at("faces").get<uint64_t>();
    }
};

TEST_F(HiddenFacesCommand, AreKeptInScenesAndLeftOutOnRequest) {
    WriteFile("hide.json",
              R"({"mesh": "cube.obj", "levels": 2, "steps": [
                  {"hide": {"faces": [[0, 16]]}},
                  {"render": {"file": "part.png", "width": 64, "height": 64, "samples": 1}},
                  {"export": {"file": "part.ply", "hidden": false}},
                  {"save": "cube.trovik"}]})");
    const Outcome outcome = Run("sculpt hide.json -q");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(FacesIn("part.ply again.ply"), 80u);
    EXPECT_EQ(FacesIn("cube.trovik all.ply"), 96u);
    EXPECT_EQ(FacesIn("cube.trovik visible.ply --visible"), 80u);
    EXPECT_EQ(ReadAll(folder / "visible.ply"), ReadAll(folder / "part.ply"));
    // On an added level, the children of hidden faces are also hidden.
    EXPECT_EQ(FacesIn("cube.trovik finer.ply --visible --levels 1"), 320u);
    WriteFile("all.json", R"({"scene": "cube.trovik", "steps": [{"show": "all"},
                              {"save": "shown.trovik"}]})");
    ASSERT_EQ(Run("sculpt all.json -q").status, 0);
    EXPECT_EQ(FacesIn("shown.trovik shown.ply --visible"), 96u);
    for (const std::string scene : {"cube", "shown"})
        ASSERT_EQ(
            Run("render " + scene + ".trovik " + scene + ".png --from 0 0 -1 --samples 1").status,
            0);
    EXPECT_NE(ReadAll(folder / "cube.png"), ReadAll(folder / "shown.png"));
}

TEST_F(HiddenFacesCommand, AreRecoveredFromAJournal) {
    WriteFile("hide.json",
              R"({"mesh": "cube.obj", "levels": 2, "steps": [
                  {"mask": {"min": [-9, -9, -9], "max": [0, 9, 9], "amount": 0.5}},
                  {"hide": {"mask": 0.5, "grow": 1}},
                  {"tool": "Sculpt", "set": {"radius": 0.8}},
                  {"stroke": {"surface": [[0.9, 0, 0], [0.5, 0.5, 1]]}},
                  {"invertVisibility": true}]})");
    const Outcome outcome = Run("sculpt hide.json -q --journal work.journal");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    ASSERT_EQ(Run("recover work.journal -o back.trovik -q").status, 0);
    std::string script = ReadAll(folder / "hide.json");
    script.insert(script.rfind("]}"), R"(, {"save": "done.trovik"})");
    WriteFile("save.json", script);
    ASSERT_EQ(Run("sculpt save.json -q").status, 0);
    EXPECT_EQ(FacesIn("back.trovik back.ply --visible"), FacesIn("done.trovik done.ply --visible"));
    EXPECT_EQ(ReadAll(folder / "back.ply"), ReadAll(folder / "done.ply"));
}

}  // namespace
}  // namespace trovik::test
