// SPDX-License-Identifier: Apache-2.0

/// \file Tests the error messages for authors of stroke scripts and pen streams.
#include "framework/errors/HostError.h"
#include "framework/script/PenStream.h"
#include "framework/script/ScriptDocument.h"
#include "tests/files/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

std::string ErrorOf(const std::string& text) {
    return MessageOf<HostError>([&] { ParseStrokeScript(text, "first.json"); });
}

/// Returns the error of a script with a single step.
std::string StepError(const std::string& step) {
    const std::string error = ErrorOf(R"({"mesh": "a.obj", "steps": [)" + step + "]}");
    const std::string start = "first.json: /steps/0";
    EXPECT_EQ(error.compare(0, start.size(), start), 0) << error;
    return error.substr(std::min(error.size(), start.size()));
}

TEST(ScriptSchema, ErrorsNameTheAcceptedValues) {
    EXPECT_EQ(ErrorOf(R"({"mesh": "a.obj", "steps": [{"set":{"raduis":1}}]})"),
              R"(first.json: /steps/0/set/raduis: unknown setting; did you mean "radius"?)");
    EXPECT_EQ(StepError(R"({"strok": {}})"), R"(/strok: unknown step; did you mean "stroke"?)");
    EXPECT_EQ(StepError(R"({"set": {"strength": "abc"}})"),
              R"(/set/strength: expected a number from 0 to 100, got "abc")");
    EXPECT_EQ(StepError(R"({"set": {"strength": 101}})"),
              "/set/strength: expected a number from 0 to 100, got 101");
    EXPECT_EQ(StepError(R"({"set": {"radius": 0}})"),
              "/set/radius: expected a number greater than 0 and at most 1e+12, got 0");
    EXPECT_EQ(StepError(R"({"camera": {"fieldOfView": 180}})"),
              "/camera/fieldOfView: expected a number greater than 0 and less than 180, got 180");
    EXPECT_EQ(StepError(R"({"undo": 1.5})"),
              "/undo: expected a whole number of at least 1, got 1.5");
    EXPECT_EQ(StepError(R"({"symmetrize": {"axis": "X"}})"),
              R"(/symmetrize/axis: expected one of "x", "y", "z", got "X"; did you mean "x"?)");
    EXPECT_EQ(StepError(R"({"reset": false})"), "/reset: expected true, got false");
    EXPECT_EQ(StepError(R"({"transform": {"translate": [1, 2]}})"),
              "/transform/translate: expected an array of 3 numbers, got an array of 2 items");
    EXPECT_EQ(StepError(R"({"mask": {"lasso": [[1, 2], [3, 4]]}})"),
              "/mask/lasso: expected an array of 3 or more arrays, got an array of 2 items");
    EXPECT_EQ(StepError(R"({"symmetrize": {}})"), R"(/symmetrize: the field "axis" is missing)");
    EXPECT_EQ(StepError(R"({"export": {"file": ""}})"),
              R"(/export/file: expected a non-empty string, got "")");
    EXPECT_EQ(StepError(R"({"stroke": {}, "undo": 1})"),
              R"(: expected only one of "stroke" and "undo")");
    EXPECT_EQ(StepError(R"({"stroke": {}, "tool": "Wax", "set": {}})"),
              R"(: expected only one of "tool", "set" and "stroke")");
    EXPECT_EQ(StepError("{}").substr(0, 48), R"(: expected one of the fields "tool", "set", "str)");
    EXPECT_EQ(StepError("7"), ": expected an object, got 7");
    EXPECT_EQ(StepError(R"({"mirror": "x"})"), R"(/mirror: expected "topological", got "x")");
    EXPECT_EQ(StepError(R"({"mirror": {}})"), R"(/mirror: the field "radial" is missing)");
    EXPECT_EQ(StepError(R"({"bake": {"file": "a.exr", "size": 0}})"),
              "/bake/size: expected a whole number from 1 to 16384, got 0");
    EXPECT_EQ(
        StepError(R"({"mask": "cler"})"),
        R"(/mask: expected one of "clear", "all", "invert", got "cler"; did you mean "clear"?)");
    EXPECT_EQ(StepError(R"({"set": {"direction": "forwards"}})").substr(0, 45),
              R"(/set/direction: expected one of "surfaceNorma)");
    EXPECT_EQ(StepError(R"({"set": {"falloff": 8}})"),
              "/set/falloff: expected a whole number from 0 to 7, got 8");
    EXPECT_EQ(ErrorOf(R"({"mesh": "a.obj"})"), R"(first.json: /: the field "steps" is missing)");
    EXPECT_EQ(ErrorOf(R"({"preferences": {"a": "b"}, "steps": []})"),
              R"(first.json: /preferences/a: expected true or false or a number, got "b")");
    EXPECT_EQ(ErrorOf("[]"), "first.json: /: expected an object, got an empty array");
    EXPECT_EQ(ErrorOf(""), "first.json: not valid JSON: the file is empty");
    EXPECT_EQ(ErrorOf("{\"steps\": [] // none\n}"),
              "first.json: line 1, column 14: not valid JSON: JSON has no comments; use a "
              "\"comment\" field");
    EXPECT_EQ(ErrorOf(R"({"steps": [], "steps": []})"),
              "first.json: /steps: the field is given more than once");
}

