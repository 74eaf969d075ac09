// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/UndoHistory.h"
#include "framework/multires/LevelGeometry.h"

#include <memory>
#include <vector>

/// \file
/// Undo steps for what is not a stroke, to be pushed by whoever did it; strokes make and push
/// theirs themselves (LevelChange).
namespace trovik {

/// Binds another level and answers the step of it, not yet pushed. Undo binds the level that was
/// bound before, and every vertex and normal of every level that was carried along gets the bits
/// that it had, and its freeze amount; redo brings back those that the carrying gave. So does undo
/// of all steps below.
///
/// All of these throw Cancelled when the job cancels; the geometry is then unchanged.
///
/// Memory: 32 bytes a vertex that was carried, and 16 for each that still waits to be; 5 for each
/// freeze amount; for a vertex that layers hold 44 more, and 40 for each of them (TurnedLayers).
TROVIK_API std::unique_ptr<UndoStep> BindLevelAsStep(LevelGeometry& geometry,
                                                     uint32_t index,
                                                     JobControl* job = nullptr);

/// Subdivides and answers the step of it, not yet pushed. Undo takes the new level out again and
/// binds the level that was bound before; the step keeps the level for redo.
/// \throw HostError as Subdivide does.
TROVIK_API std::unique_ptr<UndoStep> SubdivideAsStep(
    LevelGeometry& geometry,
    uint64_t byteBudget = LevelGeometry::unlimitedBytes,
    JobControl* job = nullptr);

/// Deletes the levels above the bound one, or with `lower` those below it: the bound one then is
/// the base. The step keeps them, with their freeze amounts; layers of a deleted level wait for it
/// and go when the step goes.
/// \return null when there is none.
TROVIK_API std::unique_ptr<UndoStep> DeleteLevelsAsStep(LevelGeometry& geometry,
                                                        bool lower,
                                                        JobControl* job = nullptr);

/// Puts a coarser level below the base, of which the base is the refinement; see CoarseFaces.h.
/// Vertices and faces get new numbers. \throw HostError when the base is no refinement.
TROVIK_API std::unique_ptr<UndoStep> UnsubdivideAsStep(LevelGeometry& geometry,
                                                       JobControl* job = nullptr);

/// All levels below the bound one take its shape; see LevelGeometry::ApplyToLowerLevels.
/// \return null when the bound level is the base, or no vertex moved.
TROVIK_API std::unique_ptr<UndoStep> ApplyToBaseAsStep(LevelGeometry& geometry,
                                                       JobControl* job = nullptr);

/// Freeze amounts of all vertices of a level, 0 to 127, for MakeFreezeStep.
TROVIK_API std::vector<uint8_t> FreezeAmounts(const LevelMesh& level);

/// The step of a change of freeze amounts: holds the amounts of the vertices that differ from
/// `amountsBefore`. \param amountsBefore  one per vertex of the level. \return null when none does.
TROVIK_API std::unique_ptr<UndoStep> MakeFreezeStep(const LevelMesh& level,
                                                    const std::vector<uint8_t>& amountsBefore);

/// The same for some vertices, each named once. \param amountsBefore  one for each of them.
/// Cost: O(these vertices).
TROVIK_API std::unique_ptr<UndoStep> MakeFreezeStep(const LevelMesh& level,
                                                    const std::vector<uint32_t>& vertices,
                                                    const std::vector<uint8_t>& amountsBefore);

/// The step of another transformation of the geometry. \return null when it is the same to the bit.
TROVIK_API std::unique_ptr<UndoStep> MakeTransformStep(const LevelGeometry& geometry,
                                                       const Placement& placementBefore);

}  // namespace trovik
