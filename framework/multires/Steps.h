// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/UndoHistory.h"
#include "framework/multires/LevelGeometry.h"

#include <memory>
#include <vector>

/// \file
/// Creates undo steps for operations other than strokes. The caller pushes them to the history.
/// Strokes create and push their own steps (LevelChange).
namespace trovik {

/// Binds a different level and returns the undo step, which is not pushed yet. Undo binds the
/// previously bound level, and restores the exact position, normal and freeze amount of every
/// vertex to which changes were propagated. Redo restores the propagated values. The undo steps of
/// the functions below do the same.
///
/// All of these functions throw Cancelled if the job is cancelled; the geometry is then unchanged.
///
/// Memory: 32 bytes per changed vertex, 16 bytes per vertex whose change has not been propagated
/// yet, and 5 bytes per freeze amount. A vertex with layer data takes another 44 bytes, plus 40
/// bytes for each of its layers (RotatedLayers).
TROVIK_API std::unique_ptr<UndoStep> BindLevelAsStep(LevelGeometry& geometry,
                                                     uint32_t index,
                                                     JobControl* job = nullptr);

/// Subdivides and returns the undo step, which is not pushed yet. Undo removes the new level and
/// binds the previously bound one; the step keeps the new level for redo.
/// \throw HostError under the same conditions as Subdivide.
TROVIK_API std::unique_ptr<UndoStep> SubdivideAsStep(
    LevelGeometry& geometry,
    uint64_t byteBudget = LevelGeometry::unlimitedBytes,
    JobControl* job = nullptr);

/// Deletes the levels above the bound level, or, if `lower` is set, the levels below it, so that
/// the bound level becomes the base. The step owns the deleted levels and their freeze amounts.
/// Layers of a deleted level are kept until the step is destroyed.
/// \return null if there is no such level.
TROVIK_API std::unique_ptr<UndoStep> DeleteLevelsAsStep(LevelGeometry& geometry,
                                                        bool lower,
                                                        JobControl* job = nullptr);

/// Adds a coarser level whose refinement is the base, which becomes the new base; see
/// CoarseFaces.h. Vertices and faces are renumbered.
/// \throw HostError if the base is not a refinement.
TROVIK_API std::unique_ptr<UndoStep> UnsubdivideAsStep(LevelGeometry& geometry,
                                                       JobControl* job = nullptr);

/// Replaces all levels of a geometry by those of another one, with their masks, layers and
/// attributes, and returns the undo step, which is not pushed yet. The step owns the previous
/// levels, and while it is undone, the new ones, so undo and redo exchange pointers and are
/// bit-exact. The transform does not change.
/// \param replacement  see LevelGeometry::Adopt.
/// \throw HostError during a stroke; nothing has then changed.
TROVIK_API std::unique_ptr<UndoStep> ReplaceLevelsAsStep(LevelGeometry& geometry,
                                                         LevelGeometry& replacement,
                                                         const std::string& label);

/// Propagates the shape of the bound level to all levels below; see
/// LevelGeometry::ApplyToLowerLevels.
/// \return null if the bound level is the base, or if no vertex moved.
TROVIK_API std::unique_ptr<UndoStep> ApplyToBaseAsStep(LevelGeometry& geometry,
                                                       JobControl* job = nullptr);

/// Returns the freeze amounts (0 to 127) of all vertices of a level, for MakeFreezeStep.
TROVIK_API std::vector<uint8_t> FreezeAmounts(const LevelMesh& level);

/// Creates the undo step for a change of freeze amounts. It stores the amounts of the vertices that
/// differ from `amountsBefore`.
/// \param amountsBefore  one per vertex of the level.
/// \return null if no amount differs.
TROVIK_API std::unique_ptr<UndoStep> MakeFreezeStep(const LevelMesh& level,
                                                    const std::vector<uint8_t>& amountsBefore);

/// Creates the same step for the listed vertices.
/// \param vertices  without duplicates.
/// \param amountsBefore  one per listed vertex.
/// Cost: linear in the number of listed vertices.
TROVIK_API std::unique_ptr<UndoStep> MakeFreezeStep(const LevelMesh& level,
                                                    const std::vector<uint32_t>& vertices,
                                                    const std::vector<uint8_t>& amountsBefore);

/// Creates the undo step for a change of the geometry's transform.
/// \return null if the new transform is bit-identical to the old one.
TROVIK_API std::unique_ptr<UndoStep> MakeTransformStep(const LevelGeometry& geometry,
                                                       const MatrixTransform& transformBefore);

}  // namespace trovik
