// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/Falloff.h"
#include "framework/nodes/HostKernel.h"
#include "framework/nodes/SceneStream.h"

#include <gtest/gtest.h>

#include <limits>

namespace trovik {
namespace {

/// A brush with two tools that counts its events. The second tool starts with a higher strength.
class TwoToolBrush : public BrushOperation {
public:
    using BrushOperation::SetActiveConfiguration;

    void SetActiveConfiguration(BrushConfiguration* tool) override {
        BrushOperation::SetActiveConfiguration(tool);
        if (IsConfigurationInited(tool)) return;
        ++timesDefaultsTaken;
        SetBrushStrength(tool->ID() == 0 ? 15.0f : 100.0f);
        SetFalloffIndex(2);
        SetStamp(false, QString());
        hardness.SetValue(0.5f, true);
    }
    void OnNodeEvent(const Attribute&, NodeEventType) override { ++events; }
    const ClassDesc* RuntimeClass() const override { return Desc(); }
    static const ClassDesc* Desc() {
        static const ClassDesc desc(BrushOperation::StaticClass(),
                                    BrushOperation::StaticClass(),
                                    QStringLiteral("TwoToolBrush"),
                                    QStringLiteral("Two tools"),
                                    nullptr,
                                    0,
                                    1);
        return &desc;
    }

    AttributeInstance<float> hardness{this, QStringLiteral("hardness"), 0.5f};
    int timesDefaultsTaken = 0;
    int events = 0;
};

class ToolSettings : public testing::Test {
protected:
    ToolSettings() {
        HostKernel::Instance();
        if (soft != nullptr) return;
        soft = Row(0, "Soft");
        hard = Row(1, "Hard");
    }
    static BrushConfiguration* Row(uint32_t id, const char* name) {
        auto* row = new BrushConfiguration(TwoToolBrush::Desc(),
                                           id,
                                           QString::fromLatin1(name),
                                           QString::fromLatin1(name),
                                           PredefinedCategory::Sculpt,
                                           QString(),
                                           0);
        BrushOperation::AddConfiguration(row);
        return row;
    }

