// SPDX-License-Identifier: Apache-2.0

/// \file Tests that a run reports the first error in a script, and --check reports all errors.
#include "tests/cli/CommandRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace trovik::test {
namespace {

using testing::HasSubstr;

class ScriptCheck : public Command {
protected:
    /// Checks a script. \return the lines on standard error.
    std::vector<std::string> ErrorsOf(const std::string& script) {
        WriteFile("s.json", script);
        const Outcome outcome = Run("sculpt --check s.json");
        std::vector<std::string> lines;
        std::istringstream text(outcome.error);
        for (std::string line; std::getline(text, line);) lines.push_back(line);
        EXPECT_EQ(outcome.status, lines.empty() ? 0 : 1);
        EXPECT_EQ(outcome.out, lines.empty() ? "s.json: no errors\n" : "");
        return lines;
    }
};

TEST_F(ScriptCheck, MisspeltSettingIsNamedWithASuggestion) {
    WriteFile("first.json", R"({"mesh": "cube.obj", "steps": [{"set":{"raduis":1}}]})");
    const Outcome outcome = Run("sculpt first.json");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error,
              "trovik: first.json: /steps/0/set/raduis: unknown setting; did you mean "
              "\"radius\"?\n");
}

TEST_F(ScriptCheck, ValidScriptsHaveNoErrorsAndWriteNothing) {
    EXPECT_THAT(ErrorsOf(R"({"mesh": "cube.obj", "levels": 9, "steps": [
                    {"comment": "a head"}, {"tool": "Wax", "set": {"radius": 0.2, "strength": 40}},
                    {"stroke": {"open": true}}, {"stroke": {"continue": true, "open": true,
                        "surface": [[0, 0, 1]]}}, {"stroke": {"continue": true}},
                    {"level": 3}, {"layer": {"add": "a"}}, {"mask": {"all": true}},
                    {"render": {"keep": "a", "file": "new/a.png"}},
                    {"contactSheet": {"file": "b.png", "renders": ["a"]}},
                    {"export": {"file": "c.ply"}}, {"bake": {"file": "d.exr"}},
                    {"displace": {"file": "d.exr"}}, {"save": "e.trovik"}, {"undo": 3}]})"),
                testing::IsEmpty());
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 4)
        << "expected cube.obj, s.json and two files with the output of the run";
}

