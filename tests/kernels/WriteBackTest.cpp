// SPDX-License-Identifier: Apache-2.0

/// \file Tests the results of processing a vertex: its position, the grid, the dirty box and the
/// notifications.
#include "tests/kernels/KernelFixture.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <cstring>

namespace trovik::test {
namespace {

/// One flat patch of 4 x 4 faces with vertices 0.25 apart.
class WriteBack : public ::testing::Test {
protected:
    void Start(Tool tool) {
        bench.Start(tool);
        bench.Aim({0.5f, 0.5f, 0.0f}, 0.3f);
    }
    bool WasNotified(uint32_t vertex) const {
        for (const auto& notice : renderer->notices)
            if (notice.vertex == vertex) return true;
        return false;
    }
    KernelFixture bench{SingleQuad(), 2, 2};
    RecordingRenderer* renderer = &bench.stroke.AddRenderer(0.0f);
    const uint32_t middle = bench.VertexNear({0.5f, 0.5f, 0.0f});
    const uint32_t outside = bench.VertexNear({0.75f, 0.5f, 0.0f});
};

TEST_F(WriteBack, WeightOfZeroWritesTheVertexUnchanged) {
    Start(Tool::Sculpt);
    bench.brush.dabStrength = 0.0f;
    const std::vector<VertexBits> before = BitsOf(bench.mesh);
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_EQ(BitsOf(bench.mesh), before);
    EXPECT_EQ(renderer->notices.size(), 5u);
    EXPECT_EQ(bench.BoxMin(), Vector(0.25f, 0.25f, 0.0f));
    EXPECT_EQ(bench.BoxMax(), Vector(0.75f, 0.75f, 0.0f));
}

TEST_F(WriteBack, GridHasTheNewPosition) {
    Start(Tool::Sculpt);
    bench.RunKernel(0);
    EXPECT_EQ(bench.mesh.Position(middle), Vector(0.5f, 0.5f, 1.0f));
    EXPECT_EQ(bench.GridAt(2, 2), Vector(0.5f, 0.5f, 1.0f));
}

TEST_F(WriteBack, LayerPathReadsThePositionBackFromTheMesh) {
    SculptLayer& layer = bench.stroke.AddLayer();
    const Vector old(0.0f, 0.0f, 0.5f);
    layer.set(nullptr, layer.SlotOf(middle), middle, &old, true);
    layer.SetStrength(0.5f);
    ASSERT_EQ(bench.Height(middle), 0.25f);
    Start(Tool::Sculpt);
    bench.Aim({0.5f, 0.5f, 0.25f}, 0.1f);
    EXPECT_TRUE(bench.RunKernel(0));
    // The whole step is added to the offset; at half strength, the layer shows half of it.
    EXPECT_EQ(layer.Offset(middle), Vector(0.0f, 0.0f, 1.5f));
    EXPECT_EQ(bench.mesh.Position(middle), Vector(0.5f, 0.5f, 0.75f));
    EXPECT_EQ(bench.GridAt(2, 2), Vector(0.5f, 0.5f, 0.75f));
    EXPECT_EQ(bench.BoxMax(), Vector(0.5f, 0.5f, 0.75f));
}

TEST_F(WriteBack, VertexOutOfReachHasItsLayerSlotButNoOffset) {
    SculptLayer& layer = bench.stroke.AddLayer();
    Start(Tool::Sculpt);
    bench.Aim({0.5f, 0.5f, 0.0f}, 0.1f);
    bench.RunKernel(0);
    const StoredVertexInfo* record = bench.Record(outside);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->layerSlot, layer.FindSlot(outside));
    EXPECT_NE(record->layerSlot, SculptLayer::noSlot);
    EXPECT_EQ(layer.Offset(outside), Vector());
    EXPECT_EQ(layer.Offset(middle), Vector(0.0f, 0.0f, 1.0f));
}

TEST_F(WriteBack, BoxIncludesTheOldPositionOfAVertexThatMovedInside) {
    Start(Tool::Flatten);
    bench.Aim({0.5f, 0.5f, 1.0f}, 1.01f);  // only the centre vertex
    bench.brush.planeDistance = 1.0f;
    bench.brush.dabStrength = 50.0f;
    bench.RunKernel(0);
    EXPECT_NEAR(bench.Height(middle), 0.5f, 1e-6f);
    EXPECT_EQ(bench.BoxMin(), Vector(0.5f, 0.5f, 0.0f));
    EXPECT_EQ(bench.BoxMax(), Vector(0.5f, 0.5f, 1.0f));
}

TEST_F(WriteBack, BoxIncludesTheNewPositionOfAVertexThatMovedOut) {
    Start(Tool::Sculpt);
    bench.Aim({0.5f, 0.5f, 0.0f}, 0.1f);
    bench.brush.brushSpace->direction = HWVector(Vector(0.5f, -0.25f, 2.0f));
    bench.RunKernel(0);
    EXPECT_EQ(bench.BoxMin(), Vector(0.5f, 0.25f, 0.0f));
    EXPECT_EQ(bench.BoxMax(), Vector(1.0f, 0.5f, 2.0f));
}

TEST_F(WriteBack, VertexOutOfReachDoesNotChangeTheBox) {
    Start(Tool::Sculpt);
    bench.Aim({0.5f, 0.5f, 5.0f}, 0.1f);
    EXPECT_FALSE(bench.RunKernel(0));
    EXPECT_EQ(bench.BoxMin(), Vector(0.5f, 0.5f, 5.0f));
    EXPECT_EQ(bench.BoxMax(), Vector(0.5f, 0.5f, 5.0f));
    EXPECT_TRUE(renderer->notices.empty());
}

TEST_F(WriteBack, VertexOutsideTheStampDoesNotAffectBoxLayerOrRenderers) {
    SculptLayer& layer = bench.stroke.AddLayer();
    Start(Tool::Sculpt);
    // Every vertex is in reach, but the stamp ends at 0.5.
    bench.Aim({0.5f, 0.5f, 0.0f}, 5.0f);
    bench.SetStamp(1, 1, {1.0f}, false);
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_EQ(bench.Height(middle), 1.0f);
    EXPECT_EQ(bench.Height(outside), 0.0f);
    EXPECT_EQ(bench.BoxMin(), Vector(0.0f, 0.0f, 0.0f));
    EXPECT_EQ(bench.BoxMax(), Vector(0.5f, 0.5f, 1.0f));
    EXPECT_EQ(renderer->notices.size(), 9u);
    EXPECT_FALSE(WasNotified(outside));
    EXPECT_EQ(layer.Offset(outside), Vector());
    for (uint32_t row = 0; row < 5; ++row)
        for (uint32_t column = 0; column < 5; ++column)
            EXPECT_EQ(bench.GridAt(row, column),
                      bench.mesh.Position(bench.VertexAt(0, row, column)));
}

TEST_F(WriteBack, PatchOutsideTheStampIsReachedInTheWholeMeshPassOnly) {
    Start(Tool::Sculpt);
    bench.Aim({0.5f, 0.5f, 0.0f}, 5.0f);
    bench.SetStamp(1, 1, {1.0f}, false);
    bench.brush.brushSpace->stampMatrix[3][0] = 50.0f;
    EXPECT_FALSE(bench.RunKernel(0));
    bench.NextDab();
    bench.brush.wholeMesh = true;
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_TRUE(renderer->notices.empty());
    EXPECT_EQ(bench.Height(middle), 0.0f);
}

TEST_F(WriteBack, TiledStampCoversEverything) {
    Start(Tool::Sculpt);
    bench.Aim({0.5f, 0.5f, 0.0f}, 5.0f);
    bench.SetStamp(1, 1, {0.5f}, false);
    bench.brush.stampTiled = true;
    bench.brush.brushSpace->stampMatrix[3][0] = 50.0f;
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_EQ(bench.Height(outside), 0.5f);
}

TEST_F(WriteBack, RenderersAreNotifiedInWorkListOrderWithTheFaceOfTheList) {
    RecordingRenderer& second = bench.stroke.AddRenderer(1.0f);
    Start(Tool::Sculpt);
    bench.RunKernel(0);
    std::vector<RecordingRenderer::Notice> wanted;
    for (uint32_t i = 0; i < 25; ++i) {
        const PatchVertexEntry& entry = bench.brush.patchVertexList[i];
        if (bench.Height(entry.vertex) > 0.0f) wanted.push_back({entry.vertex, entry.face});
    }
    ASSERT_EQ(wanted.size(), 5u);
    EXPECT_EQ(renderer->notices, wanted);
    EXPECT_EQ(second.notices, wanted)
        << "if one renderer requires it, all renderers are notified per vertex";
}

TEST_F(WriteBack, KernelsThatNotifyByFaceSendNoVertexNotifications) {
    Start(Tool::Sculpt);
    bench.brush.rendererTakesFaces = true;
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_TRUE(renderer->notices.empty());
}

TEST_F(WriteBack, LayerGridIsNeverWritten) {
    SculptLayer& layer = bench.stroke.AddLayer();
    const Vector spike(0.0f, 0.0f, 1.0f);
    layer.set(nullptr, layer.SlotOf(middle), middle, &spike, true);
    Start(Tool::Smooth);
    bench.brush.affectAllLayers.SetValue(false, true);
    bench.Aim({0.5f, 0.5f, 0.0f}, 5.0f);
    bench.brush.FillPatchHalo(bench.brush.patchMesh, 0);
    const std::vector<HWVector> before = bench.layerCells;
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_LT(layer.Offset(middle).z, 0.5f);
    EXPECT_EQ(std::memcmp(before.data(), bench.layerCells.data(), before.size() * 16), 0);
}

}  // namespace
}  // namespace trovik::test
