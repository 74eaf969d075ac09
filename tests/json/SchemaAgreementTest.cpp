// SPDX-License-Identifier: Apache-2.0

/// \file Compares the schema check with another implementation, on scripts with random changes.
#include "framework/json/JsonSchema.h"
#include "framework/script/ScriptDocument.h"
#include "tests/SourceFolder.h"
#include "tests/random/RandomNumbers.h"

#include <gtest/gtest.h>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validator.hpp>

#include <filesystem>
#include <fstream>

namespace trovik::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

class Oracle {
public:
    explicit Oracle(const char* text) {
        const json document = json::parse(text);
        valijson::SchemaParser parser;
        parser.populateSchema(valijson::adapters::NlohmannJsonAdapter(document), schema);
    }
    bool Accepts(const json& document) {
        valijson::Validator validator(valijson::Validator::kStrongTypes);
        return validator.validate(
            schema, valijson::adapters::NlohmannJsonAdapter(document), nullptr);
    }

private:
    valijson::Schema schema;
};

/// Collects all values in a document.
void Collect(json& value, std::vector<json*>& values) {
    values.push_back(&value);
    if (value.is_structured())
        for (json& part : value) Collect(part, values);
}

json AnyValue(RandomNumbers& random) {
    static const json values = json::parse(
        R"([null, true, false, 0, 1, -1, 2.5, 0.0, 1e300, 13, 70000, "", "x", "all", "smooth",
            [], [1, 2, 3], ["x"], [[1, 2, 3]], {}, {"radial": 3}, {"file": "a"}, {"all": true}])");
    return values[random.Below(static_cast<uint32_t>(values.size()))];
}

/// Replaces, removes or duplicates a value, or adds a field that some object in the schema has.
void Change(json& document, RandomNumbers& random) {
    static const std::vector<std::string> names = {"comment",
                                                   "radius",
                                                   "stroke",
                                                   "tool",
                                                   "set",
                                                   "undo",
                                                   "file",
                                                   "mesh",
                                                   "x",
                                                   "surface",
                                                   "from"};
    std::vector<json*> values;
    Collect(document, values);
    json& value = *values[random.Below(static_cast<uint32_t>(values.size()))];
    if (value.is_object() && random.Chance(0.5f)) {
        value[names[random.Below(static_cast<uint32_t>(names.size()))]] = AnyValue(random);
    } else if (value.is_structured() && !value.empty() && random.Chance(0.5f)) {
        auto part = value.begin();
        std::advance(part, random.Below(static_cast<uint32_t>(value.size())));
        if (value.is_array() && random.Chance(0.5f))
            value.push_back(json(*part));
        else
            value.erase(part);
    } else {
        value = AnyValue(random);
    }
}

TEST(SchemaAgreement, MatchesAnotherImplementation) {
    const JsonSchema schema(StrokeScriptSchema());
    Oracle oracle(StrokeScriptSchema());
    std::vector<json> scripts;
    for (const char* folder : {"examples", "fuzz/corpus/script"})
        for (const auto& entry : fs::directory_iterator(fs::path(SourceFolder()) / folder))
            if (entry.path().extension() == ".json") {
                json script = json::parse(std::ifstream(entry.path()), nullptr, false);
                // Larger scripts would take most of the time.
                if (script.is_object() && script.dump().size() < 6000) scripts.push_back(script);
            }
    ASSERT_GE(scripts.size(), 6u);
    RandomNumbers random(7);
    int accepted = 0;
    int refused = 0;
    for (int round = 0; round < 4000; ++round) {
        json script = scripts[random.Below(static_cast<uint32_t>(scripts.size()))];
        for (uint32_t changes = random.Below(4); changes > 0; --changes) Change(script, random);
        const std::vector<JsonFault> faults = schema.Check(script);
        ASSERT_EQ(faults.empty(), oracle.Accepts(script))
            << script.dump() << "\n"
            << (faults.empty() ? "" : FaultMessage("", faults.front()));
        // Each reported pointer exists in the document.
        for (const JsonFault& fault : faults)
            ASSERT_TRUE(script.contains(json::json_pointer(fault.pointer))) << fault.pointer;
        ++(faults.empty() ? accepted : refused);
    }
    EXPECT_GT(accepted, 400);
    EXPECT_GT(refused, 400);
}

}  // namespace
}  // namespace trovik::test
