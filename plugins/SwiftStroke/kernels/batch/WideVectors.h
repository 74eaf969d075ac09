// SPDX-License-Identifier: Apache-2.0
#pragma once

/// \file Functions that the eight-lane loops share, such as operations on two vectors at a time. To
/// be included only by files that implement VectorWidth::Eight. Each half uses the same operations
/// as HWVector, in the same order.
#include "kernels/stages/DabConstants.h"

#include <immintrin.h>

// The target attribute is set per function rather than per file, because inline functions in
// headers must not be compiled with instructions that the CPU may not support. Templates and
// lambdas would not inherit the attribute.
#define TROVIK_AVX2 __attribute__((target("avx2")))
#define TROVIK_AVX2_INLINE TROVIK_AVX2 TROVIK_FORCE_INLINE

namespace trovik {

TROVIK_AVX2_INLINE __m256 CombineHalves(__m128 first, __m128 second) {
    return _mm256_insertf128_ps(_mm256_castps128_ps256(first), second, 1);
}
TROVIK_AVX2_INLINE __m256 Duplicated(const HWVector& v) { return CombineHalves(v.lanes, v.lanes); }
TROVIK_AVX2_INLINE __m128 FirstOf(__m256 pair) { return _mm256_castps256_ps128(pair); }
TROVIK_AVX2_INLINE __m128 SecondOf(__m256 pair) { return _mm256_extractf128_ps(pair, 1); }

/// Converts two sets of x, y, z in memory order to vectors with w 0, like ReversedXyz.
TROVIK_AVX2_INLINE __m256 ReversedPair(__m256 plain) {
    const __m256 reversed = _mm256_permute_ps(plain, _MM_SHUFFLE(0, 1, 2, 3));
    const __m256i xyz = _mm256_setr_epi32(0, -1, -1, -1, 0, -1, -1, -1);
    return _mm256_and_ps(reversed, _mm256_castsi256_ps(xyz));
}

TROVIK_AVX2_INLINE __m256 PositionPairOf(const Vertex& first, const Vertex& second) {
    return ReversedPair(CombineHalves(_mm_loadu_ps(&first.x), _mm_loadu_ps(&second.x)));
}

/// Writes x, y and z; the link is preserved.
TROVIK_AVX2_INLINE void StorePlain(Vertex& v, __m128 plain) {
    _mm_storeu_ps(&v.x, _mm_blend_ps(plain, _mm_loadu_ps(&v.x), 8));
}
TROVIK_AVX2_INLINE void StorePositionPair(Vertex& first, Vertex& second, __m256 positions) {
    const __m256 plain = _mm256_permute_ps(positions, _MM_SHUFFLE(0, 1, 2, 3));
    StorePlain(first, FirstOf(plain));
    StorePlain(second, SecondOf(plain));
}

/// Multiplies each vertex's weight by the strength and, if `withFreeze` is set, by the unfrozen
/// fraction.
/// \param out  has room for `count` entries, rounded up to a multiple of eight; entries with an
/// index of `count` or more are undefined.
TROVIK_AVX2_INLINE void ApplyStrengthToBatch(const DabConstants& dab,
                                             const PatchVertexEntry* entries,
                                             uint32_t count,
                                             bool withFreeze,
                                             const float* weights,
                                             float* out) {
    const __m256 strength = _mm256_set1_ps(dab.dabStrength);
    for (uint32_t i = 0; i < count; i += 8)
        _mm256_store_ps(out + i, _mm256_mul_ps(_mm256_load_ps(weights + i), strength));
    if (!withFreeze) return;
    for (uint32_t i = 0; i < count; ++i) {
        const uint8_t amount = dab.vertices[entries[i].vertex].freeze & freezeAmountMask;
        out[i] = out[i] * (1.0f - static_cast<float>(amount) * freezeAmountToWeight);
    }
}

}  // namespace trovik
