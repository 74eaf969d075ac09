// SPDX-License-Identifier: Apache-2.0

/// \file Tests the traces of small scripts that run with the actual brush.
#include "framework/errors/HostError.h"
#include "framework/images/ImageFile.h"
#include "framework/math/SameBits.h"
#include "framework/memory/MemoryAccount.h"
#include "framework/multires/LevelChange.h"
#include "tests/trace/NpyArray.h"
#include "tests/trace/TraceFixture.h"

#include <algorithm>
#include <limits>
#include <set>

namespace trovik::test {
namespace {

constexpr const char* oneDab = R"({"stroke": {"dabs": [{"face": 0, "radius": 0.5}]}})";

class ScriptTrace : public TraceFixture {};

TEST_F(ScriptTrace, BeginsWithTheToolAndHasEveryCallInOrder) {
    Run(std::string(R"({"tool": "Flatten"}, )") + oneDab, "\"levels\": 2, ");
    EXPECT_EQ(Calls(),
              (std::vector<std::string>{"SetActiveConfiguration",
                                        "SetActiveConfiguration",
                                        "BeginStroke",
                                        "ApplyDab",
                                        "EndStroke"}));
    EXPECT_EQ(trace[0]["in"]["tool"], 0);
    EXPECT_EQ(trace[0]["in"]["inited"], false);
    EXPECT_EQ(trace[1]["in"]["tool"], 5);
    EXPECT_EQ(Line("EndStroke")["out"], R"({"finished": [["m0", true, false]], "tool": 5})"_json);
    for (const nlohmann::json& line : trace)
        EXPECT_EQ(KeysOf(line), (std::vector<std::string>{"call", "in", "out"}));
}

TEST_F(ScriptTrace, DeactivatedToolIsMarkedAsInitialised) {
    Run(R"({"tool": "Pinch"}, {"tool": "Sculpt"}, {"tool": "Pinch"})");
    ASSERT_EQ(trace.size(), 4u);
    EXPECT_EQ(trace[1]["in"], R"({"tool": 2, "inited": false})"_json);
    EXPECT_EQ(static_cast<float>(trace[1]["out"]["strengthScale"].get<double>()), 0.01f);
    EXPECT_EQ(trace[2]["in"], R"({"tool": 0, "inited": true})"_json);
    EXPECT_EQ(trace[3]["in"], R"({"tool": 2, "inited": true})"_json);
}

TEST_F(ScriptTrace, ToolSelectedAgainIsMarkedAsInitialised) {
    // The settings of the current tool are stored before it is selected again.
    Run(R"({"tool": "Sculpt"})");
    ASSERT_EQ(trace.size(), 2u);
    EXPECT_EQ(trace[0]["in"], R"({"tool": 0, "inited": false})"_json);
    EXPECT_EQ(trace[1]["in"], R"({"tool": 0, "inited": true})"_json);
}

TEST_F(ScriptTrace, StrokeBeginsWithEverySettingOfTheBrush) {
    Run(std::string(R"({"set": {"buildUpRate": 0.25, "direction": "y", "strengthBias": 12.5,
            "facing": {"enabled": true, "start": 30, "range": 45}, "falloff": [1, 0.5, 0]}}, )") +
            oneDab,
        R"("levels": 1, "mirror": ["z"], "camera": {"eye": [0, 0, 7]}, "renderers": [0, 2],
           "preferences": {"Swift Stroke Level Factor": 0.5}, )");
    nlohmann::json in = Line("BeginStroke")["in"];
    EXPECT_EQ(in, R"({
        "mesh": "m0", "modifier": 0, "trigger": 0, "tool": 0,
        "attributes": {"builduprate": 0.25, "bilinearsample": false, "globalplane": false,
                       "updateplane": true, "affectalllayers": true, "drawfromcenter": true},
        "direction": 6, "strengthScale": 1.0, "strengthBias": 12.5, "useTessellator": false,
        "strokeMeshLocked": false, "testMode": false, "mirrorMode": 3, "mirrorMaskEnabled": false,
        "facing": {"active": true, "start": 30.0, "range": 45.0},
        "falloff": "falloff-0001.npy",
        "stamp": {"enabled": false, "tiled": false, "inverted": false, "factor": 1.0, "offset": 0.0,
                  "buildUp": false, "name": "", "imageKind": 0, "width": 0, "height": 0,
                  "version": 0, "image": 0, "pixels": null},
        "preferences": {"Render Swift Stroke": true, "Swift Stroke Level Factor": 0.5,
                        "Use Original Data For Flatten": false,
                        "Use Vertex Weights For Flatten": false,
                        "Wax Fills Only": false, "Wax Scrapes Only": false},
        "camera": [0.0, 0.0, 7.0], "renderers": {"m0": [0.0, 2.0]}, "freezeQuery": 0})"_json);
    EXPECT_EQ(Line("BeginStroke")["out"], R"({"messages": [], "error": null, "bound": "m0"})"_json);
    const NpyArray falloff(At("arrays/falloff-0001.npy"));
    EXPECT_EQ(falloff.Type(), "'<f4'");
    EXPECT_EQ(falloff.Shape(), "(3,)");
    EXPECT_EQ(falloff.Values<float>(), (std::vector<float>{1.0f, 0.5f, 0.0f}));
    // The preference and the switch are process-wide.
    Run(std::string(R"({"set": {"facing": {"enabled": false}}}, )") + oneDab,
        R"("preferences": {"Swift Stroke Level Factor": 1.0}, )");
}

