// SPDX-License-Identifier: Apache-2.0

/// \file Tests masks in stroke scripts. The amounts are read from saved scenes.
#include "framework/errors/HostError.h"
#include "framework/images/ImageFile.h"
#include "framework/multires/Steps.h"
#include "framework/script/ScriptRunner.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

using testing::HasSubstr;

/// A square from (-1, -1) to (1, 1) with two face groups, seen from (0, 0, 5) in a viewport of 400
/// pixels; 100 pixels are one unit.
class FreezeScript : public testing::Test {
protected:
    FreezeScript() {
        folder.Fill("quad.obj",
                    "v -1 -1 0\nv 0 -1 0\nv 1 -1 0\nv -1 1 0\nv 0 1 0\nv 1 1 0\n"
                    "g left\nf 1 2 5 4\ng right\nf 2 3 6 5\n");
    }

    /// Runs the steps on 8 x 16 quads. \return the document, saved and reopened.
    std::unique_ptr<Document> Run(const std::string& steps) {
        const std::string script = folder.Fill(
            "script.json",
            R"({"mesh": "quad.obj", "levels": 3, "camera": {"eye": [0, 0, 5], "target": [0, 0, 0],)"
            R"( "fieldOfView": 43.602818, "width": 400, "height": 400}, "steps": [)" +
                steps + R"(, {"save": "out.trovik"}]})");
        ScriptRunner(script, folder.Path("out"), {}).Run();
        return Document::OpenScene(folder.Path("out/out.trovik"));
    }
    std::vector<uint8_t> Amounts(const std::string& steps) {
        return FreezeAmounts(*Run(steps)->Geometry().Bound());
    }
    std::string ErrorOf(const std::string& steps) {
        return MessageOf<HostError>([&] { Run(steps); });
    }
    /// Expects the amount `amountAt(x, y)` at each position.
    template <typename AmountAt>
    void ExpectAmounts(const std::string& steps, AmountAt amountAt) {
        SCOPED_TRACE(steps);
        const auto document = Run(steps);
        const LevelMesh& level = *document->Geometry().Bound();
        std::size_t frozen = 0;
        for (uint32_t v = 0; v < level.VertexCount(); ++v) {
            const Vector p = level.Position(v);
            ASSERT_EQ(level.Freeze(v), amountAt(p.x, p.y)) << p.x << ", " << p.y;
            frozen += level.Freeze(v) != 0 ? 1u : 0u;
        }
        EXPECT_EQ(level.FrozenVertexCount(), frozen);
        EXPECT_GT(frozen, 0u);
    }

    TemporaryFolder folder;
};

TEST_F(FreezeScript, WordsAndRegionsAreStillAccepted) {
    ExpectAmounts(R"({"mask": "all"})", [](float, float) { return 127; });
    ExpectAmounts(R"({"mask": "all"}, {"mask": "clear"}, {"mask": "invert"})",
                  [](float, float) { return 127; });
    ExpectAmounts(R"({"mask": {"min": [0.01, -2, -1], "max": [2, 2, 1], "amount": 0.5}},
                     {"mask": {"min": [-2, -2, -1], "max": [2, 2, 1], "amount": 0.25}})",
                  [](float x, float) { return x > 0.01f ? 64 : 32; });
    ExpectAmounts(R"({"mask": {"center": [0, 0, 0], "radius": 0.61}})",
                  [](float x, float y) { return std::hypot(x, y) <= 0.61f ? 127 : 0; });
}

TEST_F(FreezeScript, ModesAndAmountsBlend) {
    const std::string half = R"({"mask": {"all": true, "amount": 0.5}},)";
    const auto with = [&half](const std::string& mode) {
        return half +
               R"({"mask": {"min": [0.01, -2, -1], "max": [2, 2, 1], "amount": 0.25, "mode": ")" +
               mode + R"("}})";
    };
    const auto expect = [&](const std::string& mode, int inside, int outside) {
        ExpectAmounts(with(mode), [&](float x, float) { return x > 0.01f ? inside : outside; });
    };
    expect("raise", 64, 64);
    expect("replace", 32, 0);
    expect("add", 96, 64);
    expect("subtract", 32, 64);
    expect("multiply", 16, 0);
}