    static inline BrushConfiguration* soft = nullptr;
    static inline BrushConfiguration* hard = nullptr;
    TwoToolBrush brush;
};

TEST_F(ToolSettings, CatalogueKeepsItsRowsInOrder) {
    const uint32_t count = BrushOperation::ConfigurationCount();
    ASSERT_GE(count, 2u);
    EXPECT_EQ(BrushOperation::Configuration(count - 2), soft);
    EXPECT_EQ(BrushOperation::Configuration(count - 1), hard);
    EXPECT_EQ(BrushOperation::Configuration(count), nullptr);
    EXPECT_EQ(hard->ID(), 1u);
    EXPECT_EQ(hard->Category(), PredefinedCategory::Sculpt);
}

TEST_F(ToolSettings, ToolIsFoundByNameWithinItsClass) {
    EXPECT_TRUE(brush.SetActiveConfiguration(QStringLiteral("Hard")));
    EXPECT_EQ(brush.ActiveConfiguration(), hard);
    EXPECT_FALSE(brush.SetActiveConfiguration(QStringLiteral("Nothing")));
    EXPECT_EQ(brush.ActiveConfiguration(), hard);
    BrushOperation other;
    EXPECT_FALSE(other.BrushOperation::SetActiveConfiguration(QStringLiteral("Hard")));
}

TEST_F(ToolSettings, ToolUsesItsDefaultsOnlyOnFirstActivation) {
    brush.SetActiveConfiguration(soft);
    EXPECT_EQ(brush.BrushStrength(), 15.0f);
    EXPECT_FALSE(brush.IsConfigurationInited(soft)) << "it was never deactivated";
    brush.SetBrushStrength(33.0f);
    brush.hardness.SetValue(0.9f, true);
    brush.SetActiveConfiguration(hard);
    EXPECT_TRUE(brush.IsConfigurationInited(soft));
    EXPECT_EQ(brush.BrushStrength(), 100.0f);
    EXPECT_EQ(brush.hardness.Value(), 0.5f);
    brush.SetActiveConfiguration(soft);
    EXPECT_EQ(brush.BrushStrength(), 33.0f);
    EXPECT_EQ(brush.hardness.Value(), 0.9f);
    EXPECT_EQ(brush.timesDefaultsTaken, 2);
}

TEST_F(ToolSettings, ActivatingAToolTwiceKeepsUserSettings) {
    brush.SetActiveConfiguration(soft);
    brush.SetBrushStrength(33.0f);
    brush.SetActiveConfiguration(soft);
    EXPECT_EQ(brush.BrushStrength(), 33.0f);
    EXPECT_EQ(brush.timesDefaultsTaken, 1);
}

TEST_F(ToolSettings, AllSettingsOfAToolAreRestoredSilently) {
    brush.SetActiveConfiguration(soft);
    BrushOperation::Private& s = brush.Settings();
    brush.SetStrokeSmoothing(false, 0.2f);
    brush.SetSteadyStroke(true, 0.3f);
    brush.strokeFloatA.SetValue(40.0f, true);
    brush.strokeOptionC.SetValue(false, true);
    brush.strokeOptionD.SetValue(true, true);
    brush.directionAttribute.SetValue(5, true);
    brush.imprintPairAttribute.SetValue({true, 0.7f}, true);
    brush.SetStamp(true, QStringLiteral("mine.tif"));
    brush.SetStampRandomize(true);
    SetFalloffSamples(brush, {1.0f, 0.5f, 0.25f});
    s.stampTiled = s.stampInverted = s.stampBuildUp = true;
    s.stampFactor = 2.0f;
    s.stampOffset = -0.5f;
    s.stamp.randomTurn = 0.75f;
    s.strengthBias = 20.0f;
    s.sizeBias = 30.0f;
    s.orientedToSurface = false;
    brush.SetActiveConfiguration(hard);
    brush.SetStrokeSmoothing(true, 0.0f);
    brush.SetSteadyStroke(false, 0.0f);
    brush.strokeFloatA.SetValue(0.0f, true);
    brush.strokeOptionC.SetValue(true, true);
    brush.strokeOptionD.SetValue(false, true);
    brush.directionAttribute.SetValue(0, true);
    brush.imprintPairAttribute.SetValue({}, true);
    brush.SetStampRandomize(false);
    s.stampTiled = s.stampInverted = s.stampBuildUp = false;
    s.stampFactor = 1.0f;
    s.stampOffset = s.stamp.randomTurn = s.strengthBias = s.sizeBias = 0.0f;
    s.orientedToSurface = true;
    brush.events = 0;

    brush.SetActiveConfiguration(soft);
    EXPECT_EQ(brush.events, 0);
    EXPECT_EQ(brush.strokeSmoothingAttribute.Value(), (CheckableFloat{false, 0.2f}));
    EXPECT_EQ(brush.steadyStrokeAttribute.Value(), (CheckableFloat{true, 0.3f}));
    EXPECT_EQ(brush.strokeFloatA.Value(), 40.0f);
    EXPECT_FALSE(brush.PressureControlsBrushStrength());
    EXPECT_TRUE(brush.strokeOptionD.Value());
    EXPECT_EQ(brush.Direction(), 5);
    EXPECT_EQ(brush.imprintPairAttribute.Value(), (CheckableFloat{true, 0.7f}));
    EXPECT_TRUE(brush.IsMaskEnabled(-1));
    EXPECT_EQ(brush.MaskName(-1), QStringLiteral("mine.tif"));
    EXPECT_TRUE(brush.UsesStampRandomize());
    EXPECT_EQ(brush.Falloff(), QStringLiteral("custom"));
    ASSERT_EQ(brush.FalloffData().fill, 3u);
    EXPECT_EQ(brush.FalloffData().array[2], 0.25f);
    EXPECT_TRUE(s.stampTiled && s.stampInverted && s.stampBuildUp);
    EXPECT_EQ(s.stampFactor, 2.0f);
    EXPECT_EQ(s.stampOffset, -0.5f);
    EXPECT_EQ(s.stamp.randomTurn, 0.75f);
    EXPECT_EQ(s.strengthBias, 20.0f);
    EXPECT_EQ(s.sizeBias, 30.0f);
    EXPECT_FALSE(s.orientedToSurface);
}

TEST_F(ToolSettings, SizeIsCommonToAllTools) {
    brush.SetActiveConfiguration(soft);
    brush.SetBrushSize(10.0f);
    brush.SetActiveConfiguration(hard);
    brush.SetBrushSize(20.0f);
    brush.SetActiveConfiguration(soft);
    EXPECT_EQ(brush.BrushSize(), 20.0f);
}

TEST_F(ToolSettings, ResettingRestoresTheDefaultsOfTheActiveToolOnly) {
    brush.SetActiveConfiguration(soft);
    brush.SetBrushStrength(33.0f);
    brush.SetActiveConfiguration(hard);
    brush.SetBrushStrength(44.0f);
    brush.SetActiveConfiguration(soft);
    brush.ResetBrushConfiguration();
    EXPECT_EQ(brush.ActiveConfiguration(), soft);
    EXPECT_EQ(brush.BrushStrength(), 15.0f);
    EXPECT_FALSE(brush.IsConfigurationInited(soft));
    brush.SetActiveConfiguration(hard);
    EXPECT_EQ(brush.BrushStrength(), 44.0f);
}

TEST_F(ToolSettings, ConnectedAttributeStaysConnected) {
    AttributeInstance<float> source(nullptr, QStringLiteral("source"), 0.1f);
    brush.SetActiveConfiguration(soft);
    brush.hardness.SetValue(0.9f, true);
    brush.SetActiveConfiguration(hard);
    brush.hardness.Connect(source, true);
    brush.SetBrushStrength(77.0f);
    brush.SetActiveConfiguration(soft);
    EXPECT_EQ(brush.BrushStrength(), 15.0f);
    brush.SetActiveConfiguration(hard);
    EXPECT_EQ(brush.BrushStrength(), 77.0f) << "the data after the attribute is read correctly";
    source.SetValue(0.3f);
    EXPECT_EQ(brush.hardness.Value(), 0.3f);
}

TEST_F(ToolSettings, StoringDoesNotMakeAToolActive) {
    brush.StoreConfiguration(hard);
    EXPECT_TRUE(brush.IsConfigurationInited(hard));
    EXPECT_EQ(brush.ActiveConfiguration(), nullptr);
    brush.SetBrushStrength(1.0f);
    brush.RestoreConfiguration(hard);
    EXPECT_EQ(brush.BrushStrength(), 15.0f);
    brush.RestoreConfiguration(soft);
    EXPECT_EQ(brush.BrushStrength(), 15.0f) << "no settings of this tool were stored";
}

TEST_F(ToolSettings, BrushIsRestoredFromAScene) {
    brush.SetBrushSize(61.0f);
    brush.SetBrushStrength(62.0f);
    brush.SetFalloffIndex(4);
    brush.strokeFloatB = 9.0f;
    brush.SetStamp(true, QStringLiteral("x.tif"));
    brush.SetName(QStringLiteral("my brush"));
    SceneStream written;
    brush.Serialize(written);
    SceneStream read(written.ToBytes());
    TwoToolBrush other;
    other.Serialize(read);
    EXPECT_EQ(read.Remaining(), 0u);
    EXPECT_EQ(other.Name(), QStringLiteral("my brush"));
    EXPECT_EQ(other.BrushSize(), 61.0f);
    EXPECT_EQ(other.BrushStrength(), 62.0f);
    EXPECT_EQ(other.Falloff(), QStringLiteral("sharp"));
    EXPECT_EQ(other.FalloffData().array[255], 0.0f);
    EXPECT_EQ(other.strokeFloatB.Value(), 9.0f);
    EXPECT_EQ(other.MaskName(-1), QStringLiteral("x.tif"));
}

TEST_F(ToolSettings, ValuesOfAHostileSceneAreClamped) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    brush.Settings().size = 1e9f;
    brush.Settings().strength = nan;
    brush.Settings().strengthBias = 1000.0f;
    brush.Settings().sizeBias = nan;
    brush.Settings().stampFactor = nan;
    brush.Settings().falloffIndex = 4711;
    SceneStream written;
    brush.Serialize(written);
    SceneStream read(written.ToBytes());
    TwoToolBrush other;
    other.Serialize(read);
    EXPECT_EQ(other.BrushSize(), 100.0f);
    EXPECT_EQ(other.BrushStrength(), 0.0f);
    EXPECT_EQ(other.BrushStrengthBias(), 100.0f);
    EXPECT_EQ(other.BrushSizeBias(), 0.0f);
    EXPECT_EQ(other.MaskFactor(-1), 1.0f);
    EXPECT_EQ(other.FalloffIndex(), smoothFalloffIndex);
    EXPECT_EQ(other.FalloffData().fill, falloffSampleCount);
}

}  // namespace
}  // namespace trovik