TEST_F(ScriptCheck, AllErrorsAreListed) {
    WriteFile("bad-pen.json", R"({"samples": [[1, 2, 0.5, 0, 1]]})");
    EXPECT_THAT(
        ErrorsOf(R"({"mesh": "none.obj", "transform": {"scale": 0}, "preferences": {"No": 1},
            "mirror": ["x", "x"], "camera": {"from": [0, 0, 0]}, "steps": [
            {"set": {"raduis": 1, "strength": "a", "spacing": 10, "spacing": 20}},
            {"tool": "Wex", "set": {"radius": 1, "radiusPixels": 2, "stamp": "none.tif"}},
            {"stroke": {"continue": true}}, {"stroke": {"pen": "bad-pen.json"}},
            {"stroke": {"surface": [[0, 0, 0, 7]]}}, {"stroke": {"open": true}},
            {"subdivide": 1}, {"stroke": {"dabs": [{"face": 0}]}}, {"stroke": {"continue": true}},
            {"mask": {"all": true, "grow": 1}}, {"mask": {"image": {"file": "none.png"}}},
            {"render": {}}, {"contactSheet": {"file": "a.png", "renders": ["a"]}},
            {"export": {"file": "a.unknown"}}, {"export": {"file": "a.glb", "up": "z"}},
            {"bake": {"file": "a.png", "bits": "float"}}, {"displace": {"file": "none.exr"}},
            {"save": "a.scene"}, {"save": "/tmp/a.trovik"}]})"),
        testing::ElementsAre(
            HasSubstr("/steps/0/set/spacing: the field is given more than once"),
            HasSubstr("/steps/0/set/raduis: unknown setting; did you mean \"radius\"?"),
            HasSubstr("/steps/0/set/strength: expected a number from 0 to 100, got \"a\""),
            HasSubstr("/mesh: file not found: none.obj is neither in the script's folder (.) nor "
                      "in the output "
                      "folder (.)"),
            HasSubstr("/preferences/No: unknown preference"),
            HasSubstr("/transform/scale: a scale must not be 0"),
            HasSubstr("/camera/from: the direction must not be zero"),
            HasSubstr("/mirror/1: the axis is given twice"),
            HasSubstr("/steps/1/tool: unknown tool \"Wex\"; did you mean \"Wax\"?"),
            HasSubstr("/steps/1/set/radiusPixels: \"radius\" and"),
            HasSubstr("/steps/1/set/stamp: stamp not found: none.tif"),
            HasSubstr("/steps/2/stroke/continue: no stroke is open"),
            HasSubstr("bad-pen.json: /samples/0: a sample must be"),
            HasSubstr("/steps/4/stroke/surface/0/3: pressure must be between 0 and 1"),
            HasSubstr("/steps/6/subdivide: a stroke is open"),
            HasSubstr("/steps/7/stroke: a stroke is open"),
            HasSubstr("/steps/9/mask: \"all\" and \"grow\""),
            HasSubstr("/steps/10/mask/image/file: file not found: none.png"),
            HasSubstr("/steps/11/render: needs"),
            HasSubstr("/steps/12/contactSheet/renders/0: no render was kept"),
            HasSubstr("/steps/13/export: a.unknown: cannot be written as a mesh"),
            HasSubstr("/steps/14/export: a.glb: glTF files are always in metres"),
            HasSubstr("/steps/15/bake: a.png: a .png file stores 16 bits"),
            HasSubstr("/steps/16/displace/file: file not found: none.exr"),
            HasSubstr("/steps/17/save: the name of a scene file must end in .trovik"),
            HasSubstr("/steps/18/save: \"/tmp/a.trovik\" is an absolute path"),
            "trovik: s.json: 26 errors"));
    const Outcome json = Run("sculpt --check --json s.json");
    EXPECT_EQ(json.status, 1);
    const auto document = nlohmann::json::parse(json.out);
    EXPECT_EQ(document.at("script"), "s.json");
    EXPECT_EQ(document.at("errors").size(), 26u);
}

TEST_F(ScriptCheck, FilesThatAreNotScriptsAreOneError) {
    EXPECT_THAT(ErrorsOf("{"),
                testing::ElementsAre(HasSubstr("s.json: line 1, column 2: not valid")));
    EXPECT_THAT(
        ErrorsOf("[]"),
        testing::ElementsAre(HasSubstr("s.json: /: expected an object, got an empty array")));
    EXPECT_THAT(
        ErrorsOf(R"({"mesh": "cube.obj", "steps": 7})"),
        testing::ElementsAre("trovik: s.json: /steps: expected an array of objects, got 7"));
    EXPECT_THAT(ErrorsOf(R"({"steps": []})"),
                testing::ElementsAre(
                    HasSubstr("/: a script must have exactly one of \"mesh\" and \"scene\"")));
}

TEST_F(ScriptCheck, FaultySourceIsOneError) {
    for (const char* source : {R"("mesh": 5)", R"("scene": {"file": "a"})", R"("mesh": null)"}) {
        SCOPED_TRACE(source);
        const std::string field = std::string(source).substr(1, std::string(source).find(':') - 2);
        EXPECT_THAT(ErrorsOf("{" + std::string(source) + R"(, "steps": []})"),
                    testing::ElementsAre(HasSubstr("s.json: /" + field + ": ")));
    }
    // Both fields are present, even though their values are invalid.
    EXPECT_THAT(ErrorsOf(R"({"mesh": 5, "scene": 6, "steps": []})"),
                testing::ElementsAre(HasSubstr("/mesh: "),
                                     HasSubstr("/scene: "),
                                     HasSubstr("/: a script must have exactly one of"),
                                     "trovik: s.json: 3 errors"));
    // Other errors are still found.
    EXPECT_THAT(ErrorsOf(R"({"mesh": 5, "mirror": ["x", "x"], "steps": [{"tool": "Wex"}]})"),
                testing::ElementsAre(HasSubstr("/mesh: "),
                                     HasSubstr("/mirror/1: the axis is given twice"),
                                     HasSubstr("/steps/0/tool: unknown tool"),
                                     "trovik: s.json: 3 errors"));
}

