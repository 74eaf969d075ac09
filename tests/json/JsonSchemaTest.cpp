// SPDX-License-Identifier: Apache-2.0

/// \file Tests each schema keyword on its own: the accepted values, and the messages for all
/// others.
#include "framework/errors/HostError.h"
#include "framework/json/JsonSchema.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace trovik::test {
namespace {

/// Returns the faults in a document, each as "POINTER: reason".
std::vector<std::string> Faults(const std::string& schema, const std::string& document) {
    std::vector<std::string> lines;
    for (const JsonFault& fault : JsonSchema(schema).Check(nlohmann::json::parse(document)))
        lines.push_back(fault.pointer + ": " + fault.reason);
    return lines;
}

void ExpectGood(const std::string& schema, std::initializer_list<const char*> documents) {
    for (const char* document : documents)
        EXPECT_THAT(Faults(schema, document), testing::IsEmpty()) << schema << " " << document;
}

void ExpectFault(const std::string& schema, const char* document, const std::string& line) {
    EXPECT_THAT(Faults(schema, document), testing::ElementsAre(line)) << schema;
}

TEST(JsonSchema, TypeIsChecked) {
    const std::string number = R"({"type": "number"})";
    ExpectGood(number, {"1", "-1.5", "1e300"});
    ExpectFault(number, R"("abc")", R"(: expected a number, got "abc")");
    ExpectFault(number, "true", ": expected a number, got true");
    ExpectFault(number, "null", ": expected a number, got null");
    ExpectFault(number, "[]", ": expected a number, got an empty array");
    ExpectFault(number, "[1]", ": expected a number, got an array of 1 item");
    ExpectFault(number, "{}", ": expected a number, got an empty object");
    ExpectFault(number, R"({"a": 1})", ": expected a number, got an object");
    const std::string integer = R"({"type": "integer"})";
    ExpectGood(integer, {"1", "-7", "18446744073709551615"});
    ExpectFault(integer, "1.5", ": expected a whole number, got 1.5");
    ExpectFault(integer, "2.0", ": expected a whole number, got 2.0");
    ExpectFault(R"({"type": "string"})", "3", ": expected a string, got 3");
    ExpectFault(R"({"type": "boolean"})", "1", ": expected true or false, got 1");
    ExpectFault(R"({"type": "object"})", "1", ": expected an object, got 1");
    ExpectFault(R"({"type": "null"})", "1", ": expected null, got 1");
    const std::string several =
        R"({"type": ["null", "integer", "array"], "items": {"type": "string"}})";
    ExpectGood(several, {"null", "4", "[]", R"(["a"])"});
    ExpectFault(
        several, "true", ": expected null, a whole number or an array of strings, got true");
}

TEST(JsonSchema, LongTextsAreTruncatedAndControlCharactersEscaped) {
    ExpectFault(R"({"type": "number"})",
                R"("\n0123456789012345678901234567890123456789")",
                R"(: expected a number, got "\n012345678901234567890123456789012345678...")");
}

TEST(JsonSchema, BoundsAreChecked) {
    const std::string percent = R"({"type": "number", "minimum": 0, "maximum": 100})";
    ExpectGood(percent, {"0", "100", "0.5"});
    ExpectFault(percent, "100.5", ": expected a number from 0 to 100, got 100.5");
    ExpectFault(percent, "-1", ": expected a number from 0 to 100, got -1");
    ExpectFault(percent, "true", ": expected a number from 0 to 100, got true");
    const std::string angle =
        R"({"type": "number", "exclusiveMinimum": 0, "exclusiveMaximum": 180})";
    ExpectGood(angle, {"0.1", "179.9"});
    ExpectFault(angle, "0", ": expected a number greater than 0 and less than 180, got 0");
    ExpectFault(angle, "180", ": expected a number greater than 0 and less than 180, got 180");
    const std::string length = R"({"type": "number", "exclusiveMinimum": 0, "maximum": 1e12})";
    ExpectFault(length, "-3", ": expected a number greater than 0 and at most 1e+12, got -3");
    ExpectFault(
        length, "1e200", ": expected a number greater than 0 and at most 1e+12, got 1e+200");
    ExpectFault(R"({"type": "integer", "minimum": 1})",
                "0",
                ": expected a whole number of at least 1, got 0");
    ExpectFault(R"({"type": "number", "maximum": 1})", "2", ": expected a number at most 1, got 2");
    ExpectFault(R"({"type": "number", "exclusiveMaximum": 1})",
                "1",
                ": expected a number less than 1, got 1");
}

TEST(JsonSchema, EnumIsChecked) {
    const std::string axis = R"({"enum": ["surfaceNormal", "y", "z", 1]})";
    ExpectGood(axis, {R"("surfaceNormal")", "1"});
    ExpectFault(axis,
                R"("w")",
                R"(: expected one of "surfaceNormal", "y", "z", 1, got "w"; did you mean "y"?)");
    ExpectFault(
        axis,
        R"("surfacenormals")",
        R"(: expected one of "surfaceNormal", "y", "z", 1, got "surfacenormals"; did you mean "surfaceNormal"?)");
    ExpectFault(axis, "2", R"(: expected one of "surfaceNormal", "y", "z", 1, got 2)");
    ExpectFault(R"({"enum": [true]})", "false", ": expected true, got false");
}

TEST(JsonSchema, MinLengthIsChecked) {
    ExpectGood(R"({"type": "string", "minLength": 1})", {R"("a")"});
    ExpectFault(R"({"type": "string", "minLength": 1})",
                R"("")",
                R"(: expected a non-empty string, got "")");
}

TEST(JsonSchema, ItemsAndTheirNumberAreChecked) {
    const std::string three =
        R"({"type": "array", "items": {"type": "number"}, "minItems": 3, "maxItems": 3})";
    ExpectGood(three, {"[1, 2, 3]"});
    ExpectFault(three, "[1, 2]", ": expected an array of 3 numbers, got an array of 2 items");
    ExpectFault(three, "[1, 2, 3, 4]", ": expected an array of 3 numbers, got an array of 4 items");
    ExpectFault(three, R"([1, "2", 3])", R"(/1: expected a number, got "2")");
    EXPECT_EQ(Faults(three, R"([null, "2", 3])").size(), 2u);
    ExpectFault(R"({"type": "array", "items": {"type": "array"}, "minItems": 1})",
                "[]",
                ": expected an array of 1 or more arrays, got an empty array");
    ExpectFault(R"({"type": "array", "maxItems": 1})",
                "[1, 2]",
                ": expected an array of at most 1 items, got an array of 2 items");
    ExpectFault(R"({"type": "array", "minItems": 2, "maxItems": 4, "items": {"type": "integer"}})",
                "[1]",
                ": expected an array of 2 to 4 whole numbers, got an array of 1 item");
}

constexpr const char* settings = R"({"type": "object", "entryName": "setting",
    "additionalProperties": false, "required": ["strength"],
    "properties": {"radius": {"type": "number"}, "strength": {"type": "number"}}})";

