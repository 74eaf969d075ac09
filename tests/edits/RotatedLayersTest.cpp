// SPDX-License-Identifier: Apache-2.0

/// \file Tests that the offsets of a fine level's layers rotate with the surface when a coarser
/// level is deformed.
#include "framework/edits/LayerSteps.h"
#include "framework/layers/LayerStack.h"
#include "framework/multires/RotatedLayers.h"
#include "framework/multires/Steps.h"
#include "tests/edits/EditStroke.h"
#include "tests/levels/GeometryState.h"
#include "tests/levels/RotatedPoints.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

Vector RotatedAboutTwoAxes(const Vector& p, float angle) {
    const Vector turned = RotatedAboutZ(p, angle);
    return RotatedAboutZ({turned.y, turned.z, turned.x}, angle);
}

/// A deformation that stretches and twists, with a rotation that increases with the distance from
/// the centre.
Vector Deformed(const Vector& p) {
    const Vector q = RotatedAboutZ(p, p.x * 0.7f + p.z * 0.4f);
    return {q.x * 1.2f, q.y, q.z + 0.3f * q.x * q.x};
}

/// The state of the two layers while the base is deformed.
struct LayerVisibility {
    const char* name;
    SculptLayer::Properties first;
    SculptLayer::Properties second;
};

const std::vector<LayerVisibility>& LayerVisibilities() {
    static const std::vector<LayerVisibility> showings = {
        {"both at 1", {"a", 1.0f, true, true}, {"b", 1.0f, true, true}},
        {"neither at 1", {"a", 0.37f, true, true}, {"b", -1.3f, true, true}},
        {"one at 0", {"a", 0.0f, true, true}, {"b", 1.0f, true, true}},
        {"one hidden, one locked", {"a", 0.7f, false, true}, {"b", 0.9f, true, false}},
        {"both hidden", {"a", 1.0f, false, true}, {"b", 1.0f, false, false}}};
    return showings;
}

/// A mesh with three levels. The finest level is rough and has two layers; each vertex was touched
/// by both of them, by one or by neither.
class LayeredMesh {
public:
    explicit LayeredMesh(const PolygonMesh& polygons) : geometry(polygons) {
        geometry.Subdivide();
        geometry.Subdivide();
        Roughen(*geometry.Bound(), 0.05f, 21);
        for (const unsigned n : {2u, 3u}) {
            geometry.History().Push(AddLayerAsStep(geometry, n == 2 ? "a" : "b"));
            std::mt19937 random(n);
            std::uniform_real_distribution<float> step(-0.1f, 0.1f);
            SculptLayer& layer = *geometry.Layers().All().back();
            for (uint32_t v = 0; v < geometry.Bound()->VertexCount(); v += n) {
                const float x = step(random);
                const float y = step(random);
                const Vector offset(x, y, step(random));
                layer.set(nullptr, layer.SlotOf(v), v, &offset, true);
            }
        }
    }

    SculptLayer& Layer(std::size_t i) { return *geometry.Layers().All()[i]; }
    void Give(const LayerVisibility& showing) {
        Give(0, showing.first);
        Give(1, showing.second);
    }
    void Give(std::size_t i, const SculptLayer::Properties& given) {
        if (auto step = SetLayerPropertiesAsStep(geometry, Layer(i), given))
            geometry.History().Push(std::move(step));
    }
    void ShowAll(bool visible, float strength = 1.0f) {
        for (const std::size_t i : {0u, 1u}) Give(i, {Layer(i).Name(), strength, visible, true});
    }
    std::vector<Vector> Positions() const { return PositionsOf(*geometry.Bound()); }

    LevelGeometry geometry;
};

void ExpectSameBits(const std::vector<Vector>& a, const std::vector<Vector>& b) {
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t v = 0; v < a.size(); ++v) ASSERT_TRUE(SameBits(a[v], b[v])) << v;
}

float Farthest(const std::vector<Vector>& a, const std::vector<Vector>& b) {
    float farthest = 0.0f;
    for (std::size_t v = 0; v < a.size(); ++v) {
        const float away = (a[v] - b[v]).Length();
        if (!(away <= farthest)) farthest = away;
    }
    return farthest;
}

