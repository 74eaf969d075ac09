// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/BrushSettings.h"
#include "tests/brush/RecordingKernel.h"
#include "tests/brush/ToolRows.h"

#include <gtest/gtest.h>

#include <iterator>

namespace trovik::test {
namespace {

/// The properties of a tool, listed independently of the brush. The members have the order of the
/// table's columns.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding)
struct Expected {
    Tool tool;
    bool smooth, pinch, smear, bulge, wax, plane;
    bool patchNormal;
    float clampMin, clampMax, offsetFactor, sign, strengthScale;
    float strength;
    CheckableFloat smoothing;
    float rate;
    /// The cube of the build-up rate, if the tool sets it together with the rate; -1 otherwise.
    float cube;
    const char* stamp;
    bool stampEnabled;
    int falloff;
    float floatA, floatB;
};

constexpr float far = 100000000.0f;
constexpr CheckableFloat usual{true, 0.0625f};
constexpr Expected expectations[] = {
    {Tool::Sculpt, false, false, false, false, false, false, true,  -far, far,   0.0f,
     1.0f,         1.0f,  15.0f, usual, 0.5f,  -1.0f, "",    false, 2,    25.0f, 0.0f},
    {Tool::Smear, false, false, true,  false, false, false, true,  -far, far,   0.0f,
     1.0f,        1.0f,  15.0f, usual, 0.5f,  -1.0f, "",    false, 2,    25.0f, 0.0f},
    {Tool::Pinch, false, true,  false, false, false, false, true,  -far, far,   0.0f,
     1.0f,        0.01f, 15.0f, usual, 0.5f,  -1.0f, "",    false, 2,    25.0f, 0.0f},
    {Tool::Smooth, true, false,  false, false, false, false, true,  -far, far,   0.0f,
     1.0f,         1.0f, 100.0f, usual, 0.5f,  -1.0f, "",    false, 2,    25.0f, 0.0f},
    {Tool::Amplify, false, false, false, false, false, true, true,  -far, far,   0.0f,
     -1.0f,         0.2f,  15.0f, usual, 0.5f,  -1.0f, "",   false, 2,    25.0f, 0.0f},
    {Tool::Flatten, false, false, false, false, false, true, false, -far, far,   0.0f,
     1.0f,          1.0f,  15.0f, usual, 0.5f,  -1.0f, "",   false, 2,    25.0f, 0.0f},
    {Tool::Scrape, false, false, false, false, false, true, false, -far, 0.0f,  0.0f,
     1.0f,         1.0f,  15.0f, usual, 0.5f,  -1.0f, "",   false, 2,    25.0f, 0.0f},
    {Tool::Fill, false, false, false, false, false, true, false, 0.0f, far,   0.0f,
     1.0f,       1.0f,  15.0f, usual, 0.5f,  -1.0f, "",   false, 2,    25.0f, 0.0f},
    {Tool::Wax, false, false, false,        false, true,  true, false, -far, far,   0.1f,
     1.0f,      0.5f,  15.0f, {true, 0.1f}, 0.5f,  -1.0f, "",   false, 2,    25.0f, 0.0f},
    {Tool::Bulge, false, false, false, true, false, false, true,  -far, far,   0.0f,
     1.0f,        1.0f,  15.0f, usual, 0.5f, -1.0f, "",    false, 2,    25.0f, 0.0f},
    {Tool::Spray, false, false, false, false, false, false, true,   -far,
     far,         0.0f,  1.0f,  1.0f,  15.0f, usual, 0.5f,  0.125f, "Stamps/bw_brickTile.tif",
     true,        2,     25.0f, 0.0f},
    {Tool::Repeat, false, false, false, false, false, false, true,   -far,
     far,          0.0f,  1.0f,  1.0f,  15.0f, usual, 0.5f,  0.125f, "Stamps/bw_scale.tif",
     true,         2,     25.0f, 0.0f},
    {Tool::Knife, false, false, false, false, false,           false, true,   -far,
     far,         0.0f,  1.0f,  1.0f,  15.0f, {true, 0.2625f}, 0.5f,  0.125f, "Stamps/knife.tif",
     true,        2,     25.0f, 0.0f},
    {Tool::Foamy, false,     false, false, false,
     false,       false,     true,  -far,  far,
     0.0f,        1.0f,      1.0f,  15.0f, {false, 0.1125f},
     0.25f,       0.015625f, "",    false, 2,
     25.0f,       0.0f},
    {Tool::Imprint, false, false,
     false,         false, false,
     false,         true,  -far,
     far,           0.0f,  1.0f,
     1.0f,          15.0f, {false, 0.1125f},
     1.0f,          1.0f,  "Stamps/rubble.tif",
     true,          7,     100.0f,
     100.0f},
};
static_assert(std::size(expectations) == 15);

void ExpectFlags(const SwiftStroke& brush, const Expected& e) {
    EXPECT_EQ(brush.isSmooth, e.smooth);
    EXPECT_EQ(brush.isPinch, e.pinch);
    EXPECT_EQ(brush.isSmear, e.smear);
    EXPECT_EQ(brush.isBulge, e.bulge);
    EXPECT_EQ(brush.isWax, e.wax);
    EXPECT_EQ(brush.isPlaneTool, e.plane);
    EXPECT_EQ(brush.usePatchNormal, e.patchNormal);
    EXPECT_EQ(brush.planeClampMin, e.clampMin);
    EXPECT_EQ(brush.planeClampMax, e.clampMax);
    EXPECT_EQ(brush.planeOffsetFactor, e.offsetFactor);
    EXPECT_EQ(brush.planeDirectionSign, e.sign);
    EXPECT_EQ(brush.brushStrengthScale, e.strengthScale);
}

class EachTool : public ::testing::TestWithParam<std::size_t> {
protected:
    const Expected& e = expectations[GetParam()];
};
INSTANTIATE_TEST_SUITE_P(Tools,
                         EachTool,
                         ::testing::Range(std::size_t{0}, std::size_t{15}),
                         [](const auto& tested) { return std::string(toolNames[tested.param]); });

TEST_P(EachTool, SetsItsFlagsPlaneAndStrengthScale) {
    SwiftStroke brush;
    brush.SetActiveConfiguration(RowOf(e.tool));
    EXPECT_EQ(brush.ActiveConfiguration(), RowOf(e.tool));
    ExpectFlags(brush, e);
}

TEST_P(EachTool, KeepsNoStateOfThePreviousTool) {
    for (const Tool before : allTools) {
        SwiftStroke brush;
        brush.SetActiveConfiguration(RowOf(before));
        brush.SetActiveConfiguration(RowOf(e.tool));
        ExpectFlags(brush, e);
    }
}

TEST_P(EachTool, UsesItsDefaultsOnFirstActivation) {
    SwiftStroke brush;
    // None of these values is the default of any tool.
    brush.SetBrushStrength(1.0f);
    brush.SetStrokeSmoothing(false, 0.9f);
    brush.SetSteadyStroke(true, 0.9f);
    brush.strokeFloatA.SetValue(1.0f, true);
    brush.strokeFloatB.SetValue(1.0f, true);
    brush.resetOptionA.SetValue(9, true);
    brush.separatorOption.SetValue(9, true);
    brush.updatePlane.SetValue(false, true);
    brush.globalPlane.SetValue(true, true);
    brush.affectAllLayers.SetValue(false, true);
    brush.buildUpRate.SetValue(0.75f, true);
    brush.SetStamp(true, QStringLiteral("left over.tif"));
    brush.Settings().stamp.randomize = true;
    brush.SetFalloffIndex(4);
    brush.directionAttribute.SetValue(9, true);
    brush.drawFromCenter.SetValue(false, true);
    brush.imprintPairAttribute.SetValue({true, 0.1f}, true);
    brush.buildUpRateCubed = 77.0f;

    brush.SetActiveConfiguration(RowOf(e.tool));
    const bool imprint = e.tool == Tool::Imprint;
    EXPECT_EQ(brush.BrushStrength(), e.strength);
    EXPECT_EQ(brush.strokeSmoothingAttribute.Value(), e.smoothing);
    EXPECT_EQ(brush.steadyStrokeAttribute.Value(), (CheckableFloat{false, 0.04f}));
    EXPECT_EQ(brush.strokeFloatA.Value(), e.floatA);
    EXPECT_EQ(brush.strokeFloatB.Value(), e.floatB);
    EXPECT_EQ(brush.resetOptionA.Value(), 0);
    EXPECT_EQ(brush.separatorOption.Value(), 0);
    EXPECT_TRUE(brush.updatePlane.Value());
    EXPECT_FALSE(brush.globalPlane.Value());
    EXPECT_TRUE(brush.affectAllLayers.Value());
    EXPECT_EQ(brush.buildUpRate.Value(), e.rate);
    EXPECT_EQ(brush.BuildUpRate(), e.rate);
    EXPECT_EQ(brush.buildUpRateCubed, e.cube < 0.0f ? 77.0f : e.cube);
    EXPECT_EQ(brush.Settings().stamp.path.toStdString(), e.stamp);
    EXPECT_EQ(brush.IsMaskEnabled(-1), e.stampEnabled);
    EXPECT_EQ(brush.UsesStampRandomize(), e.tool == Tool::Spray);
    EXPECT_EQ(brush.FalloffIndex(), e.falloff);
    EXPECT_EQ(brush.Direction(), 1);
    EXPECT_EQ(brush.drawFromCenter.Value(), imprint);
    EXPECT_EQ(brush.imprintPairAttribute.Value(),
              imprint ? (CheckableFloat{false, 0.6f}) : (CheckableFloat{true, 0.1f}));
}

TEST_P(EachTool, RestoresUserSettingsOnSecondActivation) {
    SwiftStroke brush;
    brush.SetActiveConfiguration(RowOf(e.tool));
    brush.SetBrushStrength(42.0f);
    brush.SetFalloffIndex(5);
    brush.buildUpRate.SetValue(0.75f, true);
    brush.SetStrokeSmoothing(false, 0.3f);
    brush.directionAttribute.SetValue(6, true);
    brush.SetStamp(true, QStringLiteral("mine.tif"));
    brush.SetActiveConfiguration(RowOf(e.tool));
    ExpectFlags(brush, e);
    EXPECT_EQ(brush.BrushStrength(), 42.0f);
    EXPECT_EQ(brush.FalloffIndex(), 5);
    EXPECT_EQ(brush.buildUpRate.Value(), 0.75f);
    EXPECT_EQ(brush.strokeSmoothingAttribute.Value(), (CheckableFloat{false, 0.3f}));
    EXPECT_EQ(brush.Direction(), 6);
    EXPECT_EQ(brush.Settings().stamp.path, QStringLiteral("mine.tif"));

    // The values are also kept while another tool is active.
    const Tool other = e.tool == Tool::Sculpt ? Tool::Wax : Tool::Sculpt;
    brush.SetActiveConfiguration(RowOf(other));
    EXPECT_EQ(brush.BrushStrength(), 15.0f);
    brush.SetActiveConfiguration(RowOf(e.tool));
    EXPECT_EQ(brush.BrushStrength(), 42.0f);
    EXPECT_EQ(brush.FalloffIndex(), 5);
}

TEST_P(EachTool, ShowsItsPanelWhicheverWasShownBefore) {
    for (const bool shownBefore : {false, true}) {
        SwiftStroke brush;
        for (Attribute* attribute : brush.Attributes()) attribute->SetVisible(shownBefore);
        brush.separatorOption.SetSeparator(shownBefore);
        brush.SetActiveConfiguration(RowOf(e.tool));

        const bool imprint = e.tool == Tool::Imprint;
        const bool directed = e.tool != Tool::Smear && e.tool != Tool::Pinch &&
                              e.tool != Tool::Smooth && e.tool != Tool::Bulge;
        EXPECT_EQ(brush.directionAttribute.IsVisible(), directed);
        EXPECT_EQ(brush.separatorOption.HasSeparator(), !e.smooth && !e.plane);
        EXPECT_EQ(brush.affectAllLayers.IsVisible(), e.smooth);
        EXPECT_EQ(brush.globalPlane.IsVisible(), e.plane);
        EXPECT_EQ(brush.updatePlane.IsVisible(), e.plane);
        EXPECT_EQ(brush.drawFromCenter.IsVisible(), imprint);
        EXPECT_EQ(brush.buildUpRate.IsVisible(), !imprint);
        EXPECT_EQ(brush.strokeOptionC.IsVisible(), !imprint);
        EXPECT_EQ(brush.strokeOptionD.IsVisible(), !imprint);
        EXPECT_EQ(brush.strokeFloatA.IsVisible(), !imprint);
        EXPECT_EQ(brush.strokeFloatB.IsVisible(), !imprint);
        EXPECT_EQ(brush.strokeSmoothingAttribute.IsVisible(), !imprint);
        EXPECT_EQ(brush.steadyStrokeAttribute.IsVisible(), !imprint);
    }
}

TEST_P(EachTool, SwitchesTheLayerPanelOnceUnderItsOwnCrashFlag) {
    NeedTools();
    RecordingKernel kernel;
    {
        SwiftStroke brush;
        EXPECT_EQ(kernel.crashFlags, 0u);
        brush.SetActiveConfiguration(RowOf(e.tool));
        EXPECT_EQ(kernel.crashFlags, 0u);
    }
    ASSERT_EQ(kernel.layerPanelSwitches.size(), 1u);
    EXPECT_EQ(kernel.layerPanelSwitches[0].type, 0);
    EXPECT_EQ(kernel.layerPanelSwitches[0].flags, 4u);
    EXPECT_EQ(kernel.crashFlags, 0u);
}

/// A brush that records the events it receives.
class ListeningBrush : public SwiftStroke {
public:
    void OnNodeEvent(const Attribute& attribute, NodeEventType type) override {
        heard.push_back({&attribute, type});
        SwiftStroke::OnNodeEvent(attribute, type);
    }
    struct Heard {
        const Attribute* attribute;
        NodeEventType type;
    };
    std::vector<Heard> heard;
};

TEST_P(EachTool, ActivationIsSilentExceptForTheImprintPair) {
    NeedTools();
    ListeningBrush brush;
    brush.heard.clear();
    brush.SetActiveConfiguration(RowOf(e.tool));
    if (e.tool == Tool::Imprint) {
        ASSERT_EQ(brush.heard.size(), 1u);
        EXPECT_EQ(brush.heard[0].attribute, &brush.imprintPairAttribute);
        EXPECT_EQ(brush.heard[0].type, NodeEventValueChanged);
    } else {
        EXPECT_TRUE(brush.heard.empty());
    }
}

TEST_P(EachTool, ResetEndsWithABrushSizeOf25AndTheDefaults) {
    SwiftStroke brush;
    brush.SetActiveConfiguration(RowOf(e.tool));
    brush.SetBrushSize(60.0f);
    brush.SetBrushStrength(42.0f);
    brush.ResetBrushConfiguration();
    EXPECT_EQ(brush.BrushSize(), 25.0f);
    EXPECT_EQ(brush.BrushStrength(), e.strength);
    EXPECT_EQ(brush.ActiveConfiguration(), RowOf(e.tool));
    ExpectFlags(brush, e);
}

TEST(ToolActivation, UnknownIdEndsWithTheBaseValues) {
    NeedTools();
    BrushConfiguration unknown(SwiftStroke::StaticClass(),
                               15,
                               QStringLiteral("Unknown"),
                               QStringLiteral("Unknown"),
                               PredefinedCategory::Sculpt,
                               QString(),
                               0);
    SwiftStroke brush;
    brush.SetActiveConfiguration(RowOf(Tool::Wax));
    brush.SetActiveConfiguration(&unknown);
    Expected e = expectations[0];
    ExpectFlags(brush, e);
    EXPECT_EQ(brush.BrushStrength(), 15.0f);
    EXPECT_TRUE(brush.directionAttribute.IsVisible());
    EXPECT_FALSE(brush.globalPlane.IsVisible());
}

TEST(ToolActivation, NameFindsTheRow) {
    NeedTools();
    SwiftStroke brush;
    EXPECT_TRUE(brush.SetActiveConfiguration(QStringLiteral("Flatten")));
    EXPECT_EQ(brush.ActiveConfiguration()->ID(), 5u);
    EXPECT_TRUE(brush.isPlaneTool);
    EXPECT_FALSE(brush.SetActiveConfiguration(QStringLiteral("Hammer")));
    EXPECT_EQ(brush.ActiveConfiguration()->ID(), 5u);
}

TEST(ToolActivation, ReturnToTheOldToolOutlivesOnlyTheTemporarySwitch) {
    SwiftStroke brush;
    brush.SetActiveConfiguration(RowOf(Tool::Flatten));
    brush.configurationBeforeSmooth = RowOf(Tool::Flatten);
    brush.inTemporarySmooth = true;
    brush.SetActiveConfiguration(RowOf(Tool::Smooth));
    EXPECT_EQ(brush.configurationBeforeSmooth, RowOf(Tool::Flatten));
    brush.inTemporarySmooth = false;
    brush.SetActiveConfiguration(RowOf(Tool::Smooth));
    EXPECT_EQ(brush.configurationBeforeSmooth, nullptr);
}

TEST(ToolActivation, BuildUpSetterUpdatesTheCube) {
    NeedTools();
    SwiftStroke brush;
    brush.setBuildUpRate(0.25f);
    EXPECT_EQ(brush.buildUpRate.Value(), 0.25f);
    EXPECT_EQ(brush.buildUpRateCubed, 0.015625f);
}

}  // namespace
}  // namespace trovik::test
