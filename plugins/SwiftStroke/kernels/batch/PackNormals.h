// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/PatchNormals.h"
#include "kernels/formulas/NormalFormula.h"

#include <algorithm>

namespace trovik {

/// The implementation of BatchStages::packNormals for a vector width.
template <class Lanes>
void PackNormals(
    const HWVector* cell, uint32_t stride, uint32_t count, const HWVector& scale, PackedRow& out) {
    using F = typename Lanes::Numbers;
    if (count < F::count) return PackFewNormals(cell, stride, count, scale, out);
    const Xyz<F> scales = {F::Splat(scale.X()), F::Splat(scale.Y()), F::Splat(scale.Z())};
    // The last group ends at the last cell and recomputes some normals.
    const uint32_t last = count - F::count;
    if constexpr (F::count == 4) {
        for (uint32_t i = 0; i < count; i += F::count)
            StoreNormals<Lanes>(NormalsAt<Lanes>(cell + std::min(i, last), stride, scales),
                                out.normals + std::min(i, last));
    } else {
        // With wider registers, the work is split into two passes, because a single pass would
        // stall on the long latencies of the square root and the division.
        RawNormals<F> raw[PackedRow::capacity / F::count];
        uint32_t group = 0;
        for (uint32_t i = 0; i < count; i += F::count)
            raw[group++] = NormalsAt<Lanes>(cell + std::min(i, last), stride, scales);
        group = 0;
        for (uint32_t i = 0; i < count; i += F::count)
            StoreNormals<Lanes>(raw[group++], out.normals + std::min(i, last));
    }
}

}  // namespace trovik