TEST_F(ScriptTrace, MirroredDabFollowsItsMainDab) {
    Run(R"({"stroke": {"surface": [[0.3, 0.1, 1], [0.4, 0.1, 1]]}})",
        "\"levels\": 3, \"mirror\": [\"x\"], ");
    const std::vector<nlohmann::json> dabs = LinesOf(trace, "ApplyDab");
    ASSERT_GE(dabs.size(), 4u);
    EXPECT_FALSE(dabs[0]["in"].contains("mirrorTransform"));
    EXPECT_EQ(dabs[1]["in"]["mirrorTransform"][0], -1.0);
    EXPECT_EQ(dabs[1]["in"]["hit"]["mirror"], true);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double sign = axis == 0 ? -1.0 : 1.0;
        EXPECT_EQ(dabs[1]["in"]["hit"]["position"][axis],
                  sign * dabs[0]["in"]["hit"]["position"][axis].get<double>());
    }
    // Each side has its own previous position.
    EXPECT_EQ(dabs[0]["in"]["previousPatchPosition"], R"([0.0, 0.0, 0.0])"_json);
    EXPECT_EQ(dabs[1]["in"]["previousPatchPosition"], R"([0.0, 0.0, 0.0])"_json);
    EXPECT_EQ(dabs[2]["in"]["previousPatchPosition"], dabs[0]["in"]["hit"]["position"]);
    EXPECT_EQ(dabs[3]["in"]["previousPatchPosition"], dabs[1]["in"]["hit"]["position"]);
}

TEST_F(ScriptTrace, SmoothStrokeHasTheSelectedToolAndTheSettingsOfSmooth) {
    Run(std::string(R"({"tool": "Smooth", "set": {"buildUpRate": 0.125, "strengthBias": 60,
                        "falloff": "constant"}},
                       {"tool": "Pinch", "set": {"buildUpRate": 0.75, "strengthBias": 10,
                        "falloff": "linear"}},
                       {"stroke": {"modifier": "smooth", "dabs": [{"face": 0, "radius": 0.5}]}},)") +
            oneDab,
        "\"levels\": 1, ");
    const nlohmann::json smooth = Line("BeginStroke")["in"];
    EXPECT_EQ(smooth["modifier"], 1);
    EXPECT_EQ(smooth["tool"], 2);
    EXPECT_EQ(static_cast<float>(smooth["strengthScale"].get<double>()), 0.01f);
    EXPECT_EQ(smooth["attributes"]["builduprate"], 0.75);
    EXPECT_EQ(smooth["strengthBias"], 60.0) << "Smooth's own";
    const std::vector<float> table =
        NpyArray(At("arrays/" + smooth["falloff"].get<std::string>())).Values<float>();
    EXPECT_EQ(table.at(table.size() / 2), 1.0f) << "Smooth's own falloff: constant";
    EXPECT_FALSE(Line("ApplyDab")["in"].contains("tool"))
        << "the brush swaps the tool, not the host";
    EXPECT_EQ(Line("EndStroke")["out"]["tool"], 2);

    const nlohmann::json pinch = Line("BeginStroke", 1)["in"];
    EXPECT_EQ(pinch["tool"], 2);
    EXPECT_EQ(pinch["strengthBias"], 10.0);
    EXPECT_NE(pinch["falloff"], smooth["falloff"]);
}

