// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/LayerSteps.h"

#include "framework/edits/LayerEdit.h"
#include "framework/errors/HostError.h"
#include "framework/multires/LevelGeometry.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace trovik {

namespace {

uint32_t LevelOf(const SculptLayer& layer) { return static_cast<uint32_t>(layer.Level()->Index()); }

std::string Quoted(const SculptLayer& layer) { return "layer \"" + layer.Name() + "\""; }

std::size_t IndexIn(const LayerBase::Layers& layers, const SculptLayer& layer) {
    const auto found = std::find_if(
        layers.begin(), layers.end(), [&layer](const auto& one) { return one.get() == &layer; });
    assert(found != layers.end() && "the layer is not in the stack");
    return static_cast<std::size_t>(found - layers.begin());
}

LayerBase::Layers::iterator At(LayerBase::Layers& layers, std::size_t index) {
    return layers.begin() + static_cast<std::ptrdiff_t>(index);
}

void SetOffset(SculptLayer& layer, uint32_t slot, const Vector& offset) {
    SculptLayer::State state = layer.StateOfSlot(slot);
    state.offset = offset;
    layer.SwapState(slot, state);
}

Vector Scaled(float factor, const Vector& v) { return {factor * v.x, factor * v.y, factor * v.z}; }

}  // namespace

std::unique_ptr<UndoStep> AddLayerAsStep(LevelGeometry& geometry, const std::string& name) {
    LayerEdit edit(geometry, geometry.BoundIndex(), LayerEdit::Reach::Properties);
    edit.Layers().push_back(std::make_shared<SculptLayer>(&edit.Mesh(), name));
    edit.Mesh().SetActiveLayer(edit.Layers().back().get());
    return edit.Finish("Add Layer");
}

std::unique_ptr<UndoStep> RemoveLayerAsStep(LevelGeometry& geometry, SculptLayer& layer) {
    LayerEdit edit(geometry, LevelOf(layer), LayerEdit::Reach::Surface);
    if (edit.Mesh().ActiveLayer() == &layer) edit.Mesh().SetActiveLayer(nullptr);
    edit.Layers().erase(At(edit.Layers(), IndexIn(edit.Layers(), layer)));
    return edit.Finish("Remove Layer");
}

std::unique_ptr<UndoStep> SetLayerPropertiesAsStep(LevelGeometry& geometry,
                                                   SculptLayer& layer,
                                                   const SculptLayer::Properties& properties) {
    const SculptLayer::Properties before = layer.UserProperties();
    const bool showsOtherwise =
        properties.strength != before.strength || properties.visible != before.visible;
    LayerEdit edit(geometry,
                   LevelOf(layer),
                   showsOtherwise ? LayerEdit::Reach::Surface : LayerEdit::Reach::Properties);
    layer.SetUserProperties(properties);
    const char* label = properties.visible != before.visible     ? "Layer Visibility"
                        : properties.strength != before.strength ? "Layer Strength"
                        : properties.writable != before.writable ? "Layer Lock"
                                                                 : "Rename Layer";
    return edit.Finish(label);
}

std::unique_ptr<UndoStep> MoveLayerAsStep(LevelGeometry& geometry,
                                          SculptLayer& layer,
                                          std::size_t index) {
    LayerEdit edit(geometry, LevelOf(layer), LayerEdit::Reach::Surface);
    LayerBase::Layers& layers = edit.Layers();
    const std::size_t from = IndexIn(layers, layer);
    const std::shared_ptr<SculptLayer> moved = layers[from];
    layers.erase(At(layers, from));
    layers.insert(At(layers, std::min(index, layers.size())), moved);
    return edit.Finish("Layer Order");
}

std::unique_ptr<UndoStep> SelectLayerAsStep(LevelGeometry& geometry, SculptLayer* layer) {
    LayerEdit edit(geometry, geometry.BoundIndex(), LayerEdit::Reach::Properties);
    assert(layer == nullptr || layer->Level() == &edit.Mesh());
    edit.Mesh().SetActiveLayer(layer);
    return edit.Finish("Select Layer");
}

std::unique_ptr<UndoStep> DuplicateLayerAsStep(LevelGeometry& geometry,
                                               SculptLayer& layer,
                                               const std::string& name) {
    LayerEdit edit(geometry, LevelOf(layer), LayerEdit::Reach::Surface);
    auto copy = std::make_shared<SculptLayer>(&edit.Mesh(), name);
    SculptLayer::Properties given = layer.UserProperties();
    given.name = name;
    copy->SetUserProperties(given);
    for (uint32_t slot = 0; slot < layer.SlotCount(); ++slot) {
        SetOffset(*copy, copy->SlotOf(layer.VertexOfSlot(slot)), layer.StateOfSlot(slot).offset);
    }
    edit.Layers().insert(At(edit.Layers(), IndexIn(edit.Layers(), layer) + 1), copy);
    edit.Mesh().SetActiveLayer(copy.get());
    return edit.Finish("Duplicate Layer");
}

std::unique_ptr<UndoStep> MergeLayerDownAsStep(LevelGeometry& geometry, SculptLayer& layer) {
    LayerBase::Layers present = geometry.Layers().OfLevel(*layer.Level());
    const std::size_t index = IndexIn(present, layer);
    if (index == 0) throw HostError(Quoted(layer) + " has no layer below it to merge into");
    SculptLayer& below = *present[index - 1];
    for (const SculptLayer* one : {&layer, &below}) {
        if (!one->UserProperties().visible)
            throw HostError(Quoted(*one) + " is hidden and cannot be merged");
        if (!one->UserProperties().writable)
            throw HostError(Quoted(*one) + " is locked and cannot be merged");
    }

    LayerEdit edit(geometry, LevelOf(layer), LayerEdit::Reach::HiddenFromSurface);
    for (uint32_t slot = 0; slot < below.SlotCount(); ++slot)
        SetOffset(below, slot, Scaled(below.Strength(), below.StateOfSlot(slot).offset));
    for (uint32_t slot = 0; slot < layer.SlotCount(); ++slot) {
        const uint32_t target = below.SlotOf(layer.VertexOfSlot(slot));
        SetOffset(below,
                  target,
                  below.StateOfSlot(target).offset +
                      Scaled(layer.Strength(), layer.StateOfSlot(slot).offset));
    }
    SculptLayer::Properties given = below.UserProperties();
    given.strength = 1.0f;
    below.SetUserProperties(given);
    if (edit.Mesh().ActiveLayer() == &layer) edit.Mesh().SetActiveLayer(&below);
    edit.Layers().erase(At(edit.Layers(), index));
    return edit.Finish("Merge Layer");
}

std::unique_ptr<UndoStep> EraseLayerByFreezeAsStep(LevelGeometry& geometry, SculptLayer& layer) {
    if (!layer.UserProperties().writable)
        throw HostError(Quoted(layer) + " is locked and cannot be erased");
    LayerEdit edit(geometry, LevelOf(layer), LayerEdit::Reach::Surface);
    constexpr float fullAmount = freezeAmountMask;
    for (uint32_t slot = 0; slot < layer.SlotCount(); ++slot) {
        const uint32_t vertex = layer.VertexOfSlot(slot);
        const uint8_t amount = edit.Mesh().Freeze(vertex);
        if (amount == 0 || edit.Mesh().IsVertexHidden(vertex)) continue;
        const float left = 1.0f - static_cast<float>(amount) / fullAmount;
        const Vector& offset = layer.StateOfSlot(slot).offset;
        SetOffset(layer, slot, amount == freezeAmountMask ? Vector() : Scaled(left, offset));
    }
    return edit.Finish("Erase Layer");
}

}  // namespace trovik
