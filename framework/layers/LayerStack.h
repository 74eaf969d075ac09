// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/LayerGround.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// The sculpt layers of a geometry: any number on each level, lowest first. What the operations
/// of LayerSteps.h do to a level is described in LayerGround; each works on the geometry's bound
/// level or on the level of its layer, and answers its undo step, not yet pushed, or null when
/// nothing changed. None may run during a stroke. Cost: O(touched vertices) of the level where the
/// surface may change, otherwise O(layers).
class TROVIK_API LayerStack {
public:
    using Layers = LayerGround::Layers;

    /// All layers; those of one level in their order.
    const Layers& All() const { return layers; }
    /// Those of one level, lowest first.
    Layers OfLevel(const LevelMesh& level) const;
    /// The highest of that name on the level, or null.
    std::shared_ptr<SculptLayer> Find(const LevelMesh& level, const std::string& name) const;
    /// The layer as the stack holds it; null for one of another owner.
    std::shared_ptr<SculptLayer> Shared(const SculptLayer* layer) const;

    /// Puts a layer on top of those of its level, for who brings a geometry's content.
    void Insert(std::shared_ptr<SculptLayer> layer);
    /// Replaces the layers of a level.
    void SetOfLevel(const LevelMesh& level, const Layers& newLayers);
    LayerGround& Ground(const LevelMesh& level) { return grounds[&level]; }
    /// Null where the level has none yet.
    const LayerGround* FindGround(const LevelMesh& level) const;
    /// Vertex v of the level has become vertex map[v].
    void Renumber(const LevelMesh& level, const std::vector<uint32_t>& map);
    /// For the level, when it goes: its layers and their ground go with it.
    void Forget(const LevelMesh& level);

private:
    Layers layers;
    std::map<const LevelMesh*, LayerGround> grounds;
};

}  // namespace trovik