TEST_F(ScriptTrace, StampHasItsPixelsAndTheMatrixOfEachDab) {
    FloatImage image;
    image.width = 2;
    image.height = 3;
    image.channels = 1;
    image.pixels = {0.0f, 0.25f, 0.5f, 0.75f, 1.0f, -2.0f};
    WriteFloatImageFile(folder.Path("wedge.tif"), image);
    Run(R"({"set": {"radius": 0.5, "stamp": {"path": "wedge.tif", "factor": 0.5}}},
           {"stroke": {"dabs": [{"face": 0}, {"face": 40}]}})",
        "\"levels\": 3, \"mirror\": [\"x\"], ");
    const nlohmann::json stamp = Line("BeginStroke")["in"]["stamp"];
    EXPECT_EQ(stamp["enabled"], true);
    EXPECT_EQ(stamp["name"], "wedge.tif");
    EXPECT_EQ(stamp["factor"], 0.5);
    EXPECT_EQ(stamp["width"], 2);
    EXPECT_EQ(stamp["height"], 3);
    const NpyArray pixels(At("arrays/" + stamp["pixels"].get<std::string>()));
    EXPECT_EQ(pixels.Shape(), "(3, 2, 1)");
    EXPECT_EQ(pixels.Values<float>(), image.pixels);
    std::set<std::string> matrices;
    for (const nlohmann::json& dab : LinesOf(trace, "ApplyDab")) {
        EXPECT_EQ(dab["in"]["stampMatrix"].size(), 16u);
        EXPECT_EQ(dab["in"]["stampFactor"], 0.5);
        EXPECT_FALSE(dab["in"].contains("stamp"));
        matrices.insert(dab["in"]["stampMatrix"].dump());
    }
    EXPECT_EQ(matrices.size(), 4u) << "two dabs, each on both sides and at its own position";
}

TEST_F(ScriptTrace, DabReportsItsEffect) {
    Run(R"({"set": {"direction": "surfaceNormal"}},
           {"stroke": {"dabs": [{"face": 0, "radius": 0.4}, {"face": 0, "radius": 0.4}]}})",
        "\"levels\": 3, \"renderers\": [0], ",
        1);
    const nlohmann::json first = Line("ApplyDab")["out"];
    EXPECT_EQ(KeysOf(first),
              (std::vector<std::string>{"bound",
                                        "box",
                                        "directionVector",
                                        "error",
                                        "facesTested",
                                        "messages",
                                        "notices",
                                        "recordCount",
                                        "visitStamp"}));
    EXPECT_EQ(first["directionVector"], Line("ApplyDab")["in"]["hit"]["normal"]);
    EXPECT_EQ(first["visitStamp"], Meta("before")["visitStamp"].get<int>() + 1);
    EXPECT_EQ(Line("ApplyDab", 1)["out"]["visitStamp"], first["visitStamp"].get<int>() + 1);
    EXPECT_EQ(first["recordCount"],
              NpyArray(At("dab-000001/m0/records.npy")).Values<StoredVertexInfo>().size());
    EXPECT_GT(first["facesTested"].size(), 4u);
    EXPECT_EQ(first["facesTested"][0][1], 1);

    // Every vertex that moved was reported to the renderer, and has a record.
    const auto before = NpyArray(At("before/m0/level-3/positions.npy")).Values<Vector>();
    const auto after = NpyArray(At("dab-000001/m0/level-3/positions.npy")).Values<Vector>();
    std::set<uint32_t> moved, told;
    for (uint32_t v = 0; v < before.size(); ++v)
        if (!SameBits(before[v], after[v])) moved.insert(v);
    for (const nlohmann::json& notice : first["notices"].at(0))
        told.insert(notice[0].get<uint32_t>());
    EXPECT_FALSE(moved.empty());
    EXPECT_TRUE(std::includes(told.begin(), told.end(), moved.begin(), moved.end()));
}

TEST_F(ScriptTrace, DabWithoutAHeadingWalksNothing) {
    Run(R"({"tool": "Smear"}, {"stroke": {"dabs": [{"face": 0, "radius": 0.5}]}})",
        "\"levels\": 2, \"renderers\": [1], ");
    const nlohmann::json out = Line("ApplyDab")["out"];
    EXPECT_EQ(out["box"], Line("ApplyDab")["in"]["box"]);
    EXPECT_EQ(out["facesTested"], nlohmann::json::array());
    EXPECT_EQ(out["notices"], nlohmann::json::array());
    EXPECT_TRUE(out["directionVector"].is_null());
    EXPECT_EQ(out["recordCount"], 0);
    EXPECT_EQ(out["bound"], "m0");
}

