// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#else
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/x86/sse2.h>
#endif

namespace trovik {

/// Four floats for SIMD operations, 16-byte aligned. x is in the highest lane, then y, z, and w in
/// the lowest lane; w is 0 for a position. The order in memory is therefore w, z, y, x.
class alignas(16) HWVector {
public:
    /// Leaves the lanes uninitialised, so that grids of vectors can be allocated without clearing
    /// them.
    HWVector() = default;
    explicit HWVector(__m128 value) : lanes(value) {}
    HWVector(float x, float y, float z, float w) : lanes(_mm_set_ps(x, y, z, w)) {}
    /// Sets w to 0.
    explicit HWVector(const Vector& v) : lanes(_mm_set_ps(v.x, v.y, v.z, 0.0f)) {}
    static HWVector Splat(float f) { return HWVector(_mm_set1_ps(f)); }
    static HWVector Zero() { return HWVector(_mm_setzero_ps()); }

    float X() const { return Lane<3>(); }
    float Y() const { return Lane<2>(); }
    float Z() const { return Lane<1>(); }
    float W() const { return Lane<0>(); }
    /// The lowest lane, which contains the result of operator|.
    float First() const { return _mm_cvtss_f32(lanes); }

    explicit operator Vector() const { return {X(), Y(), Z()}; }
    explicit operator Vector4() const { return {X(), Y(), Z(), W()}; }

    HWVector operator+(const HWVector& o) const { return HWVector(_mm_add_ps(lanes, o.lanes)); }
    HWVector operator-(const HWVector& o) const { return HWVector(_mm_sub_ps(lanes, o.lanes)); }
    HWVector operator*(const HWVector& o) const { return HWVector(_mm_mul_ps(lanes, o.lanes)); }
    HWVector operator*(float f) const { return HWVector(_mm_mul_ps(lanes, _mm_set1_ps(f))); }
    HWVector& operator*=(float f) { return *this = *this * f; }

    /// Dot product over all four components, (x x' + y y') + (z z' + w w'), in every lane.
    HWVector operator|(const HWVector& o) const {
        const __m128 products = _mm_mul_ps(lanes, o.lanes);
        const __m128 pairs =
            _mm_add_ps(products, _mm_shuffle_ps(products, products, _MM_SHUFFLE(2, 3, 0, 1)));
        return HWVector(_mm_add_ps(pairs, _mm_shuffle_ps(pairs, pairs, _MM_SHUFFLE(1, 0, 3, 2))));
    }

    /// Cross product of x, y, z; each component is the difference of two products. w is computed in
    /// the same way from two equal products: 0, or NaN if w w' is not finite.
    HWVector operator&(const HWVector& o) const {
        // From high to low, the lanes are x y z w. The shuffles produce (y z x w) and (z x y w).
        const __m128 a1 = _mm_shuffle_ps(lanes, lanes, _MM_SHUFFLE(2, 1, 3, 0));
        const __m128 a2 = _mm_shuffle_ps(lanes, lanes, _MM_SHUFFLE(1, 3, 2, 0));
        const __m128 b1 = _mm_shuffle_ps(o.lanes, o.lanes, _MM_SHUFFLE(2, 1, 3, 0));
        const __m128 b2 = _mm_shuffle_ps(o.lanes, o.lanes, _MM_SHUFFLE(1, 3, 2, 0));
        return HWVector(_mm_sub_ps(_mm_mul_ps(a1, b2), _mm_mul_ps(a2, b1)));
    }

    /// Multiplies by 1 / sqrt(dot), with IEEE square root and division. A vector whose dot product
    /// with itself is 0 is unchanged.
    void Normalize() {
        const float dot = (*this | *this).First();
        if (dot != 0.0f) *this *= 1.0f / std::sqrt(dot);
    }

    /// Compares lane by lane. If the comparison is false, as it is for NaN, the result is the
    /// second operand.
    static HWVector Minimum(const HWVector& a, const HWVector& b) {
        return HWVector(_mm_min_ps(a.lanes, b.lanes));
    }
    static HWVector Maximum(const HWVector& a, const HWVector& b) {
        return HWVector(_mm_max_ps(a.lanes, b.lanes));
    }

    /// Scales by 32767 and rounds to nearest, ties to even. Writes four ints in lane order: w, z,
    /// y, x.
    void StoreNormalAsInt(int* out) const {
        const __m128i integers = _mm_cvtps_epi32(_mm_mul_ps(lanes, _mm_set1_ps(32767.0f)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), integers);
    }

    __m128 lanes;

private:
    template <int lane>
    float Lane() const {
        return _mm_cvtss_f32(_mm_shuffle_ps(lanes, lanes, _MM_SHUFFLE(lane, lane, lane, lane)));
    }
};
static_assert(sizeof(HWVector) == 16 && alignof(HWVector) == 16);

}  // namespace trovik
