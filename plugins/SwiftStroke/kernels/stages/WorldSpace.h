// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/formulas/WorldPosition.h"

namespace trovik {

/// Transforms a mesh-local point to world space. w is set to 0, because the 1 from the last row of
/// the matrix must not contribute to distances.
TROVIK_FORCE_INLINE HWVector ToWorld(const BrushSpace& space, const HWVector& local) {
    const HWVector* rows = space.meshToWorld;
    const Xyz<float> point = {local.X(), local.Y(), local.Z()};
    const HWVector world = TransformedPoint(rows[0], rows[1], rows[2], rows[3], point);
    return {world.X(), world.Y(), world.Z(), 0.0f};
}

}  // namespace trovik
