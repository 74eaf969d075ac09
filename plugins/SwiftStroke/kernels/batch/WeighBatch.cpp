// SPDX-License-Identifier: Apache-2.0
#include "kernels/batch/VertexBatch.h"
#include "kernels/stages/DabConstants.h"
#include "kernels/stages/Weight.h"

#include <bit>

namespace trovik {

namespace {

/// Four vertices' components, side by side.
struct Lanes {
    __m128 x, y, z;
};

/// The same place as ToWorld gives it, component by component.
TROVIK_FORCE_INLINE Lanes LanesToWorld(const BrushSpace& space, const Lanes& p) {
    const HWVector* rows = space.meshToWorld;
    const auto component = [&](float r0, float r1, float r2, float r3) {
        const __m128 far = _mm_add_ps(_mm_mul_ps(_mm_set1_ps(r2), p.z), _mm_set1_ps(r3));
        const __m128 nearer = _mm_add_ps(far, _mm_mul_ps(_mm_set1_ps(r1), p.y));
        return _mm_add_ps(nearer, _mm_mul_ps(_mm_set1_ps(r0), p.x));
    };
    return {component(rows[0].X(), rows[1].X(), rows[2].X(), rows[3].X()),
            component(rows[0].Y(), rows[1].Y(), rows[2].Y(), rows[3].Y()),
            component(rows[0].Z(), rows[1].Z(), rows[2].Z(), rows[3].Z())};
}

/// Squared distances of four vertices from the centre, added in the order of HWVector's product.
TROVIK_FORCE_INLINE __m128 DistanceSquared(const WeighTerms& terms, const Lanes& p) {
    const __m128 dx = _mm_sub_ps(_mm_set1_ps(terms.center[0]), p.x);
    const __m128 dy = _mm_sub_ps(_mm_set1_ps(terms.center[1]), p.y);
    const __m128 dz = _mm_sub_ps(_mm_set1_ps(terms.center[2]), p.z);
    return _mm_add_ps(_mm_mul_ps(dz, dz), _mm_add_ps(_mm_mul_ps(dy, dy), _mm_mul_ps(dx, dx)));
}

}  // namespace

WeighTerms::WeighTerms(const SwiftStroke& brush)
    : center{brush.brushSpace->center.X(),
             brush.brushSpace->center.Y(),
             brush.brushSpace->center.Z()},
      radiusSquared(brush.radiusSquared),
      falloffTable(brush.falloffTable),
      falloffLast(static_cast<uint32_t>(brush.falloffLast)),
      falloffScale(brush.falloffScale),
      buildUpRateCubed(brush.buildUpRateCubed),
      dabPressure(brush.dabPressure),
      dabStamp(brush.dabStamp),
      facingActive(CheckableFloatArray::s_bActive),
      space(brush.brushSpace) {
    const WaxScale wax(brush);
    scaleAsWax = wax.applies;
    waxScale = wax.scale;
}

template <BuildUp buildUp, bool inWorldSpace>
uint64_t WeighBatch(const WeighTerms& terms, uint32_t count, VertexBatch& batch) {
    const __m128i mark = _mm_set1_epi32(std::bit_cast<int32_t>(terms.dabStamp));
    const __m128i last = _mm_set1_epi32(std::bit_cast<int32_t>(terms.falloffLast));
    uint64_t within = 0;
    for (uint32_t first = 0; first < count; first += 4) {
        Lanes p;
        p.x = _mm_load_ps(batch.start[first]);
        p.y = _mm_load_ps(batch.start[first + 1]);
        p.z = _mm_load_ps(batch.start[first + 2]);
        __m128 marks = _mm_load_ps(batch.start[first + 3]);
        _MM_TRANSPOSE4_PS(p.x, p.y, p.z, marks);
        if (inWorldSpace) p = LanesToWorld(*terms.space, p);
        const __m128 squared = DistanceSquared(terms, p);
        // Not greater rather than less or equal: no number at all counts as within.
        const __m128 reach = _mm_cmpngt_ps(squared, _mm_set1_ps(terms.radiusSquared));
        const __m128 marked = _mm_castsi128_ps(_mm_cmpeq_epi32(_mm_castps_si128(marks), mark));
        const int lanes = _mm_movemask_ps(_mm_andnot_ps(marked, reach));
        if (lanes == 0) continue;
        within |= static_cast<uint64_t>(lanes) << first;

        // An index that the table lacks, as what no integer can hold becomes, weighs nothing.
        const __m128 scaled = _mm_mul_ps(_mm_sqrt_ps(squared), _mm_set1_ps(terms.falloffScale));
        const __m128i wanted = _mm_cvttps_epi32(scaled);
        const __m128i outside = _mm_or_si128(_mm_cmplt_epi32(wanted, _mm_setzero_si128()),
                                             _mm_cmpgt_epi32(wanted, last));
        alignas(16) uint32_t index[4];
        _mm_store_si128(reinterpret_cast<__m128i*>(index), _mm_andnot_si128(outside, wanted));
        const float* table = terms.falloffTable;
        __m128 weight =
            _mm_set_ps(table[index[3]], table[index[2]], table[index[1]], table[index[0]]);
        if (terms.facingActive) weight = _mm_mul_ps(_mm_load_ps(batch.facing + first), weight);
        weight = _mm_andnot_ps(_mm_castsi128_ps(outside), weight);
        if (terms.scaleAsWax) weight = _mm_mul_ps(weight, _mm_set1_ps(terms.waxScale));
        if (buildUp != BuildUp::None) {
            const __m128 before = _mm_load_ps(batch.buildUp + first);
            weight = _mm_mul_ps(_mm_mul_ps(weight, _mm_set1_ps(terms.buildUpRateCubed)),
                                _mm_sub_ps(_mm_set1_ps(1.0f), before));
            if (buildUp == BuildUp::DampsAndGrows)
                _mm_store_ps(
                    batch.buildUp + first,
                    _mm_add_ps(_mm_mul_ps(weight, _mm_set1_ps(terms.dabPressure)), before));
        }
        _mm_store_ps(batch.weight + first, weight);
    }
    // Beyond the last vertex stands what an earlier batch left there.
    return count == VertexBatch::capacity ? within : within & ((uint64_t{1} << count) - 1);
}

template uint64_t WeighBatch<BuildUp::None, false>(const WeighTerms&, uint32_t, VertexBatch&);
template uint64_t WeighBatch<BuildUp::None, true>(const WeighTerms&, uint32_t, VertexBatch&);
template uint64_t WeighBatch<BuildUp::Damps, false>(const WeighTerms&, uint32_t, VertexBatch&);
template uint64_t WeighBatch<BuildUp::Damps, true>(const WeighTerms&, uint32_t, VertexBatch&);
template uint64_t WeighBatch<BuildUp::DampsAndGrows, false>(const WeighTerms&,
                                                            uint32_t,
                                                            VertexBatch&);
template uint64_t WeighBatch<BuildUp::DampsAndGrows, true>(const WeighTerms&,
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
                       const WeighTerms& terms,
                       bool inWorldSpace) {
    const HWVector center(terms.center[0], terms.center[1], terms.center[2], 0.0f);
    for (uint32_t i = 0; i < count; ++i) {
        const float* start = batch.start[i];
        if (std::bit_cast<uint32_t>(start[3]) != terms.dabStamp) continue;
        HWVector place(start[0], start[1], start[2], 0.0f);
        if (inWorldSpace) place = ToWorld(*terms.space, place);
        const HWVector toCenter = center - place;
        if ((toCenter | toCenter).First() <= terms.radiusSquared) return true;
    }
    return false;
}

void FaceBatch(const SwiftStroke& brush,
               uint32_t count,
               const WeighTerms& terms,
               VertexBatch& batch) {
    for (uint32_t i = 0; i < count; ++i) {
        const bool marked = std::bit_cast<uint32_t>(batch.start[i][3]) == terms.dabStamp;
        batch.facing[i] = marked ? 1.0f : FacingFactor(brush, *batch.records[i]);
    }
}

}  // namespace trovik