TEST_F(FreezeScript, BoxLassoAndImageAreProjectedByTheCamera) {
    // No vertex is at x = 0.05.
    const auto right = [](float x, float) { return x > 0.05f ? 127 : 0; };
    ExpectAmounts(R"({"mask": {"box": [205, 0, 400, 400]}})", right);
    ExpectAmounts(R"({"mask": {"lasso": [[205, 0], [400, 0], [400, 400], [205, 400]]}})", right);
    ExpectAmounts(R"({"mask": {"lasso": [[205, 0], [400, 0], [400, 400], [205, 400]],
                                 "reach": "through", "amount": 0.5}})",
                  [](float x, float) { return x > 0.05f ? 64 : 0; });

    FloatImage image;
    image.width = 2;
    image.height = 1;
    image.channels = 2;
    image.pixels = {0.25f, 1.0f, 1.0f, 0.5f};
    WriteFloatImageFile(folder.Path("mask.tif"), image);
    // The distance between the pixel centres is the width of the mesh, so the mask is linear
    // between -1 and 1.
    ExpectAmounts(R"({"mask": {"image": {"file": "mask.tif", "over": [0, 0, 400, 400]}}})",
                  [](float x, float) {
                      const float share = std::clamp((x + 1.0f) * 0.5f, 0.0f, 1.0f);
                      return static_cast<int>(std::lround((0.25f + 0.75f * share) * 127.0f));
                  });
    ExpectAmounts(R"({"mask": {"image": {"file": "mask.tif", "channel": "alpha",
                                           "invert": true}, "mode": "replace"}})",
                  [](float x, float) {
                      const float share = std::clamp((x + 1.0f) * 0.5f, 0.0f, 1.0f);
                      return static_cast<int>(std::lround(0.5f * share * 127.0f));
                  });
}

