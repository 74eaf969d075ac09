// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/LayerSteps.h"
#include "framework/errors/HostError.h"
#include "framework/layers/LayerStack.h"
#include "framework/multires/Steps.h"
#include "tests/edits/EditStroke.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace trovik::test {
namespace {

class LayerStackTest : public ::testing::Test {
protected:
    LayerStackTest() : geometry(GridMesh(20, 20)), mesh(*geometry.Bound()) {}

    void Push(std::unique_ptr<UndoStep> step) {
        ASSERT_NE(step, nullptr);
        geometry.History().Push(std::move(step));
    }
    SculptLayer& Add(const std::string& name) {
        Push(AddLayerAsStep(geometry, name));
        return *mesh.ActiveLayer();
    }
    void Give(SculptLayer& layer, float strength, bool visible) {
        SculptLayer::Properties given = layer.UserProperties();
        given.strength = strength;
        given.visible = visible;
        if (auto step = SetLayerPropertiesAsStep(geometry, layer, given))
            geometry.History().Push(std::move(step));
    }

    /// Moves a vertex through the active layer, as a brush does, or directly if no layer is active.
    void Move(MeshChange& change, uint32_t vertex, const Vector& by) {
        if (mesh.ActiveLayer() == nullptr) {
            MoveVertex(change, vertex, by);
            return;
        }
        const uint32_t slot = TouchRecord(change, vertex).layerSlot;
        Vector offset;
        mesh.Layer()->get(&offset, slot);
        offset += by;
        mesh.Layer()->set(nullptr, slot, vertex, &offset, true);
        mesh.vertexNormals.array[vertex].x = static_cast<int16_t>(random() % 9999);
    }
    void Stroke(unsigned moves) {
        const std::unique_ptr<MeshChange> change(mesh.StartChange());
        std::uniform_real_distribution<float> step(-0.3f, 0.3f);
        for (unsigned i = 0; i < moves; ++i) {
            const auto vertex = static_cast<uint32_t>(random() % mesh.VertexCount());
            Move(*change, vertex, {step(random), step(random), step(random)});
        }
        change->Finish(true, false);
    }
    void StrokeAt(uint32_t vertex, const Vector& by) {
        const std::unique_ptr<MeshChange> change(mesh.StartChange());
        Move(*change, vertex, by);
        change->Finish(true, false);
    }

