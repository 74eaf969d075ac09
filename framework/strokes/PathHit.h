// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PathSteps.h"

namespace trovik {

/// Returns the hit at a position of a path: HitThrough for viewport coordinates, HitNear for world
/// space.
inline std::optional<PickHit> PathHit(const LevelGeometry& geometry,
                                      const PatchTree& tree,
                                      const StrokeView& view,
                                      PathSpace space,
                                      const Vector& position) {
    return space == PathSpace::View ? HitThrough(geometry, tree, view, position)
                                    : HitNear(geometry, tree, position);
}

}  // namespace trovik
