// SPDX-License-Identifier: Apache-2.0
#include "framework/layers/SculptLayer.h"
#include "tests/edits/EditStroke.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

class SculptLayerTest : public ::testing::Test {
protected:
    SculptLayerTest() : geometry(GridMesh(60, 60)), mesh(*geometry.Bound()) {
        layer = std::make_unique<SculptLayer>(&mesh, "details");
        mesh.SetActiveLayer(layer.get());
    }

    /// Moves a vertex through the layer, as a brush does.
    void MoveInLayer(MeshChange& change, uint32_t vertex, const Vector& step) {
        const uint32_t slot = TouchRecord(change, vertex).layerSlot;
        Vector old;
        mesh.Layer()->get(&old, slot);
        const Vector offset = old + step;
        mesh.Layer()->set(nullptr, slot, vertex, &offset, true);
        mesh.vertexNormals.array[vertex].x = static_cast<int16_t>(vertex);
    }

    void LayerStroke(unsigned moves) {
        const std::unique_ptr<MeshChange> change(mesh.StartChange());
        std::uniform_real_distribution<float> step(-0.3f, 0.3f);
        std::uniform_int_distribution<uint32_t> vertex(0, mesh.VertexCount() - 1);
        for (unsigned i = 0; i < moves; ++i)
            MoveInLayer(*change, vertex(random), {step(random), step(random), step(random)});
        change->Finish(true, false);
    }

    std::vector<Vector> Offsets() const {
        std::vector<Vector> offsets;
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v) offsets.push_back(layer->Offset(v));
        return offsets;
    }

    LevelGeometry geometry;
    LevelMesh& mesh;
    std::unique_ptr<SculptLayer> layer;
    std::mt19937 random{21};
};

TEST_F(SculptLayerTest, CompositeIsTheRestPlusStrengthTimesOffset) {
    layer->SetStrength(0.3f);
    const Vector rest = mesh.Position(11);
    const Vector offset{0.7f, -0.1f, 1.3f};
    Vector out;
    layer->set(&out, layer->SlotOf(11), 11, &offset, true);
    const Vector expected{
        rest.x + 0.3f * offset.x, rest.y + 0.3f * offset.y, rest.z + 0.3f * offset.z};
    EXPECT_EQ(out, expected);
    EXPECT_EQ(mesh.Position(11), expected);
    EXPECT_EQ(layer->Rest(11), rest);
    EXPECT_EQ(layer->Offset(11), offset);
    Vector got;
    EXPECT_EQ(layer->get(&got, layer->FindSlot(11)), &got);
    EXPECT_EQ(got, offset);
}

TEST_F(SculptLayerTest, WithoutUpdateThePositionStaysUnchanged) {
    const Vector rest = mesh.Position(4);
    const Vector offset{0, 0, 2};
    Vector out;
    layer->set(&out, layer->SlotOf(4), 4, &offset, false);
    EXPECT_EQ(mesh.Position(4), rest);
    EXPECT_EQ(out, rest + offset);
    layer->SetStrength(1.0f);
    EXPECT_EQ(mesh.Position(4), rest + offset);
}

TEST_F(SculptLayerTest, OnlyTouchedVerticesAreStored) {
    for (const uint32_t v : {5u, 900u, 3000u, 5u}) layer->SlotOf(v);
    EXPECT_EQ(layer->SlotCount(), 3u);
    EXPECT_EQ(layer->VertexOfSlot(layer->FindSlot(900)), 900u);
    EXPECT_EQ(layer->FindSlot(901), SculptLayer::noSlot);
    EXPECT_EQ(layer->FindSlot(2000), SculptLayer::noSlot) << "its page was never allocated";
    EXPECT_EQ(layer->Rest(901), mesh.Position(901));
    EXPECT_EQ(layer->Offset(901), Vector());
    EXPECT_LT(layer->Bytes(), 2 * 4096u + 1000u) << "two pages and three entries";
    Vector got{1, 1, 1};
    layer->get(&got, SculptLayer::noSlot);
    EXPECT_EQ(got, Vector());
}

