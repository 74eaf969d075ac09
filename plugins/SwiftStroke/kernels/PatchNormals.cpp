// SPDX-License-Identifier: Apache-2.0

/// \file Computes the normals of a patch by central differences over its grid. Four adjacent cells
/// of a row are transposed to four x, four y and four z values. Each number is computed by the same
/// operations as in HWVector's products and HWVector::Normalize, in the same order.
#include "kernels/PatchNormals.h"

#include "brush/SwiftStroke.h"
#include "kernels/batch/VectorWidth.h"

#include <algorithm>
#include <cstring>

namespace trovik {

namespace {

/// Each member contains one component of four vectors.
struct Components {
    __m128 x, y, z;
};

TROVIK_FORCE_INLINE Components Transposed(__m128 v0, __m128 v1, __m128 v2, __m128 v3) {
    // From low to high, the lanes are w z y x; w is unused.
    const __m128 zw01 = _mm_unpacklo_ps(v0, v1);
    const __m128 zw23 = _mm_unpacklo_ps(v2, v3);
    const __m128 xy01 = _mm_unpackhi_ps(v0, v1);
    const __m128 xy23 = _mm_unpackhi_ps(v2, v3);
    return {_mm_movehl_ps(xy23, xy01), _mm_movelh_ps(xy01, xy23), _mm_movehl_ps(zw23, zw01)};
}

TROVIK_FORCE_INLINE __m128 Difference(__m128 a, __m128 b, __m128 c, __m128 d) {
    return _mm_sub_ps(_mm_mul_ps(a, b), _mm_mul_ps(c, d));
}

/// Computes the normals at `cell` and the three following cells.
TROVIK_FORCE_INLINE void PackFour(const HWVector* cell,
                                  uint32_t stride,
                                  const Components& scale,
                                  uint64_t* out) {
    const auto side = [cell](int i) { return _mm_sub_ps(cell[i - 1].lanes, cell[i + 1].lanes); };
    const HWVector* above = cell - stride;
    const HWVector* below = cell + stride;
    const auto step = [=](int i) { return _mm_sub_ps(above[i].lanes, below[i].lanes); };
    const Components across = Transposed(side(0), side(1), side(2), side(3));
    const Components along = Transposed(step(0), step(1), step(2), step(3));
    Components n;
    n.x = _mm_mul_ps(Difference(across.y, along.z, across.z, along.y), scale.x);
    n.y = _mm_mul_ps(Difference(across.z, along.x, across.x, along.z), scale.y);
    n.z = _mm_mul_ps(Difference(across.x, along.y, across.y, along.x), scale.z);

    const __m128 dot =
        _mm_add_ps(_mm_mul_ps(n.z, n.z), _mm_add_ps(_mm_mul_ps(n.y, n.y), _mm_mul_ps(n.x, n.x)));
    const __m128 one = _mm_set1_ps(1.0f);
    // A vector whose dot product with itself is 0 does not change, so its factor is 1.
    const __m128 isZero = _mm_cmpeq_ps(dot, _mm_setzero_ps());
    const __m128 inverse = _mm_div_ps(one, _mm_sqrt_ps(dot));
    const __m128 factor = _mm_or_ps(_mm_andnot_ps(isZero, inverse), _mm_and_ps(isZero, one));
    const auto words = [factor](__m128 component) {
        const __m128 unit = _mm_mul_ps(component, factor);
        return _mm_cvtps_epi32(_mm_mul_ps(unit, _mm_set1_ps(32767.0f)));
    };
    // Takes the lower half of each word, as in a narrowing conversion without saturation.
    const __m128i lowX = _mm_srli_epi32(_mm_slli_epi32(words(n.x), 16), 16);
    const __m128i xy = _mm_or_si128(lowX, _mm_slli_epi32(words(n.y), 16));
    const __m128i z = _mm_and_si128(words(n.z), _mm_set1_epi32(0xffff));
    auto* two = reinterpret_cast<__m128i*>(out);
    _mm_storeu_si128(two, _mm_unpacklo_epi32(xy, z));
    _mm_storeu_si128(two + 1, _mm_unpackhi_epi32(xy, z));
}

/// The fourth word is reserved for the host and does not change. The normal is read and written as
/// one word, so that the load is issued long before its value is needed.
TROVIK_FORCE_INLINE void StoreNormal(PackedNormal& normal, uint64_t packed) {
    constexpr uint64_t hostWord = uint64_t{0xffff} << 48;
    uint64_t words;
    std::memcpy(&words, &normal, sizeof words);
    words = (words & hostWord) | packed;
    std::memcpy(&normal, &words, sizeof words);
}

}  // namespace

void PackNormals(
    const HWVector* cell, uint32_t stride, uint32_t count, const HWVector& scale, PackedRow& out) {
    const Components scales = {
        _mm_set1_ps(scale.X()), _mm_set1_ps(scale.Y()), _mm_set1_ps(scale.Z())};
    if (count >= 4) {
        for (uint32_t i = 0; i < count; i += 4) {
            // The last group of four ends at the last cell and recomputes some normals.
            const uint32_t first = std::min(i, count - 4);
            PackFour(cell + first, stride, scales, out.normals + first);
        }
        return;
    }
    // If there are fewer than four cells, they are processed in a copy, because the grid may end
    // after them.
    HWVector copy[3][6];
    for (uint32_t i = 0; i < 6; ++i) {
        const uint32_t from = std::min(i, count + 1);
        for (uint32_t row = 0; row < 3; ++row)
            copy[row][i] = *(cell + from + row * stride - stride - 1);
    }
    PackFour(copy[1] + 1, 6, scales, out.normals);
}

/// Computes the normals of a patch and stores them.
class SwiftStroke::NormalRefresh {
public:
    NormalRefresh(const SwiftStroke& brush, const uint32_t* patchSlice)
        : points((1u << brush.patchLevel) + 1),
          stride(brush.gridStride),
          grid(brush.positionGrid + stride + 1),
          slice(patchSlice),
          indexTable(SubdivisionLevel::QuadVertexIndexTable(static_cast<uint32_t>(brush.patchLevel))
                         .array),
          list(brush.IsListed(patchSlice) ? brush.patchVertexList : nullptr),
          fetchesLate(brush.PrefetchesLate()),
          normals(brush.mesh->vertexNormals.array),
          scaleSquared(brush.brushSpace->inverseScale * brush.brushSpace->inverseScale),
          pack(CurrentVectorWidth() == VectorWidth::Eight ? &PackNormalsWide : &PackNormals) {}