TEST(RotatedLayers, TurnedOffAfterADeformationGiveTheBitsOfAMeshWithoutLayers) {
    for (const ZooMesh& zoo : AllMeshes()) {
        for (const LayerVisibility& showing : LayerVisibilities()) {
            SCOPED_TRACE(zoo.name + ", " + showing.name);
            LayeredMesh layered(zoo.mesh);
            layered.ShowAll(false);
            const std::vector<Vector> off = layered.Positions();
            layered.Give(showing);
            const std::vector<Vector> on = layered.Positions();

            // Both geometries propagate the same surface to the coarser levels. The finest level of
            // `plain` then gets the positions without layers, from which its detail is computed.
            LevelGeometry plain(zoo.mesh);
            plain.Subdivide();
            plain.Subdivide();
            for (uint32_t v = 0; v < on.size(); ++v) plain.Bound()->SetPosition(v, on[v]);
            for (LevelGeometry* geometry : {&layered.geometry, &plain}) geometry->BindLevel(0);
            ExpectSameBits(PositionsOf(*layered.geometry.Bound()), PositionsOf(*plain.Bound()));
            for (uint32_t v = 0; v < off.size(); ++v) plain.Level(2)->SetPosition(v, off[v]);
            for (LevelGeometry* geometry : {&layered.geometry, &plain}) {
                Deform(*geometry->Bound(), Deformed);
                geometry->BindLevel(2);
            }

            const std::vector<Vector> bent = layered.Positions();
            layered.ShowAll(false);
            ExpectSameBits(layered.Positions(), PositionsOf(*plain.Bound()));
            EXPECT_GT(Farthest(layered.Positions(), off), 0.01f)
                << "the deformation moved vertices";
            layered.Give(showing);
            ExpectSameBits(layered.Positions(), bent);
        }
    }
}

// When the whole surface rotates, both shown and hidden offsets rotate with it, to within 1e-5 for
// sizes of about 1.
TEST(RotatedLayers, LayersRotateRigidlyWithTheSurface) {
    for (const ZooMesh& zoo : AllMeshes()) {
        for (const LayerVisibility& showing : LayerVisibilities()) {
            SCOPED_TRACE(zoo.name + ", " + showing.name);
            LayeredMesh layered(zoo.mesh);
            std::vector<Vector> on = layered.Positions();
            std::vector<Vector> offsets;
            for (uint32_t slot = 0; slot < layered.Layer(0).SlotCount(); ++slot)
                offsets.push_back(layered.Layer(0).StateOfSlot(slot).offset);
            layered.ShowAll(false);
            std::vector<Vector> off = layered.Positions();
            layered.Give(showing);
            layered.geometry.BindLevel(0);
            const auto turn = [](const Vector& p) { return RotatedAboutTwoAxes(p, quarter); };
            Deform(*layered.geometry.Bound(), turn);
            layered.geometry.BindLevel(2);

            for (Vector& p : on) p = turn(p);
            for (Vector& p : off) p = turn(p);
            layered.ShowAll(false);
            EXPECT_LT(Farthest(layered.Positions(), off), 1e-5f);
            layered.ShowAll(true);
            EXPECT_LT(Farthest(layered.Positions(), on), 1e-5f);
            for (uint32_t slot = 0; slot < offsets.size(); ++slot) {
                const Vector offset = layered.Layer(0).StateOfSlot(slot).offset;
                EXPECT_LT((offset - turn(offsets[slot])).Length(), 1e-5f) << slot;
                EXPECT_NEAR(offset.Length(), offsets[slot].Length(), 1e-7f) << slot;
            }
        }
    }
}

TEST(RotatedLayers, TurnedOffAndOnAgainAfterEachDeformationGiveTheSameBits) {
    LayeredMesh layered(SteppedBox());
    layered.Give(LayerVisibilities()[1]);
    const float length = layered.Layer(0).StateOfSlot(0).offset.Length();
    for (int bend = 0; bend < 12; ++bend) {
        layered.geometry.BindLevel(bend % 2 == 0 ? 0 : 1);
        Deform(*layered.geometry.Bound(), [bend](const Vector& p) {
            return RotatedAboutZ({p.y, p.z, p.x}, 0.3f + 0.1f * static_cast<float>(bend) * p.z);
        });
        layered.geometry.BindLevel(2);
        const std::vector<VertexState> before = StateOf(*layered.geometry.Bound());
        layered.ShowAll(false);
        EXPECT_NE(StateOf(*layered.geometry.Bound()), before);
        layered.Give(LayerVisibilities()[1]);
        ASSERT_EQ(StateOf(*layered.geometry.Bound()), before) << bend;
        // The tolerance is the rounding error of that many rotations.
        EXPECT_NEAR(layered.Layer(0).StateOfSlot(0).offset.Length(), length, 1e-6f);
    }
}

