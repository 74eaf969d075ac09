// SPDX-License-Identifier: Apache-2.0

/// \file Tests pen strokes and stroke paths in stroke scripts.
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/jobs/JobControl.h"
#include "framework/nodes/HostKernel.h"
#include "framework/script/PenStream.h"
#include "framework/script/ScriptRunner.h"
#include "framework/strokes/PathSteps.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace trovik::test {
namespace {

using testing::HasSubstr;

class PenScript : public testing::Test {
protected:
    PenScript() { folder.Fill("quad.obj", "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\n"); }

    /// Runs steps on a square of 32 x 32 quads; 200 pixels are one unit, and pixel (300, 300) shows
    /// its centre. \return a hash of the exported bytes.
    std::size_t Run(const std::string& steps) {
        const std::string script =
            folder.Fill("script.json",
                        R"({"mesh": "quad.obj", "levels": 5,
                "camera": {"eye": [0, 0, 10], "target": [0, 0, 0], "fieldOfView": 17.061518,
                           "width": 600, "height": 600},
                "steps": [{"tool": "Sculpt", "set": {"radius": 0.2, "strength": 20}}, )" +
                            steps + R"(, {"export": {"file": "out.ply"}}]})");
        result = ScriptRunner(script, folder.Path("out"), {}).Run();
        return std::hash<std::string>()(TemporaryFolder::Content(folder.Path("out/out.ply")));
    }
    /// Returns the number of dabs that the steps apply. The strength is 0, so the square stays
    /// flat.
    uint64_t DabsOf(const std::string& steps) {
        Run(Set(R"("strength": 0)") + steps);
        return result.totals.dabs;
    }
    std::string ErrorOf(const std::string& steps) {
        return MessageOf<HostError>([&] { Run(steps); });
    }
    static std::string Set(const std::string& settings) {
        return "{\"set\": {" + settings + "}}, ";
    }
    static std::string Stroke(const std::string& fields) {
        return "{\"stroke\": {" + fields + "}}";
    }

    TemporaryFolder folder;
    ScriptResult result;
};

constexpr const char* pen =
    R"("pen": [[200, 300, 0.1, 0], [250, 310, 0.6, 40], [300, 290, 0.7, 90], [400, 300, 0.2, 160]])";
constexpr const char* pointer = R"("pointer": [[200, 300], [300, 200], [400, 300]])";

TEST_F(PenScript, PenStreamCanBeReadFromAFile) {
    const std::size_t inlined = Run(Stroke(pen));
    folder.Fill("stroke.json",
                R"({"description": "a hand", "samples": [[200, 300, 0.1, 0], [250, 310, 0.6, 40],
                    [300, 290, 0.7, 90], [400, 300, 0.2, 160]]})");
    EXPECT_EQ(Run(Stroke(R"("pen": "stroke.json")")), inlined);
    EXPECT_GT(result.totals.verticesMoved, 100u);
}

TEST_F(PenScript, PenStrokesAreSmoothedByTheToolAndScriptPointsAreNot) {
    const std::size_t smooth = Run(Stroke(pen));
    const std::size_t plain = Run(Stroke(std::string(pen) + R"(, "path": {"smoothing": 0})"));
    EXPECT_NE(smooth, plain);
    EXPECT_EQ(Run(Set(R"("smoothing": false)") + Stroke(pen)), plain);
    EXPECT_EQ(Run(Set(R"("smoothing": false)") + Set(R"("smoothing": true)") + Stroke(pen)),
              smooth);
    // 0.0625 of 600 pixels.
    EXPECT_EQ(Run(Stroke(std::string(pen) + R"(, "path": {"smoothing": 37.5})")), smooth);
    const std::size_t exact = Run(Stroke(pointer));
    EXPECT_EQ(Run(Set(R"("smoothing": 0.3, "stabiliser": 0.1)") + Stroke(pointer)), exact);
}

TEST_F(PenScript, StabiliserOfTheToolEqualsThatOfThePath) {
    const std::size_t held = Run(Set(R"("stabiliser": 0.1)") + Stroke(pen));
    EXPECT_NE(held, Run(Stroke(pen)));
    EXPECT_EQ(Run(Stroke(std::string(pen) + R"(, "path": {"stabiliser": 60})")), held);
}