    LevelGeometry geometry;
    LevelMesh& mesh;
    std::mt19937 random{17};
};

TEST_F(LayerStackTest, LayerBaseIsRestoredWhenStrokesAndEditsAreUndone) {
    SculptLayer& a = Add("a");
    Stroke(300);
    SculptLayer& b = Add("b");
    Stroke(300);
    const auto bare = [&] {
        Give(a, 1.0f, false);
        Give(b, 1.0f, false);
        std::vector<VertexState> state = StateOf(mesh);
        geometry.History().Undo(geometry);
        geometry.History().Undo(geometry);
        return state;
    };
    const std::vector<VertexState> shown = StateOf(mesh);
    const std::vector<VertexState> ground = bare();
    ASSERT_NE(ground, shown);

    const std::size_t mark = geometry.History().Position();
    mesh.SetActiveLayer(nullptr);
    Stroke(400);
    Give(a, 0.3f, true);
    mesh.SetActiveLayer(&a);
    Stroke(400);
    Give(b, -1.7f, true);
    mesh.SetActiveLayer(nullptr);
    Stroke(400);
    Give(a, 1.0f, false);
    while (geometry.History().Position() > mark) geometry.History().Undo(geometry);
    EXPECT_EQ(StateOf(mesh), shown);
    EXPECT_EQ(bare(), ground);
}

TEST_F(LayerStackTest, SurfaceIsTheLayerBasePlusStrengthTimesEachOffset) {
    const Vector ground = mesh.Position(30);
    SculptLayer& a = Add("a");
    StrokeAt(30, {1, 0, 0});
    SculptLayer& b = Add("b");
    StrokeAt(30, {0, 0, 2});
    EXPECT_EQ(mesh.Position(30), ground + Vector(1, 0, 2));
    Give(a, -2.0f, true);
    EXPECT_EQ(mesh.Position(30), ground + Vector(-2, 0, 2));
    Give(b, 1.5f, true);
    EXPECT_EQ(mesh.Position(30), ground + Vector(-2, 0, 3));
    Give(b, 1.5f, false);
    EXPECT_EQ(mesh.Position(30), ground + Vector(-2, 0, 0));
    Give(a, 0.0f, true);
    EXPECT_EQ(mesh.Position(30), ground);
    EXPECT_EQ(mesh.Position(31), ground + Vector(1, 0, 0)) << "no stroke touched the neighbour";
    EXPECT_EQ(a.SlotCount(), 1u);
}

TEST_F(LayerStackTest, LayersTurnedOffAndOnAgainGiveTheSameBits) {
    std::vector<SculptLayer*> layers;
    for (const char* name : {"a", "b", "c", "d"}) {
        layers.push_back(&Add(name));
        Stroke(300);
    }
    // Strokes in lower layers, with strengths whose products are rounded, and directly on the
    // surface.
    Give(*layers[1], 0.37f, true);
    Push(SelectLayerAsStep(geometry, layers[0]));
    Stroke(200);
    Push(SelectLayerAsStep(geometry, nullptr));
    Stroke(200);
    for (int round = 0; round < 30; ++round) {
        const auto before = StateOf(mesh);
        // Turns the layers off in one order, with different strengths, and back on in another
        // order, with their previous strengths.
        std::vector<std::size_t> order = {0, 1, 2, 3};
        std::shuffle(order.begin(), order.end(), random);
        std::vector<SculptLayer::Properties> given;
        given.reserve(std::size(layers));
        for (const SculptLayer* layer : layers) given.push_back(layer->UserProperties());
        for (const std::size_t i : order) Give(*layers[i], given[i].strength * 3.1f, false);
        ASSERT_NE(StateOf(mesh), before);
        std::shuffle(order.begin(), order.end(), random);
        for (const std::size_t i : order) Give(*layers[i], given[i].strength, true);
        ASSERT_EQ(StateOf(mesh), before) << round;
        // The invariant also holds after further edits.
        if (round % 3 == 0) Give(*layers[2], 0.1f * static_cast<float>(round + 1), true);
        if (round % 3 == 1) Push(SelectLayerAsStep(geometry, layers[random() % 4]));
        if (round % 3 == 2) Stroke(50);
    }
}

TEST_F(LayerStackTest, StrokeOutsideHiddenLayersStaysWhenTheyAreShown) {
    const Vector ground = mesh.Position(50);
    SculptLayer& a = Add("a");
    StrokeAt(50, {0, 0, 4});
    Push(SelectLayerAsStep(geometry, nullptr));
    Give(a, 1.0f, false);
    StrokeAt(50, {1, 0, 0});
    EXPECT_EQ(mesh.Position(50), ground + Vector(1, 0, 0));
    Give(a, 1.0f, true);
    EXPECT_EQ(mesh.Position(50), ground + Vector(1, 0, 4));
}

TEST_F(LayerStackTest, HiddenLayerIsNotWritten) {
    SculptLayer& a = Add("a");
    EXPECT_TRUE(a.Writable());
    Give(a, 1.0f, false);
    EXPECT_FALSE(a.Writable());
    EXPECT_EQ(a.EffectiveStrength(), 0.0f);
    EXPECT_EQ(a.Strength(), 1.0f);
}

TEST_F(LayerStackTest, RemovingALayerRemovesItsDisplacementAndUndoRestoresIt) {
    const auto plain = StateOf(mesh);
    Add("a");
    Stroke(200);
    const auto sculpted = StateOf(mesh);
    Push(RemoveLayerAsStep(geometry, *mesh.ActiveLayer()));
    EXPECT_TRUE(geometry.Layers().All().empty());
    EXPECT_EQ(mesh.ActiveLayer(), nullptr);
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        Vertex vertex;
        std::memcpy(&vertex, plain[v].bytes, sizeof vertex);
        ASSERT_EQ(mesh.Position(v), Vector(vertex.x, vertex.y, vertex.z));
    }
    geometry.History().Undo(geometry);
    EXPECT_EQ(StateOf(mesh), sculpted);
    ASSERT_EQ(geometry.Layers().All().size(), 1u);
    EXPECT_EQ(mesh.ActiveLayer(), geometry.Layers().All()[0].get());
    EXPECT_EQ(geometry.Layers().All()[0]->Name(), "a");
    geometry.History().Undo(geometry);
    geometry.History().Undo(geometry);
    EXPECT_EQ(StateOf(mesh), plain);
    EXPECT_TRUE(geometry.Layers().All().empty());
    while (geometry.History().Redo(geometry)) {
    }
    EXPECT_TRUE(geometry.Layers().All().empty());
}

