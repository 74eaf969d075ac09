// SPDX-License-Identifier: Apache-2.0

/// \file Tests the reports on a script's steps, and the warnings about steps without effect.
#include "tests/SourceFolder.h"
#include "tests/cli/CommandRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <set>

namespace trovik::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

class StepReport : public Command {
protected:
    Outcome Sculpt(const std::string& steps, const std::string& options = "-q") {
        WriteFile("s.json", R"({"mesh": "cube.obj", "levels": 3, "steps": [)" + steps + "]}");
        return Run("sculpt s.json " + options);
    }
    /// Runs steps and expects a warning about the step with this number and about no other step.
    void ExpectWarning(const std::string& steps, int number, const std::string& reason) {
        SCOPED_TRACE(steps);
        const std::string where = "s.json: /steps/" + std::to_string(number) + ": " + reason + "\n";
        const Outcome outcome = Sculpt(steps);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.error, "warning: " + where);
        const Outcome strict = Sculpt(steps, "-q --strict");
        EXPECT_EQ(strict.status, 1);
        EXPECT_EQ(strict.error, "trovik: " + where);
        const json summary = json::parse(Sculpt(steps, "-q --json").out);
        for (std::size_t i = 0; i < summary["steps"].size(); ++i) {
            const json warnings = summary["steps"][i]["warnings"];
            EXPECT_EQ(warnings, static_cast<int>(i) == number ? json({reason}) : json::array());
        }
        EXPECT_EQ(summary["warnings"], json({where.substr(0, where.size() - 1)}));
    }
};

constexpr const char* stroke = R"({"stroke": {"surface": [[0.2, 0.1, 1], [0.4, 0.1, 1]]}})";

TEST_F(StepReport, StrokeThatMissesTheMeshIsAWarning) {
    const std::string reason = "the stroke misses the mesh: no dab was applied";
    ExpectWarning(R"({"stroke": {"pointer": [[1, 1], [5, 5]]}})", 0, reason);
    ExpectWarning(
        std::string(stroke) + R"(, {"stroke": {"pen": [[1, 1, 1, 0], [5, 5, 1, 50]]}})", 1, reason);
    ExpectWarning(R"({"stroke": {"dabs": [{"face": 0}], "open": true}},
                     {"stroke": {"pointer": [[1, 1]], "continue": true}})",
                  1,
                  reason);
    // Each step has only one line, even if there are several reasons for a warning.
    const Outcome two = Sculpt(R"({"stroke": {"pointer": [[1, 1]]}}, {"mask": "clear"},
                                  {"stroke": {"pointer": [[1, 1]]}})");
    EXPECT_EQ(
        two.error,
        "warning: s.json: /steps/0: " + reason + "\nwarning: s.json: /steps/2: " + reason + "\n");
}

TEST_F(StepReport, PointsFarFromTheSurfaceAreAWarning) {
    ExpectWarning(R"({"stroke": {"surface": [[0.2, 0.1, 1], [0.2, 0.1, 4]]}})",
                  0,
                  "1 of 2 points of stroke/surface are far from the surface; point 1 is 3.16 away");
    ExpectWarning(R"({"stroke": {"surface": [[0, 0, 6]]}})",
                  0,
                  "stroke/surface is 5.15 away from the surface");
    ExpectWarning(R"({"mask": {"component": {"surface": [0, 8, 0]}}})",
                  0,
                  "mask/component/surface is 7.15 away from the surface");
    // A point within the brush radius is near enough.
    EXPECT_EQ(Sculpt(R"({"set": {"radius": 3}}, {"stroke": {"surface": [[0, 0, 3.5]]}})").error,
              "");
    EXPECT_EQ(Sculpt(R"({"stroke": {"surface": [[0, 0, 1.1]]}})").error, "");
}

TEST_F(StepReport, FreezingThatSelectsNothingIsAWarning) {
    const std::string reason = "no vertex is selected";
    ExpectWarning(R"({"mask": {"center": [9, 9, 9], "radius": 1}})", 0, reason);
    ExpectWarning(R"({"mask": {"box": [0, 0, 2, 2]}})", 0, reason);
    ExpectWarning(R"({"mask": {"all": true, "amount": 0}})", 0, reason);
    ExpectWarning(
        R"({"mask": {"grow": 2}})", 0, "no vertex is frozen, so there is nothing to grow");
    EXPECT_EQ(Sculpt(R"({"mask": "clear"}, {"mask": {"center": [0, 0, 1], "radius": 1}},
                        {"mask": {"grow": 1}}, {"mask": "invert"})")
                  .error,
              "");
}

