// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/UndoHistory.h"
#include "framework/layers/LayerStack.h"

#include <memory>
#include <string>

namespace trovik {

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
/// under less. Hidden vertices keep theirs. \throw HostError when the layer is locked.
TROVIK_API std::unique_ptr<UndoStep> EraseLayerByFreezeAsStep(LevelGeometry& geometry,
                                                              SculptLayer& layer);
/// @}

}  // namespace trovik