/// All layer data of all levels, including the layer bases.
std::string LayersOf(const LevelGeometry& geometry) {
    std::string bytes;
    const auto put = [&bytes](const auto& value) {
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    };
    for (const auto& layer : geometry.Layers().All()) {
        put(layer->EffectiveStrength());
        for (uint32_t slot = 0; slot < layer->SlotCount(); ++slot) {
            put(layer->VertexOfSlot(slot));
            put(layer->StateOfSlot(slot).rest);
            put(layer->StateOfSlot(slot).offset);
            put(layer->StateOfSlot(slot).seen);
        }
    }
    for (uint32_t i = 0; i < geometry.LevelCount(); ++i) {
        const LayerBase* ground = geometry.Layers().FindLayerBase(*geometry.Level(i));
        if (ground == nullptr) continue;
        for (const LayerBase::LayeredVertex& layeredVertex : ground->LayeredVertices()) {
            put(layeredVertex.vertex);
            put(layeredVertex.base);
            put(layeredVertex.sum);
            put(layeredVertex.position);
        }
    }
    return bytes;
}

TEST(RotatedLayers, WithoutAnEditNoBitChanges) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LayeredMesh layered(zoo.mesh);
        layered.Give(LayerVisibilities()[1]);
        layered.geometry.BindLevel(0);
        const std::string before = LayersOf(layered.geometry);
        for (const uint32_t level : {2u, 1u, 2u, 0u, 1u, 2u})
            EXPECT_TRUE(layered.geometry.BindLevel(level).empty());
        EXPECT_EQ(LayersOf(layered.geometry), before);
    }
}

struct Turned {
    std::size_t entries = 0;
    uint64_t bytes = 0;
};

/// Edits a corner on a grid of n x n quads whose layers cover everything.
Turned EditOneVertex(unsigned n) {
    LayeredMesh layered(GridMesh(n, n));
    layered.geometry.BindLevel(0);
    std::vector<Vector> offsets;
    for (uint32_t slot = 0; slot < layered.Layer(0).SlotCount(); ++slot)
        offsets.push_back(layered.Layer(0).StateOfSlot(slot).offset);
    layered.geometry.Bound()->SetPosition(0, {0.1f, 0.2f, 0.5f});
    const LevelSwitch change = layered.geometry.SwitchLevel(2);
    Turned turned;
    for (const CarriedLevel& one : change.carried)
        if (one.layers != nullptr) turned.bytes += one.layers->Bytes();
    for (uint32_t slot = 0; slot < offsets.size(); ++slot) {
        if (SameBits(layered.Layer(0).StateOfSlot(slot).offset, offsets[slot])) continue;
        ++turned.entries;
        const Vector p = layered.geometry.Bound()->Position(layered.Layer(0).VertexOfSlot(slot));
        EXPECT_LT(std::max(p.x, p.y), 4.0f) << slot;
    }
    return turned;
}

TEST(RotatedLayers, CostOfRotatedOffsetsFollowsTheChange) {
    const Turned small = EditOneVertex(8);
    const Turned large = EditOneVertex(24);
    EXPECT_GT(small.entries, 10u);
    EXPECT_NEAR(static_cast<double>(small.entries), static_cast<double>(large.entries), 3.0);
    EXPECT_GT(small.bytes, 0u);
    EXPECT_NEAR(static_cast<double>(small.bytes), static_cast<double>(large.bytes), 600.0);
}

// A flat grid with a single layer is rotated to stand on its edge, so the expected values are
// known.
TEST(RotatedLayers, UpwardOffsetPointsSidewaysAfterTheGridIsRotatedUpright) {
    for (const bool visible : {true, false}) {
        LevelGeometry geometry(GridMesh(4, 4));
        geometry.Subdivide();
        geometry.History().Push(AddLayerAsStep(geometry, "up"));
        SculptLayer& layer = *geometry.Layers().All().front();
        layer.SetUserProperties({"up", 1.0f, visible, true});
        const Vector up(0, 0, 0.5f);
        layer.set(nullptr, layer.SlotOf(12), 12, &up, true);
        geometry.BindLevel(0);
        Deform(*geometry.Bound(), [](const Vector& p) { return Vector(-p.z, p.y, p.x); });
        geometry.BindLevel(1);
        EXPECT_LT((layer.Offset(12) - Vector(-0.5f, 0, 0)).Length(), 1e-6f);
        EXPECT_LT((layer.Rest(12) - Vector(0, 2, 2)).Length(), 1e-6f);
        const Vector place = visible ? Vector(-0.5f, 2, 2) : Vector(0, 2, 2);
        EXPECT_LT((geometry.Bound()->Position(12) - place).Length(), 1e-6f);
    }
}