TEST_F(StepReport, StrokeWithoutEffectIsAWarning) {
    const std::string frozen = R"({"mask": "all"}, )";
    ExpectWarning(frozen + stroke, 1, "the stroke moved no vertex");
    ExpectWarning(
        frozen + R"({"stroke": {"wholeMesh": {"strength": 1}}})", 1, "the stroke moved no vertex");
    ExpectWarning(
        frozen + R"({"tool": "Freeze"}, )" + stroke, 2, "the stroke changed no freeze amount");
    // The effect of all steps of a stroke is evaluated when the stroke ends.
    EXPECT_EQ(Sculpt(R"({"stroke": {"dabs": [{"face": 0, "strength": 0}], "open": true}},
                        {"stroke": {"dabs": [{"face": 0}], "continue": true, "open": true}},
                        {"stroke": {"continue": true}})")
                  .error,
              "");
    EXPECT_EQ(Sculpt(R"({"tool": "Freeze"}, {"stroke": {"wholeMesh": {"strength": 50}}}, )" +
                     std::string(stroke))
                  .error,
              "");
}

TEST_F(StepReport, StrictEndsTheRunAtTheFirstWarning) {
    const std::string steps = R"({"export": {"file": "one.obj"}}, {"mask": {"grow": 1}},
                                 {"export": {"file": "two.obj"}})";
    EXPECT_EQ(Sculpt(steps, "-q --strict").status, 1);
    EXPECT_TRUE(fs::exists(folder / "one.obj"));
    EXPECT_FALSE(fs::exists(folder / "two.obj"));
    EXPECT_EQ(Sculpt(stroke, "-q --strict").status, 0);
    // If there is a trace, it contains the completed work.
    EXPECT_EQ(Sculpt(std::string(stroke) + R"(, {"mask": {"grow": 1}}, )" + stroke,
                     "-q --strict --trace t")
                  .status,
              1);
    EXPECT_TRUE(fs::exists(folder / "t/after/m0/meta.json"));
}

TEST_F(StepReport, JsonSummaryHasEachStep) {
    const json steps =
        json::parse(Sculpt(std::string(R"({"tool": "Wax", "set": {"radius": 0.5}}, )") + stroke +
                               R"(, {"undo": 1})",
                           "-q --json")
                        .out)["steps"];
    ASSERT_EQ(steps.size(), 3u);
    EXPECT_EQ(steps[0]["step"], "tool");
    EXPECT_EQ(steps[0]["dabs"], 0);
    EXPECT_EQ(steps[1]["pointer"], "/steps/1");
    EXPECT_EQ(steps[1]["step"], "stroke");
    EXPECT_GT(steps[1]["dabs"], 1);
    EXPECT_GT(steps[1]["verticesMoved"], 10);
    EXPECT_GT(steps[1]["milliseconds"], 0.0);
    EXPECT_EQ(steps[2]["step"], "undo");
    EXPECT_EQ(steps[2]["verticesMoved"], 0);
}

TEST_F(StepReport, ProgressNamesTheTool) {
    const std::string error = Sculpt(std::string(R"({"tool": "Wax", "set": {"radius": 0.5}}, )") +
                                         stroke + R"(, {"undo": 1},
               {"stroke": {"dabs": [{"face": 0}], "open": true}}, {"stroke": {"continue": true}},
               {"tool": "Freeze"}, )" + stroke,
                                     "")
                                  .error;
    for (const char* line : {"[1/7] tool Wax\n",
                             "[2/7] Wax, stroke 1 of 3\n",
                             "[3/7] undo\n",
                             "[4/7] Wax, stroke 2 of 3\n",
                             "[5/7] Wax, stroke 2 of 3\n",
                             "[7/7] Freeze, stroke 3 of 3\n"})
        EXPECT_THAT(error, HasSubstr(line));
}

class ToolSettings : public Command {
protected:
    json Tools() { return json::parse(Run("tools --json").out); }
    static json Find(const json& list, const std::string& name) {
        for (const json& entry : list)
            if (entry.at("name") == name) return entry;
        return {};
    }
};

/// Returns the names of the settings in the schema; names in nested objects contain a dot.
std::set<std::string> SettingsOfSchema() {
    const json schema =
        json::parse(ReadAll(fs::path(SourceFolder()) / "docs/stroke-script.schema.json"));
    const json& definitions = schema.at("definitions");
    std::set<std::string> names;
    for (const auto& [name, given] : definitions.at("settings").at("properties").items()) {
        if (name == "comment") continue;
        const auto inner = definitions.find(name);
        if (inner == definitions.end() || !inner->contains("properties")) {
            names.insert(name);
            continue;
        }
        for (const auto& [field, ignored] : inner->at("properties").items())
            if (field != "comment") names.insert(std::string(name).append(".").append(field));
    }
    return names;
}

TEST_F(ToolSettings, NineteenToolsHaveEveryScriptSetting) {
    const json tools = Tools();
    ASSERT_EQ(tools.size(), 19u);
    EXPECT_EQ(tools.back()["name"], "Freeze");
    std::set<std::string> names;
    for (const json& tool : tools) {
        EXPECT_NE(tool["help"], "");
        for (const json& setting : tool["settings"]) names.insert(setting["name"]);
    }
    EXPECT_EQ(names, SettingsOfSchema());
}

