// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/lanes/Xyz.h"
#include "kernels/stages/DabConstants.h"

/// \file Four lanes: SSE2. See Xyz.h for the lane types.
namespace trovik {

struct I32x4 {
    /// A bit mask per lane: all bits are set or clear.
    using Mask = __m128i;

    __m128i lanes;

    TROVIK_FORCE_INLINE static I32x4 Splat(uint32_t i) {
        return {_mm_set1_epi32(static_cast<int32_t>(i))};
    }
    TROVIK_FORCE_INLINE static I32x4 BitsOf(const HWVector* cells) {
        return {_mm_load_si128(reinterpret_cast<const __m128i*>(cells))};
    }
    TROVIK_FORCE_INLINE Mask operator==(const I32x4& o) const {
        return _mm_cmpeq_epi32(lanes, o.lanes);
    }
    TROVIK_FORCE_INLINE Mask IsBeyond(const I32x4& last) const {
        return _mm_or_si128(_mm_srai_epi32(lanes, 31), _mm_cmpgt_epi32(lanes, last.lanes));
    }
    TROVIK_FORCE_INLINE I32x4 ZeroWhere(Mask mask) const { return {_mm_andnot_si128(mask, lanes)}; }

    /// The lower halves of `low`, and above them those of `high`.
    TROVIK_FORCE_INLINE static I32x4 JoinHalves(const I32x4& low, const I32x4& high) {
        return {_mm_or_si128(low.LowerHalves().lanes, _mm_slli_epi32(high.lanes, 16))};
    }
    TROVIK_FORCE_INLINE I32x4 LowerHalves() const {
        return {_mm_and_si128(lanes, _mm_set1_epi32(0xffff))};
    }
};

struct F32x4 {
    static constexpr uint32_t count = 4;
    using Integers = I32x4;
    using Mask = __m128i;

    __m128 lanes;

    TROVIK_FORCE_INLINE static F32x4 Splat(float f) { return {_mm_set1_ps(f)}; }
    TROVIK_FORCE_INLINE static F32x4 Load(const float* from) { return {_mm_load_ps(from)}; }
    TROVIK_FORCE_INLINE void Store(float* to) const { _mm_store_ps(to, lanes); }

    TROVIK_FORCE_INLINE F32x4 operator+(F32x4 o) const { return {_mm_add_ps(lanes, o.lanes)}; }
    TROVIK_FORCE_INLINE F32x4 operator-(F32x4 o) const { return {_mm_sub_ps(lanes, o.lanes)}; }
    TROVIK_FORCE_INLINE F32x4 operator*(F32x4 o) const { return {_mm_mul_ps(lanes, o.lanes)}; }
    TROVIK_FORCE_INLINE F32x4 operator/(F32x4 o) const { return {_mm_div_ps(lanes, o.lanes)}; }
    TROVIK_FORCE_INLINE F32x4 Sqrt() const { return {_mm_sqrt_ps(lanes)}; }
    TROVIK_FORCE_INLINE F32x4 ZeroWhere(Mask mask) const {
        return {_mm_andnot_ps(_mm_castsi128_ps(mask), lanes)};
    }
    /// 1 where `o` is 0, otherwise these lanes.
    TROVIK_FORCE_INLINE F32x4 OneWhereZero(F32x4 o) const {
        const __m128 isZero = _mm_cmpeq_ps(o.lanes, _mm_setzero_ps());
        return {_mm_or_ps(_mm_andnot_ps(isZero, lanes), _mm_and_ps(isZero, _mm_set1_ps(1.0f)))};
    }
    TROVIK_FORCE_INLINE Mask IsNotGreater(F32x4 o) const {
        return _mm_castps_si128(_mm_cmpngt_ps(lanes, o.lanes));
    }
    TROVIK_FORCE_INLINE I32x4 Truncated() const { return {_mm_cvttps_epi32(lanes)}; }
    /// Rounds to nearest, ties to even.
    TROVIK_FORCE_INLINE I32x4 Rounded() const { return {_mm_cvtps_epi32(lanes)}; }

    TROVIK_FORCE_INLINE static F32x4 Gather(const float* table, I32x4 index) {
        const auto low = static_cast<uint64_t>(_mm_cvtsi128_si64(index.lanes));
        const auto high =
            static_cast<uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(index.lanes, index.lanes)));
        return {_mm_movelh_ps(_mm_unpacklo_ps(_mm_load_ss(table + static_cast<uint32_t>(low)),
                                              _mm_load_ss(table + (low >> 32))),
                              _mm_unpacklo_ps(_mm_load_ss(table + static_cast<uint32_t>(high)),
                                              _mm_load_ss(table + (high >> 32))))};
    }
};

/// The lowest lane, in all lanes.
TROVIK_FORCE_INLINE HWVector FirstInAllLanes(const HWVector& v) {
    return HWVector(_mm_shuffle_ps(v.lanes, v.lanes, 0));
}

struct Lanes4 {
    using Numbers = F32x4;
    using Vectors = HWVector;
    static constexpr uint32_t vectors = 1;

