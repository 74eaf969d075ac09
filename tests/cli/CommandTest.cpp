// SPDX-License-Identifier: Apache-2.0

/// \file Tests the command from the user's point of view: exit status, one-line error messages, and
/// the files that it writes.
#include "tests/cli/CommandRun.h"

namespace trovik::test {
namespace {

constexpr const char* sculptScript =
    R"({"mesh": "cube.obj", "levels": 4, "mirror": ["x"], "steps": [
        {"tool": "Sculpt", "set": {"radius": 0.5, "strength": 40}},
        {"stroke": {"surface": [[0.2, 0.1, 1], [0.6, 0.3, 1]]}},
        {"tool": "Flatten"}, {"stroke": {"surface": [[0.4, 0.2, 1]]}},
        {"mask": {"center": [0, 0, 1], "radius": 0.3}},
        {"tool": "Smooth"}, {"stroke": {"modifier": "none", "surface": [[0.4, 0.2, 1]]}},
        {"render": {"file": "p.png", "width": 64, "height": 48, "samples": 1}},
        {"export": {"file": "OUT.ply"}}]})";

TEST_F(Command, SculptsAndWritesTheFilesOfTheScript) {
    WriteFile("s.json", sculptScript);
    const Outcome outcome = Run("sculpt s.json");
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_NE(outcome.out.find("1538 vertices"), std::string::npos) << outcome.out;
    EXPECT_GT(fs::file_size(folder / "OUT.ply"), 1538u * 12u);
    EXPECT_EQ(ReadAll(folder / "p.png").substr(1, 3), "PNG");
}

TEST_F(Command, SameScriptGivesTheSameBytesTwice) {
    WriteFile("s.json", sculptScript);
    ASSERT_EQ(Run("sculpt s.json -q").status, 0);
    const std::string mesh = ReadAll(folder / "OUT.ply");
    const std::string picture = ReadAll(folder / "p.png");
    ASSERT_EQ(Run("sculpt s.json -q").status, 0);
    EXPECT_EQ(ReadAll(folder / "OUT.ply"), mesh);
    EXPECT_EQ(ReadAll(folder / "p.png"), picture);
}

TEST_F(Command, UndoRestoresEveryBitOfTheMesh) {
    WriteFile("s.json", R"({"mesh": "cube.obj", "levels": 3, "steps": [
        {"export": {"file": "before.ply"}},
        {"tool": "Sculpt", "set": {"radius": 0.6, "strength": 80}},
        {"stroke": {"surface": [[0, 0, 1], [0.5, 0.2, 1]]}},
        {"tool": "Pinch"}, {"stroke": {"surface": [[0.2, 0, 1]]}},
        {"export": {"file": "after.ply"}},
        {"undo": 2}, {"export": {"file": "undone.ply"}},
        {"redo": 2}, {"export": {"file": "redone.ply"}}]})");
    const Outcome outcome = Run("sculpt s.json -q");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_NE(ReadAll(folder / "before.ply"), ReadAll(folder / "after.ply"));
    EXPECT_EQ(ReadAll(folder / "undone.ply"), ReadAll(folder / "before.ply"));
    EXPECT_EQ(ReadAll(folder / "redone.ply"), ReadAll(folder / "after.ply"));
}

TEST_F(Command, SummaryCanBeJson) {
    WriteFile("s.json", sculptScript);
    const Outcome outcome = Run("sculpt s.json --json -q");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find("\"faces\": 1536"), std::string::npos) << outcome.out;
}

