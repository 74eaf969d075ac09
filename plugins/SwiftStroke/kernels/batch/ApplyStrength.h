// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/batch/VertexBatch.h"
#include "kernels/stages/DabConstants.h"

namespace trovik {

/// Multiplies each vertex's weight by the strength and, if `withFreeze` is set, by the unfrozen
/// fraction.
/// \param out  aligned like a register, with room for `count` entries rounded up to whole
/// registers; entries with an index of `count` or more are undefined.
template <class F>
TROVIK_FORCE_INLINE void ApplyStrengthToBatch(const DabConstants& dab,
                                              const PatchVertexEntry* entries,
                                              uint32_t count,
                                              bool withFreeze,
                                              const float (&weights)[VertexBatch::capacity],
                                              float* out) {
    const F strength = F::Splat(dab.dabStrength);
    for (uint32_t i = 0; i < count; i += F::count) (F::Load(weights + i) * strength).Store(out + i);
    if (!withFreeze) return;
    for (uint32_t i = 0; i < count; ++i)
        out[i] = out[i] * UnfrozenFraction(dab.vertices[entries[i].vertex]);
}

}  // namespace trovik