TEST_F(PenScript, FilterIsOnByDefault) {
    const std::string blot =
        R"("pen": [[200, 300, 1, 0], [204, 300, 0.125, 8], [208, 300, 0.1875, 16],
        [300, 300, 0.5, 160]])";
    const std::string without =
        R"("pen": [[200, 300, 0.0625, 0], [204, 300, 0.125, 8], [208, 300, 0.1875, 16],
        [300, 300, 0.5, 160]])";
    const std::string off = R"(, "path": {"filter": false})";
    EXPECT_EQ(Run(Stroke(blot)), Run(Stroke(without)));
    EXPECT_NE(Run(Stroke(blot + off)), Run(Stroke(without + off)));
    EXPECT_THAT(ErrorOf(Stroke(pointer + off)),
                HasSubstr("/steps/1/stroke/path/filter: only pen samples can be filtered"));
}

TEST_F(PenScript, EmptyPathMeasuresArcLengthAroundCorners) {
    // 282.8 pixels are 1.414 units, and there is a dab every 0.05 units.
    EXPECT_EQ(DabsOf(Stroke(std::string(pointer) + R"(, "path": {})")), 29u);
    EXPECT_EQ(DabsOf(Stroke(std::string(pointer) + R"(, "path": {"line": true})")), 21u);
    EXPECT_NE(Run(Stroke(std::string(pointer) + R"(, "path": {"curve": true})")),
              Run(Stroke(std::string(pointer) + R"(, "path": {})")));
    const std::string surface = R"("surface": [[-0.5, 0, 0], [0, 0.5, 0], [0.5, 0, 0]], "path": {)";
    EXPECT_EQ(DabsOf(Stroke(surface + "}")), 29u);
    // The brush moves 0.5 until the stabiliser's cord is perpendicular to the new direction, then L
    // ln cosh(d / L) along the tractrix: 1.064 in total.
    EXPECT_EQ(DabsOf(Stroke(surface + R"("stabiliser": 0.2071068})")), 22u);
    EXPECT_EQ(DabsOf(Stroke(surface + R"("snap": {"curve": [[-1, 0, 0], [1, 0, 0]],
                                                  "distance": 2}})")),
              21u);
}

TEST_F(PenScript, MoreSamplesOnTheSamePathGiveTheSameBits) {
    const std::string more = R"(, "path": {})";
    const std::size_t few =
        Run(Stroke(R"("pointer": [[120, 460, 0.25], [376, 204, 0.75]])" + more));
    EXPECT_EQ(Run(Stroke(R"("pointer": [[120, 460, 0.25], [184, 396, 0.375], [248, 332, 0.5],
                                        [249, 331, 0.501953125], [376, 204, 0.75]])" +
                         more)),
              few);
    EXPECT_NE(
        Run(Stroke(R"("pointer": [[120, 460, 0.25], [184, 396, 0.5], [376, 204, 0.75]])" + more)),
        few);
}

TEST_F(PenScript, PressureCurvesRandomSizesAndPixelsShapeDabs) {
    const std::size_t plain = Run(Stroke(pen));
    for (const char* setting : {R"("strengthCurve": [[0, 0], [0.5, 0.1], [1, 1]])",
                                R"("sizeCurve": [[0, 0.2], [1, 1]])",
                                R"("pressureControlsSize": true, "sizeBias": 30)",
                                R"("randomSize": 0.5)",
                                R"("radiusPixels": 50)"})
        EXPECT_NE(Run(Set(setting) + Stroke(pen)), plain) << setting;
    EXPECT_EQ(Run(Set(R"("strengthCurve": [[0, 0], [0.5, 0.1], [1, 1]])") +
                  Set(R"("strengthCurve": null)") + Stroke(pen)),
              plain);
    EXPECT_EQ(Run(Set(R"("radiusPixels": 50)") + Set(R"("radius": 0.2)") + Stroke(pen)), plain);
    // 40 pixels are 0.2 units in the plane through the centre of the view. A brush that is a fifth
    // smaller applies a quarter more dabs.
    EXPECT_EQ(DabsOf(Set(R"("radiusPixels": 40)") + Stroke(pointer)), 29u);
    EXPECT_EQ(DabsOf(Set(R"("radiusPixels": 32)") + Stroke(pointer)), 36u);
}