TEST_F(Command, ScriptErrorsAreOneLineWithLocationAndReason) {
    ExpectScriptError("{\"mesh\": ", "not valid JSON");
    ExpectScriptError(R"({"steps": []})", "mesh");
    ExpectScriptError(R"({"mesh": "cube.obj", "stepps": [], "steps": []})", "stepps");
    ExpectScriptError(R"({"mesh": "cube.obj", "steps": [{"tool": "Sculpd"}]})",
                      "/steps/0/tool: unknown tool \"Sculpd\"");
    ExpectScriptError(R"({"mesh": "cube.obj", "steps": [{"set": {"radius": -1}}]})",
                      "/steps/0/set/radius");
    ExpectScriptError(R"({"mesh": "cube.obj", "steps": [{"set": {"radius": 1e200}}]})",
                      "/steps/0/set/radius: expected a number greater than 0");
    ExpectScriptError(R"({"mesh": "cube.obj", "steps": [{"set": {"radius": 1e999}}]})",
                      "not valid JSON");
    ExpectScriptError(R"({"mesh": "cube.obj", "steps": [{"stroke": {"dabs": [{"face": 6}]}}]})",
                      "/steps/0/stroke/dabs/0/face: there is no face 6; the level has 6");
    ExpectScriptError(
        R"({"mesh": "cube.obj", "steps": [{"stroke": {"dabs": [{"face": 0, "normal": [0, 0, 0]}]}}]})",
        "/steps/0/stroke/dabs/0/normal: the normal must not be zero");
    ExpectScriptError(R"({"mesh": "cube.obj", "steps": [{"stroke": {}}]})",
                      "/steps/0/stroke: a stroke needs one of");
    ExpectScriptError(R"({"mesh": "cube.obj", "steps": [{"level": 3}]})",
                      "/steps/0/level: there is no level 3; the highest is 0");
    ExpectScriptError(R"({"mesh": "cube.obj", "transform": {"scale": [1, 0, 1]}, "steps": []})",
                      "/transform/scale: a scale must not be 0");
    ExpectScriptError(
        R"({"mesh": "cube.obj", "transform": {"matrix": [1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,2]},
            "steps": []})",
        "/transform/matrix: the last column of the matrix must be 0, 0, 0, 1");
    ExpectScriptError(R"({"mesh": "cube.obj", "steps": [{"undo": 1}]})",
                      "/steps/0/undo: there is nothing more to undo");
    ExpectScriptError(R"({"mesh": "cube.obj", "steps": [{"layer": {"strength": 1}}]})",
                      "/steps/0/layer: no layer is active");
    ExpectScriptError(R"({"mesh": "cube.obj", "memoryLimit": 30000, "levels": 6, "steps": []})",
                      "/levels: subdividing to ");
    ExpectScriptError(R"({"mesh": "cube.obj", "subdivideBudget": 99999, "steps": [
                          {"subdivide": 4}]})",
                      "/steps/0/subdivide: subdividing to level 4 would give 1536 faces and 1538 "
                      "vertices and take 124760 bytes; the budget is 99999");
    ExpectScriptError(R"({"mesh": "cube.obj", "levels": 1, "steps": [{"deleteLevels": "higher"}]})",
                      "/steps/0/deleteLevels: level 1 is the highest");
    ExpectScriptError(R"({"mesh": "cube.obj", "steps": [{"deleteLevels": "lower"}]})",
                      "/steps/0/deleteLevels: level 0 is the lowest");
    ExpectScriptError(R"({"mesh": "cube.obj", "steps": [{"applyToBase": true}]})",
                      "/steps/0/applyToBase: the current level is level 0, the base");
    ExpectScriptError(R"({"mesh": "cube.obj", "steps": [{"unsubdivide": 1}]})",
                      "/steps/0/unsubdivide: the faces of level 0 are not connected like");
    ExpectScriptError(R"({"mesh": "cube.obj", "steps": [{"stroke": {"open": true}},
                          {"deleteLevels": "lower"}]})",
                      "/steps/1/deleteLevels: a stroke is open");
}

