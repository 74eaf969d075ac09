// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "brush/SwiftStroke.h"

namespace trovik {

/// Returns whether every vertex of a cached patch is out of the dab's reach. The box is in
/// mesh-local space, so it cannot be compared with a radius in world space. A box computed from NaN
/// positions is not valid either.
inline bool IsOutOfReach(const SwiftStroke& brush, const PatchCache::Patch& patch) {
    if (patch.hasNan || brush.nonUniformScale) return false;
    const HWVector& c = brush.brushSpace->center;
    const float center[3] = {c.X(), c.Y(), c.Z()};
    return patch.IsBeyond(center, brush.radiusSquared);
}

}  // namespace trovik