TEST(ScriptSchema, NumbersThatWouldOverflowAreRefused) {
    EXPECT_EQ(StepError(R"({"set": {"falloff": [1, 1e38, 0]}})"),
              "/set/falloff/1: expected a number from -1000 to 1000, got 1e+38");
    EXPECT_EQ(StepError(R"({"set": {"stamp": {"factor": 1e30}}})"),
              "/set/stamp/factor: expected a number from -1e+06 to 1e+06, got 1e+30");
    EXPECT_EQ(StepError(R"({"layer": {"strength": -1e30}})"),
              "/layer/strength: expected a number from -1e+06 to 1e+06, got -1e+30");
    EXPECT_EQ(StepError(R"({"displace": {"file": "a", "scale": 1e30}})"),
              "/displace/scale: expected a number from -1e+12 to 1e+12, got 1e+30");
    EXPECT_EQ(StepError(R"({"transform": {"scale": 1e30}})"),
              "/transform/scale: expected a number from -1e+12 to 1e+12 or an array of 3 numbers, "
              "got 1e+30");
    EXPECT_EQ(StepError(R"({"camera": {"eye": [0, 0, 1e20]}})"),
              "/camera/eye/2: expected a number from -1e+12 to 1e+12, got 1e+20");
    EXPECT_EQ(StepError(R"({"stroke": {"wholeMesh": {"strength": 1e38}}})"),
              "/stroke/wholeMesh/strength: expected a number from 0 to 1e+12, got 1e+38");
    // As a signed 64-bit integer, this number would be negative.
    EXPECT_EQ(ErrorOf(R"({"memoryLimit": 10000000000000000000, "steps": []})"),
              "first.json: /memoryLimit: expected a whole number from 1 to 9007199254740992, got "
              "10000000000000000000");
}