TEST_F(Command, ScriptDeletesRebuildsAndAppliesLevels) {
    WriteFile("s.json", R"({"mesh": "cube.obj", "levels": 3, "steps": [
        {"tool": "Sculpt", "set": {"radius": 0.8, "strength": 30}},
        {"stroke": {"surface": [[0, 0, 1], [0.5, 0.5, 1]]}},
        {"applyToBase": true}, {"level": 2}, {"deleteLevels": "higher"}, {"deleteLevels": "lower"},
        {"export": {"file": "alone.obj"}},
        {"unsubdivide": 2}, {"export": {"file": "rebuilt.obj"}}, {"save": "s.trovik"}]})");
    Outcome outcome = Run("sculpt s.json -q");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(ReadAll(folder / "rebuilt.obj"), ReadAll(folder / "alone.obj"));
    WriteFile("t.json", R"({"scene": "s.trovik", "steps": [
        {"level": 0}, {"export": {"file": "base.obj"}}, {"level": 2},
        {"export": {"file": "again.obj"}}]})");
    outcome = Run("sculpt t.json -q");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(ReadAll(folder / "again.obj"), ReadAll(folder / "alone.obj"));
    const std::string base = ReadAll(folder / "base.obj");
    std::size_t faces = 0;
    for (std::size_t at = 0; (at = base.find("\nf ", at)) != std::string::npos; ++at) ++faces;
    EXPECT_EQ(faces, 6u);
}

TEST_F(Command, UnreadableMeshIsAOneLineErrorThatNamesIt) {
    WriteFile("s.json", R"({"mesh": "nowhere.obj", "steps": []})");
    Outcome outcome = Run("sculpt s.json -q");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.error.find("nowhere.obj"), std::string::npos) << outcome.error;
    WriteFile("broken.obj", "v 0 0 0\nf 1 2 3\n");
    outcome = Run("info broken.obj");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.error.find("broken.obj"), std::string::npos) << outcome.error;
    EXPECT_EQ(outcome.error.find('\n'), outcome.error.size() - 1);
}

TEST_F(Command, FailedExportLeavesNoHalfWrittenFile) {
    WriteFile("s.json", R"({"mesh": "cube.obj", "steps": [{"export": {"file": "mesh.unknown"}}]})");
    EXPECT_EQ(Run("sculpt s.json -q").status, 1);
    EXPECT_FALSE(fs::exists(folder / "mesh.unknown"));
}

TEST_F(Command, WrongUsageExitsWithStatusTwo) {
    EXPECT_EQ(Run("").status, 2);
    EXPECT_EQ(Run("sculpt").status, 2);
    EXPECT_EQ(Run("carve s.json").status, 2);
    EXPECT_EQ(Run("render cube.obj p.png --samples 0").status, 2);
}

TEST_F(Command, TraceIsWrittenToItsFolder) {
    WriteFile("s.json", sculptScript);
    const Outcome outcome = Run("sculpt s.json -q --trace t --trace-every 2");
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_GT(fs::file_size(folder / "t/trace.jsonl"), 1000u);
    EXPECT_TRUE(fs::exists(folder / "t/dab-000002/m0/records.npy"));
    EXPECT_TRUE(fs::exists(folder / "t/after/m0/meta.json"));
    EXPECT_EQ(Run("sculpt s.json -q --trace-every 2").status, 2);
    EXPECT_EQ(Run("sculpt s.json -q --trace ''").status, 2);
    EXPECT_EQ(Run("sculpt s.json -q --trace t --trace-every 0").status, 2);
    const Outcome refused = Run("sculpt s.json -q --trace .");
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.error.find("the folder contains files that are not part of a trace"),
              std::string::npos)
        << refused.error;
}

