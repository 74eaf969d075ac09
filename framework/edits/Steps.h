// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/edits/UndoHistory.h"
#include "framework/levels/LevelGeometry.h"

#include <memory>
#include <vector>

/// \file
/// Undo steps for what is not a stroke, to be pushed by whoever did it; strokes make and push
/// theirs themselves (LevelChange).
namespace trovik {

/// Binds another level and answers the step of it, not yet pushed. Undo binds the level that was
/// bound before.
///
/// Finer levels keep what was carried up into them while a coarser level is bound again: they are
/// not seen then, and BindLevel carries every further change, taking back included, relative to
/// it. Only on the way back up past the step that went down, when all coarse changes in between are
/// taken back, the vertices get the very positions and normals they had, from the steps that
/// carried. So undo to any point gives the bound level of that point bit for bit. Redo repeats the
/// carrying from the same numbers.
///
/// Cost: that of BindLevel, and 20 bytes a vertex of the levels in between for its time.
TROVIK_API std::unique_ptr<UndoStep> BindLevelAsStep(LevelGeometry& geometry, uint32_t index);

/// Subdivides and answers the step of it, not yet pushed. Undo binds the level that was bound
/// before; the new level stays in the geometry, for redo. \throw HostError as Subdivide does.
TROVIK_API std::unique_ptr<UndoStep> SubdivideAsStep(LevelGeometry& geometry);

/// Freeze amounts of all vertices of a level, 0 to 127, for MakeFreezeStep.
TROVIK_API std::vector<uint8_t> FreezeAmounts(const LevelMesh& level);

/// The step of a change of freeze amounts: holds the amounts of the vertices that differ from
/// `amountsBefore`. \param amountsBefore  one per vertex of the level. \return null when none does.
TROVIK_API std::unique_ptr<UndoStep> MakeFreezeStep(const LevelMesh& level,
                                                    const std::vector<uint8_t>& amountsBefore);

/// The step of another transformation of the geometry. \return null when it is the same to the bit.
TROVIK_API std::unique_ptr<UndoStep> MakeTransformStep(const LevelGeometry& geometry,
                                                       const Placement& placementBefore);

}  // namespace trovik