TEST_F(ToolSettings, EachToolHasItsOwnDefaults) {
    const json tools = Tools();
    const auto value = [&](const char* tool, const char* setting) {
        const json found = Find(Find(tools, tool)["settings"], setting);
        return found.is_null() ? json("absent") : found["default"];
    };
    EXPECT_EQ(value("Sculpt", "strength"), 15);
    EXPECT_EQ(value("Smooth", "strength"), 100);
    EXPECT_EQ(value("Freeze", "strength"), 100);
    EXPECT_EQ(value("Wax", "smoothing"), 0.1);
    EXPECT_EQ(value("Foamy", "smoothing"), false);
    EXPECT_EQ(value("Foamy", "buildUpRate"), 0.25);
    EXPECT_EQ(value("Imprint", "buildUpRate"), "absent");
    EXPECT_EQ(value("Imprint", "falloff"), "plateau");
    EXPECT_EQ(value("Imprint", "drawFromCenter"), true);
    EXPECT_EQ(value("Sculpt", "drawFromCenter"), "absent");
    EXPECT_EQ(value("Sculpt", "direction"), "average");
    EXPECT_EQ(value("Freeze", "direction"), "absent");
    EXPECT_EQ(value("Flatten", "globalPlane"), false);
    EXPECT_EQ(value("Sculpt", "globalPlane"), "absent");
    EXPECT_EQ(value("Spray", "stamp.randomize"), true);
    EXPECT_EQ(value("Grab", "connectedOnly"), false);
    EXPECT_EQ(value("Grab", "mode"), "absent");
    EXPECT_EQ(value("ElasticGrab", "mode"), "grab");
    EXPECT_EQ(value("ElasticGrab", "scales"), 3);
    EXPECT_EQ(value("ElasticGrab", "poissonRatio"), 0.5);
    EXPECT_EQ(value("SnakeHook", "connectedOnly"), "absent");
    EXPECT_EQ(value("SnakeHook", "smoothing"), 0.0625);
    EXPECT_EQ(value("SnakeHook", "spacing"), 25);
    EXPECT_EQ(value("Grab", "spacing"), "absent");
    EXPECT_EQ(value("Grab", "stamp.enabled"), "absent");
    EXPECT_EQ(value("Grab", "falloff"), "smooth");
    EXPECT_EQ(value("ElasticGrab", "falloff"), "absent");
    EXPECT_EQ(value("Sculpt", "spacing"), 25);
    EXPECT_EQ(value("Sculpt", "radiusPixels"), nullptr);
}

TEST_F(ToolSettings, RangesAndUnitsAreGiven) {
    const json settings = Find(Tools(), "Sculpt")["settings"];
    const json strength = Find(settings, "strength");
    EXPECT_EQ(strength["minimum"], 0);
    EXPECT_EQ(strength["maximum"], 100);
    EXPECT_EQ(strength["unit"], "%");
    EXPECT_EQ(Find(settings, "radius")["exclusiveMinimum"], 0);
    EXPECT_EQ(Find(settings, "radius")["unit"], "world units");
    EXPECT_EQ(Find(settings, "facing.range")["maximum"], 180);
    EXPECT_EQ(Find(settings, "facing.range")["unit"], "degrees");
    EXPECT_EQ(Find(settings, "stamp.positioning")["choices"],
              json({"tool", "upright", "stroke", "start"}));
    EXPECT_EQ(Find(settings, "falloff")["choices"].size(), 8u);
}

TEST_F(ToolSettings, ScriptsAcceptTheDefaults) {
    json steps = json::array();
    for (const json& tool : Tools()) {
        json set = json::object();
        for (const json& setting : tool["settings"]) {
            const std::string name = setting["name"];
            // Default stamps are installed files, whose paths depend on the installation.
            if (setting["default"].is_null() || name == "stamp.path") continue;
            const std::size_t dot = name.find('.');
            if (dot == std::string::npos)
                set[name] = setting["default"];
            else
                set[name.substr(0, dot)][name.substr(dot + 1)] = setting["default"];
        }
        steps.push_back({{"tool", tool["name"]}, {"set", set}});
    }
    WriteFile("s.json", json({{"mesh", "cube.obj"}, {"steps", steps}}).dump());
    const Outcome outcome = Run("sculpt s.json -q");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error, "");
}

TEST_F(ToolSettings, TextHasOneRowPerToolAndSetting) {
    const std::string text = Run("tools").out;
    EXPECT_THAT(text, HasSubstr("\nFreeze    "));
    EXPECT_THAT(text,
                HasSubstr(" 15; Smooth, Grab, ElasticGrab, SnakeHook, Freeze: 100 (0 to 100 %)\n"));
    EXPECT_THAT(text, HasSubstr(" on; only Imprint (on, off)\n"));
    EXPECT_THAT(text, HasSubstr("; only Amplify, Flatten, Scrape, Fill, Wax (on, off)\n"));
    for (const std::string& name : SettingsOfSchema())
        EXPECT_THAT(text, HasSubstr("\n  " + name + " "));
}

}  // namespace
}  // namespace trovik::test