TEST_F(Command, HelpAndVersionExitWithStatusZero) {
    EXPECT_EQ(Run("--help").status, 0);
    const Outcome version = Run("--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out.find("trovik "), 0u);
}

TEST_F(Command, ListsTheNineteenTools) {
    const Outcome outcome = Run("tools");
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    std::istringstream lines(outcome.out);
    std::string line, last;
    int count = 0;
    for (; std::getline(lines, line) && !line.empty(); ++count) last = line;
    EXPECT_EQ(count, 19);
    EXPECT_EQ(last.find("Freeze"), 0u);
    EXPECT_EQ(outcome.out.find('<'), std::string::npos);
}

TEST_F(Command, InfoConvertAndRenderWork) {
    const Outcome info = Run("info cube.obj --json");
    EXPECT_EQ(info.status, 0);
    EXPECT_NE(info.out.find("\"borderEdges\": 0"), std::string::npos) << info.out;
    EXPECT_EQ(Run("convert cube.obj cube.ply --levels 2").status, 0);
    EXPECT_NE(Run("info cube.ply").out.find("98"), std::string::npos);
    EXPECT_EQ(Run("render cube.ply cube.png --width 40 --height 30 --samples 1").status, 0);
    EXPECT_GT(fs::file_size(folder / "cube.png"), 100u);
}

TEST_F(Command, MissingPluginIsNamed) {
    WriteFile("s.json", R"({"mesh": "cube.obj", "steps": []})");
    // Later tests need the original value of the variable.
    const char* present = std::getenv("TROVIK_PLUGIN_PATH");
    const std::string before = present == nullptr ? "" : present;
    setenv("TROVIK_PLUGIN_PATH", folder.c_str(), 1);
    const Outcome outcome = Run("sculpt s.json -q");
    if (present == nullptr)
        unsetenv("TROVIK_PLUGIN_PATH");
    else
        setenv("TROVIK_PLUGIN_PATH", before.c_str(), 1);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.error.find("SwiftStroke"), std::string::npos) << outcome.error;
    EXPECT_NE(outcome.error.find(folder.string()), std::string::npos) << outcome.error;
}

TEST_F(Command, LayerStepsAreUndoneOneByOne) {
    WriteFile("s.json",
              R"({"mesh": "cube.obj", "levels": 3, "preferences": {"Undo File": true}, "steps": [
        {"layer": {"add": "a"}}, {"tool": "Sculpt", "set": {"radius": 0.5, "strength": 40}},
        {"stroke": {"surface": [[0.2, 0.1, 1], [0.6, 0.3, 1]]}},
        {"export": {"file": "1.ply", "world": true}},
        {"layer": {"duplicate": "b", "strength": -2, "order": 0}},
        {"layer": {"of": "a", "visible": false}},
        {"transform": {"scale": 2}},
        {"export": {"file": "2.ply", "world": true}},
        {"undo": 3}, {"export": {"file": "3.ply", "world": true}},
        {"redo": 3}, {"export": {"file": "4.ply", "world": true}},
        {"save": "s.trovik"},
        {"layer": {"of": "a", "visible": true, "name": "c"}}, {"layer": {"of": "b", "remove": true}},
        {"undo": 1}, {"layer": {"of": "c", "mergeDown": true}}, {"undo": 7},
        {"save": "empty.trovik"}]})");
    const Outcome outcome = Run("sculpt -q s.json");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_FALSE(ReadAll(folder / "1.ply") == ReadAll(folder / "2.ply"));
    EXPECT_TRUE(ReadAll(folder / "1.ply") == ReadAll(folder / "3.ply"));
    EXPECT_TRUE(ReadAll(folder / "2.ply") == ReadAll(folder / "4.ply"));
    const std::string layers = Run("info s.trovik --json").out;
    EXPECT_LT(layers.find("\"name\": \"b\""), layers.find("\"name\": \"a\"")) << layers;
    EXPECT_EQ(Run("info empty.trovik --json").out.find("\"name\": \"a\""), std::string::npos);
    ExpectScriptError(R"({"mesh": "cube.obj", "steps": [
        {"layer": {"add": "a"}}, {"layer": {"mergeDown": true}}]})",
                      "/steps/1/layer: layer \"a\" has no layer below it to merge into");
}

