// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/LayerEdit.h"

#include "framework/layers/SameState.h"
#include "framework/math/SameBits.h"
#include "framework/multires/LevelGeometry.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace trovik {

namespace {

bool SameProperties(const SculptLayer::Properties& a, const SculptLayer::Properties& b) {
    return a.name == b.name && SameBits(a.strength, b.strength) && a.visible == b.visible &&
           a.writable == b.writable;
}

std::vector<SculptLayer::State> StatesOf(const SculptLayer& layer) {
    std::vector<SculptLayer::State> states;
    states.reserve(layer.SlotCount());
    for (uint32_t slot = 0; slot < layer.SlotCount(); ++slot)
        states.push_back(layer.StateOfSlot(slot));
    return states;
}

}  // namespace

LayerEdit::LayerEdit(LevelGeometry& ofGeometry, uint32_t ofLevel, Reach ofReach)
    : geometry(ofGeometry),
      level(ofLevel),
      mesh(*geometry.Level(level)),
      reach(ofReach),
      layers(geometry.Layers().OfLevel(mesh)),
      rowsBefore(LayerStep::RowsOf(geometry, level)) {
    if (const SculptLayer* active = mesh.ActiveLayer()) activeBefore = active->Handle();
    if (reach == Reach::Properties) return;
    for (const auto& layer : layers) statesBefore.push_back(StatesOf(*layer));
    LayerBase& ground = geometry.Layers().LayerBaseOf(mesh);
    knotsBefore = ground.LayeredVertices();
    ground.Settle(mesh, layers);
}

std::unique_ptr<UndoStep> LayerEdit::Finish(const std::string& label) {
    auto step = std::make_unique<LayerStep>();
    step->label = label;
    step->level = level;
    geometry.Layers().SetOfLevel(mesh, layers);
    LayerBase& ground = geometry.Layers().LayerBaseOf(mesh);
    if (reach == Reach::Surface)
        TakeVertices(*step, ground.Compose(mesh, layers));
    else if (reach == Reach::HiddenFromSurface)
        ground.Keep(mesh, layers);
    if (reach != Reach::Properties) {
        TakeEntries(*step);
        step->layeredVertices = ground.DifferencesTo(knotsBefore);
        step->layeredVertices.shrink_to_fit();
    }
    const SculptLayer* active = mesh.ActiveLayer();
    const bool sameActive = (activeBefore == nullptr ? nullptr : *activeBefore) == active;
    step->active = std::move(activeBefore);
    step->rows = std::move(rowsBefore);
    if (sameActive && step->vertices.empty() && step->entries.empty() && SameRows(*step)) {
        // Without an undo step, the layer base must be restored here.
        ground.Exchange(step->layeredVertices);
        return nullptr;
    }
    step->FindKept(LayerStep::RowsOf(geometry, level));
    if (!step->vertices.empty()) mesh.ContentChanged();
    geometry.ReportVertices(
        level, SurfaceChange::Positions | SurfaceChange::Normals, step->vertices);
    return step;
}

bool LayerEdit::SameRows(const LayerStep& step) const {
    return std::equal(step.rows.begin(),
                      step.rows.end(),
                      layers.begin(),
                      layers.end(),
                      [](const LayerStep::Row& row, const std::shared_ptr<SculptLayer>& layer) {
                          return row.layer == layer &&
                                 SameProperties(row.given, layer->UserProperties());
                      });
}

void LayerEdit::TakeVertices(LayerStep& step, const LayerBase::Replaced& replaced) const {
    for (std::size_t i = 0; i < replaced.vertices.size(); ++i) {
        const uint32_t vertex = replaced.vertices[i];
        const PackedNormal& normal = replaced.normals[i];
        if (SameBits(mesh.Position(vertex), replaced.positions[i]) &&
            SameBits(mesh.vertexNormals.array[vertex], normal))
            continue;
        step.vertices.push_back(vertex);
        step.positions.push_back(replaced.positions[i]);
        step.normals.push_back({normal.x, normal.y, normal.z});
    }
    step.vertices.shrink_to_fit();
    step.positions.shrink_to_fit();
    step.normals.shrink_to_fit();
}

void LayerEdit::TakeEntries(LayerStep& step) const {
    const auto add = [&step](const std::shared_ptr<SculptLayer>& layer,
                             const std::vector<SculptLayer::State>& before) {
        LayerStep::Entries list{layer, {}, {}};
        for (uint32_t slot = 0; slot < layer->SlotCount(); ++slot) {
            const SculptLayer::State& now = layer->StateOfSlot(slot);
            // A new entry had no offset before.
            const SculptLayer::State old = slot < before.size()
                                               ? before[slot]
                                               : SculptLayer::State{now.seen, Vector(), now.seen};
            if (SameState(old, now)) continue;
            list.slots.push_back(slot);
            list.states.push_back(old);
        }
        if (list.slots.empty()) return;
        list.slots.shrink_to_fit();
        list.states.shrink_to_fit();
        step.entries.push_back(std::move(list));
    };
    for (std::size_t i = 0; i < rowsBefore.size(); ++i) add(rowsBefore[i].layer, statesBefore[i]);
}

}  // namespace trovik