TEST_F(LayerStackTest, RemovedLayerCountsOnceAndIsCompressed) {
    Add("a");
    Stroke(5000);
    SculptLayer& a = *mesh.ActiveLayer();
    Give(a, 0.5f, true);
    UndoHistory& history = geometry.History();
    history.SetKeeping({uint64_t{1} << 40, 16});
    history.Settle();
    const uint64_t before = history.Bytes();
    const uint64_t layerBytes = a.Bytes();
    Push(RemoveLayerAsStep(geometry, a));
    const uint64_t atOnce = history.Bytes();
    EXPECT_GT(atOnce, before + layerBytes);
    EXPECT_LT(atOnce, before + layerBytes + 441 * 22 + 1000);
    history.SetKeeping({});
    history.Undo(geometry);
    EXPECT_EQ(a.SlotCount(), 441u);
    history.Redo(geometry);
    history.Settle();
    EXPECT_LT(history.Bytes(), atOnce - layerBytes / 4);
    history.Undo(geometry);
    EXPECT_EQ(a.SlotCount(), 441u);
}

TEST_F(LayerStackTest, CopyAddsItsDisplacementOnceMore) {
    const Vector ground = mesh.Position(7);
    SculptLayer& a = Add("a");
    StrokeAt(7, {0, 0, 1});
    Add("top");
    Push(DuplicateLayerAsStep(geometry, a, "copy"));
    EXPECT_EQ(mesh.Position(7), ground + Vector(0, 0, 2));
    const auto layers = geometry.Layers().OfLevel(*geometry.Level(0));
    ASSERT_EQ(layers.size(), 3u);
    EXPECT_EQ(layers[1]->Name(), "copy");
    EXPECT_EQ(mesh.ActiveLayer(), layers[1].get());
    StrokeAt(7, {0, 1, 0});
    EXPECT_EQ(a.Offset(7), Vector(0, 0, 1));
    EXPECT_EQ(layers[1]->Offset(7), Vector(0, 1, 1));
}

TEST_F(LayerStackTest, MergingKeepsEveryBitOfTheSurface) {
    SculptLayer& a = Add("a");
    Stroke(200);
    SculptLayer& b = Add("b");
    Stroke(200);
    Give(a, 0.3f, true);
    Give(b, -1.7f, true);
    const uint32_t both = a.VertexOfSlot(0);
    const Vector expected = a.Offset(both) * 0.3f + b.Offset(both) * -1.7f;
    const auto before = StateOf(mesh);
    Push(MergeLayerDownAsStep(geometry, b));
    EXPECT_EQ(StateOf(mesh), before);
    ASSERT_EQ(geometry.Layers().All().size(), 1u);
    EXPECT_EQ(a.Strength(), 1.0f);
    EXPECT_EQ(a.Offset(both), expected);
    EXPECT_EQ(mesh.ActiveLayer(), &a);
    Give(a, 1.0f, false);
    EXPECT_NE(StateOf(mesh), before);
    Give(a, 1.0f, true);
    EXPECT_EQ(StateOf(mesh), before);
    for (int i = 0; i < 3; ++i) geometry.History().Undo(geometry);
    EXPECT_EQ(geometry.Layers().All().size(), 2u);
    EXPECT_EQ(a.Strength(), 0.3f);
}

TEST_F(LayerStackTest, MergingIsRefusedIfItWouldLoseData) {
    SculptLayer& a = Add("a");
    SculptLayer& b = Add("b");
    EXPECT_EQ(MessageOf<HostError>([&] { MergeLayerDownAsStep(geometry, a); }),
              "layer \"a\" has no layer below it to merge into");
    Give(a, 1.0f, false);
    EXPECT_EQ(MessageOf<HostError>([&] { MergeLayerDownAsStep(geometry, b); }),
              "layer \"a\" is hidden and cannot be merged");
    Give(a, 1.0f, true);
    b.SetWritable(false);
    EXPECT_EQ(MessageOf<HostError>([&] { MergeLayerDownAsStep(geometry, b); }),
              "layer \"b\" is locked and cannot be merged");
    EXPECT_EQ(MessageOf<HostError>([&] { EraseLayerByFreezeAsStep(geometry, b); }),
              "layer \"b\" is locked and cannot be erased");
}

