// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/batch/VertexBatch.h"
#include "kernels/lanes/Xyz.h"
#include "kernels/stages/DabConstants.h"

/// \file The weight of a vertex within the radius, as templates over lanes (see lanes/Xyz.h).
namespace trovik {

/// The inputs that are equal for all vertices of a dab, in every lane. They are copied, because the
/// compiler must assume that storing a weight may overwrite the dab's.
template <class F>
struct WeightTerms {
    explicit WeightTerms(const DabConstants& dab)
        : radiusSquared(F::Splat(dab.radiusSquared)),
          falloffLast(F::Integers::Splat(dab.falloffLast)),
          falloffScale(F::Splat(dab.falloffScale)),
          buildUpRateCubed(F::Splat(dab.buildUpRateCubed)),
          dabPressure(F::Splat(dab.dabPressure)),
          waxScale(F::Splat(dab.waxScale)),
          falloffTable(dab.falloffTable),
          scaleAsWax(dab.scaleAsWax) {}

    F radiusSquared;
    typename F::Integers falloffLast;
    F falloffScale;
    F buildUpRateCubed;
    F dabPressure;
    F waxScale;
    const float* falloffTable;
    bool scaleAsWax;
};

/// Adds the terms in the same order as HWVector's dot product.
template <class F>
TROVIK_FORCE_INLINE F SquaredLength(const Xyz<F>& v) {
    return v.z * v.z + (v.y * v.y + v.x * v.x);
}

/// Computes the weight from the squared distance, which must be within the radius: applies the
/// falloff, the facing factor, the Wax scale and the build-up damping.
/// \param facing  the facing factor, or null if the facing falloff is off.
/// \param buildUp  the build-up of the vertex; read and written only if `use` says so.
template <class F>
TROVIK_FORCE_INLINE F WeightWithin(
    const WeightTerms<F>& dab, BuildUp use, F squared, const float* facing, float* buildUp) {
    // An index beyond the table yields weight 0; values beyond the integer range are converted to
    // such an index.
    const typename F::Integers index = (squared.Sqrt() * dab.falloffScale).Truncated();
    const auto outside = index.IsBeyond(dab.falloffLast);
    F weight = F::Gather(dab.falloffTable, index.ZeroWhere(outside));
    if (facing != nullptr) weight = F::Load(facing) * weight;
    weight = weight.ZeroWhere(outside);
    if (dab.scaleAsWax) weight = weight * dab.waxScale;
    if (use != BuildUp::None) {
        const F before = F::Load(buildUp);
        weight = weight * dab.buildUpRateCubed * (F::Splat(1.0f) - before);
        if (use == BuildUp::DampsAndGrows) (weight * dab.dabPressure + before).Store(buildUp);
    }
    return weight;
}

}  // namespace trovik
