// SPDX-License-Identifier: Apache-2.0
#include "tests/edits/RandomEdits.h"

#include "framework/edits/LayerSteps.h"
#include "framework/errors/HostError.h"
#include "framework/multires/Steps.h"
#include "framework/visibility/VisibilityChange.h"

#include <algorithm>
#include <cmath>

namespace trovik::test {

RandomEdits::RandomEdits(RandomNumbers& numbers)
    : random(numbers), drawn(numbers), geometry(*drawn.Bench().geometry) {
    if (drawn.Bench().layer != nullptr) geometry.Layers().Insert(std::move(drawn.Bench().layer));
    reach = Reach();
}

void RandomEdits::Edit() {
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

std::string RandomEdits::CaseDescription() const {
    return drawn.CaseDescription() + "; edit of kind " + std::to_string(kind) + ", " +
           std::to_string(layerKind);
}

float RandomEdits::Reach() const {
    float most = 0.0f;
    const LevelMesh& mesh = *geometry.Bound();
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        const Vector p = mesh.Position(v);
        const float far = std::max({std::abs(p.x), std::abs(p.y), std::abs(p.z)});
        if (!(far <= most)) most = far;
    }
    return most;
}

bool RandomEdits::MayStroke() const {
    // Under a locked layer, no vertex moves, but the brush recomputes the normals without recording
    // them. A StrokeLoop restores them, but these strokes call the brush directly.
    const SculptLayer* layer = geometry.Bound()->ActiveLayer();
    if (layer != nullptr && !layer->Writable()) return false;
    // Extreme positions keep growing with further strokes until they become NaN.
    return Reach() < 100.0f * reach;
}

void RandomEdits::Push(std::unique_ptr<UndoStep> step) {
    if (step != nullptr) geometry.History().Push(std::move(step));
}

void RandomEdits::Freeze() {
    LevelMesh& mesh = *geometry.Bound();
    const auto before = FreezeAmounts(mesh);
    const float share = random.OneOf({0.1f, 0.5f, 1.0f});
    const bool all = random.Chance(0.5f);
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
        if (random.Chance(share))
            mesh.SetFreeze(v, static_cast<uint8_t>(all ? 127 : random.Below(128)));
    Push(MakeFreezeStep(mesh, before));
}

void RandomEdits::Hide() {
    const LevelMesh& mesh = *geometry.Bound();
    const uint32_t length = random.OneOf({1u, 4u, 16u});
    FaceChoice chosen(mesh.faceCount);
    for (uint32_t face = 0; face < mesh.faceCount; face += length)
        if (random.Chance(0.4f))
            std::fill_n(chosen.begin() + face, std::min(length, mesh.faceCount - face), uint8_t{1});
    Push(ChangeVisibilityAsStep(geometry,
                                random.OneOf({VisibilityChange::Hide,
                                              VisibilityChange::Hide,
                                              VisibilityChange::Show,
                                              VisibilityChange::Isolate,
                                              VisibilityChange::Invert}),
                                chosen));
}

void RandomEdits::Level() {
    const uint32_t bound = geometry.BoundIndex();
    const bool isHighest = bound + 1 == geometry.LevelCount();
    const uint32_t rare = random.Below(8);
    if (rare == 0)
        Push(DeleteLevelsAsStep(geometry, random.Chance(0.5f)));
    else if (rare == 1)
        Push(ApplyToBaseAsStep(geometry));
    else if (rare == 2)
        Unsubdivide();
    else if (isHighest && bound < 3 && geometry.Bound()->faceCount < 3000 && random.Chance(0.3f))
        Push(SubdivideAsStep(geometry));
    else if (!isHighest && (bound == 0 || random.Chance(0.5f)))
        Push(BindLevelAsStep(geometry, bound + 1));
    else if (bound > 0)
        Push(BindLevelAsStep(geometry, bound - 1));
}

void RandomEdits::Unsubdivide() {
    try {
        Push(UnsubdivideAsStep(geometry));
    } catch (const HostError&) {
        // Not every base is the refinement of another mesh.
    }
}

void RandomEdits::Transform() {
    const MatrixTransform before = geometry.Transform();
    const float scale = random.OneOf({0.5f, 1.0f, 2.0f});
    geometry.Transform().Set(
        {scale, 1.0f, scale}, random.In(-180.0f, 180.0f), random.In(-3.0f, 3.0f));
    Push(MakeTransformStep(geometry, before));
}

void RandomEdits::Layer() {
    const auto layers = geometry.Layers().OfLevel(*geometry.Bound());
    const uint32_t what = layerKind = random.Below(12);
    if (layers.empty() || what < 2) {
        Push(AddLayerAsStep(geometry, "layer " + std::to_string(++named)));
        return;
    }
    SculptLayer& layer = *layers[random.Below(static_cast<uint32_t>(layers.size()))];
    SculptLayer::Properties given = layer.UserProperties();
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
    Push(SetLayerPropertiesAsStep(geometry, layer, given));
}

void RandomEdits::MergeOrErase(SculptLayer& layer, const LayerBase::Layers& layers) {
    const bool mergeable =
        layers.size() > 1 && layers[0]->Writable() && layers[1]->Writable() && random.Chance(0.5f);
    if (mergeable)
        Push(MergeLayerDownAsStep(geometry, *layers[1]));
    else if (layer.UserProperties().writable)
        Push(EraseLayerByFreezeAsStep(geometry, layer));
}

}  // namespace trovik::test
