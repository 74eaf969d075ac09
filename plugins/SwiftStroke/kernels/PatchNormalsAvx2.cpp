// SPDX-License-Identifier: Apache-2.0

/// \file Computes the same normals as PatchNormals.cpp, eight at a time. The operations match those
/// of that file line by line; see there for comments.
#include "kernels/PatchNormals.h"

#include <algorithm>

#if defined(__x86_64__)
#include "kernels/batch/WideVectors.h"

namespace trovik {

namespace {

struct WideComponents {
    __m256 x, y, z;
};

/// Cells 2i and 2i + 1, one in each half.
TROVIK_AVX2 inline __m256 Pair(const HWVector* cell, int i) {
    return _mm256_loadu_ps(reinterpret_cast<const float*>(cell + 2 * i));
}

TROVIK_AVX2 inline WideComponents Transposed(__m256 v0, __m256 v1, __m256 v2, __m256 v3) {
    const __m256 zw01 = _mm256_unpacklo_ps(v0, v1);
    const __m256 zw23 = _mm256_unpacklo_ps(v2, v3);
    const __m256 xy01 = _mm256_unpackhi_ps(v0, v1);
    const __m256 xy23 = _mm256_unpackhi_ps(v2, v3);
    return {_mm256_shuffle_ps(xy01, xy23, _MM_SHUFFLE(3, 2, 3, 2)),
            _mm256_shuffle_ps(xy01, xy23, _MM_SHUFFLE(1, 0, 1, 0)),
            _mm256_shuffle_ps(zw01, zw23, _MM_SHUFFLE(3, 2, 3, 2))};
}

TROVIK_AVX2 inline __m256 Difference(__m256 a, __m256 b, __m256 c, __m256 d) {
    return _mm256_sub_ps(_mm256_mul_ps(a, b), _mm256_mul_ps(c, d));
}

TROVIK_AVX2 inline __m256i Words(__m256 component, __m256 factor) {
    const __m256 unit = _mm256_mul_ps(component, factor);
    return _mm256_cvtps_epi32(_mm256_mul_ps(unit, _mm256_set1_ps(32767.0f)));
}

/// The components are in the cell order 0 2 4 6 1 3 5 7.
TROVIK_AVX2 inline WideComponents Differences(const HWVector* less, const HWVector* taken) {
    return Transposed(_mm256_sub_ps(Pair(less, 0), Pair(taken, 0)),
                      _mm256_sub_ps(Pair(less, 1), Pair(taken, 1)),
                      _mm256_sub_ps(Pair(less, 2), Pair(taken, 2)),
                      _mm256_sub_ps(Pair(less, 3), Pair(taken, 3)));
}

/// Eight normals before normalisation, and their dot products with themselves.
struct RawNormals {
    __m256 x, y, z, dot;
};

TROVIK_AVX2 inline void CrossEight(const HWVector* cell,
                                   uint32_t stride,
                                   const WideComponents& scale,
                                   RawNormals& n) {
    const WideComponents across = Differences(cell - 1, cell + 1);
    const WideComponents along = Differences(cell - stride, cell + stride);
    n.x = _mm256_mul_ps(Difference(across.y, along.z, across.z, along.y), scale.x);
    n.y = _mm256_mul_ps(Difference(across.z, along.x, across.x, along.z), scale.y);
    n.z = _mm256_mul_ps(Difference(across.x, along.y, across.y, along.x), scale.z);
    n.dot = _mm256_add_ps(_mm256_mul_ps(n.z, n.z),
                          _mm256_add_ps(_mm256_mul_ps(n.y, n.y), _mm256_mul_ps(n.x, n.x)));
}

TROVIK_AVX2 inline void PackEight(const RawNormals& n, uint64_t* out) {
    const __m256 one = _mm256_set1_ps(1.0f);
    const __m256 isZero = _mm256_cmp_ps(n.dot, _mm256_setzero_ps(), _CMP_EQ_OQ);
    const __m256 factor = _mm256_blendv_ps(_mm256_div_ps(one, _mm256_sqrt_ps(n.dot)), one, isZero);
    const __m256i x = Words(n.x, factor);
    const __m256i y = Words(n.y, factor);
    const __m256i xy = _mm256_blend_epi16(x, _mm256_slli_epi32(y, 16), 0xaa);
    const __m256i z = _mm256_and_si256(Words(n.z, factor), _mm256_set1_epi32(0xffff));
    const __m256i first = _mm256_unpacklo_epi32(xy, z);
    const __m256i last = _mm256_unpackhi_epi32(xy, z);
    auto* four = reinterpret_cast<__m256i*>(out);
    _mm256_storeu_si256(four, _mm256_permute4x64_epi64(first, _MM_SHUFFLE(3, 1, 2, 0)));
    _mm256_storeu_si256(four + 1, _mm256_permute4x64_epi64(last, _MM_SHUFFLE(3, 1, 2, 0)));
}

}  // namespace

TROVIK_AVX2 void PackNormalsWide(
    const HWVector* cell, uint32_t stride, uint32_t count, const HWVector& scale, PackedRow& out) {
    if (count < 8) return PackNormals(cell, stride, count, scale, out);
    const WideComponents scales = {
        _mm256_set1_ps(scale.X()), _mm256_set1_ps(scale.Y()), _mm256_set1_ps(scale.Z())};
    // The work is split into two passes, because a single pass would stall on the long latencies of
    // the square root and the division.
    RawNormals raw[PackedRow::capacity / 8];
    uint32_t group = 0;
    for (uint32_t i = 0; i < count; i += 8)
        CrossEight(cell + std::min(i, count - 8), stride, scales, raw[group++]);
    group = 0;
    for (uint32_t i = 0; i < count; i += 8)
        PackEight(raw[group++], out.normals + std::min(i, count - 8));
}

}  // namespace trovik

#else

namespace trovik {

void PackNormalsWide(
    const HWVector* cell, uint32_t stride, uint32_t count, const HWVector& scale, PackedRow& out) {
    PackNormals(cell, stride, count, scale, out);
}

}  // namespace trovik

#endif
