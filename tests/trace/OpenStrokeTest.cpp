// SPDX-License-Identifier: Apache-2.0

/// \file Tests traces of strokes that a script leaves open.
#include "framework/errors/HostError.h"
#include "tests/trace/NpyArray.h"
#include "tests/trace/TraceFixture.h"

namespace trovik::test {
namespace {

class OpenStroke : public TraceFixture {
protected:
    OpenStroke() { setUp = "\"levels\": 2, "; }

    void ExpectError(const std::string& steps, const std::string& reason) {
        const std::string message = MessageOf<HostError>([&] { Run(steps, setUp); });
        EXPECT_NE(message.find(reason), std::string::npos) << message;
        EXPECT_EQ(message.find('\n'), std::string::npos);
    }

    std::string setUp;
};

TEST_F(OpenStroke, ContinuesInALaterStep) {
    Run(R"({"stroke": {"open": true, "dabs": [{"face": 0}]}}, {"set": {"buildUpRate": 1}},
           {"stroke": {"continue": true, "open": true, "dabs": [{"face": 9}]}},
           {"stroke": {"continue": true, "dabs": [{"face": 2}]}})",
        setUp);
    EXPECT_EQ(Calls(),
              (std::vector<std::string>{"SetActiveConfiguration",
                                        "BeginStroke",
                                        "ApplyDab",
                                        "ApplyDab",
                                        "ApplyDab",
                                        "EndStroke"}));
    EXPECT_FALSE(Line("ApplyDab", 0)["in"].contains("attributes"));
    EXPECT_EQ(Line("ApplyDab", 1)["in"]["attributes"]["builduprate"], 1.0);
    EXPECT_FALSE(Line("ApplyDab", 2)["in"].contains("attributes"));
    EXPECT_EQ(Line("ApplyDab", 1)["in"]["previousPatchPosition"],
              Line("ApplyDab", 0)["in"]["hit"]["position"]);
}

TEST_F(OpenStroke, GivesTheMeshOfASingleStroke) {
    const std::string settings = R"({"set": {"radius": 0.6, "strength": 50}}, )";
    Run(settings + R"({"stroke": {"dabs": [{"face": 0}, {"face": 9}]}})", setUp);
    const std::string whole = NpyArray(At("after/m0/level-2/positions.npy")).bytes;
    Run(settings + R"({"stroke": {"dabs": [{"face": 0}], "open": true}},
                      {"stroke": {"dabs": [{"face": 9}], "continue": true}})",
        setUp);
    EXPECT_EQ(NpyArray(At("after/m0/level-2/positions.npy")).bytes, whole);
}

TEST_F(OpenStroke, EndOfTheScriptShowsTheRecords) {
    Run(R"({"set": {"radius": 0.6}}, {"stroke": {"open": true, "dabs": [{"face": 0}]}})", setUp);
    EXPECT_EQ(Calls().back(), "ApplyDab") << "ending the stroke is not part of the trace any more";
    const auto records = NpyArray(At("after/m0/records.npy")).Values<StoredVertexInfo>();
    EXPECT_EQ(records.size(), Line("ApplyDab")["out"]["recordCount"].get<std::size_t>());
    const auto links = NpyArray(At("after/m0/change_link.npy")).Values<uint32_t>();
    for (uint32_t i = 0; i < records.size(); ++i) EXPECT_EQ(links[records[i].vertexIndex], i);
    EXPECT_EQ(Meta("after")["lockable"], true) << "the brush's own lock";
}

TEST_F(OpenStroke, CanBeginAndEndWithoutADab) {
    Run(R"({"stroke": {"open": true, "modifier": "invert"}}, {"mask": "all"},
           {"stroke": {"continue": true}}, {"tool": "Wax"})",
        setUp);
    EXPECT_EQ(Calls(),
              (std::vector<std::string>{"SetActiveConfiguration",
                                        "BeginStroke",
                                        "HostChange",
                                        "EndStroke",
                                        "SetActiveConfiguration"}));
    EXPECT_EQ(Line("BeginStroke")["in"]["modifier"], 2);
}

TEST_F(OpenStroke, MaskingInBetweenIsReportedAtTheNextDab) {
    Run(R"({"stroke": {"open": true, "dabs": [{"face": 0}]}}, {"mask": "all"},
           {"stroke": {"continue": true, "dabs": [{"face": 0}]}})",
        setUp);
    EXPECT_EQ(Line("BeginStroke")["in"]["freezeQuery"], 0);
    EXPECT_FALSE(Line("ApplyDab", 0)["in"].contains("freezeQuery"));
    EXPECT_EQ(Line("ApplyDab", 1)["in"]["freezeQuery"], 1);
}

TEST_F(OpenStroke, StepsThatWouldInvalidateItAreRefused) {
    const std::string open = R"({"stroke": {"open": true, "dabs": [{"face": 0}]}}, )";
    const std::string reason =
        R"(: a stroke is open; end it first with {"stroke": {"continue": true}})";
    ExpectError(open + R"({"tool": "Wax"})", "s.json: /steps/1/tool" + reason);
    ExpectError(open + R"({"undo": 1})", "/steps/1/undo" + reason);
    ExpectError(open + R"({"redo": 1})", "/steps/1/redo" + reason);
    ExpectError(open + R"({"level": 1})", "/steps/1/level" + reason);
    ExpectError(open + R"({"subdivide": 1})", "/steps/1/subdivide" + reason);
    ExpectError(open + R"({"layer": {"add": "L"}})", "/steps/1/layer" + reason);
    ExpectError(open + R"({"transform": {"scale": 2}})", "/steps/1/transform" + reason);
    ExpectError(open + R"({"mirror": ["x"]})", "/steps/1/mirror" + reason);
    ExpectError(open + R"({"reset": true})", "/steps/1/reset" + reason);
}

TEST_F(OpenStroke, ErrorsInOpeningAndContinuingAreReported) {
    ExpectError(R"({"stroke": {"continue": true, "dabs": [{"face": 0}]}})",
                "/steps/0/stroke/continue: no stroke is open");
    ExpectError(R"({"stroke": {"open": true}}, {"stroke": {"dabs": [{"face": 0}]}})",
                "/steps/1/stroke: a stroke is open");
    ExpectError(
        R"({"stroke": {"open": true}}, {"stroke": {"continue": true, "modifier": "smooth"}})",
        "/steps/1/stroke/modifier: the modifier must be given at the beginning of the stroke");
    ExpectError(R"({"stroke": {"open": true}}, {"stroke": {"continue": true, "seed": 3}})",
                "/steps/1/stroke/seed: the seed must be given at the beginning of the stroke");
    ExpectError(R"({"stroke": {"open": true, "dabs": [{"face": 0}], "pointer": [[1, 1]]}})",
                "/steps/0/stroke: a stroke needs one of");
    ExpectError(R"({"stroke": {}})", "/steps/0/stroke: a stroke needs one of");
}

TEST_F(OpenStroke, ErrorInAContinuedStrokeEndsIt) {
    ExpectError(R"({"stroke": {"open": true, "dabs": [{"face": 0}]}},
                   {"stroke": {"continue": true, "dabs": [{"face": 99999}]}})",
                "there is no face 99999");
    EXPECT_EQ(ReadTrace(folder.Path("trace")).back()["call"], "EndStroke");
}

}  // namespace
}  // namespace trovik::test