class TurnedLayersUndoTest : public ::testing::Test {
protected:
    TurnedLayersUndoTest() : geometry(SteppedBox()) {}

    void Push(std::unique_ptr<UndoStep> step) {
        ASSERT_NE(step, nullptr);
        geometry.History().Push(std::move(step));
        states.push_back(State());
    }
    void Stroke(unsigned moves) {
        LevelMesh& mesh = *geometry.Bound();
        const std::unique_ptr<MeshChange> change(mesh.StartChange());
        std::uniform_real_distribution<float> step(-0.2f, 0.2f);
        for (unsigned i = 0; i < moves; ++i) {
            const auto vertex = static_cast<uint32_t>(random() % mesh.VertexCount());
            const Vector by(step(random), step(random), step(random));
            if (mesh.ActiveLayer() == nullptr) {
                MoveVertex(*change, vertex, by);
                continue;
            }
            const uint32_t slot = TouchRecord(*change, vertex).layerSlot;
            Vector offset;
            mesh.Layer()->get(&offset, slot);
            offset += by;
            mesh.Layer()->set(nullptr, slot, vertex, &offset, true);
        }
        change->Finish(true, false);
        states.push_back(State());
    }
    /// The complete user-visible state: all levels, and the offsets and the base of each layer.
    std::string State() const {
        std::string state = StateOfAll(geometry);
        const auto put = [&state](const Vector& v) {
            state.append(reinterpret_cast<const char*>(&v), sizeof v);
        };
        for (uint32_t i = 0; i < geometry.LevelCount(); ++i) {
            for (const auto& layer : geometry.Layers().OfLevel(*geometry.Level(i))) {
                for (uint32_t v = 0; v < layer->Level()->VertexCount(); ++v) {
                    put(layer->Rest(v));
                    put(layer->Offset(v));
                }
            }
        }
        return state;
    }
    /// A layer of the bound level.
    SculptLayer& Layer(const char* name) {
        return *geometry.Layers().Find(*geometry.Bound(), name);
    }
    /// The surface of the highest level with all layers off.
    std::vector<Vector> Ground() {
        std::size_t steps = 0;
        for (const auto& layer : geometry.Layers().OfLevel(*geometry.Bound())) {
            SculptLayer::Properties given = layer->UserProperties();
            given.visible = false;
            if (auto step = SetLayerPropertiesAsStep(geometry, *layer, given)) {
                geometry.History().Push(std::move(step));
                ++steps;
            }
        }
        std::vector<Vector> ground = PositionsOf(*geometry.Bound());
        for (; steps > 0; --steps) geometry.History().Undo(geometry);
        return ground;
    }

    LevelGeometry geometry;
    std::mt19937 random{5};
    std::vector<std::string> states;
};