TEST_F(Command, SavedSceneContinuesToTheSameMesh) {
    const std::string first = R"({"tool": "Wax", "set": {"radius": 0.5, "strength": 40}},
        {"layer": {"add": "skin"}}, {"stroke": {"surface": [[0.2, 0.1, 1], [0.6, 0.3, 1]]}})";
    const std::string second = R"({"stroke": {"surface": [[0.4, 0.6, 1], [0.1, 0.3, 1]]}})";
    const std::string head = R"({"mesh": "cube.obj", "levels": 3, "mirror": ["x"], "steps": [)";
    WriteFile("whole.json",
              head + first + "," + second + R"(, {"export": {"file": "whole.ply"}}]})");
    WriteFile("first.json", head + first + R"(, {"save": "scenes/cube.trovik"}]})");
    WriteFile("second.json",
              R"({"scene": "scenes/cube.trovik", "steps": [)" + second +
                  R"(, {"export": {"file": "parts.ply"}}]})");
    for (const char* script : {"whole", "first", "second"})
        ASSERT_EQ(Run("sculpt -q " + std::string(script) + ".json").status, 0) << script;
    EXPECT_TRUE(ReadAll(folder / "whole.ply") == ReadAll(folder / "parts.ply"));

    const Outcome info = Run("info scenes/cube.trovik");
    EXPECT_EQ(info.status, 0);
    EXPECT_NE(info.out.find("level 3   384 quads, 386 vertices, current"), std::string::npos)
        << info.out;
    EXPECT_NE(info.out.find("layer     \"skin\" of level 3, strength 1"), std::string::npos)
        << info.out;
    const Outcome json = Run("info --json scenes/cube.trovik");
    EXPECT_NE(json.out.find("\"activeTool\": \"Wax\""), std::string::npos) << json.out;
    EXPECT_NE(json.out.find("\"format\": 334"), std::string::npos) << json.out;
    EXPECT_EQ(Run("render scenes/cube.trovik seen.png --width 64 --height 48 --samples 1").status,
              0);
    EXPECT_TRUE(fs::exists(folder / "seen.png"));
    EXPECT_EQ(Run("convert scenes/cube.trovik level.ply").status, 0);
    WriteFile("same.json",
              R"({"scene": "scenes/cube.trovik", "steps": [{"export": {"file": "same.ply"}}]})");
    ASSERT_EQ(Run("sculpt -q same.json").status, 0);
    EXPECT_TRUE(ReadAll(folder / "level.ply") == ReadAll(folder / "same.ply"));
}

TEST_F(Command, SceneErrorsAreOneLine) {
    ExpectScriptError(R"({"mesh": "cube.obj", "scene": "a.trovik", "steps": []})",
                      "/: a script must have exactly one of \"mesh\" and \"scene\"");
    ExpectScriptError(R"({"scene": "a.trovik", "levels": 2, "steps": []})", "/levels: ");
    ExpectScriptError(R"({"mesh": "cube.obj", "steps": [{"save": "a.scene"}]})",
                      "/steps/0/save: the name of a scene file must end in .trovik");
    WriteFile("cut.json", R"({"mesh": "cube.obj", "steps": [{"save": "cut.trovik"}]})");
    ASSERT_EQ(Run("sculpt -q cut.json").status, 0);
    const std::string whole = ReadAll(folder / "cut.trovik");
    WriteFile("cut.trovik", whole.substr(0, whole.size() - 30));
    for (const char* verb :
         {"info cut.trovik", "render cut.trovik x.png", "convert cut.trovik x.ply"}) {
        const Outcome outcome = Run(verb);
        EXPECT_EQ(outcome.status, 1) << verb;
        EXPECT_EQ(outcome.error.rfind("trovik: cut.trovik: byte ", 0), 0u) << outcome.error;
        EXPECT_EQ(outcome.error.find('\n'), outcome.error.size() - 1) << outcome.error;
    }
}