TEST(JsonSchema, FieldsOfObjectsAreChecked) {
    ExpectGood(settings, {R"({"strength": 1})", R"({"strength": 1, "radius": 2})"});
    ExpectFault(settings,
                R"({"strength": 1, "raduis": 1})",
                R"(/raduis: unknown setting; did you mean "radius"?)");
    ExpectFault(settings,
                R"({"strength": 1, "a/b~c\n": 1})",
                "/a~1b~0c : unknown setting; known names: radius, strength");
    ExpectFault(settings, R"({"radius": 1})", R"(: the field "strength" is missing)");
    // The missing field is the one that is misspelt, so only one fault is reported.
    ExpectFault(
        settings, R"({"strenght": 1})", R"(/strenght: unknown setting; did you mean "strength"?)");
    EXPECT_THAT(Faults(settings, R"({"radius": "a", "x": 1})"),
                testing::ElementsAre(R"(/radius: expected a number, got "a")",
                                     "/x: unknown setting; known names: radius, strength",
                                     R"(: the field "strength" is missing)"));
    ExpectFault(R"({"type": "object", "additionalProperties": {"type": "boolean"}})",
                R"({"a": true, "b": 3})",
                "/b: expected true or false, got 3");
    ExpectGood(R"({"type": "object"})", {R"({"anything": 1})"});
}

TEST(JsonSchema, AlternativesOfFieldsAreChecked) {
    const std::string step = R"({"type": "object", "oneOf": [
        {"anyOf": [{"required": ["tool"]}, {"required": ["set"]}]},
        {"required": ["stroke"]}, {"required": ["undo"]},
        {"required": ["comment"], "maxProperties": 1}]})";
    ExpectGood(step,
               {R"({"tool": 1})",
                R"({"set": 1})",
                R"({"tool": 1, "set": 1})",
                R"({"stroke": 1})",
                R"({"stroke": 1, "comment": 1})",
                R"({"comment": 1})"});
    ExpectFault(
        step, "{}", R"(: expected one of the fields "tool", "set", "stroke", "undo" or "comment")");
    ExpectFault(step,
                R"({"stroke": 1, "undo": 1, "tool": 1, "comment": 1})",
                R"(: expected only one of "tool", "stroke" and "undo")");
    ExpectFault(step, "3", ": expected an object, got 3");
}