TEST_F(FreezeScript, ReachSelectsTheSidesOfAClosedShape) {
    folder.Fill(
        "quad.obj",
        "v -1 -1 -1\nv 1 -1 -1\nv 1 1 -1\nv -1 1 -1\nv -1 -1 1\nv 1 -1 1\nv 1 1 1\nv -1 1 1\n"
        "f 1 4 3 2\nf 5 6 7 8\nf 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n");
    for (const auto& [reach, side] :
         {std::pair{"visible", 0.3f}, {"facing", 0.3f}, {"through", -2.0f}}) {
        const auto document =
            Run(std::string(R"({"mask": {"box": [0, 0, 400, 400], "reach": ")") + reach + R"("}})");
        LevelMesh& level = *document->Geometry().Bound();
        for (uint32_t v = 0; v < level.VertexCount(); ++v) {
            const float z = level.Position(v).z;
            if (z > side) {
                EXPECT_EQ(level.Freeze(v), 127) << reach;
            }
            if (z < -0.1f && side > -1.0f) {
                EXPECT_EQ(level.Freeze(v), 0) << reach;
            }
        }
    }
}

TEST_F(FreezeScript, GroupsAndConnectedComponentsAreParts) {
    ExpectAmounts(R"({"mask": {"group": "right"}})",
                  [](float x, float) { return x >= -1e-6f ? 127 : 0; });
    EXPECT_THAT(
        ErrorOf(R"({"mask": {"group": "top"}})"),
        HasSubstr("/steps/0/mask/group: the mesh has no group \"top\"; there are left, right"));
    folder.Fill("quad.obj",
                "v -1 -1 0\nv 0 -1 0\nv 0 1 0\nv -1 1 0\nv 0.1 -1 0\nv 1 -1 0\nv 1 1 0\nv 0.1 1 0\n"
                "f 1 2 3 4\nf 5 6 7 8\n");
    const auto right = [](float x, float) { return x > 0.05f ? 127 : 0; };
    ExpectAmounts(R"({"mask": {"component": {"vertex": 4}}})", right);
    ExpectAmounts(R"({"mask": {"component": {"surface": [0.7, 0, 1]}}})", right);
    ExpectAmounts(R"({"mask": {"component": {"pointer": [260, 190]}}})", right);
    EXPECT_THAT(ErrorOf(R"({"mask": {"component": {"pointer": [5, 5]}}})"),
                HasSubstr("/steps/0/mask/component: there is no surface"));
    EXPECT_THAT(ErrorOf(R"({"mask": {"component": {"vertex": 100000}}})"),
                HasSubstr("there is no vertex 100000"));
    EXPECT_THAT(ErrorOf(R"({"mask": {"component": {}}})"),
                HasSubstr("/steps/0/mask/component: needs one"));
}

TEST_F(FreezeScript, FiltersChangeTheExistingMask) {
    const std::string right = R"({"mask": {"group": "right"}},)";
    ExpectAmounts(right + R"({"mask": {"grow": 2}})",
                  [](float x, float) { return x >= -0.2501f ? 127 : 0; });
    ExpectAmounts(right + R"({"mask": {"shrink": 1}})",
                  [](float x, float) { return x >= 0.1249f ? 127 : 0; });
    ExpectAmounts(right + R"({"mask": {"grow": 1, "amount": 0.5}})", [](float x, float) {
        return x >= -1e-6f ? 127 : x >= -0.1251f ? 64 : 0;
    });
    ExpectAmounts(right + R"({"mask": {"blur": 1}})", [](float x, float) {
        // Each inner neighbour contributes 1/8. The two neighbours along y have the same amount as
        // the vertex, so the border of the group gets 1/2 + 1/4 + 1/8 = 7/8.
        if (x >= 0.1249f) return 127;
        if (x >= -1e-6f) return 111;
        return x >= -0.1251f ? 16 : 0;
    });
    ExpectAmounts(right + R"({"mask": {"blur": 3}}, {"undo": 1})",
                  [](float x, float) { return x >= -1e-6f ? 127 : 0; });
    // A blurred and sharpened mask is steeper than a blurred one.
    const auto blurred = Amounts(right + R"({"mask": {"blur": 6}})");
    const auto sharp = Amounts(right + R"({"mask": {"blur": 6}}, {"mask": {"sharpen": 1}})");
    uint32_t steeper = 0;
    for (std::size_t v = 0; v < blurred.size(); ++v) {
        const int way = std::abs(2 * sharp[v] - 127) - std::abs(2 * blurred[v] - 127);
        EXPECT_GE(way, -2);
        steeper += way > 0 ? 1u : 0u;
    }
    EXPECT_GT(steeper, 10u);
}

TEST_F(FreezeScript, FreezeToolMakesStrokesLikeAnyOtherTool) {
    const std::string tool =
        R"({"tool": "Freeze", "set": {"radius": 0.3, "falloff": "constant"}},)";
    const auto dab = [](float x, float y) { return std::hypot(x - 0.5f, y) <= 0.3f ? 127 : 0; };
    ExpectAmounts(tool + R"({"stroke": {"surface": [[0.5, 0, 0]]}})", dab);
    ExpectAmounts(tool + R"({"stroke": {"pointer": [[250, 200]]}})", dab);
    ExpectAmounts(tool + R"({"set": {"strength": 50}}, {"stroke": {"surface": [[0.5, 0, 0]]}})",
                  [&dab](float x, float y) { return (dab(x, y) + 1) / 2; });
    ExpectAmounts(tool + R"({"mirror": ["x"]}, {"stroke": {"surface": [[0.5, 0, 0]]}})",
                  [&dab](float x, float y) { return dab(std::abs(x), y); });
    ExpectAmounts(tool + R"({"mask": "all"},
                            {"stroke": {"surface": [[0.5, 0, 0]], "modifier": "invert"}})",
                  [&dab](float x, float y) { return 127 - dab(x, y); });
    ExpectAmounts(tool + R"({"stroke": {"surface": [[0.5, 0, 0]], "open": true}},
                            {"stroke": {"surface": [[0.5, 0, 0]], "continue": true}},
                            {"stroke": {"surface": [[-0.5, 0, 0]]}}, {"undo": 1})",
                  dab);
    ExpectAmounts(tool + R"({"stroke": {"wholeMesh": {"strength": 25}}})",
                  [](float, float) { return 32; });
}

TEST_F(FreezeScript, SculptingLeavesOnlyMaskedVerticesUnchanged) {
    const auto document = Run(R"({"tool": "Freeze", "set": {"radius": 0.3, "falloff": "constant"}},
        {"stroke": {"surface": [[0.5, 0, 0]]}},
        {"tool": "Sculpt", "set": {"radius": 3, "strength": 10, "falloff": "constant"}},
        {"stroke": {"surface": [[0.5, 0, 0]]}})");
    LevelMesh& level = *document->Geometry().Bound();
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const Vector p = level.Position(v);
        if (level.Freeze(v) == 127) {
            EXPECT_EQ(p.z, 0.0f);
        } else {
            EXPECT_GT(p.z, 0.0f);
        }
    }
    EXPECT_GT(level.FrozenVertexCount(), 10u);
    EXPECT_EQ(document->Brush().ActiveConfiguration()->Name(), QStringLiteral("Sculpt"));
}

