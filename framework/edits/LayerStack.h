// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/edits/LayerGround.h"
#include "framework/edits/UndoHistory.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// The sculpt layers of a geometry: any number on each level, lowest first. What the operations
/// below do to a level is told in LayerGround; each works on the geometry's bound level or on the
/// level of its layer, and answers its undo step, not yet pushed, or null when nothing changed.
/// None may run during a stroke. Cost: O(touched vertices) of the level where the surface may
/// change, otherwise O(layers).
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

/// \name Operations
/// @{

/// A layer on top of the bound level's, which strokes then record into.
TROVIK_API std::unique_ptr<UndoStep> AddLayerAsStep(LevelGeometry& geometry,
                                                    const std::string& name);
/// The surface loses what the layer gave it. If it was the active one, none is then.
TROVIK_API std::unique_ptr<UndoStep> RemoveLayerAsStep(LevelGeometry& geometry, SculptLayer& layer);
/// Name, strength (any finite number), visibility and write lock at once.
TROVIK_API std::unique_ptr<UndoStep> GiveLayerAsStep(LevelGeometry& geometry,
                                                     SculptLayer& layer,
                                                     const SculptLayer::Properties& properties);
/// The layer becomes the `place`-th of its level, 0 being the lowest; at most the highest.
TROVIK_API std::unique_ptr<UndoStep> MoveLayerAsStep(LevelGeometry& geometry,
                                                     SculptLayer& layer,
                                                     std::size_t place);
/// Strokes on the bound level record into the layer, which lies on it; null: into none.
TROVIK_API std::unique_ptr<UndoStep> SelectLayerAsStep(LevelGeometry& geometry, SculptLayer* layer);
/// A copy right above the layer, which becomes the active one. It acts like the layer itself, so
/// the surface is displaced once more.
TROVIK_API std::unique_ptr<UndoStep> DuplicateLayerAsStep(LevelGeometry& geometry,
                                                          SculptLayer& layer,
                                                          const std::string& name);
/// Adds the layer to the one below, which gets strength 1, and removes it; the surface keeps its
/// bits. The layer below becomes active if the layer was. \throw HostError when there is none
/// below, or one of both is hidden or locked.
TROVIK_API std::unique_ptr<UndoStep> MergeLayerDownAsStep(LevelGeometry& geometry,
                                                          SculptLayer& layer);
/// Takes away the layer's offsets where the level is frozen: all of them under full freeze, a share
/// under less. \throw HostError when the layer is locked.
TROVIK_API std::unique_ptr<UndoStep> EraseLayerByFreezeAsStep(LevelGeometry& geometry,
                                                              SculptLayer& layer);
/// @}

}  // namespace trovik
