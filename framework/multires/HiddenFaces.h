// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"
#include "host/Api.h"

#include <cstdint>
#include <vector>

namespace trovik {

/// \file
/// Hidden faces over the levels of a geometry.
///
/// The highest level decides: a face of any other level is hidden if all its children are. So
/// hiding a face hides everything above it, a coarse face that is hidden in part is visible, and a
/// switch of levels changes no visibility and costs nothing for it. Whatever adds or removes levels
/// keeps this rule.

/// What a change of visibility does with a face of the bound level.
enum class FaceVisibility : uint8_t { Keep, Hide, Show };

/// The faces of the highest level that must be toggled so that the bound level's faces, and all
/// above them, become as `wanted` says. In ascending order.
/// \param wanted  one for each face of the bound level.
/// Cost: O(faces of the highest level under faces that are not kept).
TROVIK_API std::vector<FaceRun> FacesToToggle(const LevelGeometry& geometry,
                                              const std::vector<FaceVisibility>& wanted);

/// Toggles these faces of the highest level, and on each level below the faces whose visibility
/// follows. The same runs undo it. Not during a stroke.
/// \param runs  of the highest level, ascending. Cost: O(these faces) on all levels together.
TROVIK_API void ToggleHidden(LevelGeometry& geometry, const std::vector<FaceRun>& runs);

/// The faces of level `to` that hold one of the faces of level `from`, for to <= from, or that lie
/// in one of them. \param runs  ascending.
TROVIK_API std::vector<FaceRun> FacesOnLevel(const LevelGeometry& geometry,
                                             const std::vector<FaceRun>& runs,
                                             uint32_t from,
                                             uint32_t to);

/// Hides on a level that was just added the children of the hidden faces below it.
TROVIK_API void HideChildren(const LevelMesh& coarse, LevelMesh& fine);
/// Hides on `coarse` exactly the faces whose children on `fine` are all hidden.
TROVIK_API void HideParents(LevelMesh& coarse, const LevelMesh& fine);
/// Brings all levels to agree by the highest one, after their face flags were written.
TROVIK_API void AgreeOnHidden(LevelGeometry& geometry);

}  // namespace trovik
