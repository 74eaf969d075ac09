// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/LayerBase.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// The sculpt layers of a geometry. Each level has any number of layers, which are listed from
/// lowest to highest. LayerBase describes how layers affect the surface, and LayerSteps.h contains
/// the operations on them. Each operation works on the bound level or on the level of its layer,
/// and returns its undo step without pushing it, or null if nothing changed. The operations must
/// not be called during a stroke. Cost: O(touched vertices of the level) if the surface may change,
/// otherwise O(layers).
class TROVIK_API LayerStack {
public:
    using Layers = LayerBase::Layers;

    /// All layers; the layers of one level are in stack order.
    const Layers& All() const { return layers; }
    /// The layers of one level, lowest first.
    Layers OfLevel(const LevelMesh& level) const;
    /// Returns the highest layer with that name on the level, or null.
    std::shared_ptr<SculptLayer> Find(const LevelMesh& level, const std::string& name) const;
    /// Returns the shared pointer to a layer of this stack; null if the stack does not contain it.
    std::shared_ptr<SculptLayer> Shared(const SculptLayer* layer) const;

    /// Adds a layer on top of its level's layers. Used while loading a geometry.
    void Insert(std::shared_ptr<SculptLayer> layer);
    /// Moves all layers and layer bases of another stack into this one.
    void Adopt(LayerStack& other);
    /// Replaces the layers of a level.
    void SetOfLevel(const LevelMesh& level, const Layers& newLayers);
    LayerBase& LayerBaseOf(const LevelMesh& level) { return layerBases[&level]; }
    /// Returns null if the level has no layer base yet.
    const LayerBase* FindLayerBase(const LevelMesh& level) const;
    /// Renumbers the vertices: vertex v of the level becomes vertex map[v].
    void Renumber(const LevelMesh& level, const std::vector<uint32_t>& map);
    /// Called when a level is destroyed; removes its layers and their base.
    void Forget(const LevelMesh& level);

private:
    Layers layers;
    std::map<const LevelMesh*, LayerBase> layerBases;
};

}  // namespace trovik