TEST_F(SculptLayerTest, ChangingTheStrengthAndBackGivesTheSameBits) {
    mesh.SetPosition(1, {-0.0f, -0.0f, -0.0f});
    layer->SlotOf(1);
    LayerStroke(500);
    std::vector<Vector> rest;
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) rest.push_back(layer->Rest(v));
    const auto before = StateOf(mesh);
    layer->SetStrength(0.0f);
    EXPECT_NE(StateOf(mesh), before);
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) EXPECT_EQ(mesh.Position(v), rest[v]);
    layer->SetStrength(0.37f);
    layer->SetStrength(-2.0f);
    layer->SetStrength(1.0f);
    EXPECT_EQ(StateOf(mesh), before);
}

TEST_F(SculptLayerTest, UndoRestoresEveryBitOfTheOffsetsAndKeepsTheSlots) {
    LayerStroke(200);
    const auto state1 = StateOf(mesh);
    const auto offsets1 = Offsets();
    LayerStroke(300);
    const auto state2 = StateOf(mesh);
    const auto offsets2 = Offsets();
    const uint32_t slots = layer->SlotCount();
    geometry.History().Undo(geometry);
    EXPECT_EQ(StateOf(mesh), state1);
    EXPECT_EQ(Offsets(), offsets1);
    EXPECT_EQ(layer->SlotCount(), slots);
    geometry.History().Undo(geometry);
    EXPECT_EQ(Offsets(), std::vector<Vector>(mesh.VertexCount()));
    geometry.History().Redo(geometry);
    geometry.History().Redo(geometry);
    EXPECT_EQ(StateOf(mesh), state2);
    EXPECT_EQ(Offsets(), offsets2);
}

TEST_F(SculptLayerTest, UndoAtAnotherStrengthComposesAtThatStrength) {
    const Vector rest = mesh.Position(8);
    for (int i = 0; i < 2; ++i) {
        const std::unique_ptr<MeshChange> change(mesh.StartChange());
        MoveInLayer(*change, 8, {0, 0, 1});
        change->Finish(true, false);
    }
    layer->SetStrength(0.5f);
    geometry.History().Undo(geometry);
    EXPECT_EQ(mesh.Position(8), rest + Vector(0, 0, 0.5f));
    geometry.History().Redo(geometry);
    EXPECT_EQ(mesh.Position(8), rest + Vector(0, 0, 1));
    layer->SetStrength(0.0f);
    EXPECT_EQ(mesh.Position(8), rest);
}

TEST_F(SculptLayerTest, MoveOutsideTheLayerChangesTheRest) {
    const Vector rest = mesh.Position(8);
    const Vector offset{0, 0, 4};
    layer->set(nullptr, layer->SlotOf(8), 8, &offset, true);
    mesh.SetPosition(8, mesh.Position(8) + Vector(1, 0, 0));
    EXPECT_EQ(layer->Rest(8), rest + Vector(1, 0, 0));
    layer->SetStrength(0.5f);
    EXPECT_EQ(mesh.Position(8), rest + Vector(1, 0, 2));
}

TEST_F(SculptLayerTest, RefusalIsReported) {
    EXPECT_TRUE(mesh.Layer()->Writable());
    layer->SetWritable(false);
    EXPECT_FALSE(mesh.Layer()->Writable());
}

TEST_F(SculptLayerTest, DeletedLayerIsNoLongerActiveAndUndoStillMovesPositions) {
    SculptLayer other(&mesh, "other");
    const auto before = StateOf(mesh);
    LayerStroke(50);
    layer.reset();
    EXPECT_EQ(mesh.ActiveLayer(), nullptr);
    EXPECT_EQ(mesh.Layer(), nullptr);
    geometry.History().Undo(geometry);
    EXPECT_EQ(StateOf(mesh), before);

    mesh.SetActiveLayer(&other);
    { const SculptLayer third(&mesh, "third"); }
    EXPECT_EQ(mesh.ActiveLayer(), &other) << "only the layer itself clears the link";
}

TEST_F(SculptLayerTest, LayerDeletedDuringAStrokeIsNotAccessed) {
    const std::unique_ptr<MeshChange> change(mesh.StartChange());
    MoveInLayer(*change, 3, {0, 0, 1});
    layer.reset();
    EXPECT_EQ(TouchRecord(*change, 4).layerSlot, SculptLayer::noSlot);
    change->Finish(true, false);
    EXPECT_EQ(geometry.History().StepCount(), 1u);
}

}  // namespace
}  // namespace trovik::test
