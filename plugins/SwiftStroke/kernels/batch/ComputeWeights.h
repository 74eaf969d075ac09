// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/batch/BatchStages.h"
#include "kernels/formulas/WeightFormula.h"
#include "kernels/formulas/WorldPosition.h"

#include <bit>

namespace trovik {

/// The implementation of BatchStages::weights for a vector width.
template <class Lanes, BuildUp buildUp, bool inWorldSpace>
uint64_t ComputeWeights(const DabConstants& dab, uint32_t count, VertexBatch& batch) {
    using F = typename Lanes::Numbers;
    using I = typename F::Integers;
    const WeightTerms<F> terms(dab);
    const Xyz<F> center = {
        F::Splat(dab.center.X()), F::Splat(dab.center.Y()), F::Splat(dab.center.Z())};
    const WorldMatrix<F> toWorld(dab.space);
    const I mark = I::Splat(dab.dabStamp);
    const bool facing = dab.facingActive;

    uint64_t within = 0;
    for (uint32_t first = 0; first < count; first += F::count) {
        I marks;
        Xyz<F> position = Lanes::Columns(batch.start + first, marks);
        if constexpr (inWorldSpace) position = toWorld(position);
        const F squared = SquaredLength(center - position);
        // NaN counts as within reach.
        const uint32_t lanes =
            Lanes::BitsOf(squared.IsNotGreater(terms.radiusSquared), marks == mark);
        if (lanes == 0) continue;
        within |= uint64_t{lanes} << first;
        WeightWithin(
            terms, buildUp, squared, facing ? batch.facing + first : nullptr, batch.buildUp + first)
            .Store(batch.weight + first);
    }
    // The bits after the last vertex come from values left over from an earlier batch.
    return count == VertexBatch::capacity ? within : within & ((uint64_t{1} << count) - 1);
}

}  // namespace trovik