TEST(ScriptSchema, EveryObjectMayHaveAComment) {
    const std::string note = R"("comment": "note")";
    const nlohmann::json script = ParseStrokeScript(
        "{" + note + R"(, "mesh": "a.obj", "transform": {)" + note + R"(}, "camera": {)" + note +
            R"(}, "mirror": {"radial": 2, )" + note + R"(}, "preferences": {)" + note +
            R"(}, "steps": [{)" + note + R"(}, {"undo": 1, )" + note + R"(},
        {"tool": "Wax", "set": {"facing": {)" +
            note + R"(}, "tilt": {)" + note + R"(}, "stamp": {)" + note + "}, " + note + "}, " +
            note + R"(},
        {"stroke": {"dabs": [{"face": 0, )" +
            note + R"(}], "path": {"snap": {"distance": 1,
            "curve": [[0, 0], [1, 1]], )" +
            note + "}, " + note + R"(}, "wholeMesh": {"strength": 1,)" + note + "}, " + note +
            R"(}}, {"symmetrize": {"axis": "x", )" + note + R"(}},
        {"layer": {)" +
            note + R"(}}, {"mask": {"image": {"file": "a", )" + note + R"(}, "cavity": {)" + note +
            R"(}, "component": {)" + note + "}, " + note + R"(}},
        {"hide": {"component": {)" +
            note + "}, " + note + R"(}}, {"show": {)" + note + R"(}}, {"isolate": {)" + note +
            R"(}},
        {"render": {)" +
            note + R"(}}, {"contactSheet": {"file": "a", "renders": ["b"], )" + note +
            R"(}}, {"export": {"file": "a", )" + note + R"(}}, {"bake": {"file": "a", )" + note +
            R"(}}, {"displace": {"file": "a", )" + note + "}}]}",
        "first.json");
    EXPECT_EQ(script.dump().find("note"), std::string::npos) << script.dump();
    EXPECT_EQ(script.at("steps").size(), 15u);
    EXPECT_EQ(script.at("steps")[0], nlohmann::json::object());
    EXPECT_EQ(StepError(R"({"undo": 1, "comment": 7})"), "/comment: expected a string, got 7");
}

TEST(ScriptSchema, FormerNamesOfFieldsAreAccepted) {
    const auto parse = [](const char* steps) {
        return ParseStrokeScript(std::string(R"({"steps": [)") + steps + "]}", "first.json");
    };
    EXPECT_EQ(parse(R"({"freeze": {"shell": {"vertex": 1}}},
                       {"freeze": {"center": [0, 0, 0], "radius": 1, "soft": 0.5}},
                       {"picture": {"keep": "a"}}, {"sheet": {"file": "s.png", "pictures": ["a"]}},
                       {"set": {"steady": 0.1, "tilt": {"turn": true}, "facing": {"on": true},
                                "stamp": {"randomTurn": 0.5, "spacingRandom": 2}}},
                       {"stroke": {"pointer": [[1, 2]], "path": {"steady": 9}}})"),
              parse(R"({"mask": {"component": {"vertex": 1}}},
                       {"mask": {"center": [0, 0, 0], "radius": 1, "softness": 0.5}},
                       {"render": {"keep": "a"}}, {"contactSheet": {"file": "s.png", "renders": ["a"]}},
                       {"set": {"stabiliser": 0.1, "tilt": {"rotate": true}, "facing": {"enabled": true},
                                "stamp": {"randomRotation": 0.5, "randomSpacing": 2}}},
                       {"stroke": {"pointer": [[1, 2]], "path": {"stabiliser": 9}}})"));
    EXPECT_EQ(CheckedStep(R"({"freeze": "all"})"_json, "first.json"), R"({"mask": "all"})"_json);
}

TEST(ScriptSchema, ScriptSizeIsLimited) {
    EXPECT_EQ(MessageOf<HostError>([] { ReadStrokeScript("/dev/zero"); }),
              "/dev/zero: larger than 64 MiB");
}

TEST(ScriptSchema, PenStreamsHaveTheSameMessages) {
    const auto error = [](const std::string& text) {
        return MessageOf<HostError>([&] { ParsePenStream(text, "pen.json"); });
    };
    EXPECT_EQ(error("[]"), "pen.json: /: expected an object, got an empty array");
    EXPECT_EQ(error("{}"), R"(pen.json: /: the field "samples" is missing)");
    EXPECT_EQ(error(R"({"sample": []})"),
              R"(pen.json: /sample: unknown field; did you mean "samples"?)");
    EXPECT_EQ(error(R"({"samples": [[1, 2, 0.5, 0], [1, "2", 0, 0]]})"),
              R"(pen.json: /samples/1/1: expected a number, got "2")");
    EXPECT_EQ(error(R"({"samples": [[1, 2, 0]]})"),
              "pen.json: /samples/0: expected an array of 4 to 6 numbers, got an array of 3 items");
    EXPECT_EQ(ParsePenStream(R"({"comment": "a", "samples": [[1, 2, 0.5, 0]]})", "a").size(), 1u);
}

}  // namespace
}  // namespace trovik::test
