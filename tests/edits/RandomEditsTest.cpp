// SPDX-License-Identifier: Apache-2.0

/// \file
/// Edits whose every choice is drawn, on meshes that are drawn: strokes of the brush, freezing,
/// hidden faces, layers, levels, transformations. Undone to the start and redone to the end, every
/// bit is back at both ends, and at each step of the way. A short run by default;
/// TROVIK_RANDOM_EDITS sets the number of edits.
#include "framework/edits/LayerSteps.h"
#include "framework/errors/HostError.h"
#include "framework/layers/LayerStack.h"
#include "framework/multires/Steps.h"
#include "framework/visibility/VisibilityChange.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/random/RandomStroke.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace trovik::test {
namespace {

constexpr uint32_t editsPerMesh = 25;

/// All that the user sees of a geometry with its bound level, and the freeze and layers of all
/// levels.
class State {
public:
    explicit State(LevelGeometry& geometry) {
        LevelMesh& mesh = *geometry.Bound();
        Put(geometry.BoundIndex());
        Put(geometry.Place().ToWorld());
        Put(geometry.Place().ToLocal());
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
            Put(mesh.Position(v));
            const PackedNormal& normal = mesh.vertexNormals.array[v];
            for (const int16_t word : {normal.x, normal.y, normal.z}) Put(word);
        }
        for (uint32_t level = 0; level < geometry.LevelCount(); ++level) {
            const LevelMesh& one = *geometry.Level(level);
            Put(one.FrozenVertexCount());
            for (uint32_t v = 0; v < one.VertexCount(); ++v) {
                Put(one.Freeze(v));
                Put(one.FreezeOfTools(v));
            }
            for (uint32_t face = 0; face < one.faceCount; ++face) Put(one.IsFaceHidden(face));
        }
        for (uint32_t level = 0; level < geometry.LevelCount(); ++level)
            PutLayers(geometry, *geometry.Level(level));
    }
    bool operator==(const State&) const = default;

private:
    void PutLayers(const LevelGeometry& geometry, const LevelMesh& mesh) {
        for (const auto& layer : geometry.Layers().OfLevel(mesh)) {
            const SculptLayer::Properties& given = layer->Given();
            bytes += given.name;
            Put(given.strength);
            Put(given.visible);
            Put(given.writable);
            Put(layer.get() == mesh.ActiveLayer());
            for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
                Put(layer->Offset(v));
                Put(layer->Rest(v));
            }
        }
    }
    template <typename T>
    void Put(const T& value) {
        char raw[sizeof value];
        std::memcpy(raw, &value, sizeof value);
        bytes.append(raw, sizeof value);
    }
    std::string bytes;
};

const UndoStep* Newest(const UndoHistory& history) {
    return history.Position() == 0 ? nullptr : &history.Shell(history.Position() - 1);
}

/// Draws edits of one bench.
class RandomEdits {
public:
    explicit RandomEdits(RandomNumbers& numbers)
        : random(numbers), drawn(numbers), geometry(*drawn.Bench().geometry) {
        if (drawn.Bench().layer != nullptr)
            geometry.Layers().Insert(std::move(drawn.Bench().layer));
        reach = Reach();
    }

    void Edit() {
        kind = random.Below(11);
        switch (kind) {
            case 0:
                Freeze();
                break;
            case 1:
                Level();
                break;
            case 2:
                Transform();
                break;
            case 3:
            case 4:
            case 5:
                Layer();
                break;
            case 6:
                Hide();
                break;
            default:
                if (MayStroke()) drawn.Stroke();
                break;
        }
    }

