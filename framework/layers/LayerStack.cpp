// SPDX-License-Identifier: Apache-2.0
#include "framework/layers/LayerStack.h"

#include <utility>

namespace trovik {

LayerStack::Layers LayerStack::OfLevel(const LevelMesh& level) const {
    Layers found;
    for (const auto& layer : layers)
        if (layer->Level() == &level) found.push_back(layer);
    return found;
}

std::shared_ptr<SculptLayer> LayerStack::Find(const LevelMesh& level,
                                              const std::string& name) const {
    for (auto layer = layers.rbegin(); layer != layers.rend(); ++layer)
        if ((*layer)->Level() == &level && (*layer)->Name() == name) return *layer;
    return nullptr;
}

std::shared_ptr<SculptLayer> LayerStack::Shared(const SculptLayer* layer) const {
    for (const auto& one : layers)
        if (one.get() == layer) return one;
    return nullptr;
}

void LayerStack::Insert(std::shared_ptr<SculptLayer> layer) { layers.push_back(std::move(layer)); }

void LayerStack::Adopt(LayerStack& other) {
    layers.insert(layers.end(), other.layers.begin(), other.layers.end());
    layerBases.merge(other.layerBases);
    other.layers.clear();
}

void LayerStack::SetOfLevel(const LevelMesh& level, const Layers& newLayers) {
    std::erase_if(layers, [&level](const auto& one) { return one->Level() == &level; });
    layers.insert(layers.end(), newLayers.begin(), newLayers.end());
}

const LayerBase* LayerStack::FindLayerBase(const LevelMesh& level) const {
    const auto found = layerBases.find(&level);
    return found == layerBases.end() ? nullptr : &found->second;
}

void LayerStack::Renumber(const LevelMesh& level, const std::vector<uint32_t>& map) {
    for (const auto& layer : layers)
        if (layer->Level() == &level) layer->Renumber(map);
    const auto ground = layerBases.find(&level);
    if (ground != layerBases.end()) ground->second.Renumber(map);
}

void LayerStack::Forget(const LevelMesh& level) {
    std::erase_if(layers, [&level](const auto& one) { return one->Level() == &level; });
    layerBases.erase(&level);
}

}  // namespace trovik