TEST_F(ScriptTrace, CoarseMeshIsReportedAsAMessage) {
    Run(R"({"stroke": {"dabs": [{"face": 0, "radius": 0.01}]}})");
    const nlohmann::json messages = Line("ApplyDab")["out"]["messages"];
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].get<std::string>().find("The mesh you are trying to sculpt"), 0u);
}

TEST_F(ScriptTrace, TriangleMeshReportsVerticesInsteadOfFaces) {
    folder.Fill("cube.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\nf 1 2 3\nf 2 4 3\n");
    Run(R"({"stroke": {"dabs": [{"face": 1, "radius": 5}]}})");
    const nlohmann::json tested = Line("ApplyDab")["out"]["facesTested"];
    ASSERT_EQ(tested.size(), 4u);
    EXPECT_EQ(tested[0][0], 1);
    EXPECT_EQ(tested[1][0], 3);
    EXPECT_EQ(tested[2][0], 2);
    EXPECT_EQ(tested[3][0], 0);
    EXPECT_EQ(Meta("after")["meshType"], 0);
}

TEST_F(ScriptTrace, WholeMeshReportsItsArgumentsAndAllSettings) {
    Run(R"({"tool": "Bulge"}, {"stroke": {"wholeMesh": {"strength": 0.25, "byFacing": true}}})",
        "\"levels\": 1, ");
    EXPECT_EQ(Calls(),
              (std::vector<std::string>{"SetActiveConfiguration",
                                        "SetActiveConfiguration",
                                        "BeginStroke",
                                        "ApplyToWholeMesh",
                                        "EndStroke"}));
    const nlohmann::json in = Line("ApplyToWholeMesh")["in"];
    EXPECT_EQ(in["mesh"], "m0");
    EXPECT_EQ(in["strength"], 0.25);
    EXPECT_EQ(in["byFacing"], true);
    EXPECT_EQ(in["tool"], Line("BeginStroke")["in"]["tool"]);
    EXPECT_EQ(in["hit"]["face"], 0);
    EXPECT_EQ(in["hit"]["mirror"], false);
    const auto faces = NpyArray(At("before/m0/level-1/face_vertex_indices.npy")).Values<uint32_t>();
    const auto places = NpyArray(At("before/m0/level-1/positions.npy")).Values<Vector>();
    EXPECT_EQ(static_cast<float>(in["hit"]["position"][0].get<double>()), places[faces[0]].x);
    const nlohmann::json atBegin = Line("BeginStroke")["in"];
    for (const auto& [name, value] : atBegin.items()) {
        if (name == "modifier" || name == "trigger") continue;
        EXPECT_EQ(in.value(name, nlohmann::json("absent")), value) << name;
    }
    const nlohmann::json out = Line("ApplyToWholeMesh")["out"];
    EXPECT_FALSE(out.contains("box"));
    EXPECT_EQ(out["recordCount"], 26);
    EXPECT_TRUE(out["directionVector"].is_null()) << "each vertex along its own normal";
}

TEST_F(ScriptTrace, StatesFollowEveryNthDab) {
    Run(R"({"stroke": {"dabs": [{"face": 0}, {"face": 1}, {"face": 2}, {"face": 3}, {"face": 4}]}},
           {"stroke": {"wholeMesh": {"strength": 0}}},
           {"stroke": {"dabs": [{"face": 0}]}})",
        "\"levels\": 1, ",
        2);
    for (int dab = 1; dab <= 7; ++dab)
        EXPECT_EQ(Has("dab-00000" + std::to_string(dab)), dab % 2 == 0 && dab <= 6) << dab;
    EXPECT_TRUE(Has("dab-000006/m0/records.npy"));
    EXPECT_FALSE(Has("after/m0/records.npy")) << "no change is open after the stroke";
}

TEST_F(ScriptTrace, StateBeforeIncludesTheSetUpOfTheFirstStroke) {
    Run(std::string(R"({"mask": "all"}, {"layer": {"add": "L"}}, )") + oneDab +
            R"(, {"mask": "clear"})",
        "\"levels\": 1, ");
    EXPECT_EQ(Meta("before")["freezeQuery"], 1);
    EXPECT_EQ(Meta("before")["hasLayer"], true);
    EXPECT_TRUE(Has("before/m0/layer_rest.npy"));
    EXPECT_EQ(Line("BeginStroke")["in"]["freezeQuery"], 1);
    EXPECT_EQ(Meta("after")["freezeQuery"], 1)
        << "taken after the last call, not after the last step";
}

