// SPDX-License-Identifier: Apache-2.0

/// \file Tests that the command table and the stroke script schema agree in both directions.
#include "framework/brushes/Falloff.h"
#include "framework/script/Command.h"
#include "framework/script/ScriptDocument.h"
#include "framework/script/ToolSettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace trovik::test {
namespace {

using nlohmann::json;

const json& Schema() {
    static const json schema = json::parse(StrokeScriptSchema());
    return schema;
}

const json& Resolved(const json& part) {
    const auto reference = part.find("$ref");
    if (reference == part.end()) return part;
    return Resolved(Schema().at(json::json_pointer(reference->get<std::string>().substr(1))));
}

/// Adds the alternatives that a part of the schema accepts for a value, in the notation of
/// FieldValue::Describe.
void AddAlternatives(const json& part, json& all);

json AlternativesOf(const json& part) {
    json all = json::array();
    AddAlternatives(Resolved(part), all);
    return all;
}

void AddKind(const std::string& kind, const json& part, json& all) {
    if (kind == "array") {
        all.push_back({{"array", AlternativesOf(part.at("items"))}});
    } else if (kind == "object") {
        json fields = json::object();
        for (const auto& [name, field] : part.at("properties").items())
            if (name != "comment") fields[name] = AlternativesOf(field);
        all.push_back({{"object", fields}});
    } else {
        all.push_back(kind);
    }
}

void AddEnum(const json& values, json& all) {
    json words = json::array();
    for (const json& value : values) {
        if (!value.is_number_integer())
            words.push_back(value);
        else if (std::find(all.begin(), all.end(), "integer") == all.end())
            all.push_back("integer");
    }
    if (!words.empty()) all.push_back({{"enum", words}});
}

void AddAlternatives(const json& part, json& all) {
    for (const char* choice : {"anyOf", "oneOf"})
        if (part.contains(choice))
            for (const json& one : part.at(choice)) AddAlternatives(Resolved(one), all);
    if (part.contains("enum")) AddEnum(part.at("enum"), all);
    if (!part.contains("type")) return;
    if (part.at("type").is_string()) {
        AddKind(part.at("type"), part, all);
    } else {
        for (const json& kind : part.at("type")) AddKind(kind, part, all);
    }
}

bool Same(const json& described, const json& inSchema);

/// A described "string" also matches an enumeration in the schema.
bool SameAlternative(const json& described, const json& inSchema) {
    if (described == inSchema) return true;
    if (described == "string") return inSchema.is_object() && inSchema.contains("enum");
    if (!described.is_object() || !inSchema.is_object()) return false;
    const std::string kind = described.begin().key();
    if (!inSchema.contains(kind)) return false;
    const json& a = described.at(kind);
    const json& b = inSchema.at(kind);
    if (kind == "array") return Same(a, b);
    if (kind == "enum")
        return std::set<json>(a.begin(), a.end()) == std::set<json>(b.begin(), b.end());
    if (a.size() != b.size()) return false;
    for (const auto& [name, field] : a.items())
        if (!b.contains(name) || !Same(field, b.at(name))) return false;
    return true;
}

bool Same(const json& described, const json& inSchema) {
    if (described.size() != inSchema.size()) return false;
    for (const json& one : described) {
        if (std::none_of(inSchema.begin(), inSchema.end(), [&](const json& other) {
                return SameAlternative(one, other);
            }))
            return false;
    }
    return true;
}

TEST(CommandTable, HasTheStepsOfTheSchema) {
    const json& step = Schema().at("definitions").at("step");
    std::set<std::string> inSchema;
    for (const auto& [name, ignored] : step.at("properties").items())
        if (name != "comment") inSchema.insert(name);
    std::set<std::string> inTable;
    for (const CommandEntry& entry : Commands()) {
        EXPECT_TRUE(inTable.insert(entry.traits.name).second) << entry.traits.name;
        EXPECT_EQ(FindCommand(entry.traits.name), &entry);
    }
    EXPECT_EQ(inTable, inSchema);
    EXPECT_EQ(FindCommand("comment"), nullptr);
}

TEST(CommandTable, HasTheParametersOfTheSchema) {
    const json& fields = Schema().at("definitions").at("step").at("properties");
    for (const CommandEntry& entry : Commands()) {
        const json described = entry.describe();
        const json inSchema = AlternativesOf(fields.at(entry.traits.name));
        EXPECT_TRUE(Same(described, inSchema))
            << entry.traits.name << "\ntable:  " << described << "\nschema: " << inSchema;
    }
}

TEST(CommandTable, SchemaHasTheNamesOfFalloffsAndDirections) {
    const json& definitions = Schema().at("definitions");
    EXPECT_EQ(definitions.at("falloff").at("anyOf").at(0).at("enum"), json(FalloffNames()));
    EXPECT_EQ(definitions.at("falloff").at("anyOf").at(1).at("maximum"), FalloffNames().size() - 1);
    EXPECT_EQ(definitions.at("direction").at("anyOf").at(0).at("enum"), json(DirectionNames()));
    EXPECT_EQ(definitions.at("direction").at("anyOf").at(1).at("maximum"),
              DirectionNames().size() - 1);
    EXPECT_EQ(
        definitions.at("stamp").at("properties").at("positioning").at("enum"),
        json(std::vector<std::string>(std::begin(positioningNames), std::end(positioningNames))));
}

TEST(CommandTable, ComparisonFindsDifferences) {
    const json described = FindCommand("symmetrize")->describe();
    json schema =
        AlternativesOf(Schema().at("definitions").at("step").at("properties").at("symmetrize"));
    ASSERT_TRUE(Same(described, schema));
    json other = schema;
    other[0]["object"].erase("from");
    EXPECT_FALSE(Same(described, other));
    other = schema;
    other[0]["object"]["extra"] = {"boolean"};
    EXPECT_FALSE(Same(described, other));
    other = schema;
    other[0]["object"]["axis"] = {"number"};
    EXPECT_FALSE(Same(described, other));
    other = schema;
    other[0]["object"]["axis"][0]["enum"].push_back("w");
    EXPECT_FALSE(Same(described, other));
    EXPECT_FALSE(Same(FindCommand("mask")->describe(), schema));
}

/// Steps that contain every field of every command.
const char* const examples = R"([
    {"tool": "Wax"},
    {"set": {"radius": 0.3, "spacing": 12.5, "strength": 40, "falloff": "smooth",
             "direction": 3, "buildUpRate": 0.25, "globalPlane": true, "updatePlane": false,
             "affectAllLayers": true, "strengthBias": 10, "pressureControlsStrength": true,
             "facing": {"enabled": true, "start": 20, "range": 40}, "drawFromCenter": true,
             "stamp": {"path": "a.png", "enabled": true, "tiled": true, "inverted": false,
                       "factor": 1.5, "offset": -0.5, "buildUp": true, "bilinear": true,
                       "onSurface": true, "positioning": "stroke", "rotation": 30,
                       "randomRotation": 0.5, "randomize": true, "spacing": 50, "randomSpacing": 5},
             "smoothing": 0.0625, "stabiliser": true, "strengthCurve": [[0, 0], [1, 0.5]],
             "sizeCurve": null, "pressureControlsSize": true, "sizeBias": 5,
             "tilt": {"rotate": true, "size": 0.5, "strength": -0.5}, "randomSize": 0.1,
             "airbrush": 20,
             "detail": {"unit": "radius", "length": 0.1, "mode": "refine", "creaseAngle": 40}}},
    {"set": {"radiusPixels": 30, "falloff": [1, 0.1, 0], "direction": "camera", "stamp": "b.png",
             "smoothing": false}},
    {"set": {"falloff": 2, "stamp": false}},
    {"set": {"connectedOnly": true, "alongNormal": false, "mode": "twist", "scales": 2,
             "poissonRatio": 0.25}},
    {"stroke": {"points": [[0.1, 0.2, 0.3, 1], [1, 2, 3, 0.7]]}},
    {"stroke": {"modifier": "smooth", "seed": 18446744073709551615,
                "surface": [[0.1, 0.2, 0.3], [1, 2, 3, 0.7]], "open": true,
                "path": {"line": true, "smoothing": 3, "stabiliser": 2,
                         "snap": {"curve": [[0, 0, 0], [1, 1, 1]], "distance": 4,
                                  "smooth": true}}}},
    {"stroke": {"pointer": [[1, 2], [3, 4, 0.1]], "continue": true, "path": {"curve": true}}},
    {"stroke": {"pen": [[1, 2, 0.3, 0], [2, 3, 0.4, 16.7], [3, 4, 1, 33.3, 0.1, -0.2]],
                "path": {"filter": false, "interactive": true}}},
    {"stroke": {"pen": "pen.json", "modifier": "invert"}},
    {"stroke": {"dabs": [{"face": 3}, {"face": 4, "point": [1, 2, 3], "normal": [0, 0, 1],
                "position": [4, 5, 6], "radius": 0.5, "pressure": 0.25, "strength": 0.1}]}},
    {"stroke": {"wholeMesh": {"strength": 0.5, "byFacing": true}, "modifier": "none"}},
    {"undo": 2}, {"redo": 1}, {"subdivide": 3}, {"unsubdivide": 1}, {"level": 2},
    {"deleteLevels": "higher"}, {"deleteLevels": "lower"}, {"applyToBase": true},
    {"reset": true},
    {"layer": {"add": "a", "select": "b", "of": "c", "duplicate": "d", "name": "e",
               "strength": 0.3, "visible": false, "writable": true, "order": 1, "erase": true,
               "mergeDown": true, "remove": true}},
    {"layer": {"select": null}},
    {"mask": "clear"}, {"mask": "all"}, {"mask": "invert"},
    {"mask": {"center": [0, 1, 2], "radius": 0.1, "softness": 0.3, "mode": "add",
                "amount": 0.7}},
    {"mask": {"min": [0, 0, 0], "max": [1, 1, 1], "all": true, "mode": "subtract"}},
    {"mask": {"box": [1, 2, 3, 4], "lasso": [[1, 2], [3, 4], [5, 6]], "reach": "through"}},
    {"mask": {"image": {"file": "i.png", "channel": "alpha", "invert": true,
                          "over": [0, 0, 9, 9]}, "reach": "facing"}},
    {"mask": {"cavity": {"sign": "ridge", "size": 0.1, "from": 0.2, "to": 0.3,
                           "softness": 0.4, "rings": 2}, "mode": "multiply"}},
    {"mask": {"component": {"vertex": 4294967297, "surface": [1, 2, 3], "pointer": [4, 5]},
                "group": "g", "grow": 1, "shrink": 2, "blur": 3, "sharpen": 4}},
    {"mask": {"group": null}},
    {"mask": {"values": [0, 64, 127]}}, {"mask": {"values": "AEB/"}},
    {"setPositions": {"values": [[0, 1, 2], [3, 4, 5.5]], "label": "Bend"}},
    {"setPositions": {"values": "AACAPwAAAEAAAEBA"}},
    {"hide": {"mask": 0.5, "group": "g", "material": "m",
              "component": {"face": 3, "surface": [1, 2, 3], "pointer": [4, 5]},
              "lasso": [[1, 2], [3, 4], [5, 6]], "box": [1, 2, 3, 4], "reach": "through",
              "faces": [[0, 5], [7, 8]], "hidden": true, "grow": 1, "shrink": 2}},
    {"isolate": {"mask": 0.5, "group": "g", "material": "m",
              "component": {"face": 3, "surface": [1, 2, 3], "pointer": [4, 5]},
              "lasso": [[1, 2], [3, 4], [5, 6]], "box": [1, 2, 3, 4], "reach": "through",
              "faces": [[0, 5], [7, 8]], "hidden": true, "grow": 1, "shrink": 2}},
    {"show": {"mask": 0.5, "group": "g", "material": "m",
              "component": {"face": 3, "surface": [1, 2, 3], "pointer": [4, 5]},
              "lasso": [[1, 2], [3, 4], [5, 6]], "box": [1, 2, 3, 4], "reach": "through",
              "faces": [[0, 5], [7, 8]], "hidden": true, "grow": 1, "shrink": 2}},
    {"hide": {"group": null}}, {"isolate": {"material": null}}, {"show": "all"},
    {"invertVisibility": true},
    {"transform": {"scale": 2, "rotate": [10, 20, 30], "translate": [1, 2, 3]}},
    {"transform": {"scale": [1, 2, 3],
                   "matrix": [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0.1, 0.2, 0.3, 1]}},
    {"mirror": ["x", "z"]}, {"mirror": "topological"}, {"mirror": []},
    {"mirror": {"radial": 5, "axis": "z", "planes": ["y"]}},
    {"symmetrize": {"axis": "y", "from": "negative"}},
    {"filter": {"kind": "relax", "amount": 0.1, "strength": 0.25, "iterations": 3}},
    {"transformVertices": {"translate": [1, 2, 3], "axis": [0, 0, 1], "angle": 30,
                           "scale": [1, 2, 0.5], "pivot": "maskBorder", "maskBlur": 4}},
    {"transformVertices": {"scale": 2, "pivot": [1, 2, 3]}},
    {"decimate": {"faces": 500, "error": 0.25, "keepBorders": false}},
    {"decimate": {"ratio": 0.5, "keepBorders": true}},
    {"remesh": {"edgeLength": 0.25, "mode": "refine", "keepBorders": false, "keepGroups": false,
                "keepUvs": false, "creaseAngle": 45}},
    {"remesh": {"faces": 500, "mode": "coarsen", "keepBorders": true, "keepGroups": true,
                "keepUvs": true, "creaseAngle": 180}},
    {"repair": {"weld": 0.25, "clean": false, "minPieceFaces": 8, "minPieceShare": 0.25,
                "orient": false, "fillHoles": "smooth", "maxHoleEdges": 32}},
    {"voxelRemesh": {"voxelSize": 0.25, "project": true, "levels": 2}},
    {"voxelRemesh": {"faces": 500, "project": false, "levels": 0}},
    {"quadrangulate": {"split": "never", "maxAngle": 30, "keepGroups": false, "keepUvs": false}},
    {"append": {"file": "m.obj", "units": "mm", "up": "z", "scale": 2, "rotate": [10, 20, 30],
                "translate": [1, 2, 3], "world": true}},
    {"append": {"file": "m.obj",
                "matrix": [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0.1, 0.2, 0.3, 1], "world": false}},
    {"extract": {"thickness": 0.25, "side": "both", "threshold": 0.75, "smoothBorder": 4,
                 "replace": true, "group": "Jacket"}},
    {"project": {"file": "m.obj", "distance": 0.5, "direction": "normal", "colors": true,
                 "world": true}},
    {"camera": {"eye": [1, 2, 3], "target": [0, 0, 0], "up": [0, 1, 0], "from": [1, 1, 1],
                "fieldOfView": 33.3, "orthographic": true, "width": 640, "height": 480}},
    {"render": {"file": "a.png", "keep": "a", "width": 64, "height": 48, "samples": 4,
                 "shading": "matcap", "matcap": "wax", "transparent": true, "frames": 3,
                 "wireframe": true, "beforeAfter": true, "camera": {"from": [0, 0, 1]}}},
    {"contactSheet": {"file": "s.png", "renders": ["a", "b"], "columns": 2}},
    {"export": {"file": "e.ply", "world": true, "units": "mm", "up": "z",
                "hidden": false,
                "decimate": {"faces": 500, "error": 0.25, "keepBorders": false},
                "lods": 3, "lodRatio": 0.25}},
    {"export": {"file": "e.ply", "decimate": {"ratio": 0.5, "keepBorders": true}}},
    {"bake": {"file": "m.exr", "map": "vector", "space": "object", "from": 2, "to": 1,
              "size": [64, 32], "bits": "float", "range": 0.5, "samples": 4, "padding": 2,
              "repeat": true}},
    {"bake": {"file": "m.png", "size": 64, "bits": 16}},
    {"displace": {"file": "m.exr", "map": "displacement", "space": "tangent", "mid": 0.5,
                  "scale": 2, "strength": 0.5, "repeat": false}},
    {"hide": {"mask": 0.5, "grow": 1, "shrink": 2}},
    {"hide": {"group": "left"}},
    {"hide": {"material": null}},
    {"hide": {"component": {"face": 3}}},
    {"hide": {"component": {"surface": [1, 2, 3]}}},
    {"hide": {"component": {"pointer": [10, 20]}}},
    {"hide": {"lasso": [[1, 2], [3, 4], [5, 1]], "reach": "through"}},
    {"hide": {"box": [1, 2, 3, 4]}},
    {"isolate": {"faces": [[0, 4], [8, 2]]}},
    {"isolate": {"group": null, "grow": 1, "shrink": 1}},
    {"isolate": {"mask": 1, "material": "skin", "component": {"face": 0, "surface": [0, 0, 1],
                 "pointer": [1, 2]}, "lasso": [[1, 2], [3, 4], [5, 1]], "box": [1, 2, 3, 4],
                 "reach": "visible", "hidden": true}},
    {"show": "all"},
    {"show": {"hidden": true}},
    {"show": {"mask": 1, "group": "a", "material": "skin", "component": {"face": 0,
              "surface": [0, 0, 1], "pointer": [1, 2]}, "lasso": [[1, 2], [3, 4], [5, 1]],
              "box": [1, 2, 3, 4], "reach": "facing", "faces": [[0, 1]], "grow": 1, "shrink": 1}},
    {"hide": {"faces": [[0, 4]], "hidden": true}},
    {"invertVisibility": true},
    {"applicationData": {"name": "app/key", "text": "value"}},
    {"applicationData": {"name": "app/key"}},
    {"save": "a.trovik"}
])";

