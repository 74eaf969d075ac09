// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"
#include "framework/picking/PatchTree.h"
#include "framework/strokes/StrokeLoop.h"

namespace trovik {

/// Where the bound level was hit, world.
TROVIK_API Vector WorldPlace(const LevelGeometry& geometry, const PickHit& hit);

/// A dab with its centre where the bound level was hit. What is not a place, such as radius and
/// strength, is still to be told.
TROVIK_API StrokeDab DabAt(LevelGeometry& geometry, const PickHit& hit);

/// Moves a dab to another place of its level, and nothing else about it.
TROVIK_API void MoveDab(StrokeDab& dab, const LevelGeometry& geometry, const PickHit& hit);

}  // namespace trovik
