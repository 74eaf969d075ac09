// SPDX-License-Identifier: Apache-2.0

/// \file Tests that the crash-flag counter identifies the functions on the stack, and is zero after
/// they have returned.
#include "tests/fixture/StrokeFixture.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/stroke/FakeMesh.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

uint32_t Flags() { return g_pKernel->crashFlags; }

/// Records the counter at each notification.
class FlagRenderer : public MeshRenderer {
public:
    explicit FlagRenderer(float updateFactor) : factor(updateFactor) {}
    void rendererVertexChanged(uint32_t, uint32_t) override { flags.push_back(Flags()); }
    float rendererUpdateFactor() const override { return factor; }
    std::vector<uint32_t> flags;
    float factor;
};

TEST(CrashFlags, IdentifyTheFunctionsAroundABinding) {
    CallLog log;
    FakeGeometry a("A", log);
    FakeGeometry b("B", log);
    StrokeFixture bench(FlatGrid(2));
    bench.brush->BeginStroke(&a.level, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    EXPECT_EQ(a.level.flagsAtLock, 0x20u + 0x100u);
    EXPECT_EQ(Flags(), 0u);
    bench.Dab(b.Hit(), 1.0f);
    EXPECT_EQ(a.level.flagsAtUnlock, 0x400u + 0x100u + 0x80u);
    EXPECT_EQ(b.level.flagsAtLock, 0x400u + 0x100u);
    EXPECT_EQ(Flags(), 0u);
    bench.End();
    EXPECT_EQ(b.level.flagsAtUnlock, 0x40u + 0x80u);
    EXPECT_EQ(Flags(), 0u);
}

TEST(CrashFlags, IdentifyWalkAndKernel) {
    for (const float factor : {1.0f, 0.0f}) {
        StrokeFixture bench(FlatGrid(3));
        auto* renderer = new FlagRenderer(factor);
        bench.Mesh().AddChild(renderer);
        bench.Stroke(bench.HitFace(4), 0.8f);
        ASSERT_FALSE(renderer->flags.empty());
        // Renderers are notified per patch from the traversal, or per vertex from inside the
        // kernel.
        const uint32_t expected = 0x400u + 16384u + (factor == 0.0f ? 65536u : 0u);
        for (const uint32_t flags : renderer->flags) EXPECT_EQ(flags, expected);
    }
}

TEST(CrashFlags, IdentifyTheVertexWalk) {
    StrokeFixture bench(Icosahedron());
    auto* renderer = new FlagRenderer(0.0f);
    bench.Mesh().AddChild(renderer);
    bench.Stroke(bench.HitVertex(0), 0.5f);
    ASSERT_FALSE(renderer->flags.empty());
    for (const uint32_t flags : renderer->flags) EXPECT_EQ(flags, 0x400u + 2048u);
}

TEST(CrashFlags, AreZeroAfterEachCall) {
    StrokeFixture bench(Cube(), 2);
    SwiftStroke& brush = *bench.brush;
    EXPECT_EQ(Flags(), 0u);
    for (const Tool tool : {Tool::Sculpt, Tool::Smooth, Tool::Flatten}) {
        bench.Activate(tool);
        EXPECT_EQ(Flags(), 0u);
        brush.directionAttribute.SetValue(1, true);
        bench.Begin();
        EXPECT_EQ(Flags(), 0u);
        bench.Dab(bench.HitFace(5), 0.3f);
        EXPECT_EQ(Flags(), 0u);
        bench.End();
        EXPECT_EQ(Flags(), 0u);
        bench.Begin();
        brush.ApplyToWholeMesh(&bench.Mesh(), 1.0f, false);
        EXPECT_EQ(Flags(), 0u);
        brush.ApplyToWholeMesh(&bench.Mesh(), 1.0f, true);
        EXPECT_EQ(Flags(), 0u);
        bench.End();
    }
    brush.FinishMesh();
    EXPECT_EQ(Flags(), 0u);
    brush.OnNodeEvent(brush.globalPlane, NodeEventValueChanged);
    EXPECT_EQ(Flags(), 0u);
    brush.BeginStroke(nullptr, BrushOperation::ModifierNone, BrushOperation::TriggerOther);
    EXPECT_EQ(Flags(), 0u);
    brush.EndStroke();
    EXPECT_EQ(Flags(), 0u);
}

TEST(CrashFlags, DabsThatEndEarlyLeaveNone) {
    StrokeFixture bench(FlatGrid(2));
    // No stroke has begun, so there is no falloff.
    bench.Dab(bench.HitFace(0), 1.0f);
    EXPECT_EQ(Flags(), 0u);
    bench.Activate(Tool::Smear);
    bench.Begin();
    bench.Dab(bench.HitFace(0), 1.0f);
    EXPECT_EQ(Flags(), 0u);
    bench.End();
    EXPECT_EQ(Flags(), 0u);
}

}  // namespace
}  // namespace trovik::test
