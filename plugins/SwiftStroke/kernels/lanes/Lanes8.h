// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/lanes/Xyz.h"
#include "kernels/stages/DabConstants.h"

#include <immintrin.h>

/// \file Eight lanes: AVX2. See Xyz.h for the lane types and Lanes4.h for the operations. To be
/// included only in a region that is compiled for AVX2.
namespace trovik {

struct I32x8 {
    using Mask = __m256i;

    __m256i lanes;

    TROVIK_FORCE_INLINE static I32x8 Splat(uint32_t i) {
        return {_mm256_set1_epi32(static_cast<int32_t>(i))};
    }
    TROVIK_FORCE_INLINE static I32x8 BitsOf(const HWVector* cells) {
        return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(cells))};
    }
    TROVIK_FORCE_INLINE Mask operator==(I32x8 o) const {
        return _mm256_cmpeq_epi32(lanes, o.lanes);
    }
    TROVIK_FORCE_INLINE Mask IsBeyond(I32x8 last) const {
        return _mm256_or_si256(_mm256_srai_epi32(lanes, 31), _mm256_cmpgt_epi32(lanes, last.lanes));
    }
    TROVIK_FORCE_INLINE I32x8 ZeroWhere(Mask mask) const {
        return {_mm256_andnot_si256(mask, lanes)};
    }
    TROVIK_FORCE_INLINE static I32x8 JoinHalves(I32x8 low, I32x8 high) {
        return {_mm256_blend_epi16(low.lanes, _mm256_slli_epi32(high.lanes, 16), 0xaa)};
    }
    TROVIK_FORCE_INLINE I32x8 LowerHalves() const {
        return {_mm256_and_si256(lanes, _mm256_set1_epi32(0xffff))};
    }
};

struct F32x8 {
    static constexpr uint32_t count = 8;
    using Integers = I32x8;
    using Mask = __m256i;

    __m256 lanes;

    TROVIK_FORCE_INLINE static F32x8 Splat(float f) { return {_mm256_set1_ps(f)}; }
    TROVIK_FORCE_INLINE static F32x8 Load(const float* from) { return {_mm256_load_ps(from)}; }
    TROVIK_FORCE_INLINE void Store(float* to) const { _mm256_store_ps(to, lanes); }

    TROVIK_FORCE_INLINE F32x8 operator+(F32x8 o) const { return {_mm256_add_ps(lanes, o.lanes)}; }
    TROVIK_FORCE_INLINE F32x8 operator-(F32x8 o) const { return {_mm256_sub_ps(lanes, o.lanes)}; }
    TROVIK_FORCE_INLINE F32x8 operator*(F32x8 o) const { return {_mm256_mul_ps(lanes, o.lanes)}; }
    TROVIK_FORCE_INLINE F32x8 operator/(F32x8 o) const { return {_mm256_div_ps(lanes, o.lanes)}; }
    TROVIK_FORCE_INLINE F32x8 Sqrt() const { return {_mm256_sqrt_ps(lanes)}; }
    TROVIK_FORCE_INLINE F32x8 ZeroWhere(Mask mask) const {
        return {_mm256_andnot_ps(_mm256_castsi256_ps(mask), lanes)};
    }
    TROVIK_FORCE_INLINE F32x8 OneWhereZero(F32x8 o) const {
        const __m256 isZero = _mm256_cmp_ps(o.lanes, _mm256_setzero_ps(), _CMP_EQ_OQ);
        return {_mm256_blendv_ps(lanes, _mm256_set1_ps(1.0f), isZero)};
    }
    TROVIK_FORCE_INLINE Mask IsNotGreater(F32x8 o) const {
        return _mm256_castps_si256(_mm256_cmp_ps(lanes, o.lanes, _CMP_NGT_UQ));
    }
    TROVIK_FORCE_INLINE I32x8 Truncated() const { return {_mm256_cvttps_epi32(lanes)}; }
    TROVIK_FORCE_INLINE I32x8 Rounded() const { return {_mm256_cvtps_epi32(lanes)}; }
    TROVIK_FORCE_INLINE static F32x8 Gather(const float* table, I32x8 index) {
        return {_mm256_i32gather_ps(table, index.lanes, 4)};
    }