TEST_F(TurnedLayersUndoTest, EveryBitIsRestoredAcrossAddedAndRemovedLevels) {
    states.push_back(State());
    Push(SubdivideAsStep(geometry));
    Push(SubdivideAsStep(geometry));
    for (const char* name : {"a", "b", "c"}) {
        Push(AddLayerAsStep(geometry, name));
        Stroke(120);
    }
    Push(SetLayerPropertiesAsStep(geometry, Layer("a"), {"a", 0.37f, true, true}));
    Push(SetLayerPropertiesAsStep(geometry, Layer("b"), {"b", 1.0f, false, true}));
    Push(BindLevelAsStep(geometry, 1));
    Push(AddLayerAsStep(geometry, "middle"));
    Stroke(60);
    Push(BindLevelAsStep(geometry, 0));
    Stroke(10);
    Push(BindLevelAsStep(geometry, 2));
    Push(SelectLayerAsStep(geometry, &Layer("a")));
    Stroke(80);
    Push(SetLayerPropertiesAsStep(geometry, Layer("b"), {"b", 0.9f, true, true}));
    Push(MergeLayerDownAsStep(geometry, Layer("b")));
    Push(BindLevelAsStep(geometry, 0));
    Stroke(8);
    Push(BindLevelAsStep(geometry, 1));
    Push(DeleteLevelsAsStep(geometry, true));
    Stroke(30);
    // Propagates the deformation to the highest level, and adds a level above it.
    Push(SubdivideAsStep(geometry));
    Push(UnsubdivideAsStep(geometry));
    Push(BindLevelAsStep(geometry, 0));
    Stroke(8);
    Push(BindLevelAsStep(geometry, 2));
    Push(RemoveLayerAsStep(geometry, *geometry.Layers().OfLevel(*geometry.Bound()).front()));
    Push(BindLevelAsStep(geometry, 1));
    Push(DeleteLevelsAsStep(geometry, false));

    for (int round = 0; round < 2; ++round) {
        std::size_t now = states.size() - 1;
        while (geometry.History().Undo(geometry)) ASSERT_TRUE(State() == states[--now]) << now;
        ASSERT_EQ(now, 0u);
        while (geometry.History().Redo(geometry)) ASSERT_TRUE(State() == states[++now]) << now;
        ASSERT_EQ(now, states.size() - 1);
    }
}

TEST_F(TurnedLayersUndoTest, LayerBaseIsRestoredExactlyByUndoAndRedoOfADeformation) {
    states.push_back(State());
    Push(SubdivideAsStep(geometry));
    Push(SubdivideAsStep(geometry));
    for (const char* name : {"a", "b", "c"}) {
        Push(AddLayerAsStep(geometry, name));
        Stroke(150);
    }
    Push(SetLayerPropertiesAsStep(geometry, Layer("b"), {"b", 0.37f, true, true}));
    Push(BindLevelAsStep(geometry, 0));
    Push(BindLevelAsStep(geometry, 2));
    const std::vector<Vector> before = Ground();
    Push(BindLevelAsStep(geometry, 0));
    Stroke(12);
    Push(BindLevelAsStep(geometry, 2));
    const std::vector<Vector> bent = Ground();
    EXPECT_GT(Farthest(before, bent), 0.01f);
    UndoHistory& history = geometry.History();
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 3; ++i) ASSERT_TRUE(history.Undo(geometry));
        for (int i = 0; i < 3; ++i) ASSERT_TRUE(history.Redo(geometry));
        ExpectSameBits(Ground(), bent);
    }
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(history.Undo(geometry));
    ExpectSameBits(Ground(), before);
}

TEST_F(TurnedLayersUndoTest, UndoOfADeformationRestoresTheLayerBaseRecords) {
    states.push_back(State());
    Push(SubdivideAsStep(geometry));
    Push(SubdivideAsStep(geometry));
    Push(AddLayerAsStep(geometry, "a"));
    Stroke(150);
    // The layer base then includes the first stroke; the vertices that only the next stroke touches
    // have no record yet.
    Push(SetLayerPropertiesAsStep(geometry, Layer("a"), {"a", 0.37f, true, true}));
    Stroke(150);
    const auto known = [this] {
        return geometry.Layers().FindLayerBase(*geometry.Level(2))->LayeredVertices();
    };
    const std::vector<LayerBase::LayeredVertex> before = known();
    ASSERT_FALSE(before.empty());
    Push(BindLevelAsStep(geometry, 0));
    Stroke(12);
    Push(BindLevelAsStep(geometry, 2));
    const std::vector<LayerBase::LayeredVertex> bent = known();
    EXPECT_GT(bent.size(), before.size());
    UndoHistory& history = geometry.History();
    const auto expectKnots = [&known](const std::vector<LayerBase::LayeredVertex>& expected) {
        const std::vector<LayerBase::LayeredVertex> layeredVertices = known();
        ASSERT_EQ(layeredVertices.size(), expected.size());
        for (std::size_t i = 0; i < layeredVertices.size(); ++i) {
            EXPECT_EQ(layeredVertices[i].vertex, expected[i].vertex);
            EXPECT_TRUE(LayerBase::SameLayeredVertex(layeredVertices[i], expected[i]))
                << layeredVertices[i].vertex;
        }
    };
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 3; ++i) ASSERT_TRUE(history.Undo(geometry));
        expectKnots(before);
        for (int i = 0; i < 3; ++i) ASSERT_TRUE(history.Redo(geometry));
        expectKnots(bent);
    }
}

}  // namespace
}  // namespace trovik::test