    /// Returns a bit mask; bit i is set if lane i is set in `mask` and clear in `excluded`.
    TROVIK_FORCE_INLINE static uint32_t BitsOf(I32x4::Mask mask, I32x4::Mask excluded) {
        return static_cast<uint32_t>(
            _mm_movemask_ps(_mm_castsi128_ps(_mm_andnot_si128(excluded, mask))));
    }
    TROVIK_FORCE_INLINE static uint32_t BitsOf(I32x4::Mask mask) {
        return static_cast<uint32_t>(_mm_movemask_ps(_mm_castsi128_ps(mask)));
    }

    /// Loads rows of four numbers, one row per vertex, and transposes them.
    /// \param[out] fourth  the bits of the fourth numbers.
    TROVIK_FORCE_INLINE static Xyz<F32x4> Columns(const float (*rows)[4], I32x4& fourth) {
        __m128 x = _mm_load_ps(rows[0]);
        __m128 y = _mm_load_ps(rows[1]);
        __m128 z = _mm_load_ps(rows[2]);
        __m128 last = _mm_load_ps(rows[3]);
        _MM_TRANSPOSE4_PS(x, y, z, last);
        fourth.lanes = _mm_castps_si128(last);
        return {{x}, {y}, {z}};
    }

    /// Loads the vectors of consecutive cells.
    TROVIK_FORCE_INLINE static F32x4 LoadCells(const HWVector* cells) { return {cells->lanes}; }
    /// Returns the components of the vectors in four registers, in an order of the vectors that
    /// StorePacked reverses.
    TROVIK_FORCE_INLINE static Xyz<F32x4> Components(F32x4 v0, F32x4 v1, F32x4 v2, F32x4 v3) {
        // From low to high, the lanes are w z y x; w is unused.
        const __m128 zw01 = _mm_unpacklo_ps(v0.lanes, v1.lanes);
        const __m128 zw23 = _mm_unpacklo_ps(v2.lanes, v3.lanes);
        const __m128 xy01 = _mm_unpackhi_ps(v0.lanes, v1.lanes);
        const __m128 xy23 = _mm_unpackhi_ps(v2.lanes, v3.lanes);
        return {
            {_mm_movehl_ps(xy23, xy01)}, {_mm_movelh_ps(xy01, xy23)}, {_mm_movehl_ps(zw23, zw01)}};
    }
    TROVIK_FORCE_INLINE static void StorePacked(I32x4 xy, I32x4 z, uint64_t* out) {
        auto* two = reinterpret_cast<__m128i*>(out);
        _mm_storeu_si128(two, _mm_unpacklo_epi32(xy.lanes, z.lanes));
        _mm_storeu_si128(two + 1, _mm_unpackhi_epi32(xy.lanes, z.lanes));
    }

    TROVIK_FORCE_INLINE static HWVector Repeated(const HWVector& v) { return v; }
    /// Returns vector j of the register.
    template <uint32_t j>
    TROVIK_FORCE_INLINE static HWVector Part(const HWVector& v) {
        return v;
    }
    template <class At>
    TROVIK_FORCE_INLINE static HWVector Combined(const At& at) {
        return at(0);
    }
    /// Sets all lanes of each vector to a number.
    template <class At>
    TROVIK_FORCE_INLINE static HWVector Spread(const At& at) {
        return HWVector::Splat(at(0));
    }
    /// Sets all lanes of each vector to the next number. Reads up to eight numbers.
    TROVIK_FORCE_INLINE static HWVector SpreadConsecutive(const float* numbers) {
        return HWVector::Splat(*numbers);
    }
    /// Returns the vectors of `a` except the first, followed by the first one of `b`.
    TROVIK_FORCE_INLINE static HWVector FromNext(const HWVector&, const HWVector& b) { return b; }
    /// Returns the last vector of `a`, followed by those of `b` except the last.
    TROVIK_FORCE_INLINE static HWVector FromPrevious(const HWVector& a, const HWVector&) {
        return a;
    }
    TROVIK_FORCE_INLINE static void StoreCells(HWVector* cells, const HWVector& v) { *cells = v; }
    /// Stores each vector in its own cell.
    template <class At>
    TROVIK_FORCE_INLINE static void StoreParts(const At& at, const HWVector& v) {
        at(0) = v;
    }

    template <class At>
    TROVIK_FORCE_INLINE static HWVector PositionsOf(const At& at) {
        return PositionOf(at(0));
    }
    template <class At>
    TROVIK_FORCE_INLINE static void StorePositions(const At& at, const HWVector& v) {
        StorePosition(at(0), v);
    }
    /// Returns the words of packed normals as floats, in memory order.
    template <class At>
    TROVIK_FORCE_INLINE static HWVector WordsOf(const At& at) {
        const __m128i words = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(&at(0)));
        // Moves each word to the upper half of a lane, then sign-extends it with an arithmetic
        // shift.
        return HWVector(_mm_cvtepi32_ps(_mm_srai_epi32(_mm_unpacklo_epi16(words, words), 16)));
    }
    /// Converts vectors from memory order, with an arbitrary fourth value, to vectors with w 0.
    TROVIK_FORCE_INLINE static HWVector Reversed(const HWVector& plain) {
        return ReversedXyz(plain.lanes);
    }
};

}  // namespace trovik