    LevelGeometry& Geometry() { return geometry; }
    std::string Story() const {
        return drawn.Story() + "; edit of kind " + std::to_string(kind) + ", " +
               std::to_string(layerKind);
    }

private:
    float Reach() const {
        float most = 0.0f;
        const LevelMesh& mesh = *geometry.Bound();
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
            const Vector p = mesh.Position(v);
            const float far = std::max({std::abs(p.x), std::abs(p.y), std::abs(p.z)});
            if (!(far <= most)) most = far;
        }
        return most;
    }

    bool MayStroke() const {
        // A layer that refuses changes keeps every vertex in place, but the brush makes the normals
        // under it anew, for which it keeps no records.
        const SculptLayer* layer = geometry.Bound()->ActiveLayer();
        if (layer != nullptr && !layer->Writable()) return false;
        // What has been driven apart goes on doing so, up to what is no number.
        return Reach() < 100.0f * reach;
    }

    void Push(std::unique_ptr<UndoStep> step) {
        if (step != nullptr) geometry.History().Push(std::move(step));
    }

    void Freeze() {
        LevelMesh& mesh = *geometry.Bound();
        const auto before = FreezeAmounts(mesh);
        const float share = random.OneOf({0.1f, 0.5f, 1.0f});
        const bool all = random.Chance(0.5f);
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
            if (random.Chance(share))
                mesh.SetFreeze(v, static_cast<uint8_t>(all ? 127 : random.Below(128)));
        Push(MakeFreezeStep(mesh, before));
    }

    void Hide() {
        const LevelMesh& mesh = *geometry.Bound();
        const uint32_t length = random.OneOf({1u, 4u, 16u});
        FaceChoice chosen(mesh.faceCount);
        for (uint32_t face = 0; face < mesh.faceCount; face += length)
            if (random.Chance(0.4f))
                std::fill_n(
                    chosen.begin() + face, std::min(length, mesh.faceCount - face), uint8_t{1});
        Push(ChangeVisibilityAsStep(geometry,
                                    random.OneOf({VisibilityChange::Hide,
                                                  VisibilityChange::Hide,
                                                  VisibilityChange::Show,
                                                  VisibilityChange::Isolate,
                                                  VisibilityChange::Invert}),
                                    chosen));
    }

    void Level() {
        const uint32_t bound = geometry.BoundIndex();
        const bool isHighest = bound + 1 == geometry.LevelCount();
        const uint32_t rare = random.Below(8);
        if (rare == 0)
            Push(DeleteLevelsAsStep(geometry, random.Chance(0.5f)));
        else if (rare == 1)
            Push(ApplyToBaseAsStep(geometry));
        else if (rare == 2)
            Unsubdivide();
        else if (isHighest && bound < 3 && geometry.Bound()->faceCount < 3000 &&
                 random.Chance(0.3f))
            Push(SubdivideAsStep(geometry));
        else if (!isHighest && (bound == 0 || random.Chance(0.5f)))
            Push(BindLevelAsStep(geometry, bound + 1));
        else if (bound > 0)
            Push(BindLevelAsStep(geometry, bound - 1));
    }

    void Unsubdivide() {
        try {
            Push(UnsubdivideAsStep(geometry));
        } catch (const HostError&) {
            // Not every base is the refinement of another mesh.
        }
    }

    void Transform() {
        const Placement before = geometry.Place();
        const float scale = random.OneOf({0.5f, 1.0f, 2.0f});
        geometry.Place().Set(
            {scale, 1.0f, scale}, random.In(-180.0f, 180.0f), random.In(-3.0f, 3.0f));
        Push(MakeTransformStep(geometry, before));
    }

    void Layer() {
        const auto layers = geometry.Layers().OfLevel(*geometry.Bound());
        const uint32_t what = layerKind = random.Below(12);
        if (layers.empty() || what < 2) {
            Push(AddLayerAsStep(geometry, "layer " + std::to_string(++named)));
            return;
        }
        SculptLayer& layer = *layers[random.Below(static_cast<uint32_t>(layers.size()))];
        SculptLayer::Properties given = layer.Given();
        switch (what) {
            case 2:
                Push(RemoveLayerAsStep(geometry, layer));
                return;
            case 3:
                given.name = "renamed " + std::to_string(++named);
                break;
            case 4:
                Push(MoveLayerAsStep(
                    geometry, layer, random.Below(static_cast<uint32_t>(layers.size()))));
                return;
            case 5:
            case 6:
                given.strength = random.OneOf({-1.0f, 0.0f, 0.3f, 1.0f, 1.7f});
                break;
            case 7:
                given.visible = !given.visible;
                break;
            case 8:
                given.writable = !given.writable;
                break;
            case 9:
                Push(SelectLayerAsStep(geometry, random.Chance(0.2f) ? nullptr : &layer));
                return;
            case 10:
                if (layers.size() < 5)
                    Push(DuplicateLayerAsStep(geometry, layer, "copy " + std::to_string(++named)));
                return;
            default:
                MergeOrErase(layer, layers);
                return;
        }
        Push(GiveLayerAsStep(geometry, layer, given));
    }

    void MergeOrErase(SculptLayer& layer, const LayerGround::Layers& layers) {
        const bool mergeable = layers.size() > 1 && layers[0]->Writable() &&
                               layers[1]->Writable() && random.Chance(0.5f);
        if (mergeable)
            Push(MergeLayerDownAsStep(geometry, *layers[1]));
        else if (layer.Given().writable)
            Push(EraseLayerByFreezeAsStep(geometry, layer));
    }

    RandomNumbers& random;
    RandomBench drawn;
    LevelGeometry& geometry;
    float reach = 0.0f;
    int named = 0;
    /// Of the edit at hand, for the trace.
    uint32_t kind = 0;
    uint32_t layerKind = 0;
};

