// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/Falloff.h"
#include "framework/memory/MemoryAccount.h"
#include "framework/nodes/HostKernel.h"
#include "framework/nodes/SceneStream.h"
#include "host/BrushOperation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <vector>

namespace trovik {
namespace {

class BrushOperationTest : public testing::Test {
protected:
    BrushOperationTest() { HostKernel::Instance(); }
    ~BrushOperationTest() override { CheckableFloatArray::s_bActive = false; }

    BrushOperation brush;
};

TEST_F(BrushOperationTest, SizeAndStrengthAreClampedToTheirRange) {
    EXPECT_EQ(brush.MaxBrushSize(), 100.0f);
    EXPECT_EQ(brush.MaxBrushStrength(), 100.0f);
    brush.SetBrushSize(40.0f);
    brush.SetBrushStrength(60.0f);
    EXPECT_EQ(brush.BrushSize(), 40.0f);
    EXPECT_EQ(brush.BrushStrength(), 60.0f);
    brush.SetBrushSize(1000.0f);
    brush.SetBrushStrength(-3.0f);
    EXPECT_EQ(brush.BrushSize(), 100.0f);
    EXPECT_EQ(brush.BrushStrength(), 0.0f);
    brush.SetBrushSize(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(brush.BrushSize(), 0.0f);
}

TEST_F(BrushOperationTest, PressureScalesTheFractionThatIsNotFixed) {
    brush.SetBrushStrength(80.0f);
    brush.SetBrushSize(50.0f);
    brush.Settings().strengthBias = 25.0f;
    brush.Settings().sizeBias = 50.0f;
    EXPECT_EQ(brush.BrushStrengthBias(), 25.0f);
    EXPECT_EQ(brush.BrushSizeBias(), 50.0f);
    EXPECT_TRUE(brush.PressureControlsBrushStrength());
    EXPECT_EQ(brush.EffectiveBrushStrength(0.0f), 20.0f);
    EXPECT_EQ(brush.EffectiveBrushStrength(0.5f), 50.0f);
    EXPECT_EQ(brush.EffectiveBrushStrength(1.0f), 80.0f);
    EXPECT_EQ(brush.EffectiveBrushSize(0.5f), 50.0f) << "pressure does not control the size yet";
    brush.strokeOptionD = true;
    EXPECT_EQ(brush.EffectiveBrushSize(0.5f), 37.5f);
    brush.strokeOptionC = false;
    EXPECT_FALSE(brush.PressureControlsBrushStrength());
    EXPECT_EQ(brush.EffectiveBrushStrength(0.5f), 80.0f);
}

TEST_F(BrushOperationTest, SmoothingAndSteadyStrokeAreStoredInTheirAttributes) {
    brush.SetStrokeSmoothing(false, 0.25f);
    brush.SetSteadyStroke(true, 0.5f);
    EXPECT_FALSE(brush.UsesStrokeSmoothing());
    EXPECT_EQ(brush.StrokeSmoothingDistance(), 0.25f);
    EXPECT_TRUE(brush.UsesSteadyStroke());
    EXPECT_EQ(brush.SteadyStrokeDistance(), 0.5f);
    EXPECT_EQ(brush.steadyStrokeAttribute.Value(), (CheckableFloat{true, 0.5f}));
}

TEST_F(BrushOperationTest, FalloffIsSelectedByIndexOrByName) {
    EXPECT_EQ(brush.FalloffIndex(), smoothFalloffIndex);
    EXPECT_EQ(brush.FalloffData().fill, falloffSampleCount);
    brush.SetFalloffIndex(1);
    EXPECT_EQ(brush.Falloff(), QStringLiteral("linear"));
    EXPECT_EQ(brush.FalloffData().array[0], 1.0f);
    EXPECT_EQ(brush.FalloffData().array[51], 0.8f);
    brush.SetFalloff(QStringLiteral("constant"));
    EXPECT_EQ(brush.FalloffIndex(), 0);
    EXPECT_EQ(brush.FalloffData().array[255], 1.0f);
    brush.SetFalloff(QStringLiteral("no such curve"));
    EXPECT_EQ(brush.FalloffIndex(), 0);
    brush.SetFalloffIndex(99);
    EXPECT_EQ(brush.FalloffIndex(), smoothFalloffIndex);
}

TEST_F(BrushOperationTest, UserDefinedFalloffIsNamedCustom) {
    SetFalloffSamples(brush, {1.0f, 0.25f, 0.0f});
    EXPECT_EQ(brush.Falloff(), QStringLiteral("custom"));
    ASSERT_EQ(brush.FalloffData().fill, 3u);
    EXPECT_EQ(brush.FalloffData().array[1], 0.25f);
    brush.SetFalloffIndex(customFalloffIndex);
    EXPECT_EQ(brush.FalloffData().fill, 3u);
    brush.SetFalloffIndex(0);
    brush.SetFalloffIndex(customFalloffIndex);
    EXPECT_EQ(brush.FalloffIndex(), smoothFalloffIndex)
        << "there is no user-defined curve any more";
    SetFalloffSamples(brush, {});
    EXPECT_EQ(brush.FalloffData().fill, 0u);
}

// A brush reads the borrowed array for the duration of a stroke.
TEST_F(BrushOperationTest, BorrowedArrayStaysValidWhenTheFalloffChanges) {
    using Samples = std::vector<float>;
    const auto content = [](const Store<float>& store) {
        return Samples(store.array, store.array + store.fill);
    };
    BrushOperation other;
    other.SetFalloffIndex(4);
    SceneStream written;
    other.Serialize(written);
    const std::function<void()> changes[] = {[&] { brush.SetFalloffIndex(0); },
                                             [&] { brush.SetFalloff(QStringLiteral("cone")); },
                                             [&] { SetFalloffSamples(brush, Samples(256, 0.5f)); },
                                             [&] { SetFalloffSamples(brush, Samples(9000, 0.5f)); },
                                             [&] { SetFalloffSamples(brush, {}); },
                                             [&] { brush = other; },
                                             [&] {
                                                 SceneStream read(written.ToBytes());
                                                 brush.Serialize(read);
                                             }};
    for (const bool isCustom : {false, true}) {
        for (const auto& change : changes) {
            brush.SetFalloffIndex(1);
            if (isCustom) SetFalloffSamples(brush, Samples(256, 0.125f));
            brush.BeginStroke(nullptr, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
            const Store<float>& lent = brush.FalloffData();
            const float* const array = lent.array;
            const Samples before = content(lent);
            change();
            // Reads the falloff during the stroke, as a panel does, and changes it again.
            const Samples chosen = content(brush.FalloffData());
            EXPECT_NE(chosen, before);
            brush.SetFalloffIndex(3);
            EXPECT_EQ(lent.array, array);
            EXPECT_EQ(content(lent), before);
            brush.EndStroke();
            EXPECT_EQ(content(lent), before) << "some brushes keep it until their next stroke";
            change();
            brush.BeginStroke(nullptr, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
            EXPECT_EQ(content(brush.FalloffData()), chosen) << "the next stroke uses the new one";
            brush.EndStroke();
        }
    }
}

TEST_F(BrushOperationTest, BorrowedArraysAreFreedWhenTheNextStrokeBegins) {
    const auto stroke = [this] {
        brush.BeginStroke(nullptr, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
        for (int i = 0; i < 50; ++i) {
            SetFalloffSamples(brush, std::vector<float>(1000, static_cast<float>(i)));
            brush.FalloffData();
        }
        brush.EndStroke();
    };
    stroke();
    const int64_t once = MemoryAccount::Total();
    for (int i = 0; i < 5; ++i) stroke();
    EXPECT_EQ(MemoryAccount::Total(), once);
}

TEST_F(BrushOperationTest, FailedFalloffAllocationKeepsThePreviousFalloff) {
    SetFalloffSamples(brush, {1.0f, 0.5f});
    MemoryAccount::SetLimit(MemoryAccount::Total() + 100);
    EXPECT_THROW(SetFalloffSamples(brush, std::vector<float>(5000, 1.0f)), Error*);
    EXPECT_THROW(brush.SetFalloffIndex(0), Error*);
    MemoryAccount::SetLimit(std::numeric_limits<int64_t>::max());
    EXPECT_EQ(brush.Falloff(), QStringLiteral("custom"));
    ASSERT_EQ(brush.FalloffData().fill, 2u);
    EXPECT_EQ(brush.FalloffData().array[1], 0.5f);
}

TEST_F(BrushOperationTest, FacingFalloffIsProcessWideButItsAnglesArePerBrush) {
    BrushOperation other;
    EXPECT_FALSE(brush.UsesFalloffBasedOnFacingAngle());
    brush.SetFalloffBasedOnFacingAngle(true, 20.0f, 30.0f);
    EXPECT_TRUE(other.UsesFalloffBasedOnFacingAngle());
    EXPECT_EQ(brush.facingAngleStart, 20.0f);
    EXPECT_EQ(brush.facingAngleRange, 30.0f);
    EXPECT_EQ(other.facingAngleStart, 0.0f);
    EXPECT_EQ(other.facingAngleRange, 90.0f);
}

TEST_F(BrushOperationTest, MaskImageReturnsTheStampForIndexMinusOne) {
    BrushOperation::Private& settings = brush.Settings();
    EXPECT_FALSE(brush.IsMaskEnabled(-1));
    brush.SetStamp(true, QStringLiteral("Stamps/knife.tif"));
    settings.stampTiled = settings.stampInverted = settings.stampBuildUp = true;
    settings.stampFactor = 0.5f;
    settings.stampOffset = 0.25f;
    settings.stampMatrix.m[3][0] = 7.0f;
    EXPECT_TRUE(brush.IsMaskEnabled(-1));
    EXPECT_EQ(brush.MaskName(-1), QStringLiteral("Stamps/knife.tif"));
    EXPECT_TRUE(brush.IsMaskTiled(-1));
    EXPECT_TRUE(brush.IsMaskInverted(-1));
    EXPECT_TRUE(brush.MaskBuildUp(-1));
    EXPECT_EQ(brush.MaskFactor(-1), 0.5f);
    EXPECT_EQ(brush.MaskOffset(-1), 0.25f);
    EXPECT_EQ(brush.MaskMatrix(-1).m[3][0], 7.0f);

    for (const int mask : {0, 1, 2}) {
        EXPECT_FALSE(brush.IsMaskEnabled(mask));
        EXPECT_FALSE(brush.IsMaskTiled(mask));
        EXPECT_EQ(brush.MaskFactor(mask), 1.0f);
        EXPECT_TRUE(brush.MaskName(mask).isEmpty());
    }
    settings.mirroredStampRead = true;
    EXPECT_TRUE(brush.IsMaskEnabled(1));
    EXPECT_FALSE(brush.IsMaskEnabled(2));
}

TEST_F(BrushOperationTest, WithoutAnImageTheStampIsEmpty) {
    const BrushOperation other;
    ASSERT_NE(brush.MaskImage(-1), nullptr);
    EXPECT_EQ(brush.MaskImage(-1)->Width(), 0u);
    EXPECT_EQ(brush.MaskImage(-1)->Height(), 0u);
    EXPECT_EQ(brush.MaskImage(-1), other.MaskImage(1));
    EXPECT_EQ(brush.MaskOpacityImage(-1)->Width(), 0u);
}

TEST_F(BrushOperationTest, StrokeBeginsWithoutAHeadingAndReportsItsInversion) {
    brush.SetPreviousPatchPosition({1, 2, 3});
    brush.SetDirectionVector({0, 0, 1});
    EXPECT_EQ(brush.Settings().directionVector, Vector(0, 0, 1));
    brush.BeginStroke(nullptr, BrushOperation::ModifierInvert, BrushOperation::TriggerStroke);
    EXPECT_EQ(brush.PreviousPatchPosition(), Vector());
    EXPECT_FALSE(brush.Settings().directionVectorSet);
    EXPECT_TRUE(brush.IsInverted());
    brush.EndStroke();
    EXPECT_FALSE(brush.IsInverted());
    brush.BeginStroke(nullptr, BrushOperation::ModifierSmooth, BrushOperation::TriggerStroke);
    EXPECT_FALSE(brush.IsInverted());
}

TEST_F(BrushOperationTest, AssignmentCopiesTheSettings) {
    BrushOperation other;
    other.SetBrushSize(12.0f);
    other.SetBrushStrength(34.0f);
    SetFalloffSamples(other, {1.0f, 0.0f});
    other.SetStamp(true, QStringLiteral("a.tif"));
    other.Settings().stampFactor = 3.0f;
    other.directionAttribute = 4;
    other.strokeFloatA = 66.0f;
    other.strokeOptionE = true;
    MirrorConfiguration mirror;
    mirror.SetMirrorMode(MirrorConfiguration::Topological);
    other.SetMirrorConfig(mirror);
    EXPECT_EQ(&(brush = other), &brush);
    EXPECT_EQ(brush.BrushSize(), 12.0f);
    EXPECT_EQ(brush.BrushStrength(), 34.0f);
    EXPECT_EQ(brush.Falloff(), QStringLiteral("custom"));
    EXPECT_EQ(brush.FalloffData().fill, 2u);
    EXPECT_TRUE(brush.IsMaskEnabled(-1));
    EXPECT_EQ(brush.MaskName(-1), QStringLiteral("a.tif"));
    EXPECT_EQ(brush.MaskFactor(-1), 3.0f);
    EXPECT_EQ(brush.Direction(), 4);
    EXPECT_EQ(brush.strokeFloatA.Value(), 66.0f);
    EXPECT_TRUE(brush.IsSnapToCurve());
    EXPECT_EQ(brush.MirrorConfig().MirrorMode(), 7);
}

TEST_F(BrushOperationTest, QueriesReturnTheirFixedValues) {
    EXPECT_EQ(brush.StrokeDrawMode(), 0);
    EXPECT_FALSE(brush.IsImprintTool());
    EXPECT_TRUE(brush.NonImprintQueryA());
    EXPECT_TRUE(brush.NonImprintQueryB());
    EXPECT_TRUE(brush.AlwaysTrueQuery());
    EXPECT_FALSE(brush.CustomPicker());
    EXPECT_EQ(brush.AttributeHolderNode(), &brush);
    EXPECT_EQ(brush.AlternateBehaviorCount(), 0u);
    EXPECT_EQ(brush.BuildUpRate(), 1.0f);
    EXPECT_EQ(brush.RuntimeClass(), BrushOperation::StaticClass());
    brush.SetOrientedToSurface(false);
    EXPECT_FALSE(brush.IsOrientedToSurface());
    brush.SetStampRandomize(true);
    EXPECT_TRUE(brush.UsesStampRandomize());
}

TEST(MirrorConfiguration, TransformsThroughItsPointMap) {
    MirrorConfiguration mirror;
    EXPECT_EQ(mirror.MirrorMode(), MirrorConfiguration::Off);
    Matrix map;
    map.m[0][0] = -1.0f;
    map.m[3][0] = 4.0f;
    mirror.SetPointMap(map);
    EXPECT_EQ(mirror.Transform({1, 2, 3}, 1.0f, nullptr), Vector(3, 2, 3));
    EXPECT_EQ(mirror.Transform({1, 2, 3}, 0.0f, nullptr), Vector(-1, 2, 3));
}

}  // namespace
}  // namespace trovik
