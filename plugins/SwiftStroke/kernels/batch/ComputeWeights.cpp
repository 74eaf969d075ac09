// SPDX-License-Identifier: Apache-2.0
#include "kernels/batch/VertexBatch.h"
#include "kernels/stages/DabConstants.h"
#include "kernels/stages/Weight.h"

#include <bit>

namespace trovik {

namespace {

/// The components of four vertices, side by side.
struct Lanes {
    __m128 x, y, z;
};

/// Computes the same positions as ToWorld, component by component.
class LanesToWorld {
public:
    explicit LanesToWorld(const BrushSpace& space) {
        for (int row = 0; row < 4; ++row) {
            const HWVector& r = space.meshToWorld[row];
            rows[row] = {_mm_set1_ps(r.X()), _mm_set1_ps(r.Y()), _mm_set1_ps(r.Z())};
        }
    }
    Lanes operator()(const Lanes& p) const {
        return {Component(p, &Lanes::x), Component(p, &Lanes::y), Component(p, &Lanes::z)};
    }

private:
    TROVIK_FORCE_INLINE __m128 Component(const Lanes& p, __m128 Lanes::*of) const {
        const __m128 far = _mm_add_ps(_mm_mul_ps(rows[2].*of, p.z), rows[3].*of);
        const __m128 nearer = _mm_add_ps(far, _mm_mul_ps(rows[1].*of, p.y));
        return _mm_add_ps(nearer, _mm_mul_ps(rows[0].*of, p.x));
    }

    Lanes rows[4];
};

}  // namespace

WeightTerms::WeightTerms(const DabConstants& dab)
    : center{dab.center.X(), dab.center.Y(), dab.center.Z()},
      radiusSquared(dab.radiusSquared),
      falloffTable(dab.falloffTable),
      falloffLast(dab.falloffLast),
      falloffScale(dab.falloffScale),
      buildUpRateCubed(dab.buildUpRateCubed),
      dabPressure(dab.dabPressure),
      dabStamp(dab.dabStamp),
      facingActive(dab.facingActive),
      scaleAsWax(dab.scaleAsWax),
      waxScale(dab.waxScale),
      space(&dab.space) {}

template <BuildUp buildUp, bool inWorldSpace>
uint64_t ComputeWeights(const WeightTerms& terms, uint32_t count, VertexBatch& batch) {
    // These values are copied from `terms` before the loop, because the compiler must assume that
    // the loop may overwrite `terms`.
    const __m128i mark = _mm_set1_epi32(std::bit_cast<int32_t>(terms.dabStamp));
    const __m128i last = _mm_set1_epi32(std::bit_cast<int32_t>(terms.falloffLast));
    const __m128 centerX = _mm_set1_ps(terms.center[0]);
    const __m128 centerY = _mm_set1_ps(terms.center[1]);
    const __m128 centerZ = _mm_set1_ps(terms.center[2]);
    const __m128 radiusSquared = _mm_set1_ps(terms.radiusSquared);
    const __m128 falloffScale = _mm_set1_ps(terms.falloffScale);
    const __m128 rateCubed = _mm_set1_ps(terms.buildUpRateCubed);
    const __m128 pressure = _mm_set1_ps(terms.dabPressure);
    const __m128 waxScale = _mm_set1_ps(terms.waxScale);
    const bool asWax = terms.scaleAsWax;
    const bool facing = terms.facingActive;
    const float* table = terms.falloffTable;
    const LanesToWorld toWorld(*terms.space);

    uint64_t within = 0;
    for (uint32_t first = 0; first < count; first += 4) {
        Lanes p;
        p.x = _mm_load_ps(batch.start[first]);
        p.y = _mm_load_ps(batch.start[first + 1]);
        p.z = _mm_load_ps(batch.start[first + 2]);
        __m128 marks = _mm_load_ps(batch.start[first + 3]);
        _MM_TRANSPOSE4_PS(p.x, p.y, p.z, marks);
        if (inWorldSpace) p = toWorld(p);
        const __m128 dx = _mm_sub_ps(centerX, p.x);
        const __m128 dy = _mm_sub_ps(centerY, p.y);
        const __m128 dz = _mm_sub_ps(centerZ, p.z);
        // The terms are added in the same order as in HWVector's dot product.
        const __m128 squared =
            _mm_add_ps(_mm_mul_ps(dz, dz), _mm_add_ps(_mm_mul_ps(dy, dy), _mm_mul_ps(dx, dx)));
        // The comparison is "not greater" instead of "less or equal", so that NaN counts as within
        // reach.
        const __m128 reach = _mm_cmpngt_ps(squared, radiusSquared);
        const __m128 marked = _mm_castsi128_ps(_mm_cmpeq_epi32(_mm_castps_si128(marks), mark));
        const int lanes = _mm_movemask_ps(_mm_andnot_ps(marked, reach));
        if (lanes == 0) continue;
        within |= static_cast<uint64_t>(lanes) << first;

        // An index beyond the table yields weight 0; values beyond the integer range are converted
        // to such an index.
        const __m128i wanted = _mm_cvttps_epi32(_mm_mul_ps(_mm_sqrt_ps(squared), falloffScale));
        const __m128i outside =
            _mm_or_si128(_mm_srai_epi32(wanted, 31), _mm_cmpgt_epi32(wanted, last));
        const __m128i index = _mm_andnot_si128(outside, wanted);
        const auto low = static_cast<uint64_t>(_mm_cvtsi128_si64(index));
        const auto high =
            static_cast<uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(index, index)));
        __m128 weight =
            _mm_movelh_ps(_mm_unpacklo_ps(_mm_load_ss(table + static_cast<uint32_t>(low)),
                                          _mm_load_ss(table + (low >> 32))),
                          _mm_unpacklo_ps(_mm_load_ss(table + static_cast<uint32_t>(high)),
                                          _mm_load_ss(table + (high >> 32))));
        if (facing) weight = _mm_mul_ps(_mm_load_ps(batch.facing + first), weight);
        weight = _mm_andnot_ps(_mm_castsi128_ps(outside), weight);
        if (asWax) weight = _mm_mul_ps(weight, waxScale);
        if (buildUp != BuildUp::None) {
            const __m128 before = _mm_load_ps(batch.buildUp + first);
            weight =
                _mm_mul_ps(_mm_mul_ps(weight, rateCubed), _mm_sub_ps(_mm_set1_ps(1.0f), before));
            if (buildUp == BuildUp::DampsAndGrows)
                _mm_store_ps(batch.buildUp + first,
                             _mm_add_ps(_mm_mul_ps(weight, pressure), before));
        }
        _mm_store_ps(batch.weight + first, weight);
    }
    // The bits after the last vertex come from values left over from an earlier batch.
    return count == VertexBatch::capacity ? within : within & ((uint64_t{1} << count) - 1);
}