TEST_F(ScriptCheck, ControlCharactersAreNotPrinted) {
    // U+009B starts a terminal control sequence, like ESC [.
    EXPECT_THAT(ErrorsOf("{\"mesh\": \"cube.obj\", \"\xc2\x9b"
                         "2J\": 1, \"steps\": [{\"\xc2\x9b"
                         "1m\": 1}]}"),
                testing::ElementsAre(HasSubstr("s.json: /steps/0/\\u{9b}1m: "),
                                     HasSubstr("s.json: /\\u{9b}2J: "),
                                     "trovik: s.json: 2 errors"));
    const std::string name = "a\x1b[2J.json";
    WriteFile(name, R"({"mesh": "cube.obj", "steps": []})");
    EXPECT_EQ(Run("sculpt --check '" + name + "'").out, "a\\u{1b}[2J.json: no errors\n");
    fs::copy_file(folder / "cube.obj", folder / "\x1b[2J.obj");
    WriteFile("s.json", R"({"mesh": "\u001b[2J.obj", "steps": []})");
    const Outcome outcome = Run("sculpt s.json");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.error, HasSubstr("] opening "));
    EXPECT_THAT(outcome.error, HasSubstr("\\u{1b}[2J.obj\n"));
    EXPECT_EQ(outcome.error.find('\x1b'), std::string::npos);
}

TEST_F(ScriptCheck, BrushAcceptsEveryNameOfTheSchema) {
    const std::string names[] = {
        R"("falloff")",
        R"("constant", "linear", "smooth", "spherical", "sharp", "cone", "bell", "plateau")",
        R"("direction")",
        R"("surfaceNormal", "average", "vertexNormal", "forward", "sideways", "x", "y",
            "z", "camera", "cameraToo", "xy", "xz", "yz", 0, 12)"};
    for (int i = 0; i < 4; i += 2) {
        std::string steps;
        std::istringstream list(names[i + 1]);
        for (std::string name; std::getline(list, name, ',');)
            steps += (steps.empty() ? "" : ", ") + ("{\"set\": {" + names[i] + ": " + name + "}}");
        EXPECT_THAT(ErrorsOf(R"({"mesh": "cube.obj", "steps": [)" + steps + "]}"),
                    testing::IsEmpty());
    }
}

TEST_F(ScriptCheck, ScriptCanBeReadFromStandardInput) {
    WriteFile("s.json", R"({"mesh": "cube.obj", "levels": 2, "steps": [
        {"stroke": {"surface": [[0.2, 0.1, 1]]}}, {"export": {"file": "a.ply"}}]})");
    EXPECT_EQ(Run("sculpt - -q < s.json").status, 0);
    const std::string piped = ReadAll(folder / "a.ply");
    EXPECT_EQ(Run("sculpt s.json -q -o out").status, 0);
    EXPECT_EQ(piped, ReadAll(folder / "out/a.ply"));
    EXPECT_EQ(Run("sculpt --check - < s.json").out, "standard input: no errors\n");
    WriteFile("bad.json", R"({"mesh": "cube.obj", "steps": [{"undo": 1}]})");
    EXPECT_EQ(Run("sculpt - -q < bad.json").error,
              "trovik: standard input: /steps/0/undo: there is nothing more to undo\n");
    EXPECT_EQ(Run("sculpt - < /dev/null").error,
              "trovik: standard input: not valid JSON: the file is empty\n");
    // Paths in a journal are relative to the folder in which the run was started.
    EXPECT_EQ(Run("sculpt - -q --journal w.journal < s.json").status, 0);
    EXPECT_EQ(Run("recover w.journal -o b.trovik -q").status, 0);
}

TEST_F(ScriptCheck, CheckingWritesNeitherTraceNorJournal) {
    WriteFile("s.json", R"({"mesh": "cube.obj", "steps": []})");
    EXPECT_EQ(Run("sculpt --check s.json --trace t").status, 2);
    EXPECT_EQ(Run("sculpt --check s.json --journal j").status, 2);
}

}  // namespace
}  // namespace trovik::test
