// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"
#include "framework/picking/PatchTree.h"
#include "framework/strokes/StrokeLoop.h"

namespace trovik {

/// World position of a hit on the bound level.
TROVIK_API Vector WorldPositionOf(const LevelGeometry& geometry, const PickHit& hit);

/// A dab centred at a hit on the bound level. The caller sets all other members, such as radius and
/// strength.
TROVIK_API StrokeDab DabAt(LevelGeometry& geometry, const PickHit& hit);

/// Moves a dab to another hit on the same level; the other members do not change.
TROVIK_API void MoveDab(StrokeDab& dab, const LevelGeometry& geometry, const PickHit& hit);

}  // namespace trovik
