// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/TurnedLayers.h"

#include "framework/layers/SameState.h"

#include <algorithm>

namespace trovik {

TurnedLayers::TurnedLayers(LevelMesh& level,
                           LayerGround::Layers ofLevel,
                           LayerGround& groundOfLevel)
    : mesh(level), layers(std::move(ofLevel)), ground(&groundOfLevel) {
    for (const auto& layer : layers) entries.push_back({layer->Handle(), {}, {}});
}

void TurnedLayers::Turn(uint32_t vertex, const Vector& place, const SurfaceMove& move) {
    const LayerGround::Held held = ground->HeldOf(mesh, layers, vertex);
    if (held.entries.empty()) return;
    const LayerGround::Held carried =
        LayerGround::Carried(held, layers, mesh.Position(vertex), place, move);
    bool changed = !LayerGround::SameKnot(held.knot, carried.knot);
    for (std::size_t i = 0; i < held.entries.size(); ++i) {
        const LayerGround::Held::Entry& entry = held.entries[i];
        SculptLayer::State state = carried.entries[i].state;
        if (SameState(entry.state, state)) continue;
        changed = true;
        layers[entry.layer]->SwapState(entry.slot, state);
        entries[entry.layer].slots.push_back(entry.slot);
        entries[entry.layer].states.push_back(state);
    }
    if (!changed) return;
    knots.push_back({carried.knot, true});
}

void TurnedLayers::Finish() {
    using OtherKnot = LayerGround::OtherKnot;
    std::sort(knots.begin(), knots.end(), [](const OtherKnot& a, const OtherKnot& b) {
        return a.knot.vertex < b.knot.vertex;
    });
    knots.shrink_to_fit();
    ground->Exchange(knots);
    ground = nullptr;
    layers.clear();
    std::erase_if(entries, [](const Entries& list) { return list.slots.empty(); });
    for (Entries& list : entries) {
        list.slots.shrink_to_fit();
        list.states.shrink_to_fit();
    }
}

void TurnedLayers::Exchange(LayerGround& ofLevel) {
    for (Entries& list : entries) {
        SculptLayer* layer = *list.layer;
        if (layer == nullptr) continue;
        for (std::size_t i = 0; i < list.slots.size(); ++i)
            layer->SwapState(list.slots[i], list.states[i]);
    }
    ofLevel.Exchange(knots);
}

uint64_t TurnedLayers::Bytes() const {
    uint64_t bytes = sizeof(TurnedLayers) + entries.capacity() * sizeof(Entries) +
                     knots.capacity() * sizeof(LayerGround::OtherKnot);
    for (const Entries& list : entries) {
        bytes += list.slots.capacity() * sizeof(uint32_t) +
                 list.states.capacity() * sizeof(SculptLayer::State);
    }
    return bytes;
}

}  // namespace trovik
