// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/formulas/WeightFormula.h"

/// \file Packed normals from central differences, as templates over lanes (see lanes/Xyz.h).
/// Each number is computed by the same operations as in HWVector's products and
/// HWVector::Normalize, in the same order.
namespace trovik {

template <class F>
TROVIK_FORCE_INLINE Xyz<F> CrossProduct(const Xyz<F>& a, const Xyz<F>& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// Normals before normalisation, and their dot products with themselves.
template <class F>
struct RawNormals {
    Xyz<F> normal;
    F dot;
};

/// Returns the differences of consecutive cells. The order of the cells is that of
/// Lanes::Components.
template <class Lanes>
TROVIK_FORCE_INLINE auto Differences(const HWVector* less, const HWVector* taken) {
    const auto difference = [=](uint32_t i) {
        const uint32_t first = i * Lanes::vectors;
        return Lanes::LoadCells(less + first) - Lanes::LoadCells(taken + first);
    };
    return Lanes::Components(difference(0), difference(1), difference(2), difference(3));
}

/// Computes the normals at `cell` and the following cells, as many as there are lanes.
template <class Lanes, class F>
TROVIK_FORCE_INLINE RawNormals<F> NormalsAt(const HWVector* cell,
                                            uint32_t stride,
                                            const Xyz<F>& scale) {
    const Xyz<F> n = CrossProduct(Differences<Lanes>(cell - 1, cell + 1),
                                  Differences<Lanes>(cell - stride, cell + stride));
    const Xyz<F> scaled = {n.x * scale.x, n.y * scale.y, n.z * scale.z};
    return {scaled, SquaredLength(scaled)};
}

/// Normalises and stores the normals, each in the memory layout of PackedNormal with the host's
/// word set to 0.
template <class Lanes, class F>
TROVIK_FORCE_INLINE void StoreNormals(const RawNormals<F>& raw, uint64_t* out) {
    // A vector whose dot product with itself is 0 does not change, so its factor is 1.
    const F factor = (F::Splat(1.0f) / raw.dot.Sqrt()).OneWhereZero(raw.dot);
    const auto words = [factor](const F& component) {
        return (component * factor * F::Splat(32767.0f)).Rounded();
    };
    // Takes the lower half of each word, as in a narrowing conversion without saturation.
    using I = typename F::Integers;
    Lanes::StorePacked(I::JoinHalves(words(raw.normal.x), words(raw.normal.y)),
                       words(raw.normal.z).LowerHalves(),
                       out);
}

/// Returns packed normals as vectors with w 0, without normalisation.
template <class Lanes, class At>
TROVIK_FORCE_INLINE auto UnpackedNormals(const At& at) {
    using V = typename Lanes::Vectors;
    return Lanes::Reversed(Lanes::WordsOf(at) * V::Splat(packedNormalToFloat));
}

}  // namespace trovik