/// Returns the value in the form that Write produces: numbers in single precision, and samples with
/// their pressure.
json InSinglePrecision(const json& value) {
    if (value.is_number_float()) return static_cast<double>(static_cast<float>(value));
    json all = value;
    if (value.is_structured())
        for (json& one : all) one = InSinglePrecision(one);
    return all;
}

TEST(CommandTable, WrittenStepsEqualReadSteps) {
    std::set<std::string> seen;
    for (const json& step : json::parse(examples)) {
        ASSERT_NO_THROW(CheckedStep(step, step.dump()));
        const std::string name = step.begin().key();
        seen.insert(name);
        ASSERT_NE(FindCommand(name), nullptr) << name;
        const json& parameters = step.begin().value();
        const CommandEntry& entry = *FindCommand(name);
        const json written = entry.rewrite(FieldReader(parameters, "step", ""));
        json expected = parameters;
        if (name == "stroke" && parameters.contains("surface")) expected["surface"][0].push_back(1);
        if (name == "stroke" && parameters.contains("pointer")) expected["pointer"][0].push_back(1);
        EXPECT_EQ(InSinglePrecision(written), InSinglePrecision(expected)) << step;
        EXPECT_EQ(entry.rewrite(FieldReader(written, "step", "")), written) << step;
    }
    EXPECT_EQ(seen.size(), Commands().size());
}

