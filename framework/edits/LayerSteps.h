// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/UndoHistory.h"
#include "framework/layers/LayerStack.h"

#include <memory>
#include <string>

namespace trovik {

/// \name Operations on layers. Each function returns its undo step without pushing it.
/// @{

/// Adds a layer above those of the bound level and activates it for subsequent strokes.
TROVIK_API std::unique_ptr<UndoStep> AddLayerAsStep(LevelGeometry& geometry,
                                                    const std::string& name);
/// Removes a layer and its contribution to the surface. If it was active, no layer is active
/// afterwards.
TROVIK_API std::unique_ptr<UndoStep> RemoveLayerAsStep(LevelGeometry& geometry, SculptLayer& layer);
/// Changes name, strength (any finite number), visibility and write lock in one step.
TROVIK_API std::unique_ptr<UndoStep> SetLayerPropertiesAsStep(
    LevelGeometry& geometry, SculptLayer& layer, const SculptLayer::Properties& properties);
/// Moves the layer to index `index` within its level; 0 is the lowest, and an index that is too
/// large selects the highest.
TROVIK_API std::unique_ptr<UndoStep> MoveLayerAsStep(LevelGeometry& geometry,
                                                     SculptLayer& layer,
                                                     std::size_t index);
/// Activates a layer of the bound level, so that strokes are recorded in it. If the layer is null,
/// no layer is active afterwards.
TROVIK_API std::unique_ptr<UndoStep> SelectLayerAsStep(LevelGeometry& geometry, SculptLayer* layer);
/// Adds a copy directly above the layer and activates it. The copy has the same effect as the
/// layer, so the surface is displaced a second time.
TROVIK_API std::unique_ptr<UndoStep> DuplicateLayerAsStep(LevelGeometry& geometry,
                                                          SculptLayer& layer,
                                                          const std::string& name);
/// Merges the layer into the one below, whose strength becomes 1; the surface stays bit-identical.
/// If the layer was active, the layer below becomes active.
/// \throw HostError if there is no layer below, or if either layer is hidden or locked.
TROVIK_API std::unique_ptr<UndoStep> MergeLayerDownAsStep(LevelGeometry& geometry,
                                                          SculptLayer& layer);
/// Removes the layer's offsets where the level is frozen: completely at full mask weight, and
/// proportionally at lower weights. Hidden vertices keep their offsets.
/// \throw HostError if the layer is locked.
TROVIK_API std::unique_ptr<UndoStep> EraseLayerByFreezeAsStep(LevelGeometry& geometry,
                                                              SculptLayer& layer);
/// @}

}  // namespace trovik
