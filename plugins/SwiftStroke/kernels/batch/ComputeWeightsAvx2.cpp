// SPDX-License-Identifier: Apache-2.0

/// \file Computes the same weights as ComputeWeights.cpp, eight vertices at a time. The operations
/// match those of that file line by line; see there for comments.
#include "kernels/batch/VertexBatch.h"
#include "kernels/stages/DabConstants.h"

#include <bit>

#if defined(__x86_64__)
#include "kernels/batch/WideVectors.h"

namespace trovik {

namespace {

struct WideLanes {
    __m256 x, y, z;
};

/// Computes one component of a world position; `r` contains that component's entries from the four
/// matrix rows.
TROVIK_AVX2 inline __m256 ToWorldComponent(
    const WideLanes& p, float r0, float r1, float r2, float r3) {
    const __m256 far = _mm256_add_ps(_mm256_mul_ps(_mm256_set1_ps(r2), p.z), _mm256_set1_ps(r3));
    const __m256 nearer = _mm256_add_ps(far, _mm256_mul_ps(_mm256_set1_ps(r1), p.y));
    return _mm256_add_ps(nearer, _mm256_mul_ps(_mm256_set1_ps(r0), p.x));
}

TROVIK_AVX2 inline __m256 TwoRows(const float (*start)[4], uint32_t i) {
    return CombineHalves(_mm_load_ps(start[i]), _mm_load_ps(start[i + 4]));
}

/// This function is inlined, so that the switches are constants in every call. A template would not
/// inherit the target attribute.
TROVIK_AVX2_INLINE uint64_t ComputeWeight(const WeightTerms& terms,
                                          uint32_t count,
                                          VertexBatch& batch,
                                          BuildUp buildUp,
                                          bool inWorldSpace) {
    const __m256i mark = _mm256_set1_epi32(std::bit_cast<int32_t>(terms.dabStamp));
    const __m256i last = _mm256_set1_epi32(std::bit_cast<int32_t>(terms.falloffLast));
    const __m256 centerX = _mm256_set1_ps(terms.center[0]);
    const __m256 centerY = _mm256_set1_ps(terms.center[1]);
    const __m256 centerZ = _mm256_set1_ps(terms.center[2]);
    const __m256 radiusSquared = _mm256_set1_ps(terms.radiusSquared);
    const __m256 falloffScale = _mm256_set1_ps(terms.falloffScale);
    const __m256 rateCubed = _mm256_set1_ps(terms.buildUpRateCubed);
    const __m256 pressure = _mm256_set1_ps(terms.dabPressure);
    const __m256 waxScale = _mm256_set1_ps(terms.waxScale);
    const bool asWax = terms.scaleAsWax;
    const bool facing = terms.facingActive;
    const float* table = terms.falloffTable;
    const HWVector* rows = terms.space->meshToWorld;

    uint64_t within = 0;
    for (uint32_t first = 0; first < count; first += 8) {
        const __m256 row0 = TwoRows(batch.start, first);
        const __m256 row1 = TwoRows(batch.start, first + 1);
        const __m256 row2 = TwoRows(batch.start, first + 2);
        const __m256 row3 = TwoRows(batch.start, first + 3);
        const __m256 xy01 = _mm256_unpacklo_ps(row0, row1);
        const __m256 xy23 = _mm256_unpacklo_ps(row2, row3);
        const __m256 zm01 = _mm256_unpackhi_ps(row0, row1);
        const __m256 zm23 = _mm256_unpackhi_ps(row2, row3);
        WideLanes p = {_mm256_shuffle_ps(xy01, xy23, _MM_SHUFFLE(1, 0, 1, 0)),
                       _mm256_shuffle_ps(xy01, xy23, _MM_SHUFFLE(3, 2, 3, 2)),
                       _mm256_shuffle_ps(zm01, zm23, _MM_SHUFFLE(1, 0, 1, 0))};
        const __m256 marks = _mm256_shuffle_ps(zm01, zm23, _MM_SHUFFLE(3, 2, 3, 2));
        if (inWorldSpace)
            p = {ToWorldComponent(p, rows[0].X(), rows[1].X(), rows[2].X(), rows[3].X()),
                 ToWorldComponent(p, rows[0].Y(), rows[1].Y(), rows[2].Y(), rows[3].Y()),
                 ToWorldComponent(p, rows[0].Z(), rows[1].Z(), rows[2].Z(), rows[3].Z())};
        const __m256 dx = _mm256_sub_ps(centerX, p.x);
        const __m256 dy = _mm256_sub_ps(centerY, p.y);
        const __m256 dz = _mm256_sub_ps(centerZ, p.z);
        const __m256 squared = _mm256_add_ps(
            _mm256_mul_ps(dz, dz), _mm256_add_ps(_mm256_mul_ps(dy, dy), _mm256_mul_ps(dx, dx)));
        const __m256 reach = _mm256_cmp_ps(squared, radiusSquared, _CMP_NGT_UQ);
        const __m256 marked =
            _mm256_castsi256_ps(_mm256_cmpeq_epi32(_mm256_castps_si256(marks), mark));
        const int lanes = _mm256_movemask_ps(_mm256_andnot_ps(marked, reach));
        if (lanes == 0) continue;
        within |= static_cast<uint64_t>(lanes) << first;

        const __m256i wanted =
            _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_sqrt_ps(squared), falloffScale));
        const __m256i outside =
            _mm256_or_si256(_mm256_srai_epi32(wanted, 31), _mm256_cmpgt_epi32(wanted, last));
        __m256 weight = _mm256_i32gather_ps(table, _mm256_andnot_si256(outside, wanted), 4);
        if (facing) weight = _mm256_mul_ps(_mm256_load_ps(batch.facing + first), weight);
        weight = _mm256_andnot_ps(_mm256_castsi256_ps(outside), weight);
        if (asWax) weight = _mm256_mul_ps(weight, waxScale);
        if (buildUp != BuildUp::None) {
            const __m256 before = _mm256_load_ps(batch.buildUp + first);
            weight = _mm256_mul_ps(_mm256_mul_ps(weight, rateCubed),
                                   _mm256_sub_ps(_mm256_set1_ps(1.0f), before));
            if (buildUp == BuildUp::DampsAndGrows)
                _mm256_store_ps(batch.buildUp + first,
                                _mm256_add_ps(_mm256_mul_ps(weight, pressure), before));
        }
        _mm256_store_ps(batch.weight + first, weight);
    }
    return count == VertexBatch::capacity ? within : within & ((uint64_t{1} << count) - 1);
}

}  // namespace