TEST_F(ScriptTrace, ScriptWithoutAStrokeHasTwoEqualStates) {
    Run("", "\"levels\": 1, ");
    EXPECT_EQ(Calls(), std::vector<std::string>{"SetActiveConfiguration"});
    EXPECT_EQ(NpyArray(At("before/m0/level-1/positions.npy")).bytes,
              NpyArray(At("after/m0/level-1/positions.npy")).bytes);
}

TEST_F(ScriptTrace, LevelsBelowTheBoundOneKeepTheirPositions) {
    Run(oneDab, "\"levels\": 2, ");
    for (const char* level : {"level-0", "level-1"}) {
        EXPECT_EQ(NpyArray(At(std::string("before/m0/") + level + "/positions.npy")).bytes,
                  NpyArray(At(std::string("after/m0/") + level + "/positions.npy")).bytes);
    }
    EXPECT_NE(NpyArray(At("before/m0/level-2/positions.npy")).bytes,
              NpyArray(At("after/m0/level-2/positions.npy")).bytes);
}

TEST_F(ScriptTrace, ChangeOfLevelBetweenStrokesIsASeparateState) {
    Run(std::string(oneDab) + R"(, {"level": 1}, )" + oneDab, "\"levels\": 2, ");
    EXPECT_EQ(Line("HostChange")["in"],
              R"({"mesh": "m0", "reason": "level", "state": "change-000001"})"_json);
    EXPECT_EQ(Meta("before")["level"], 2);
    EXPECT_EQ(Meta("change-000001")["level"], 1);
}

TEST_F(ScriptTrace, ErrorOfTheBrushIsReportedAndTheLastStateWritten) {
    LevelChange::DropSpareMemory();
    // The limit is high enough for the levels and for some of the records.
    const std::string limit = std::to_string(MemoryAccount::Total() + 160000);
    const std::string reason = MessageOf<HostError>([&] {
        Run(R"({"set": {"radius": 2}}, {"stroke": {"dabs": [{"face": 0}]}}, {"tool": "Wax"})",
            "\"levels\": 4, \"memoryLimit\": " + limit + ", ");
    });
    MemoryAccount::SetLimit(std::numeric_limits<int64_t>::max());
    EXPECT_NE(reason.find("s.json: /steps/1: Out of memory"), std::string::npos) << reason;
    trace = ReadTrace(folder.Path("trace"));
    EXPECT_EQ(Line("ApplyDab")["out"]["error"],
              "Out of memory: the memory limit does not allow more");
    EXPECT_EQ(Calls().back(), "EndStroke");
    EXPECT_TRUE(Has("after/m0/meta.json"));
    EXPECT_FALSE(Has("after/m0/records.npy"));
}

TEST_F(ScriptTrace, MirrorCornersLeadAcrossATopologicalMirror) {
    Run(R"({"stroke": {"dabs": [{"face": 20, "radius": 0.5}]}})",
        "\"levels\": 1, \"mirror\": \"topological\", ");
    EXPECT_EQ(Line("BeginStroke")["in"]["mirrorMode"], 7);
    const std::vector<nlohmann::json> dabs = LinesOf(trace, "ApplyDab");
    ASSERT_EQ(dabs.size(), 2u);
    EXPECT_EQ(dabs[1]["in"]["hit"]["mirror"], true);
    EXPECT_EQ(dabs[1]["in"]["mirrorTransform"].size(), 16u);
    const NpyArray corners(At("before/m0/mirror_corners.npy"));
    EXPECT_EQ(corners.Shape(), "(24, 4, 3)");
    const auto answers = corners.Values<int32_t>();
    const auto faces = NpyArray(At("before/m0/level-1/face_vertex_indices.npy")).Values<uint32_t>();
    const auto places = NpyArray(At("before/m0/level-1/positions.npy")).Values<Vector>();
    for (std::size_t slot = 0; slot < faces.size(); ++slot) {
        const auto vertex = static_cast<std::size_t>(answers[slot * 3]);
        const auto face = static_cast<std::size_t>(answers[slot * 3 + 1]);
        const auto corner = static_cast<std::size_t>(answers[slot * 3 + 2]);
        ASSERT_LT(vertex, places.size());
        EXPECT_EQ(faces.at(face * 4 + corner), vertex);
        const Vector& here = places[faces[slot]];
        EXPECT_EQ(places[vertex], Vector(-here.x, here.y, here.z));
    }
}

TEST_F(ScriptTrace, MirrorCornersExistOnlyWithATopologicalMirror) {
    Run(oneDab, "\"mirror\": [\"x\", \"y\"], ");
    EXPECT_FALSE(Has("before/m0/mirror_corners.npy"));
}

}  // namespace
}  // namespace trovik::test
