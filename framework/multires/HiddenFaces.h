// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"
#include "host/Api.h"

#include <cstdint>
#include <vector>

namespace trovik {

/// \file
/// Hidden faces on all levels of a geometry.
///
/// The highest level determines the others: a face of any other level is hidden if all its children
/// are hidden. Hiding a face therefore hides all its descendants, a partly hidden coarse face is
/// visible, and switching levels does not change visibility. All code that adds or removes levels
/// preserves this rule.

/// How a visibility change affects a face of the bound level.
enum class FaceVisibility : uint8_t { Keep, Hide, Show };

/// Returns the faces of the highest level that must be toggled to make the faces of the bound level
/// and their descendants match `wanted`. The faces are in ascending order.
/// \param wanted  one entry per face of the bound level.
/// Cost: linear in the number of highest-level descendants of the faces to hide or show.
TROVIK_API std::vector<FaceRun> FacesToToggle(const LevelGeometry& geometry,
                                              const std::vector<FaceVisibility>& wanted);

/// Toggles these faces of the highest level, and updates the faces of the levels below. Toggling
/// the same runs again reverts the change. Must not be called during a stroke.
/// \param runs  runs of faces of the highest level, in ascending order.
/// Cost: linear in the number of these faces, summed over all levels.
TROVIK_API void ToggleHidden(LevelGeometry& geometry, const std::vector<FaceRun>& runs);

/// Converts faces of level `from` to level `to`: to their ancestors if to <= from, to their
/// descendants otherwise.
/// \param runs  in ascending order.
TROVIK_API std::vector<FaceRun> FacesOnLevel(const LevelGeometry& geometry,
                                             const std::vector<FaceRun>& runs,
                                             uint32_t from,
                                             uint32_t to);

/// Hides the children of hidden faces on a level that was just added.
TROVIK_API void HideChildren(const LevelMesh& coarse, LevelMesh& fine);
/// Hides the faces of `coarse` whose children on `fine` are all hidden, and shows all other faces
/// of `coarse`.
TROVIK_API void HideParents(LevelMesh& coarse, const LevelMesh& fine);
/// Derives the hidden faces of all lower levels from those of the highest level. Call this after
/// writing the highest level's face flags directly.
TROVIK_API void UpdateHiddenFromHighest(LevelGeometry& geometry);

}  // namespace trovik