template uint64_t ComputeWeights<BuildUp::None, false>(const WeightTerms&, uint32_t, VertexBatch&);
template uint64_t ComputeWeights<BuildUp::None, true>(const WeightTerms&, uint32_t, VertexBatch&);
template uint64_t ComputeWeights<BuildUp::Damps, false>(const WeightTerms&, uint32_t, VertexBatch&);
template uint64_t ComputeWeights<BuildUp::Damps, true>(const WeightTerms&, uint32_t, VertexBatch&);
template uint64_t ComputeWeights<BuildUp::DampsAndGrows, false>(const WeightTerms&,
                                                                uint32_t,
                                                                VertexBatch&);
template uint64_t ComputeWeights<BuildUp::DampsAndGrows, true>(const WeightTerms&,
                                                               uint32_t,
                                                               VertexBatch&);

uint64_t FreshOf(const VertexBatch& batch, uint32_t count, uint32_t dabStamp) {
    uint64_t fresh = 0;
    for (uint32_t i = 0; i < count; ++i) {
        if (std::bit_cast<uint32_t>(batch.start[i][3]) != dabStamp) fresh |= uint64_t{1} << i;
    }
    return fresh;
}

bool MarkedWithinReach(const VertexBatch& batch,
                       uint32_t count,
                       const WeightTerms& terms,
                       bool inWorldSpace) {
    const HWVector center(terms.center[0], terms.center[1], terms.center[2], 0.0f);
    for (uint32_t i = 0; i < count; ++i) {
        const float* start = batch.start[i];
        if (std::bit_cast<uint32_t>(start[3]) != terms.dabStamp) continue;
        HWVector position(start[0], start[1], start[2], 0.0f);
        if (inWorldSpace) position = ToWorld(*terms.space, position);
        const HWVector toCenter = center - position;
        if ((toCenter | toCenter).First() <= terms.radiusSquared) return true;
    }
    return false;
}

void FaceBatch(const SwiftStroke& brush,
               uint32_t count,
               const WeightTerms& terms,
               VertexBatch& batch) {
    for (uint32_t i = 0; i < count; ++i) {
        const bool marked = std::bit_cast<uint32_t>(batch.start[i][3]) == terms.dabStamp;
        batch.facing[i] = marked ? 1.0f : FacingFactor(brush, *batch.records[i]);
    }
}

}  // namespace trovik