#define TROVIK_WEIGH_WIDE(buildUp, inWorldSpace)                          \
    template <>                                                           \
    TROVIK_AVX2 uint64_t ComputeWeightsWide<buildUp, inWorldSpace>(       \
        const WeightTerms& terms, uint32_t count, VertexBatch& batch) {   \
        return ComputeWeight(terms, count, batch, buildUp, inWorldSpace); \
    }

TROVIK_WEIGH_WIDE(BuildUp::None, false)
TROVIK_WEIGH_WIDE(BuildUp::None, true)
TROVIK_WEIGH_WIDE(BuildUp::Damps, false)
TROVIK_WEIGH_WIDE(BuildUp::Damps, true)
TROVIK_WEIGH_WIDE(BuildUp::DampsAndGrows, false)
TROVIK_WEIGH_WIDE(BuildUp::DampsAndGrows, true)

}  // namespace trovik

#else

namespace trovik {

template <BuildUp buildUp, bool inWorldSpace>
uint64_t ComputeWeightsWide(const WeightTerms& terms, uint32_t count, VertexBatch& batch) {
    return ComputeWeights<buildUp, inWorldSpace>(terms, count, batch);
}

template uint64_t ComputeWeightsWide<BuildUp::None, false>(const WeightTerms&,
                                                           uint32_t,
                                                           VertexBatch&);
template uint64_t ComputeWeightsWide<BuildUp::None, true>(const WeightTerms&,
                                                          uint32_t,
                                                          VertexBatch&);
template uint64_t ComputeWeightsWide<BuildUp::Damps, false>(const WeightTerms&,
                                                            uint32_t,
                                                            VertexBatch&);
template uint64_t ComputeWeightsWide<BuildUp::Damps, true>(const WeightTerms&,
                                                           uint32_t,
                                                           VertexBatch&);
template uint64_t ComputeWeightsWide<BuildUp::DampsAndGrows, false>(const WeightTerms&,
                                                                    uint32_t,
                                                                    VertexBatch&);
template uint64_t ComputeWeightsWide<BuildUp::DampsAndGrows, true>(const WeightTerms&,
                                                                   uint32_t,
                                                                   VertexBatch&);

}  // namespace trovik

#endif