TEST_F(FreezeScript, MasksAreCarriedBetweenLevelsAndPendingOnesAreSaved) {
    const std::string paint = R"({"level": 1}, {"mask": {"group": "right"}},)";
    const auto carried = Amounts(paint + R"({"level": 3})");
    ASSERT_THAT(carried, testing::Contains(127));
    // The result is the same if the scene is saved and reopened in between.
    auto document = Run(paint + R"({"mirror": []})");
    ASSERT_EQ(document->Geometry().BoundIndex(), 1u);
    EXPECT_EQ(document->Geometry().Level(3)->FrozenVertexCount(), 0u);
    document->BindLevel(3);
    EXPECT_EQ(FreezeAmounts(*document->Geometry().Bound()), carried);
    document->BindLevel(0);
    EXPECT_EQ(FreezeAmounts(*document->Geometry().Bound()),
              std::vector<uint8_t>(carried.begin(), carried.begin() + 6));
    // One undo step also reverts the propagated amounts.
    const auto undone = Run(paint + R"({"level": 3}, {"undo": 1})");
    EXPECT_EQ(undone->Geometry().Level(3)->FrozenVertexCount(), 0u);
    EXPECT_EQ(undone->Geometry().Level(2)->FrozenVertexCount(), 0u);
}

TEST_F(FreezeScript, RefusesInvalidArguments) {
    EXPECT_THAT(
        ErrorOf(R"({"mask": "most"})"),
        HasSubstr("/steps/0/mask: expected one of \"clear\", \"all\", \"invert\", got \"most\""));
    EXPECT_THAT(ErrorOf(R"({"mask": {"amount": 1}})"), HasSubstr("/steps/0/mask: needs"));
    EXPECT_THAT(ErrorOf(R"({"mask": {"center": [0, 0, 0]}})"), HasSubstr("/steps/0/mask: needs"));
    EXPECT_THAT(ErrorOf(R"({"mask": {"grow": 1, "blur": 1}})"),
                HasSubstr("\"grow\" and \"blur\" cannot be combined"));
    EXPECT_THAT(ErrorOf(R"({"mask": {"cavity": {"from": 2, "to": 1}}})"),
                HasSubstr("/steps/0/mask/cavity/from: must not be greater than"));
    EXPECT_THAT(ErrorOf(R"({"mask": {"image": {"file": "no.png"}}})"),
                HasSubstr("/steps/0/mask/image/file: "));
    EXPECT_THAT(ErrorOf(R"({"mask": {"mode": "most", "all": true}})"), HasSubstr("mode"));
    const std::string open =
        R"({"tool": "Freeze"}, {"stroke": {"surface": [[0, 0, 0]], "open": true}},)";
    EXPECT_THAT(ErrorOf(open + R"({"mask": "all"})"),
                HasSubstr("/steps/2/mask: a stroke of the freeze brush is open"));
    EXPECT_THAT(ErrorOf(open + R"({"undo": 1})"), HasSubstr("a stroke is open"));
    EXPECT_THAT(ErrorOf(R"({"tool": "Freeze", "set": {"buildUpRate": 1}})"),
                HasSubstr("/steps/0/set/buildUpRate: the brush has no setting builduprate"));
}

TEST_F(FreezeScript, CavitiesAreSelectedByCurvature) {
    folder.Fill("quad.obj",
                "v -1 -1 1\nv 0 -1 0\nv 1 -1 1\nv -1 1 1\nv 0 1 0\nv 1 1 1\n"
                "f 1 2 5 4\nf 2 3 6 5\n");
    const auto near = [](const std::string& cavity) {
        return R"({"mask": {"cavity": )" + cavity + "}}";
    };
    // Seen along the normals, the fold at x = 0 is a valley.
    const auto document = Run(near(R"({"size": 0.5})"));
    LevelMesh& level = *document->Geometry().Bound();
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const Vector p = level.Position(v);
        if (std::abs(p.x) < 0.05f && std::abs(p.y) < 0.9f) {
            EXPECT_EQ(level.Freeze(v), 127) << p.y;
        }
        if (std::abs(p.x) > 0.5f) {
            EXPECT_EQ(level.Freeze(v), 0) << p.x;
        }
    }
    EXPECT_EQ(Run(near(R"({"size": 0.5, "sign": "ridge"})"))->Geometry().Bound()->Freeze(0), 0);
    EXPECT_EQ(Amounts(near(R"({"size": 0.5, "sign": "both"})")), Amounts(near(R"({"size": 0.5})")));
}

}  // namespace
}  // namespace trovik::test
