// SPDX-License-Identifier: Apache-2.0

/// \file Tests strokes of the grab brush in stroke scripts.
#include "framework/errors/HostError.h"
#include "framework/script/ScriptRunner.h"
#include "framework/script/ToolSettings.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

using testing::HasSubstr;

/// A square from (-1, -1) to (1, 1), seen from (0, 0, 5) in a viewport of 400 pixels; 100 pixels
/// are one unit.
class GrabScript : public testing::Test {
protected:
    GrabScript() {
        folder.Fill("quad.obj",
                    "v -1 -1 0\nv 0 -1 0\nv 1 -1 0\nv -1 1 0\nv 0 1 0\nv 1 1 0\n"
                    "f 1 2 5 4\nf 2 3 6 5\n");
    }
    std::unique_ptr<Document> Run(const std::string& steps) {
        const std::string script = folder.Fill(
            "script.json",
            R"({"mesh": "quad.obj", "levels": 4, "camera": {"eye": [0, 0, 5], "target": [0, 0, 0],)"
            R"( "fieldOfView": 43.602818, "width": 400, "height": 400}, "steps": [)" +
                steps + R"(, {"save": "out.trovik"}]})");
        ScriptRunner(script, folder.Path("out"), {}).Run();
        return Document::OpenScene(folder.Path("out/out.trovik"));
    }
    std::string ErrorOf(const std::string& steps) {
        return MessageOf<HostError>([&] { Run(steps); });
    }
    /// The displacement of the vertex that was at (x, y, 0).
    Vector MoveAt(const std::string& steps, float x, float y) {
        if (start == nullptr) start = Run(R"({"tool": "Sculpt"})");
        const auto document = Run(steps);
        const LevelMesh& before = *start->Geometry().Bound();
        uint32_t nearest = 0;
        const auto away = [&](uint32_t v) {
            return (before.Position(v) - Vector(x, y, 0)).Length();
        };
        for (uint32_t v = 0; v < before.VertexCount(); ++v)
            if (away(v) < away(nearest)) nearest = v;
        EXPECT_LT(away(nearest), 1e-3f);
        return document->Geometry().Bound()->Position(nearest) - before.Position(nearest);
    }
    void ExpectNear(const Vector& value, const Vector& expected, float tolerance = 1e-3f) {
        EXPECT_LT((value - expected).Length(), tolerance)
            << value.x << ", " << value.y << ", " << value.z;
    }

    TemporaryFolder folder;
    std::unique_ptr<Document> start;
};

TEST_F(GrabScript, PointsLeaveTheSurface) {
    const std::string stroke = R"({"stroke": {"points": [[0, 0, 0], [0.2, 0.1, 0.5]]}})";
    ExpectNear(MoveAt(R"({"tool": "Grab", "set": {"radius": 0.5}}, )" + stroke, 0, 0),
               {0.2f, 0.1f, 0.5f});
    ExpectNear(
        MoveAt(R"({"tool": "Grab", "set": {"radius": 0.5, "strength": 50}}, )" + stroke, 0, 0),
        {0.1f, 0.05f, 0.25f});
    ExpectNear(
        MoveAt(R"({"tool": "Grab", "set": {"radius": 0.5, "alongNormal": true}}, )" + stroke, 0, 0),
        {0, 0, 0.5f});
    ExpectNear(MoveAt(R"({"tool": "SnakeHook", "set": {"radius": 0.5}}, )" + stroke, 0, 0),
               {0.2f, 0.1f, 0.5f});
    ExpectNear(MoveAt(R"({"tool": "ElasticGrab", "set": {"radius": 0.5}}, )" + stroke, 0, 0),
               {0.2f, 0.1f, 0.5f});
}

TEST_F(GrabScript, PointerMovesInTheViewPlane) {
    const std::string stroke = R"({"stroke": {"pointer": [[200, 200], [900, 0], [250, 190]]}})";
    ExpectNear(MoveAt(R"({"tool": "Grab", "set": {"radius": 0.5}}, )" + stroke, 0, 0),
               {0.5f, 0.1f, 0.0f});
    // The normal points at the viewer, so the motion upwards counts.
    ExpectNear(
        MoveAt(R"({"tool": "Grab", "set": {"radius": 0.5, "alongNormal": true}}, )" + stroke, 0, 0),
        {0, 0, 0.1f});
}

TEST_F(GrabScript, SnakeHookFollowsTheShapeOfThePath) {
    const auto hook = [&](const char* path) {
        return MoveAt(
            std::string(R"({"tool": "SnakeHook", "set": {"radius": 0.4, "spacing": 5}}, )") +
                R"({"stroke": {"points": [[0, 0, 0], [0.3, 0.2, 0.3], [0, 0, 0.6]], )"
                R"("path": )" +
                path + "}}",
            0.0625f,
            0);
    };
    // A straight pull along the normal keeps every vertex in the plane y = 0.
    EXPECT_LT(std::fabs(hook(R"({"line": true})").y), 1e-4f);
    EXPECT_GT(std::fabs(hook("{}").y), 1e-3f);
}