    TROVIK_FORCE_INLINE static F32x8 Minimum(F32x8 a, F32x8 b) {
        return {_mm256_min_ps(a.lanes, b.lanes)};
    }
    TROVIK_FORCE_INLINE static F32x8 Maximum(F32x8 a, F32x8 b) {
        return {_mm256_max_ps(a.lanes, b.lanes)};
    }
    /// As for HWVector. The lowest lane of each vector is the result.
    TROVIK_FORCE_INLINE F32x8 operator|(F32x8 o) const {
        const __m256 products = _mm256_mul_ps(lanes, o.lanes);
        const __m256 pairs =
            _mm256_add_ps(products, _mm256_permute_ps(products, _MM_SHUFFLE(2, 3, 0, 1)));
        return {_mm256_add_ps(pairs, _mm256_permute_ps(pairs, _MM_SHUFFLE(1, 0, 3, 2)))};
    }
};

/// The lowest lane of each vector, in all of its lanes.
TROVIK_FORCE_INLINE F32x8 FirstInAllLanes(F32x8 v) { return {_mm256_permute_ps(v.lanes, 0)}; }

struct Lanes8 {
    using Numbers = F32x8;
    using Vectors = F32x8;
    static constexpr uint32_t vectors = 2;

    TROVIK_FORCE_INLINE static uint32_t BitsOf(I32x8::Mask mask, I32x8::Mask excluded) {
        return BitsOf(_mm256_andnot_si256(excluded, mask));
    }
    TROVIK_FORCE_INLINE static uint32_t BitsOf(I32x8::Mask mask) {
        return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(mask)));
    }

    TROVIK_FORCE_INLINE static Xyz<F32x8> Columns(const float (*rows)[4], I32x8& fourth) {
        const __m256 row0 = Halves(_mm_load_ps(rows[0]), _mm_load_ps(rows[4]));
        const __m256 row1 = Halves(_mm_load_ps(rows[1]), _mm_load_ps(rows[5]));
        const __m256 row2 = Halves(_mm_load_ps(rows[2]), _mm_load_ps(rows[6]));
        const __m256 row3 = Halves(_mm_load_ps(rows[3]), _mm_load_ps(rows[7]));
        const __m256 xy01 = _mm256_unpacklo_ps(row0, row1);
        const __m256 xy23 = _mm256_unpacklo_ps(row2, row3);
        const __m256 zw01 = _mm256_unpackhi_ps(row0, row1);
        const __m256 zw23 = _mm256_unpackhi_ps(row2, row3);
        fourth.lanes = _mm256_castps_si256(_mm256_shuffle_ps(zw01, zw23, _MM_SHUFFLE(3, 2, 3, 2)));
        return {{_mm256_shuffle_ps(xy01, xy23, _MM_SHUFFLE(1, 0, 1, 0))},
                {_mm256_shuffle_ps(xy01, xy23, _MM_SHUFFLE(3, 2, 3, 2))},
                {_mm256_shuffle_ps(zw01, zw23, _MM_SHUFFLE(1, 0, 1, 0))}};
    }

    TROVIK_FORCE_INLINE static F32x8 LoadCells(const HWVector* cells) {
        return {_mm256_loadu_ps(reinterpret_cast<const float*>(cells))};
    }
    /// The order of the vectors is 0 2 4 6 1 3 5 7.
    TROVIK_FORCE_INLINE static Xyz<F32x8> Components(F32x8 v0, F32x8 v1, F32x8 v2, F32x8 v3) {
        const __m256 zw01 = _mm256_unpacklo_ps(v0.lanes, v1.lanes);
        const __m256 zw23 = _mm256_unpacklo_ps(v2.lanes, v3.lanes);
        const __m256 xy01 = _mm256_unpackhi_ps(v0.lanes, v1.lanes);
        const __m256 xy23 = _mm256_unpackhi_ps(v2.lanes, v3.lanes);
        return {{_mm256_shuffle_ps(xy01, xy23, _MM_SHUFFLE(3, 2, 3, 2))},
                {_mm256_shuffle_ps(xy01, xy23, _MM_SHUFFLE(1, 0, 1, 0))},
                {_mm256_shuffle_ps(zw01, zw23, _MM_SHUFFLE(3, 2, 3, 2))}};
    }
    TROVIK_FORCE_INLINE static void StorePacked(I32x8 xy, I32x8 z, uint64_t* out) {
        const __m256i first = _mm256_unpacklo_epi32(xy.lanes, z.lanes);
        const __m256i last = _mm256_unpackhi_epi32(xy.lanes, z.lanes);
        auto* four = reinterpret_cast<__m256i*>(out);
        _mm256_storeu_si256(four, _mm256_permute4x64_epi64(first, _MM_SHUFFLE(3, 1, 2, 0)));
        _mm256_storeu_si256(four + 1, _mm256_permute4x64_epi64(last, _MM_SHUFFLE(3, 1, 2, 0)));
    }

    TROVIK_FORCE_INLINE static F32x8 Repeated(const HWVector& v) {
        return {Halves(v.lanes, v.lanes)};
    }
    template <uint32_t j>
    TROVIK_FORCE_INLINE static HWVector Part(F32x8 v) {
        return HWVector(j == 0 ? _mm256_castps256_ps128(v.lanes)
                               : _mm256_extractf128_ps(v.lanes, 1));
    }
    template <class At>
    TROVIK_FORCE_INLINE static F32x8 Combined(const At& at) {
        return {Halves(at(0).lanes, at(1).lanes)};
    }
    template <class At>
    TROVIK_FORCE_INLINE static F32x8 Spread(const At& at) {
        return {Halves(_mm_set1_ps(at(0)), _mm_set1_ps(at(1)))};
    }
    TROVIK_FORCE_INLINE static F32x8 SpreadConsecutive(const float* numbers) {
        const __m256i index = _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1);
        return {_mm256_permutevar8x32_ps(_mm256_loadu_ps(numbers), index)};
    }
    TROVIK_FORCE_INLINE static F32x8 FromNext(F32x8 a, F32x8 b) {
        return {_mm256_permute2f128_ps(a.lanes, b.lanes, 0x21)};
    }
    TROVIK_FORCE_INLINE static F32x8 FromPrevious(F32x8 a, F32x8 b) { return FromNext(a, b); }
    TROVIK_FORCE_INLINE static void StoreCells(HWVector* cells, F32x8 v) {
        _mm256_storeu_ps(reinterpret_cast<float*>(cells), v.lanes);
    }
    template <class At>
    TROVIK_FORCE_INLINE static void StoreParts(const At& at, F32x8 v) {
        at(0) = Part<0>(v);
        at(1) = Part<1>(v);
    }

    template <class At>
    TROVIK_FORCE_INLINE static F32x8 PositionsOf(const At& at) {
        return Reversed({Halves(_mm_loadu_ps(&at(0).x), _mm_loadu_ps(&at(1).x))});
    }
    template <class At>
    TROVIK_FORCE_INLINE static void StorePositions(const At& at, F32x8 v) {
        const __m256 plain = _mm256_permute_ps(v.lanes, _MM_SHUFFLE(0, 1, 2, 3));
        StorePlain(at(0), _mm256_castps256_ps128(plain));
        StorePlain(at(1), _mm256_extractf128_ps(plain, 1));
    }
    template <class At>
    TROVIK_FORCE_INLINE static F32x8 WordsOf(const At& at) {
        const __m128i words =
            _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(&at(0))),
                               _mm_loadl_epi64(reinterpret_cast<const __m128i*>(&at(1))));
        return {_mm256_cvtepi32_ps(_mm256_cvtepi16_epi32(words))};
    }
    TROVIK_FORCE_INLINE static F32x8 Reversed(F32x8 plain) {
        const __m256 reversed = _mm256_permute_ps(plain.lanes, _MM_SHUFFLE(0, 1, 2, 3));
        const __m256i xyz = _mm256_setr_epi32(0, -1, -1, -1, 0, -1, -1, -1);
        return {_mm256_and_ps(reversed, _mm256_castsi256_ps(xyz))};
    }

private:
    TROVIK_FORCE_INLINE static __m256 Halves(__m128 first, __m128 second) {
        return _mm256_insertf128_ps(_mm256_castps128_ps256(first), second, 1);
    }
    /// Writes x, y and z; the link is preserved.
    TROVIK_FORCE_INLINE static void StorePlain(Vertex& v, __m128 plain) {
        _mm_storeu_ps(&v.x, _mm_blend_ps(plain, _mm_loadu_ps(&v.x), 8));
    }
};

}  // namespace trovik
