// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/SculptLayer.h"
#include "framework/math/SameBits.h"

namespace trovik {

/// Whether a layer knows the same of a vertex in both, bit for bit.
inline bool SameState(const SculptLayer::State& a, const SculptLayer::State& b) {
    return SameBits(a.rest, b.rest) && SameBits(a.offset, b.offset) && SameBits(a.seen, b.seen);
}

}  // namespace trovik