    /// Processes the rows as one sequence, including the ghost cells between them. This is cheaper
    /// than processing partial groups at the end of each row.
    void All() {
        const uint32_t cells = (points - 1) * stride + points;
        uint32_t index = 0;
        uint32_t column = 0;
        for (uint32_t first = 0; first < cells; first += PackedRow::capacity) {
            const uint32_t count = std::min(cells - first, PackedRow::capacity);
            pack(grid + first, stride, count, scaleSquared, packed);
            for (uint32_t i = 0; i < count;) {
                if (column < points) {
                    const uint32_t length = std::min(points - column, count - i);
                    Put(i, length, index);
                    index += length;
                    column += length;
                    i += length;
                } else {
                    column = column + 1 == stride ? 0 : column + 1;
                    ++i;
                }
            }
        }
    }

private:
    /// Stores `count` packed normals, starting at index `first`, for entries of the patch list.
    void Put(uint32_t first, uint32_t count, uint32_t index) {
        const uint64_t* from = packed.normals + first;
        // The members are copied to local variables, because the compiler must assume that storing
        // a normal may change them.
        PackedNormal* const to = normals;
        if (list == nullptr) {
            for (const uint32_t* at = indexTable + index; count > 0; --count)
                StoreNormal(to[slice[*at++]], *from++);
            return;
        }
        // With the list, vertices are accessed through fewer indirections.
        const PatchVertexEntry* entries = list + index;
        if (fetchesLate) {
            const PatchVertexEntry* const last = list + (points * points - 1);
            for (; count > 0; --count) {
                __builtin_prefetch(to + std::min(entries + PackedRow::capacity, last)->vertex);
                StoreNormal(to[entries++->vertex], *from++);
            }
            return;
        }
        for (; count > 3; count -= 4, entries += 4, from += 4) {
            StoreNormal(to[entries[0].vertex], from[0]);
            StoreNormal(to[entries[1].vertex], from[1]);
            StoreNormal(to[entries[2].vertex], from[2]);
            StoreNormal(to[entries[3].vertex], from[3]);
        }
        for (; count > 0; --count) StoreNormal(to[entries++->vertex], *from++);
    }

    uint32_t points;
    uint32_t stride;
    const HWVector* grid;
    const uint32_t* slice;
    const uint32_t* indexTable;
    const PatchVertexEntry* list;
    bool fetchesLate;
    PackedNormal* normals;
    HWVector scaleSquared;
    decltype(&PackNormals) pack;
    PackedRow packed = {};
};

void SwiftStroke::RefreshPatchNormals(const uint32_t* slice) { NormalRefresh(*this, slice).All(); }

void SwiftStroke::RefreshNormal(uint32_t row, uint32_t column, uint32_t vertex) {
    PackedRow packed;
    PackNormals(positionGrid + (row + 1) * gridStride + column + 1,
                gridStride,
                1,
                brushSpace->inverseScale * brushSpace->inverseScale,
                packed);
    StoreNormal(mesh->vertexNormals[vertex], packed.normals[0]);
}

}  // namespace trovik
