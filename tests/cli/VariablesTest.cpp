// SPDX-License-Identifier: Apache-2.0

/// \file Tests variables in stroke scripts (`trovik sculpt --set`).
#include "framework/json/JsonVariables.h"
#include "tests/cli/CommandRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace trovik::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

json Replaced(json document, const JsonVariables& variables) {
    EXPECT_TRUE(ReplaceVariables(document, variables).empty());
    return document;
}

std::string Fault(json document, const JsonVariables& variables) {
    const json before = document;
    const auto faults = ReplaceVariables(document, variables);
    EXPECT_EQ(document, before);
    return faults.size() == 1 ? faults[0].pointer + ": " + faults[0].reason
                              : std::to_string(faults.size()) + " faults";
}

TEST(Variables, AreReplacedOnlyInStringValues) {
    const JsonVariables variables = {{"a", "one"}, {"b_2", "${a}"}, {"empty", ""}};
    EXPECT_EQ(Replaced("${a}/${b_2}${empty}.ply", variables), "one/${a}.ply");
    EXPECT_EQ(
        Replaced(json::parse(R"({"${a}": ["${a}", 1, true, null, {"x": "-${a}-"}]})"), variables),
        json::parse(R"({"${a}": ["one", 1, true, null, {"x": "-one-"}]})"));
    EXPECT_EQ(Replaced(json::parse(R"({"comment": "${unknown}", "x": "${a}"})"), variables),
              json::parse(R"({"comment": "${unknown}", "x": "one"})"));
}

TEST(Variables, DollarSignsWithoutBraceAreKept) {
    EXPECT_EQ(Replaced("$a $ $$ cost$", {}), "$a $ $$ cost$");
    EXPECT_EQ(Replaced("$${a} $$${a}", {{"a", "x"}}), "${a} $${a}");
}

TEST(Variables, FaultsNameTheirPosition) {
    EXPECT_EQ(
        Fault(json::parse(R"({"steps": [{"export": {"file": "${stm}.ply"}}]})"), {{"stem", "x"}}),
        "/steps/0/export/file: unknown variable \"stm\"; did you mean \"stem\"?");
    EXPECT_EQ(Fault("${x}", {}), ": unknown variable \"x\"");
    for (const char* text : {"${", "${}", "${a", "${1}", "${a b}", "${a}${"})
        EXPECT_THAT(Fault(text, {{"a", "x"}}), HasSubstr("must be followed by the name")) << text;
    EXPECT_EQ(Fault(json::parse(R"(["${x}", "${y}"])"), {}), "2 faults");
}

class SetOption : public Command {};

TEST_F(SetOption, SelectsFilesAndWords) {
    WriteFile("s.json", R"({"mesh": "${mesh}.obj", "levels": 1, "steps": [
        {"tool": "${tool}"}, {"stroke": {"surface": [[0, 0, 1]]}}, {"export": {"file": "${out}.ply"}}]})");
    const Outcome outcome =
        Run("sculpt s.json -q --json --set mesh=cube --set tool=Smooth --set out=a=b");
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(json::parse(outcome.out).at("files"), json({"a=b.ply"}));
    EXPECT_EQ(Run("sculpt s.json --check -q --set mesh=cube --set tool=Smooth --set out=a").status,
              0);
    const Outcome unknown = Run("sculpt s.json -q --set mesh=cube --set tol=Smooth --set out=a");
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(unknown.error,
              "trovik: s.json: /steps/0/tool: unknown variable \"tool\"; did you mean \"tol\"?\n");
    const Outcome check = Run("sculpt s.json --check -q --set mesh=cube --set tool=Smooth");
    EXPECT_EQ(check.status, 1);
    EXPECT_THAT(check.error, HasSubstr("/steps/2/export/file: unknown variable \"out\""));
    // Values keep their type: a string is not a number.
    WriteFile("n.json", R"({"mesh": "cube.obj", "levels": "${n}", "steps": []})");
    EXPECT_EQ(Run("sculpt n.json -q --set n=1").status, 1);
}

TEST_F(SetOption, WithoutVariablesStringsAreUnchanged) {
    WriteFile("s.json", R"({"mesh": "cube.obj", "steps": [{"export": {"file": "${x}.ply"}}]})");
    ASSERT_EQ(Run("sculpt s.json -q").status, 0);
    EXPECT_TRUE(fs::exists(folder / "${x}.ply"));
}

TEST_F(SetOption, RefusesOtherForms) {
    for (const char* value : {"x", "=1", "1x=2", "a-b=2"})
        EXPECT_EQ(Run(std::string("sculpt s.json --set ") + value).status, 2) << value;
}

}  // namespace
}  // namespace trovik::test