TEST_F(PenScript, AirbrushUsesTheTimesOfThePen) {
    const std::string rest =
        R"("pen": [[300, 300, 0.5, 100], [300, 300, 0.5, 500], [300, 300, 0.5, 1150]])";
    EXPECT_EQ(DabsOf(Stroke(rest)), 1u);
    EXPECT_EQ(DabsOf(Set(R"("airbrush": 10)") + Stroke(rest)), 11u);
    const std::size_t once = Run(Set(R"("airbrush": 10)") + Stroke(rest));
    EXPECT_EQ(Run(Set(R"("airbrush": 10)") + Stroke(rest)), once);
}

TEST_F(PenScript, TiltMakesDabsLarger) {
    const std::string leaning = R"("pen": [[300, 300, 0.5, 0, 0.3, 0.4]])";
    const std::string upright = R"("pen": [[300, 300, 0.5, 0, 0, 0]])";
    EXPECT_EQ(Run(Stroke(leaning)), Run(Stroke(upright)));
    const std::string tilt = Set(R"("tilt": {"size": 0.5, "strength": 0.2, "rotate": true})");
    EXPECT_NE(Run(tilt + Stroke(leaning)), Run(tilt + Stroke(upright)));
    EXPECT_EQ(Run(tilt + Stroke(upright)), Run(Stroke(upright)));
}

TEST_F(PenScript, ErrorsNameTheLocation) {
    const std::string path = pointer + std::string(R"(, "path": )");
    EXPECT_THAT(ErrorOf(Stroke(path + R"({"line": true, "curve": true})")),
                HasSubstr("/steps/1/stroke/path: \"line\" and \"curve\" cannot be combined"));
    EXPECT_THAT(
        ErrorOf(Stroke(path + R"({"snap": {"curve": [[1, 2, 3], [1, 2, 4]],
                                                   "distance": 4}})")),
        HasSubstr("/steps/1/stroke/path/snap/curve/0: positions of this stroke must have 2"));
    EXPECT_THAT(ErrorOf(Stroke(R"("dabs": [{"face": 0}], "path": {})")),
                HasSubstr("/steps/1/stroke/path: this stroke has no path"));
    EXPECT_THAT(ErrorOf(Stroke(R"("pen": [[1, 2, 0.5, 0], [1, 2, 1.5, 8]])")),
                HasSubstr("/steps/1/stroke/pen/1/2: pressure must be between 0 and 1"));
    EXPECT_THAT(ErrorOf(Stroke(R"("pen": [[1, 2, 0.5, 0, 0.9, 0.9]])")),
                HasSubstr("/steps/1/stroke/pen/0/4: the length of the tilt must be at most 1"));
    EXPECT_THAT(ErrorOf(Stroke(R"("pen": [[1, 2, 0.5, 0, 0.9]])")),
                HasSubstr("/steps/1/stroke/pen/0: a sample must be"));
    EXPECT_THAT(ErrorOf(Stroke(R"("pen": [[1, 2, 0.5, -1]])")),
                HasSubstr("/steps/1/stroke/pen/0/3: times must be between"));
    EXPECT_THAT(ErrorOf(Stroke(R"("pointer": [[1, 2], [1e30, 2]], "path": {})")),
                HasSubstr("/steps/1/stroke/pointer/1: [1e+30, 2] is more than 5000000 pixels"));
    EXPECT_THAT(ErrorOf(Stroke(R"("pen": "none.json")")),
                HasSubstr("/stroke/pen: file not found: none.json"));
    EXPECT_THAT(
        ErrorOf(Set(R"("sizeCurve": [[0, 0], [0.5, 0.5], [0.4, 1]])") + Stroke(pen)),
        HasSubstr(
            "/steps/1/set/sizeCurve/2: the pressures of curve points must be in ascending order"));
    EXPECT_THAT(ErrorOf(Set(R"("sizeCurve": [[0, 0]])") + Stroke(pen)),
                HasSubstr("/steps/1/set/sizeCurve: a pressure curve must have 2 to 32 points"));
    EXPECT_THAT(
        ErrorOf(Set(R"("radius": 1, "radiusPixels": 9)") + Stroke(pen)),
        HasSubstr("/steps/1/set/radiusPixels: \"radius\" and \"radiusPixels\" cannot be combined"));
}

