// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/Falloff.h"
#include "tests/fixture/StrokeFixture.h"
#include "tests/stroke/FakeMesh.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace trovik::test {
namespace {

/// A brush that counts activations.
class CountingBrush : public SwiftStroke {
public:
    using SwiftStroke::SetActiveConfiguration;
    void SetActiveConfiguration(BrushConfiguration* configuration) override {
        ++activations;
        SwiftStroke::SetActiveConfiguration(configuration);
    }
    int activations = 0;
};

TEST(StrokeBegin, CubesTheBuildUpRate) {
    StrokeFixture bench(FlatGrid(2));
    for (const auto& [rate, cube] : {std::pair{0.5f, 0.125f}, {1.0f, 1.0f}, {0.0f, 0.0f}}) {
        bench.brush->buildUpRate.SetValue(rate, true);
        bench.Begin();
        EXPECT_EQ(bench.brush->buildUpRateCubed, cube);
        // A change during a stroke takes effect in the next stroke.
        bench.brush->buildUpRate.SetValue(0.75f, true);
        bench.Dab(bench.HitFace(0), 0.5f);
        EXPECT_EQ(bench.brush->buildUpRateCubed, cube);
        bench.End();
    }
}

TEST(StrokeBegin, SmoothModifierMakesTheWholeStrokeSmooth) {
    StrokeFixture bench(FlatGrid(2));
    bench.Activate(Tool::Flatten);
    BrushConfiguration* const flatten = bench.brush->ActiveConfiguration();
    bench.Begin(BrushOperation::ModifierSmooth);
    EXPECT_EQ(bench.brush->ActiveConfiguration(), smoothConfiguration);
    EXPECT_EQ(bench.brush->configurationBeforeSmooth, flatten);
    EXPECT_FALSE(bench.brush->inTemporarySmooth);
    EXPECT_TRUE(bench.brush->isSmooth);
    EXPECT_FALSE(bench.brush->isPlaneTool);
    bench.Dab(bench.HitFace(0), 0.5f);
    EXPECT_EQ(bench.brush->planeDabCount, 0u);
    bench.End();
    EXPECT_EQ(bench.brush->ActiveConfiguration(), flatten);
    EXPECT_EQ(bench.brush->configurationBeforeSmooth, nullptr);
    EXPECT_FALSE(bench.brush->isSmooth);
    EXPECT_TRUE(bench.brush->isPlaneTool);
}

TEST(StrokeBegin, SmoothModifierOnSmoothActivatesNothing) {
    StrokeFixture bench(FlatGrid(2));
    auto counting = std::make_unique<CountingBrush>();
    CountingBrush& brush = *counting;
    bench.brush = std::move(counting);
    bench.Activate(Tool::Smooth);
    brush.activations = 0;
    bench.Begin(BrushOperation::ModifierSmooth);
    EXPECT_EQ(brush.configurationBeforeSmooth, nullptr);
    bench.Dab(bench.HitFace(0), 0.5f);
    bench.End();
    EXPECT_EQ(brush.activations, 0);
    EXPECT_EQ(brush.ActiveConfiguration(), smoothConfiguration);
}

TEST(StrokeBegin, ActivationByTheHostDuringAStrokeCancelsTheToolReturn) {
    StrokeFixture bench(FlatGrid(2));
    bench.Activate(Tool::Flatten);
    bench.Begin(BrushOperation::ModifierSmooth);
    bench.brush->SetActiveConfiguration(QStringLiteral("Wax"));
    bench.End();
    EXPECT_EQ(bench.brush->ActiveConfiguration()->ID(), static_cast<uint32_t>(Tool::Wax));
}

TEST(StrokeBegin, InversionNegatesStrengthOrPlaneOrNothing) {
    StrokeFixture bench(FlatGrid(2));
    struct Case {
        Tool tool;
        float strength, plane;
    };
    for (const Case& c : {Case{Tool::Sculpt, -1.0f, 1.0f},
                          Case{Tool::Smear, -1.0f, 1.0f},
                          Case{Tool::Pinch, -1.0f, 1.0f},
                          Case{Tool::Smooth, 1.0f, 1.0f},
                          Case{Tool::Amplify, 1.0f, -1.0f},
                          Case{Tool::Flatten, 1.0f, -1.0f},
                          Case{Tool::Scrape, 1.0f, -1.0f},
                          Case{Tool::Fill, 1.0f, -1.0f},
                          Case{Tool::Wax, 1.0f, -1.0f},
                          Case{Tool::Bulge, -1.0f, 1.0f},
                          Case{Tool::Imprint, -1.0f, 1.0f}}) {
        bench.Activate(c.tool);
        bench.Begin(BrushOperation::ModifierInvert);
        EXPECT_EQ(bench.brush->strokeStrengthScale, c.strength);
        EXPECT_EQ(bench.brush->strokePlaneSign, c.plane);
        bench.End();
        bench.Begin();
        EXPECT_EQ(bench.brush->strokeStrengthScale, 1.0f);
        EXPECT_EQ(bench.brush->strokePlaneSign, 1.0f);
        bench.End();
    }
}

TEST(StrokeBegin, SmoothModifierWithoutAToolBeginsNothing) {
    StrokeFixture bench(FlatGrid(2));
    const auto before = BitsOf(bench.Mesh());
    bench.brush = std::make_unique<SwiftStroke>();
    SwiftStroke& brush = *bench.brush;
    ASSERT_EQ(brush.ActiveConfiguration(), nullptr);
    // The falloff of an earlier stroke is still set.
    bench.Begin();
    bench.End();
    ASSERT_NE(brush.falloffTable, nullptr);
    bench.Begin(BrushOperation::ModifierSmooth);
    EXPECT_FALSE(brush.strokeActive);
    EXPECT_EQ(brush.mesh, nullptr);
    EXPECT_EQ(brush.configurationBeforeSmooth, nullptr);
    EXPECT_TRUE(bench.Dab(bench.HitFace(0), 1.0f).IsEmpty());
    brush.ApplyToWholeMesh(&bench.Mesh(), 1.0f, false);
    EXPECT_EQ(brush.mesh, nullptr);
    bench.End();
    EXPECT_EQ(brush.ActiveConfiguration(), nullptr);
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
    // The next stroke is an ordinary one.
    bench.Activate(Tool::Sculpt);
    bench.Stroke(bench.HitFace(0), 1.0f);
    EXPECT_NE(BitsOf(bench.Mesh()), before);
}

TEST(StrokeBegin, OtherTriggersReleaseTheMeshAndSculptNothing) {
    CallLog log;
    FakeGeometry geometry("A", log);
    StrokeFixture bench(FlatGrid(2));
    bench.Activate(Tool::Flatten);
    SwiftStroke& brush = *bench.brush;
    // A binding that was not ended is dropped without being unlocked.
    brush.SetMesh(&geometry.level);
    ASSERT_NE(brush.mesh, nullptr);
    log.clear();
    brush.planeDabCount = 5;
    brush.BeginStroke(&bench.Mesh(), BrushOperation::ModifierSmooth, BrushOperation::TriggerOther);
    EXPECT_EQ(brush.mesh, nullptr);
    EXPECT_FALSE(brush.strokeActive);
    EXPECT_EQ(brush.planeDabCount, 5u);
    EXPECT_TRUE(log.empty());
    EXPECT_TRUE(brush.isSmooth);
    brush.EndStroke();
    EXPECT_TRUE(brush.isPlaneTool);
    EXPECT_FALSE(brush.isSmooth);
    EXPECT_TRUE(log.empty());
    // The mesh/change pair remains until a stroke closes it.
    EXPECT_EQ(brush.meshChanges.fill, 1u);
    bench.Begin();
    bench.End();
    EXPECT_EQ(log, (CallLog{"finish A0 keep alone", "delete A0"}));
}

TEST(StrokeBegin, MeshScaleDeterminesStrengthAndInverseScale) {
    CallLog log;
    FakeGeometry geometry("A", log);
    StrokeFixture bench(FlatGrid(2));
    SwiftStroke& brush = *bench.brush;
    const auto begin = [&](const Vector& scale) {
        geometry.place.scale = scale;
        brush.BeginStroke(
            &geometry.level, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
        brush.EndStroke();
        return static_cast<Vector>(brush.brushSpace->inverseScale);
    };
    EXPECT_EQ(begin({2.0f, 2.0f, 2.0f}), Vector(0.5f, 0.5f, 0.5f));
    EXPECT_NEAR(brush.strokeStrengthScale, 0.5f, 1e-6f);
    EXPECT_EQ(brush.strokeStrengthScale, 1.0f / powf(8.0f, 0.33333334f));
    EXPECT_EQ(brush.brushSpace->inverseScale.W(), 0.0f);
    EXPECT_EQ(begin({1.0f, 2.0f, 4.0f}), Vector(1.0f, 0.5f, 0.25f));
    EXPECT_NEAR(brush.strokeStrengthScale, 0.5f, 1e-6f);
    EXPECT_EQ(begin({0.0f, 1.0f, 1.0f}), Vector(1.0f, 1.0f, 1.0f));
    EXPECT_EQ(brush.strokeStrengthScale, 0.0f);
    EXPECT_EQ(begin({1.0f, 1.0f, 1.0f}), Vector(1.0f, 1.0f, 1.0f));
    EXPECT_EQ(brush.strokeStrengthScale, 1.0f);
}

TEST(StrokeBegin, MirroredMeshGetsTheSameStepsAsAnUnmirroredOne) {
    StrokeFixture bench(FlatGrid(2));
    for (const Vector& scale :
         {Vector(-2.0f, 2.0f, 2.0f), Vector(-2.0f, -2.0f, 2.0f), Vector(-2.0f, -2.0f, -2.0f)}) {
        bench.geometry->Transform().Set(scale, {}, {});
        bench.Begin();
        EXPECT_NEAR(bench.brush->strokeStrengthScale, 0.5f, 1e-6f);
        bench.End();
    }
}

TEST(StrokeBegin, WithoutAMeshTheFirstDabBinds) {
    StrokeFixture bench(FlatGrid(2));
    bench.geometry->Transform().Set({2.0f, 2.0f, 2.0f}, {}, {});
    bench.Stroke(bench.HitFace(0), 0.5f);
    SwiftStroke& brush = *bench.brush;
    EXPECT_NEAR(brush.strokeStrengthScale, 0.5f, 1e-6f);
    brush.BeginStroke(nullptr, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    EXPECT_EQ(brush.strokeStrengthScale, 1.0f);
    EXPECT_EQ(static_cast<Vector>(brush.brushSpace->inverseScale), Vector(0.5f, 0.5f, 0.5f));
    EXPECT_EQ(brush.mesh, nullptr);
    EXPECT_TRUE(brush.strokeActive);
    bench.Dab(bench.HitFace(0), 0.5f);
    EXPECT_EQ(static_cast<Mesh*>(brush.mesh), &bench.Mesh());
    EXPECT_EQ(brush.meshChanges.fill, 1u);
    EXPECT_TRUE(brush.strokeActive);
    brush.EndStroke();
    EXPECT_FALSE(brush.strokeActive);
}

TEST(StrokeBegin, MeshWithZeroScaleAlongAnAxisMovesNothing) {
    StrokeFixture bench(FlatGrid(4));
    bench.geometry->Transform().Set({0.0f, 1.0f, 1.0f}, {}, {});
    const auto before = BitsOf(bench.Mesh());
    bench.Begin();
    EXPECT_EQ(bench.brush->strokeStrengthScale, 0.0f);
    SurfacePoint hit = bench.HitFace(5);
    bench.Dab(hit, 1.0f);
    EXPECT_GT(*bench.brush->CurrentChange()->recordCount, 0u);
    bench.End();
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
}

TEST(StrokeBegin, SmoothingDistanceDeterminesTheRefinementInterval) {
    StrokeFixture bench(FlatGrid(2));
    SwiftStroke& brush = *bench.brush;
    brush.useTessellator = true;
    const auto interval = [&](bool on, float distance) {
        brush.SetStrokeSmoothing(on, distance);
        brush.refineDabCount = 7;
        bench.Begin();
        EXPECT_EQ(brush.refineDabCount, 0u);
        bench.End();
        return brush.refineInterval;
    };
    EXPECT_EQ(interval(true, 0.3f), 1u);
    EXPECT_EQ(interval(true, 0.25f), 3u);
    EXPECT_EQ(interval(true, 0.2f), 3u);
    EXPECT_EQ(interval(true, 0.15f), 3u);
    EXPECT_EQ(interval(true, 0.12f), 4u);
    EXPECT_EQ(interval(true, 0.1f), 4u);
    EXPECT_EQ(interval(true, 0.0625f), 8u);
    EXPECT_EQ(interval(true, 0.0f), 16u);
    EXPECT_EQ(interval(true, -1.0f), 16u);
    EXPECT_EQ(interval(true, 0.3f), 1u);
    EXPECT_EQ(interval(false, 0.0625f), 1u);
    brush.useTessellator = false;
    brush.SetStrokeSmoothing(true, 0.0625f);
    brush.refineDabCount = 7;
    bench.Begin();
    bench.End();
    EXPECT_EQ(brush.refineInterval, 1u);
    EXPECT_EQ(brush.refineDabCount, 7u);
}

TEST(StrokeBegin, BorrowsTheFalloffTable) {
    StrokeFixture bench(FlatGrid(2));
    SwiftStroke& brush = *bench.brush;
    brush.setRadius(4.0f);
    bench.Begin();
    const Store<float>& samples = brush.FalloffData();
    EXPECT_EQ(brush.falloffTable, samples.array);
    EXPECT_EQ(brush.falloffLast, static_cast<int32_t>(samples.fill) - 1);
    EXPECT_EQ(brush.falloffLastFloat, static_cast<float>(samples.fill - 1));
    EXPECT_EQ(brush.falloffScale, brush.falloffLastFloat * 0.25f);
    bench.End();
    EXPECT_EQ(brush.falloffTable, samples.array);
}

TEST(StrokeBegin, KeepsItsFalloffWhateverTheHostChanges) {
    const std::function<void(StrokeFixture&)> changes[] = {
        [](StrokeFixture& bench) { bench.brush->SetFalloffIndex(0); },
        [](StrokeFixture& bench) {
            SetFalloffSamples(*bench.brush, {0.0f, 1.0f});
        },
        [](StrokeFixture& bench) {
            SetFalloffSamples(*bench.brush, std::vector<float>(3000, 0.75f));
        },
        // The next two functions apply the tool's own defaults and the settings from its last use.
        [](StrokeFixture& bench) { bench.brush->ResetBrushConfiguration(); },
        [](StrokeFixture& bench) {
            bench.brush->SetActiveConfiguration(bench.brush->ActiveConfiguration());
        },
        [](StrokeFixture& bench) {
            SwiftStroke other;
            SetFalloffSamples(other, {0.25f, 0.5f, 0.0f});
            static_cast<BrushOperation&>(*bench.brush) = other;
        }};
    const auto bits = [](const std::function<void(StrokeFixture&)>& change) {
        StrokeFixture bench(FlatGrid(16));
        SetFalloffSamples(*bench.brush, {1.0f, 0.9f, 0.4f, 0.2f, 0.0f});
        bench.Begin();
        bench.Dab(bench.HitFace(100), 3.0f);
        if (change) {
            change(bench);
            SetFalloffSamples(*bench.brush, {0.6f, 0.7f, 0.8f, 0.9f, 1.0f});
            bench.brush->setBuildUpRate(1.0f);
            bench.brush->directionAttribute.SetValue(0, true);
        }
        bench.Dab(bench.HitFace(186), 3.0f);
        bench.End();
        return BitsOf(bench.Mesh());
    };
    const auto expected = bits({});
    StrokeFixture other(FlatGrid(16));
    SetFalloffSamples(*other.brush, {0.6f, 0.7f, 0.8f, 0.9f, 1.0f});
    other.Begin();
    other.Dab(other.HitFace(100), 3.0f);
    other.Dab(other.HitFace(186), 3.0f);
    other.End();
    ASSERT_NE(BitsOf(other.Mesh()), expected) << "the falloff is used";
    for (const auto& change : changes) EXPECT_EQ(bits(change), expected);
}

TEST(StrokeBegin, EmptyFalloffCountsAsMissing) {
    StrokeFixture bench(FlatGrid(2));
    SetFalloffSamples(*bench.brush, {});
    const auto before = BitsOf(bench.Mesh());
    bench.Begin();
    EXPECT_EQ(bench.brush->falloffTable, nullptr);
    const AxisAlignedBoundingBox box = bench.Dab(bench.HitFace(0), 1.0f);
    EXPECT_TRUE(box.IsEmpty());
    EXPECT_EQ(bench.brush->planeDabCount, 0xffffffffu);
    bench.End();
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
}

TEST(StrokeBegin, ClearsPlaneStateScratchAndCounter) {
    StrokeFixture bench(FlatGrid(2));
    SwiftStroke& brush = *bench.brush;
    bench.Begin();
    bench.Dab(bench.HitFace(0), 1.0f);
    EXPECT_NE(brush.patchVertexList, nullptr);
    EXPECT_GE(brush.patchVertexListCapacity, 4);
    EXPECT_NE(strokeVertexCount, 0u);
    bench.End();
    EXPECT_EQ(brush.patchVertexList, nullptr);
    EXPECT_EQ(brush.patchVertexListCapacity, 0);
    for (int pass = 0; pass < 2; ++pass) {
        brush.planeDistances[pass] = 3.0f;
        brush.directions[pass] = Vector(1.0f, 2.0f, 3.0f);
        brush.planePoints[pass] = Vector(1.0f, 2.0f, 3.0f);
    }
    bench.Begin();
    EXPECT_EQ(strokeVertexCount, 0u);
    EXPECT_EQ(brush.planeDabCount, 0xffffffffu);
    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_EQ(brush.planeDistances[pass], 0.0f);
        EXPECT_EQ(brush.directions[pass], Vector());
        EXPECT_EQ(brush.planePoints[pass], Vector());
    }
    EXPECT_EQ(brush.spareScratch, nullptr);
    EXPECT_EQ(brush.spareScratchSize, 0u);
    bench.End();
}

TEST(StrokeEnd, FinishesChangesInTheOrderOfTheirBinding) {
    CallLog log;
    FakeGeometry a("A", log);
    FakeGeometry b("B", log);
    StrokeFixture bench(FlatGrid(2));
    SwiftStroke& brush = *bench.brush;
    const uint32_t versionOfA = a.level.Version();
    brush.BeginStroke(&a.level, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    bench.Dab(a.Hit(), 1.0f);
    bench.Dab(b.Hit(), 1.0f);
    EXPECT_EQ(a.level.Version(), versionOfA + 1);
    EXPECT_EQ(log,
              (CallLog{"lock A", "unlock A at version " + std::to_string(versionOfA), "lock B"}));
    log.clear();
    const uint32_t versionOfB = b.level.Version();
    brush.coarseMeshWarned = true;
    brush.EndStroke();
    EXPECT_EQ(log,
              (CallLog{"finish A0 keep alone",
                       "delete A0",
                       "finish B0 keep join",
                       "delete B0",
                       "unlock B at version " + std::to_string(versionOfB)}));
    EXPECT_EQ(b.level.Version(), versionOfB + 1);
    EXPECT_EQ(brush.meshChanges.array, nullptr);
    EXPECT_EQ(brush.meshChanges.capacity, 0u);
    EXPECT_EQ(brush.meshChanges.fill, 0u);
    EXPECT_EQ(brush.mesh, nullptr);
    EXPECT_FALSE(brush.strokeActive);
    EXPECT_FALSE(brush.coarseMeshWarned);
}

TEST(StrokeEnd, PairsOfAnUnboundStrokeAreClosedByALaterOne) {
    CallLog log;
    FakeGeometry a("A", log);
    FakeGeometry b("B", log);
    b.level.lockable = false;
    StrokeFixture bench(FlatGrid(2));
    SwiftStroke& brush = *bench.brush;
    brush.BeginStroke(&a.level, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    bench.Dab(b.Hit(), 1.0f);
    EXPECT_EQ(brush.mesh, nullptr);
    brush.coarseMeshWarned = true;
    log.clear();
    brush.EndStroke();
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(brush.meshChanges.fill, 1u);
    EXPECT_TRUE(brush.coarseMeshWarned);
    bench.Begin();
    bench.End();
    EXPECT_EQ(log, (CallLog{"finish A0 keep alone", "delete A0"}));
    EXPECT_EQ(brush.meshChanges.fill, 0u);
}

TEST(StrokeEnd, ErrorOfFinishIsThrownAfterTheStrokeHasEnded) {
    CallLog log;
    FakeGeometry a("A", log);
    FakeGeometry b("B", log);
    a.level.finishThrows = true;
    StrokeFixture bench(FlatGrid(2));
    SwiftStroke& brush = *bench.brush;
    brush.BeginStroke(&a.level, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    bench.Dab(b.Hit(), 1.0f);
    log.clear();
    EXPECT_THROW(brush.EndStroke(), std::runtime_error);
    ASSERT_EQ(log.size(), 5u);
    log.pop_back();
    EXPECT_EQ(log,
              (CallLog{"finish A0 keep alone", "delete A0", "finish B0 keep join", "delete B0"}));
    EXPECT_EQ(brush.meshChanges.fill, 0u);
    EXPECT_EQ(brush.mesh, nullptr);
    EXPECT_FALSE(brush.strokeActive);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
    bench.Begin();
    bench.End();
}

TEST(StrokeEnd, MeshReportsAStrokeExactlyBetweenBeginAndEnd) {
    CallLog log;
    FakeGeometry a("A", log);
    FakeGeometry b("B", log);
    StrokeFixture bench(FlatGrid(2));
    SwiftStroke& brush = *bench.brush;
    EXPECT_TRUE(brush.IsStrokeFree());
    brush.BeginStroke(&a.level, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    EXPECT_EQ(a.level.lastUnlocker, static_cast<MeshUnlocker*>(&brush));
    EXPECT_TRUE(a.level.freeAtLock);
    EXPECT_FALSE(brush.IsStrokeFree());
    bench.Dab(b.Hit(), 1.0f);
    EXPECT_TRUE(b.level.freeAtLock);
    EXPECT_FALSE(brush.IsStrokeFree());
    brush.EndStroke();
    EXPECT_TRUE(brush.IsStrokeFree());
}

TEST(StrokeEnd, WithoutABindingFinishDoesNothing) {
    StrokeFixture bench(FlatGrid(2));
    const uint32_t version = bench.Mesh().Version();
    bench.brush->FinishMesh();
    EXPECT_EQ(bench.Mesh().Version(), version);
    EXPECT_EQ(bench.brush->mesh, nullptr);
}

}  // namespace
}  // namespace trovik::test