TEST(JsonSchema, AlternativesOfValuesAreChecked) {
    const std::string mirror = R"({"oneOf": [
        {"type": "array", "items": {"enum": ["x", "y"]}},
        {"type": "object", "required": ["radial"]},
        {"enum": ["topological"]}]})";
    ExpectGood(mirror, {R"(["x"])", R"({"radial": 1})", R"("topological")"});
    ExpectFault(mirror, R"(["w"])", R"(/0: expected one of "x", "y", got "w"; did you mean "x"?)");
    ExpectFault(mirror, "{}", R"(: the field "radial" is missing)");
    ExpectFault(mirror, R"("topologic")", R"(: expected "topological", got "topologic")");
    ExpectFault(mirror, "3", R"(: expected an array of items, an object or "topological", got 3)");
    const std::string size = R"({"anyOf": [{"type": "integer", "minimum": 1},
        {"type": "array", "minItems": 2, "maxItems": 2, "items": {"type": "integer"}}]})";
    ExpectGood(size, {"1", "[1, 2]"});
    ExpectFault(size, "0", ": expected a whole number of at least 1, got 0");
    ExpectFault(size, "[1]", ": expected an array of 2 whole numbers, got an array of 1 item");
    ExpectFault(R"({"oneOf": [{"type": "integer"}, {"type": "number"}]})",
                "1",
                ": expected a whole number or a number, got 1");
}

TEST(JsonSchema, ReferencesMayBeRecursive) {
    const std::string tree = R"({"$ref": "#/definitions/tree", "definitions": {"tree": {
        "type": "array", "items": {"$ref": "#/definitions/tree"}}}})";
    ExpectGood(tree, {"[]", "[[], [[]]]"});
    ExpectFault(tree, "[[], [[3]]]", "/1/0/0: expected an array of arrays, got 3");
}

TEST(JsonSchema, NumberOfFaultsIsLimited) {
    const JsonSchema schema(R"({"type": "array", "items": {"type": "number"}})");
    const auto document = nlohmann::json::parse(R"(["a", "b", "c"])");
    EXPECT_EQ(schema.Check(document).size(), 3u);
    ASSERT_EQ(schema.Check(document, 2).size(), 2u);
    EXPECT_EQ(schema.Check(document, 2)[0].pointer, "/0");
}

TEST(JsonSchema, FormerNamesAreReplacedAtAnyDepth) {
    const JsonSchema schema(R"({
        "additionalProperties": false,
        "properties": {
            "colour": {"type": "integer", "formerName": "color"},
            "parts": {"formerName": "pieces", "items": {"$ref": "#/definitions/part"}}
        },
        "definitions": {
            "part": {"anyOf": [
                {"type": "string"},
                {"type": "object", "properties": {"width": {"formerName": "breadth"}}}
            ]}
        }
    })");
    const auto current =
        nlohmann::json::parse(R"({"colour": 1, "parts": ["breadth", {"width": 2}, {"width": 3}]})");
    EXPECT_EQ(
        ParseAgainst(
            schema, R"({"color": 1, "pieces": ["breadth", {"breadth": 2}, {"width": 3}]})", "a"),
        current);
    EXPECT_EQ(ParseAgainst(schema, current.dump(), "a"), current);
}

TEST(JsonSchema, FormerAndCurrentNameTogetherAreAFault) {
    const JsonSchema schema(R"({"additionalProperties": false,
                                "properties": {"colour": {"formerName": "color"}}})");
    EXPECT_EQ(
        MessageOf<HostError>([&] { ParseAgainst(schema, R"({"color": 1, "colour": 2})", "a"); }),
        "a: /color: is the former name of \"colour\", which is also given");
}

TEST(JsonSchema, UnknownKeywordsAreDefectsOfTheProgram) {
    EXPECT_THROW(JsonSchema(R"({"pattern": "a"})"), std::logic_error);
    EXPECT_THROW(JsonSchema(R"({"properties": {"a": {"multipleOf": 2}}})"), std::logic_error);
    EXPECT_THROW(JsonSchema(R"({"$ref": "other.json"})"), std::logic_error);
}

TEST(JsonSchema, ParsingReportsTheFirstFaultOrAll) {
    const JsonSchema schema(settings);
    const std::string text = R"({"strength": "a", "radius": "b", "radius": 1})";
    EXPECT_EQ(MessageOf<HostError>([&] { ParseAgainst(schema, text, "a.json"); }),
              "a.json: /radius: the field is given more than once");
    std::vector<JsonFault> faults;
    ParseAgainst(schema, text, "a.json", &faults);
    ASSERT_EQ(faults.size(), 3u);
    EXPECT_EQ(FaultMessage("a.json", faults[1]), R"(a.json: /radius: expected a number, got "b")");
    EXPECT_EQ(FaultMessage("a.json", {"", "x"}), "a.json: /: x");
}

}  // namespace
}  // namespace trovik::test