TEST_F(LayerStackTest, MaskWeightsControlErasing) {
    const Vector ground = mesh.Position(10);
    SculptLayer& a = Add("a");
    for (const uint32_t v : {10u, 11u, 12u}) StrokeAt(v, {0, 0, 127});
    mesh.SetFreeze(10, 127);
    mesh.SetFreeze(11, 27);
    Push(EraseLayerByFreezeAsStep(geometry, a));
    EXPECT_EQ(mesh.Position(10), ground);
    EXPECT_EQ(a.Offset(10), Vector());
    EXPECT_NEAR(a.Offset(11).z, 100.0f, 1e-4f);
    EXPECT_EQ(mesh.Position(11).z, a.Offset(11).z);
    EXPECT_EQ(a.Offset(12), Vector(0, 0, 127));
    geometry.History().Undo(geometry);
    EXPECT_EQ(a.Offset(10), Vector(0, 0, 127));
    EXPECT_EQ(mesh.Position(10), ground + Vector(0, 0, 127));
}

TEST_F(LayerStackTest, HiddenVerticesAreNotErased) {
    SculptLayer& a = Add("a");
    StrokeAt(10, {0, 0, 127});
    mesh.SetFreeze(10, 127);
    for (uint32_t face = 0; face < mesh.faceCount; ++face) {
        if (mesh.CornerOf(face, 10) < 0) continue;
        const FaceRun run{face, 1};
        mesh.ToggleHidden({&run, 1});
    }
    ASSERT_TRUE(mesh.IsVertexHidden(10));
    EXPECT_EQ(EraseLayerByFreezeAsStep(geometry, a), nullptr);
    EXPECT_EQ(a.Offset(10), Vector(0, 0, 127));
}

TEST_F(LayerStackTest, OrderNameAndLockAreUndone) {
    Add("a");
    SculptLayer& b = Add("b");
    Add("c");
    const auto names = [this] {
        std::string all;
        for (const auto& layer : geometry.Layers().All()) all += layer->Name();
        return all;
    };
    Push(MoveLayerAsStep(geometry, b, 0));
    EXPECT_EQ(names(), "bac");
    Push(MoveLayerAsStep(geometry, b, 99));
    EXPECT_EQ(names(), "acb");
    EXPECT_EQ(MoveLayerAsStep(geometry, b, 2), nullptr) << "the layer is at that position";
    SculptLayer::Properties given = b.UserProperties();
    given.name = "x";
    Push(SetLayerPropertiesAsStep(geometry, b, given));
    given.writable = false;
    Push(SetLayerPropertiesAsStep(geometry, b, given));
    EXPECT_EQ(names(), "acx");
    EXPECT_FALSE(b.Writable());
    const std::size_t last = geometry.History().StepCount() - 1;
    EXPECT_EQ(geometry.History().Label(last), "Layer Lock");
    EXPECT_EQ(geometry.History().Label(last - 1), "Rename Layer");
    EXPECT_EQ(geometry.History().Label(last - 2), "Layer Order");
    geometry.History().Undo(geometry);
    EXPECT_TRUE(b.Writable());
    geometry.History().Undo(geometry);
    EXPECT_EQ(names(), "acb");
    geometry.History().Undo(geometry);
    EXPECT_EQ(names(), "bac");
    geometry.History().Undo(geometry);
    EXPECT_EQ(names(), "abc");
    EXPECT_EQ(geometry.Layers().Find(mesh, "b").get(), &b);
    EXPECT_EQ(geometry.Layers().Find(mesh, "gone"), nullptr);
}

TEST_F(LayerStackTest, EditsWithoutEffectMakeNoUndoStep) {
    SculptLayer& a = Add("a");
    EXPECT_EQ(SelectLayerAsStep(geometry, &a), nullptr);
    EXPECT_EQ(SetLayerPropertiesAsStep(geometry, a, a.UserProperties()), nullptr);
    EXPECT_EQ(EraseLayerByFreezeAsStep(geometry, a), nullptr);
}

TEST_F(LayerStackTest, LayersBelongToTheirLevels) {
    Add("coarse");
    geometry.History().Push(SubdivideAsStep(geometry));
    Push(AddLayerAsStep(geometry, "fine"));
    EXPECT_EQ(geometry.Layers().OfLevel(*geometry.Level(0)).size(), 1u);
    EXPECT_EQ(geometry.Layers().OfLevel(*geometry.Level(1)).size(), 1u);
    EXPECT_EQ(geometry.Layers().All()[1]->Name(), "fine");
    EXPECT_EQ(geometry.Layers().Find(*geometry.Level(0), "fine"), nullptr);
}

}  // namespace
}  // namespace trovik::test
