// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/SculptLayer.h"
#include "framework/math/SameBits.h"

namespace trovik {

/// Returns whether two layer states of a vertex are bit-identical.
inline bool SameState(const SculptLayer::State& a, const SculptLayer::State& b) {
    return SameBits(a.rest, b.rest) && SameBits(a.offset, b.offset) && SameBits(a.seen, b.seen);
}

}  // namespace trovik
