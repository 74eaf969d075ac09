// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/RotatedLayers.h"

#include "framework/layers/SameState.h"

#include <algorithm>

namespace trovik {

RotatedLayers::RotatedLayers(LevelMesh& level, LayerBase::Layers ofLevel, LayerBase& baseOfLevel)
    : mesh(level), layers(std::move(ofLevel)), ground(&baseOfLevel) {
    for (const auto& layer : layers) entries.push_back({layer->Handle(), {}, {}});
}

void RotatedLayers::Turn(uint32_t vertex, const Vector& position, const SurfaceMove& move) {
    const LayerBase::VertexLayers held = ground->VertexLayersOf(mesh, layers, vertex);
    if (held.entries.empty()) return;
    const LayerBase::VertexLayers carried =
        LayerBase::Carried(held, layers, mesh.Position(vertex), position, move);
    bool changed = !LayerBase::SameLayeredVertex(held.layeredVertex, carried.layeredVertex);
    for (std::size_t i = 0; i < held.entries.size(); ++i) {
        const LayerBase::VertexLayers::Entry& entry = held.entries[i];
        SculptLayer::State state = carried.entries[i].state;
        if (SameState(entry.state, state)) continue;
        changed = true;
        layers[entry.layer]->SwapState(entry.slot, state);
        entries[entry.layer].slots.push_back(entry.slot);
        entries[entry.layer].states.push_back(state);
    }
    if (!changed) return;
    layeredVertices.push_back({carried.layeredVertex, true});
}

void RotatedLayers::Finish() {
    using OtherLayeredVertex = LayerBase::OtherLayeredVertex;
    std::sort(layeredVertices.begin(),
              layeredVertices.end(),
              [](const OtherLayeredVertex& a, const OtherLayeredVertex& b) {
                  return a.layeredVertex.vertex < b.layeredVertex.vertex;
              });
    layeredVertices.shrink_to_fit();
    ground->Exchange(layeredVertices);
    ground = nullptr;
    layers.clear();
    std::erase_if(entries, [](const Entries& list) { return list.slots.empty(); });
    for (Entries& list : entries) {
        list.slots.shrink_to_fit();
        list.states.shrink_to_fit();
    }
}

void RotatedLayers::Exchange(LayerBase& ofLevel) {
    for (Entries& list : entries) {
        SculptLayer* layer = *list.layer;
        if (layer == nullptr) continue;
        for (std::size_t i = 0; i < list.slots.size(); ++i)
            layer->SwapState(list.slots[i], list.states[i]);
    }
    ofLevel.Exchange(layeredVertices);
}

uint64_t RotatedLayers::Bytes() const {
    uint64_t bytes = sizeof(RotatedLayers) + entries.capacity() * sizeof(Entries) +
                     layeredVertices.capacity() * sizeof(LayerBase::OtherLayeredVertex);
    for (const Entries& list : entries) {
        bytes += list.slots.capacity() * sizeof(uint32_t) +
                 list.states.capacity() * sizeof(SculptLayer::State);
    }
    return bytes;
}

}  // namespace trovik