TEST(RandomEdits, AreTakenBackAndBroughtAgainToTheBit) {
    HostSwitches switches;
    const TemporaryFolder folder;
    const uint32_t wanted = WantedCount("TROVIK_RANDOM_EDITS", 500);
    std::size_t steps = 0;
    for (uint32_t edit = 0; edit < wanted; edit += editsPerMesh) {
        // Each mesh has its own seed, so that one case can be looked at alone.
        RandomNumbers random(70260 + edit);
        switches.Draw(random);
        RandomEdits edits(random);
        LevelGeometry& geometry = edits.Geometry();
        UndoHistory& history = geometry.History();
        // All that is in a step goes through each form: as it is, packed, tightly packed, in a
        // file.
        history.SetKeeping({random.OneOf({uint64_t{0}, uint64_t{4096}}), random.Below(20)});
        const bool inFile = random.Chance(0.3f);
        if (inFile) {
            history.SetBudget(20000);
            history.SetSpillFolder(folder.Path(""));
        }
        std::vector<State> states;
        states.emplace_back(geometry);
        for (uint32_t i = 0; i < editsPerMesh; ++i) {
            SCOPED_TRACE("edit " + std::to_string(edit + i) + ": " + edits.Story());
            const UndoStep* before = Newest(history);
            edits.Edit();
            if (Newest(history) != before) states.emplace_back(geometry);
            ASSERT_TRUE(State(geometry) == states.back())
                << "an edit without a step: " << edits.Story();
            if (random.Chance(0.1f)) {
                // Back and on from there: what was undone is dropped.
                for (uint32_t n = random.Below(4); n > 0 && history.Undo(geometry); --n)
                    states.pop_back();
                ASSERT_TRUE(State(geometry) == states.back());
            }
        }
        std::string labels;
        for (std::size_t i = 0; i < history.StepCount(); ++i) labels += history.Label(i) + ", ";
        SCOPED_TRACE("edits of " + std::to_string(edit) + ": " + edits.Story() + ": " + labels);
        while (history.Redo(geometry)) states.emplace_back(geometry);
        steps += states.size() - 1;
        std::size_t now = states.size() - 1;
        while (history.Undo(geometry)) {
            ASSERT_TRUE(State(geometry) == states[--now]) << "back at " << now;
        }
        // The file may have been full, and the oldest are gone.
        ASSERT_TRUE(inFile || now == 0u) << now;
        while (history.Redo(geometry)) {
            ASSERT_TRUE(State(geometry) == states[++now]) << "forth at " << now;
        }
        ASSERT_EQ(now, states.size() - 1);
        ASSERT_EQ(history.TakeProblem(), "");
    }
    // Edits that do nothing would pass all of this.
    EXPECT_GT(steps, wanted / 2);
}

}  // namespace
}  // namespace trovik::test