TEST_F(GrabScript, ElasticModesUseTheMotionToTheRight) {
    const auto move = [&](const char* mode, const char* modifier, float x, float y) {
        return MoveAt(std::string(R"({"tool": "ElasticGrab", "set": {"radius": 1, "mode": ")") +
                          mode + R"("}}, {"stroke": {"modifier": ")" + modifier +
                          R"(", "pointer": [[200, 200], [210, 200]]}})",
                      x,
                      y);
    };
    // Near the press point, the amount is 0.1 radians, or a growth by 0.1.
    ExpectNear(move("twist", "none", 0.0625f, 0), {-0.0003f, 0.0062f, 0}, 2e-4f);
    ExpectNear(move("twist", "invert", 0.0625f, 0), {-0.0003f, -0.0062f, 0}, 2e-4f);
    ExpectNear(move("scale", "none", 0.0625f, 0), {0.00625f, 0, 0}, 2e-4f);
    ExpectNear(move("pinch", "none", 0.0625f, 0), {-0.003125f, 0, 0}, 2e-4f);
    ExpectNear(move("scale", "none", 0, 0), {}, 1e-6f);
}

TEST_F(GrabScript, DabsMoveFromPointToPosition) {
    ExpectNear(
        MoveAt(R"({"tool": "Grab"}, {"stroke": {"dabs": [)"
               R"({"face": 128, "point": [0, 0, 0], "position": [0, 0, 0.25], "radius": 0.4}]}})",
               0,
               0),
        {0, 0, 0.25f});
}

TEST_F(GrabScript, RefusesFieldsThatDoNotFitTheTool) {
    for (const char* tool : {"Grab", "ElasticGrab", "SnakeHook"}) {
        const std::string select = std::string(R"({"tool": ")") + tool + R"("}, )";
        EXPECT_THAT(ErrorOf(select + R"({"stroke": {"surface": [[0, 0, 0]]}})"),
                    HasSubstr("/steps/1/stroke/surface: a stroke of the tool " + std::string(tool) +
                              " leaves the surface"));
        EXPECT_THAT(
            ErrorOf(select + R"({"stroke": {"modifier": "smooth", "points": [[0, 0, 0]]}})"),
            HasSubstr("/steps/1/stroke/modifier: the tool " + std::string(tool) +
                      " cannot smooth"));
        EXPECT_THAT(ErrorOf(select + R"({"stroke": {"wholeMesh": {"strength": 50}}})"),
                    HasSubstr("/steps/1/stroke/wholeMesh: the tool " + std::string(tool) +
                              " needs a pointer to follow"));
    }
    EXPECT_THAT(
        ErrorOf(R"({"tool": "Sculpt"}, {"stroke": {"points": [[0, 0, 0]]}})"),
        HasSubstr("/steps/1/stroke/points: a stroke of the tool Sculpt stays on the surface"));
    EXPECT_THAT(ErrorOf(R"({"tool": "Sculpt"}, {"set": {"mode": "twist"}})"),
                HasSubstr("/steps/1/set/mode: the tool Sculpt has no setting \"mode\""));
    EXPECT_THAT(ErrorOf(R"({"tool": "Grab"}, {"set": {"mode": "twist"}})"),
                HasSubstr("/steps/1/set/mode: the tool Grab has no setting \"mode\""));
    EXPECT_THAT(ErrorOf(R"({"tool": "SnakeHook"}, {"set": {"connectedOnly": true}})"),
                HasSubstr("the tool SnakeHook has no setting \"connectedOnly\""));
}

TEST_F(GrabScript, ScenesKeepTheToolsAndTheirSettings) {
    const auto document = Run(
        R"({"tool": "ElasticGrab", "set": {"mode": "pinch", "scales": 2, "poissonRatio": 0.25}},
           {"tool": "Grab", "set": {"connectedOnly": true, "strength": 70, "falloff": "cone"}})");
    EXPECT_EQ(document->State()->tool.name, "Grab");
    const auto valueOf = [&](const std::string& name) {
        for (const ToolSetting& setting : ReadToolSettings(document->Brush(), document->Settings()))
            if (setting.name == name) return setting.value;
        return nlohmann::json();
    };
    EXPECT_EQ(valueOf("connectedOnly"), true);
    EXPECT_EQ(valueOf("strength"), 70);
    EXPECT_EQ(valueOf("falloff"), "cone");
    EXPECT_EQ(valueOf("mode"), nlohmann::json());
    ASSERT_TRUE(document->SelectTool("ElasticGrab"));
    EXPECT_EQ(valueOf("mode"), "pinch");
    EXPECT_EQ(valueOf("scales"), 2);
    EXPECT_EQ(valueOf("poissonRatio"), 0.25);
    EXPECT_EQ(valueOf("strength"), 100);
}

}  // namespace
}  // namespace trovik::test