TEST_F(Command, ConvertKeepsAttributesAndConvertsUnits) {
    WriteFile("sheet.obj",
              "v 0 0 0 1 0 0\nv 10 0 0 0 1 0\nv 10 10 0 0 0 1\nv 0 10 0 1 1 1\nvt 0 0\nvt 1 0\n"
              "vt 1 1\nvt 0 1\nf 1/1 2/2 3/3 4/4\n");
    EXPECT_EQ(Run("convert sheet.obj sheet.glb --from-units cm --from-up z").status, 0);
    const Outcome glb = Run("info sheet.glb --json");
    EXPECT_NE(glb.out.find("\"colors\": true"), std::string::npos);
    EXPECT_NE(glb.out.find("\"textureCoordinates\": 4"), std::string::npos);
    EXPECT_NE(glb.out.find("\"units\": \"m\""), std::string::npos);
    EXPECT_EQ(Run("convert sheet.glb sheet.ply --units mm --up z").status, 0);
    EXPECT_NE(Run("info sheet.ply").out.find("0 0 0  to  100 100 0"), std::string::npos);
    EXPECT_EQ(Run("convert sheet.obj fine.obj --levels 1").status, 0);
    EXPECT_NE(ReadAll(folder / "fine.obj").find("\nvt 0.5 0.5\n"), std::string::npos);
    const Outcome refused = Run("convert sheet.obj sheet.gltf --units mm");
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.error, "trovik: sheet.gltf: glTF files are always in metres with y up\n");
    EXPECT_EQ(Run("convert sheet.obj x.ply --units parsec").status, 2);
}

TEST_F(Command, ExportsConvertFromTheUnitsInTheScript) {
    WriteFile("s.json",
              R"({"mesh": "cube.obj", "units": "m", "up": "y", "steps": [
                  {"export": {"file": "as-is.ply"}}, {"export": {"file": "cube.usda"}},
                  {"export": {"file": "cm.stl", "units": "cm"}}]})");
    const Outcome outcome = Run("sculpt s.json -q");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_NE(Run("info as-is.ply").out.find("-1 -1 -1  to  1 1 1"), std::string::npos);
    EXPECT_NE(Run("info cm.stl").out.find("-100 -100 -100  to  100 100 100"), std::string::npos);
    EXPECT_NE(ReadAll(folder / "cube.usda").find("metersPerUnit = 1\n    upAxis = \"Y\""),
              std::string::npos);
    ExpectScriptError(
        R"({"mesh": "cube.obj", "steps": [{"export": {"file": "x.glb", "up": "z"}}]})",
        "glTF files are always in metres with y up");
}

/// An arched surface of 2 x 2 quads with UVs.
constexpr const char* sheetWithUvs =
    "v 0 0 0\nv 1 0 0.3\nv 2 0 0\nv 0 1 0.2\nv 1 1 0.6\nv 2 1 0.2\nv 0 2 0\nv 1 2 0.3\nv 2 2 0\n"
    "vt 0 0\nvt 0.5 0\nvt 1 0\nvt 0 0.5\nvt 0.5 0.5\nvt 1 0.5\nvt 0 1\nvt 0.5 1\nvt 1 1\n"
    "f 1/1 2/2 5/5 4/4\nf 2/2 3/3 6/6 5/5\nf 4/4 5/5 8/8 7/7\nf 5/5 6/6 9/9 8/8\n";