/// The fields in the examples, by command.
void CollectFields(const json& value, const std::string& prefix, std::set<std::string>& fields) {
    if (!value.is_object()) {
        if (value.is_array())
            for (const json& one : value) CollectFields(one, prefix, fields);
        return;
    }
    const std::string start = prefix + "/";
    for (const auto& [name, field] : value.items()) {
        const std::string path = start + name;
        fields.insert(path);
        CollectFields(field, path, fields);
    }
}

void CollectDescribed(const json& all, const std::string& prefix, std::set<std::string>& fields) {
    const std::string start = prefix + "/";
    for (const json& one : all) {
        if (!one.is_object()) continue;
        if (one.contains("array")) CollectDescribed(one.at("array"), prefix, fields);
        if (!one.contains("object")) continue;
        for (const auto& [name, field] : one.at("object").items()) {
            const std::string path = start + name;
            fields.insert(path);
            CollectDescribed(field, path, fields);
        }
    }
}

// Without an example, writing a new field would not be tested.
TEST(CommandTable, ExamplesHaveEveryField) {
    std::set<std::string> inExamples, described;
    for (const json& step : json::parse(examples)) CollectFields(step, "", inExamples);
    for (const CommandEntry& entry : Commands()) {
        const std::string prefix = "/" + std::string(entry.traits.name);
        described.insert(prefix);
        CollectDescribed(entry.describe(), prefix, described);
    }
    // The camera of a render step has the fields of the step "camera".
    for (const char* field :
         {"eye", "target", "up", "fieldOfView", "orthographic", "width", "height"})
        inExamples.insert(std::string("/render/camera/") + field);
    EXPECT_EQ(inExamples, described);
}

TEST(CommandTable, TraitsAreConsistent) {
    for (const CommandEntry& entry : Commands()) {
        SCOPED_TRACE(entry.traits.name);
        // Journaled commands have to be repeatable; commands that only write files do not.
        if (!entry.traits.isJournaled) {
            EXPECT_TRUE(entry.traits.writesFiles);
        }
        EXPECT_TRUE(entry.run && entry.check && entry.rewrite && entry.describe);
    }
    EXPECT_STREQ(Commands().front().traits.name, "tool");
}

}  // namespace
}  // namespace trovik::test