TEST_F(PenScript, OverlongPathsAreRefusedNamingTheSample) {
    const std::string fine = R"(the maximum for a stroke is 10000000)";
    for (const char* path : {"", R"(, "path": {})", R"(, "path": {"stabiliser": 60})"}) {
        SCOPED_TRACE(path);
        const auto error = [&](const std::string& samples) {
            return ErrorOf(Stroke(samples + path));
        };
        EXPECT_THAT(error(R"("pointer": [[400, 300], [400, 4294967295]])"),
                    HasSubstr("/steps/1/stroke/pointer/1: [400, 4.29497e+09] is more than 5000000 "
                              "pixels from the viewport's upper left corner"));
        EXPECT_THAT(error(R"("pointer": [[400, 1e30]])"),
                    HasSubstr("/steps/1/stroke/pointer/0: [400, 1e+30] is more than"));
        EXPECT_THAT(
            error(R"("pointer": [[0, 0], [0, 4e6], [0, -4e6]])"),
            HasSubstr("/steps/1/stroke/pointer/2: the path up to [0, -4e+06] requires 2.4e+07 "
                      "steps of 0.5 pixels; the maximum for a stroke is 10000000"));
        EXPECT_THAT(
            error(R"("surface": [[0, 0, 1], [0, 2e9, 1]])"),
            HasSubstr(
                "/steps/1/stroke/surface/1: the path up to [0, 2e+09, 1] requires "
                "1.6e+11 steps of 0.0125 units (radius 0.2, spacing 25 percent); the maximum"));
    }
    EXPECT_THAT(
        ErrorOf(Stroke(R"("pen": [[0, 0, 1, 0], [0, 4e6, 1, 8], [0, 0, 1, 16], [0, 4e6, 1, 24]])")),
        HasSubstr("/steps/1/stroke/pen/2: the path up to [0, 0] requires 1.6e+07 steps"));
    folder.Fill("far.json", R"({"samples": [[0, 0, 1, 0], [0, 1e30, 1, 8]]})");
    EXPECT_THAT(ErrorOf(Stroke(R"("pen": "far.json")")),
                HasSubstr("/steps/1/stroke/pen: sample 1: [0, 1e+30] is more than"));
    // Path shapes have their own step length.
    for (const char* path : {R"({"stabiliser": 1e-6})",
                             R"({"smoothing": 1e-6})",
                             R"({"snap": {"curve": [[0, 0], [9, 9]], "distance": 1e-6}})"}) {
        SCOPED_TRACE(path);
        EXPECT_THAT(ErrorOf(Stroke(pointer + std::string(R"(, "path": )") + path)),
                    HasSubstr("/steps/1/stroke/pointer: the path takes 2.26274e+09 steps of "
                              "6.25e-08 for "));
    }
    EXPECT_EQ(DabsOf(Stroke(pointer)), 29u) << "the limits do not affect ordinary paths";
}

TEST_F(PenScript, PathIsMeasuredByTheEffectiveRadius) {
    const char* reason =
        "steps of 2.5e-10 pixels (radius 1e-09 pixels, spacing 25 percent); the maximum for a "
        "stroke is";
    const std::string tiny = Set(R"("radiusPixels": 1e-9)");
    EXPECT_THAT(ErrorOf(tiny + Stroke(pointer)), HasSubstr(reason));
    EXPECT_THAT(ErrorOf(tiny + Stroke(pen)), HasSubstr(reason));
    EXPECT_THAT(ErrorOf(tiny + Stroke(R"("surface": [[0, 0, 0], [0.5, 0, 0]])")),
                HasSubstr("(radius 1e-09 pixels, spacing 25 percent)"));
    for (const char* path : {"", R"(, "path": {})"})
        EXPECT_THAT(ErrorOf(Set(R"("radius": 1e-9)") + Stroke(pointer + std::string(path))),
                    HasSubstr("(radius 1e-09, spacing 25 percent); the maximum for a stroke is"));
    // A single dab does not need a path.
    EXPECT_EQ(DabsOf(tiny + Stroke(R"("pointer": [[300, 300]])")), 1u);
}

TEST_F(PenScript, SpacingsHaveTheSameRangeEverywhere) {
    EXPECT_THAT(ErrorOf(Set(R"("spacing": 0.09)") + Stroke(pointer)),
                HasSubstr("/steps/1/set/spacing: "));
    EXPECT_EQ(DabsOf(Set(R"("spacing": 0.1)") + Stroke(R"("pointer": [[300, 300]])")), 1u);
    EXPECT_EQ(MessageOf<HostError>([] { CheckSpacing(1e-9f); }),
              "the dab spacing is 1e-07 percent of the radius; it must be 0.1 to 1000");
    EXPECT_THROW(CheckSpacing(10.1f), HostError);
    EXPECT_THROW(CheckSpacing(std::numeric_limits<float>::quiet_NaN()), HostError);
    EXPECT_NO_THROW(CheckSpacing(minSpacing));
}