TEST_F(Command, BakesMapsAndAppliesThemAgain) {
    WriteFile("sheet.obj", sheetWithUvs);
    WriteFile("s.json", R"({"mesh": "sheet.obj", "levels": 4, "steps": [
        {"tool": "Sculpt", "set": {"radius": 0.4, "strength": 40}},
        {"stroke": {"surface": [[0.6, 0.6, 0.4], [1.3, 1.3, 0.4]]}},
        {"bake": {"file": "v.exr", "map": "vector", "size": [128, 64], "samples": 1}},
        {"bake": {"file": "maps/d.png", "bits": 16, "size": 64, "to": 1, "padding": 0}},
        {"save": "s.trovik"}, {"level": 0}, {"export": {"file": "base.obj"}},
        {"deleteLevels": "higher"}, {"subdivide": 4}, {"export": {"file": "smooth.ply"}},
        {"displace": {"file": "v.exr"}}, {"export": {"file": "displaced.ply"}},
        {"undo": 1}, {"export": {"file": "undone.ply"}},
        {"displace": {"file": "v.exr", "strength": 0.5}}]})");
    const Outcome script = Run("sculpt s.json --json");
    ASSERT_EQ(script.status, 0) << script.error;
    EXPECT_NE(script.out.find("maps/d.png"), std::string::npos) << script.out;
    EXPECT_FALSE(ReadAll(folder / "smooth.ply") == ReadAll(folder / "displaced.ply"));
    EXPECT_TRUE(ReadAll(folder / "smooth.ply") == ReadAll(folder / "undone.ply"));

    const Outcome baked =
        Run("bake s.trovik -o again.exr --map vector --size 128 64 --samples 1 --json -q");
    ASSERT_EQ(baked.status, 0) << baked.error;
    EXPECT_TRUE(ReadAll(folder / "again.exr") == ReadAll(folder / "v.exr"));
    EXPECT_NE(baked.out.find("\"coveredTexels\": 8192"), std::string::npos) << baked.out;
    EXPECT_NE(baked.out.find("\"scale\": 1.0"), std::string::npos) << baked.out;
    const Outcome told = Run("bake s.trovik -o n.png --map normal --size 16");
    EXPECT_EQ(told.status, 0) << told.error;
    EXPECT_NE(told.out.find("map        normal, tangent space, level 4 to level 0"),
              std::string::npos)
        << told.out;
    EXPECT_NE(told.out.find("values     (v - 0.5) x 2"), std::string::npos) << told.out;

    EXPECT_EQ(Run("convert s.trovik fine.obj").status, 0);
    const Outcome found = Run("bake fine.obj --unsubdivide 3 -o f.tif --size 32 --json");
    EXPECT_EQ(found.status, 0) << found.error;
    EXPECT_NE(found.out.find("\"from\": 3"), std::string::npos) << found.out;
}

TEST_F(Command, BakingErrorsAreOneLine) {
    WriteFile("bare.json",
              R"({"mesh": "cube.obj", "levels": 1, "steps": [{"save": "bare.trovik"}]})");
    ASSERT_EQ(Run("sculpt -q bare.json").status, 0);
    EXPECT_EQ(Run("bake bare.trovik -o d.exr -q").error,
              "trovik: bare.trovik: the mesh has no texture coordinates (UVs), which a map "
              "requires\n");
    EXPECT_EQ(Run("bake cube.obj -o d.exr -q").error,
              "trovik: cube.obj: there is only one level; use a scene with several levels, or "
              "--unsubdivide with a mesh that is a refinement of a coarser one\n");
    EXPECT_EQ(Run("bake bare.trovik -o d.exr --map colour").status, 2);
    EXPECT_EQ(Run("bake bare.trovik").status, 2);
    EXPECT_EQ(Run("bake bare.trovik -o d.exr --samples 3").status, 2);
    WriteFile("sheet.obj", sheetWithUvs);
    ExpectScriptError(
        R"({"mesh": "sheet.obj", "levels": 1, "steps": [{"bake": {"file": "d.exr", "to": 1}}]})",
        "/steps/0/bake: a map stores the difference between a finer and a coarser level");
    ExpectScriptError(R"({"mesh": "sheet.obj", "levels": 1, "steps": [
                          {"bake": {"file": "d.png", "bits": "float"}}]})",
                      "/steps/0/bake: d.png: a .png file stores 16 bits; floats require");
    ExpectScriptError(R"({"mesh": "sheet.obj", "steps": [{"displace": {"file": "none.exr"}}]})",
                      "/steps/0/displace/file: file not found: none.exr");
    ExpectScriptError(R"({"mesh": "sheet.obj", "steps": [{"stroke": {"open": true}},
                          {"displace": {"file": "none.exr"}}]})",
                      "/steps/1/displace: a stroke is open");
}

}  // namespace
}  // namespace trovik::test
