// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/edits/UndoHistory.h"
#include "framework/levels/LevelGeometry.h"

#include <memory>
#include <vector>

/// \file
/// Undo steps for what is not a stroke. Each is made after the deed and pushed by whoever did it;
/// strokes make theirs themselves (LevelChange).
namespace trovik {

/// The step of a change of the bound level, by BindLevel or Subdivide; made while the new level is
/// still bound. Undo binds the level that was bound before. The level that a subdivision made stays
/// in the geometry, for redo.
///
/// \param levelBefore  the level that was bound before. \param moved  what BindLevel answered;
/// empty for Subdivide.
///
/// Finer levels keep what was carried up into them while a coarser level is bound again: they are
/// not seen then, and BindLevel carries every further change, taking back included, relative to
/// it. Only on the way back up past the step that went down, when all coarse changes in between are
/// taken back, the vertices get the very bits they had, from the Moved lists of the steps that
/// carried. So undo to any point gives the bound level of that point bit for bit. Redo repeats the
/// carrying from the same numbers.
TROVIK_API std::unique_ptr<UndoStep> MakeLevelStep(const LevelGeometry& geometry,
                                                   uint32_t levelBefore,
                                                   std::vector<LevelGeometry::Moved> moved);

/// Freeze amounts of all vertices of a level, 0 to 127, for MakeFreezeStep.
TROVIK_API std::vector<uint8_t> FreezeAmounts(const LevelMesh& level);

/// The step of a change of freeze amounts: holds the amounts of the vertices that differ from
/// `amountsBefore`. \param amountsBefore  one per vertex of the level. \return null when none does.
TROVIK_API std::unique_ptr<UndoStep> MakeFreezeStep(const LevelMesh& level,
                                                    const std::vector<uint8_t>& amountsBefore);

}  // namespace trovik