TEST_F(PenScript, WalksWithoutDabsCanBeCancelled) {
    // All strokes are off the mesh; without cancellation, they take seconds to minutes.
    for (
        const char* stroke :
        {R"("pointer": [[-9, 0], [-9, 4e6]])",
         R"("pointer": [[-9, 0], [-9, 4e6]], "path": {})",
         R"("pointer": [[-9, 0], [-9, 4e6]], "path": {"stabiliser": 13})",
         R"("pen": [[-9, 0, 1, 0], [-9, 4e6, 1, 900]])",
         R"("pointer": [[-9, 0], [-9, 4e6]], "path": {"snap": {"distance": 13, "curve": [[1, 1], [2, 2]]}})"}) {
        SCOPED_TRACE(stroke);
        const std::string script =
            folder.Fill("script.json",
                        R"({"mesh": "quad.obj", "steps": [{"tool": "Sculpt"}, {"stroke": {)" +
                            std::string(stroke) + "}}]}");
        ScriptProgress progress;
        bool isStroke = false;
        class StrokeJob : public JobControl {
        public:
            explicit StrokeJob(const bool& stroking) : isStroke(stroking) {}
            // The first report comes before the step.
            bool Report(uint64_t, uint64_t, const char*) override {
                return !isStroke || ++asked <= 2;
            }
            int asked = 0;

        private:
            const bool& isStroke;
        } job(isStroke);
        progress.step = [&](std::size_t, std::size_t, const std::string& what) {
            isStroke = what == "Sculpt, stroke 1 of 1";
        };
        progress.job = &job;
        EXPECT_THROW(ScriptRunner(script, folder.Path("out"), progress).Run(), Cancelled);
        EXPECT_EQ(job.asked, 3);
    }
}

TEST_F(PenScript, FailedScriptLeavesNoListener) {
    std::vector<std::string> own;
    const HUDListening listening([&own](const std::string& text) { own.push_back(text); });
    const auto show = [](const char* text) {
        g_pKernel->Interface()->HUDMessageShow(QLatin1String(text), HUDMessageInfo);
    };
    std::size_t told = 0;
    ScriptProgress progress;
    progress.message = [&told](const std::string&) { ++told; };
    progress.step = [&](std::size_t done, std::size_t, const std::string&) {
        if (done == 1) show("within");
    };
    const std::string script = folder.Fill(
        "script.json", R"({"mesh": "quad.obj", "steps": [{"tool": "Sculpt"}, {"undo": 1}]})");
    EXPECT_THROW(ScriptRunner(script, folder.Path("out"), progress).Run(), HostError);
    EXPECT_EQ(told, 1u);
    EXPECT_TRUE(own.empty());
    show("after");
    EXPECT_EQ(told, 1u);
    EXPECT_EQ(own, std::vector<std::string>{"after"});
}

TEST(PenStream, InvalidFilesAreRefusedNamingTheLocation) {
    const auto error = [](const std::string& text) {
        return MessageOf<HostError>([&] { ParsePenStream(text, "pen.json"); });
    };
    EXPECT_THAT(error(""), HasSubstr("not valid JSON"));
    EXPECT_THAT(error("{\"samples\": [[1, 2"), HasSubstr("not valid JSON"));
    EXPECT_EQ(error(R"({"samples": []})"),
              "pen.json: /samples: expected an array of 1 or more arrays, got an empty array");
    EXPECT_EQ(error(R"({"samples": [[1, 2, 0, 0, 1]]})"),
              "pen.json: /samples/0: a sample must be [x, y, pressure, milliseconds], "
              "optionally with two numbers for the tilt");
    EXPECT_THAT(error(R"({"samples": [[1e300, 2, 0, 0]]})"), HasSubstr("/samples/0/0: the number"));
    EXPECT_EQ(ParsePenStream(R"({"samples": [[1.5, 2, 0.25, 40, 0, -1]]})", "pen.json")[0].time,
              0.04);
}

}  // namespace
}  // namespace trovik::test
