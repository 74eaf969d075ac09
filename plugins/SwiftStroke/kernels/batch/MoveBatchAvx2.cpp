// SPDX-License-Identifier: Apache-2.0

/// \file The second stage of the vertex step, two vertices at a time, for kernels in which the
/// vertex order affects only the bounds. The operations match those of the stages line by line; see
/// their files for comments.
#include "kernels/KernelSwitches.h"
#include "kernels/batch/VertexBatch.h"

#if defined(__x86_64__)
#include "kernels/batch/WideVectors.h"

#include <bit>

namespace trovik {

namespace {

/// The kind of displacement. Pulling has no direction.
enum class Way { PushAlong, PushByNormals, PlaneAlong, PlaneByNormals, Pull };

constexpr bool IsPushing(Way way) { return way == Way::PushAlong || way == Way::PushByNormals; }
constexpr bool IsPlaning(Way way) { return way == Way::PlaneAlong || way == Way::PlaneByNormals; }
constexpr bool IsByNormals(Way way) {
    return way == Way::PushByNormals || way == Way::PlaneByNormals;
}

/// Values that are constant for a batch, and the bounds.
struct WideDab {
    const PatchVertexEntry* entries;
    StoredVertexInfo* const* records;
    const float* buildUp;
    Vertex* vertices;
    HWVector* grid;
    __m256 direction;
    __m256 center;
    /// 1 in mesh-local space, where the multiplication has no effect.
    __m256 scale;
    __m256 planeOffset;
    __m256 planeDistance;
    __m256 planeSign;
    __m256 clampMin;
    __m256 clampMax;
    __m128 least;
    __m128 most;
};

TROVIK_AVX2_INLINE __m256 NormalsOf(const StoredVertexInfo& first, const StoredVertexInfo& second) {
    const __m128i words = _mm_unpacklo_epi64(
        _mm_loadl_epi64(reinterpret_cast<const __m128i*>(&first.originalNormal)),
        _mm_loadl_epi64(reinterpret_cast<const __m128i*>(&second.originalNormal)));
    const __m256 numbers = _mm256_mul_ps(_mm256_cvtepi32_ps(_mm256_cvtepi16_epi32(words)),
                                         _mm256_set1_ps(packedNormalToFloat));
    return ReversedPair(numbers);
}

/// Returns the dot product in every lane, computed as for the lowest lane of HWVector's dot
/// product.
TROVIK_AVX2_INLINE __m256 Dot(__m256 a, __m256 b) {
    const __m256 products = _mm256_mul_ps(a, b);
    const __m256 pairs =
        _mm256_add_ps(products, _mm256_permute_ps(products, _MM_SHUFFLE(2, 3, 0, 1)));
    const __m256 sums = _mm256_add_ps(pairs, _mm256_permute_ps(pairs, _MM_SHUFFLE(1, 0, 3, 2)));
    return _mm256_permute_ps(sums, 0);
}

TROVIK_AVX2_INLINE __m256 DisplacementOf(const WideDab& dab, Way way, __m256 position, __m256 dir) {
    if (IsPushing(way)) return dir;
    if (way == Way::Pull)
        return _mm256_mul_ps(_mm256_sub_ps(dab.center, position), _mm256_set1_ps(0.1f));
    const __m256 height = Dot(dir, position);
    __m256 move = _mm256_add_ps(dab.planeOffset, _mm256_sub_ps(dab.planeDistance, height));
    move = _mm256_mul_ps(move, dab.planeSign);
    // If the operands are equal or either is NaN, both instructions return their second operand,
    // which is `move`.
    move = _mm256_min_ps(dab.clampMax, move);
    move = _mm256_max_ps(dab.clampMin, move);
    return _mm256_mul_ps(dir, move);
}

/// Moves vertices i and k of the batch. If i equals k, the vertex is moved once.
TROVIK_AVX2_INLINE __m256 MovePair(WideDab& dab, Way way, uint32_t i, uint32_t k, __m256 weights) {
    Vertex& first = dab.vertices[dab.entries[i].vertex];
    Vertex& second = dab.vertices[dab.entries[k].vertex];
    const __m256 position = PositionPairOf(first, second);
    const __m256 dir =
        IsByNormals(way) ? NormalsOf(*dab.records[i], *dab.records[k]) : dab.direction;
    const __m256 displacement = _mm256_mul_ps(DisplacementOf(dab, way, position, dir), weights);
    const __m256 moved = _mm256_add_ps(position, _mm256_mul_ps(displacement, dab.scale));
    StorePositionPair(first, second, moved);

    dab.least = _mm_min_ps(_mm_min_ps(dab.least, FirstOf(moved)), FirstOf(position));
    dab.most = _mm_max_ps(_mm_max_ps(dab.most, FirstOf(moved)), FirstOf(position));
    dab.least = _mm_min_ps(_mm_min_ps(dab.least, SecondOf(moved)), SecondOf(position));
    dab.most = _mm_max_ps(_mm_max_ps(dab.most, SecondOf(moved)), SecondOf(position));
    if (IsPushing(way)) {
        dab.records[i]->buildUp = dab.buildUp[i];
        dab.records[k]->buildUp = dab.buildUp[k];
    }
    return moved;
}

TROVIK_AVX2_INLINE bool MoveAll(DabConstants& patch,
                                const PatchVertexEntry* entries,
                                uint32_t count,
                                uint64_t movingMask,
                                const VertexBatch& batch,
                                Way way,
                                bool withFreeze,
                                bool inWorldSpace) {
    const SwiftStroke& brush = patch.brush;
    WideDab dab;
    dab.entries = entries;
    dab.records = batch.records;
    dab.buildUp = batch.buildUp;
    dab.vertices = patch.vertices;
    dab.grid = patch.positionGrid;
    dab.direction = Duplicated(patch.direction);
    dab.center = Duplicated(patch.center);
    dab.scale = inWorldSpace ? Duplicated(patch.space.inverseScale) : _mm256_set1_ps(1.0f);
    dab.planeOffset = _mm256_set1_ps(brush.planeOffset * brush.strokePlaneSign);
    dab.planeDistance = _mm256_set1_ps(brush.planeDistance);
    dab.planeSign = _mm256_set1_ps(brush.planeDirectionSign);
    dab.clampMin = _mm256_set1_ps(brush.planeClampMin);
    dab.clampMax = _mm256_set1_ps(brush.planeClampMax);
    dab.least = patch.boundsMin.lanes;
    dab.most = patch.boundsMax.lanes;

    alignas(32) float weight[VertexBatch::capacity];
    ApplyStrengthToBatch(patch, entries, count, withFreeze, batch.weight, weight);
    if (IsPlaning(way)) {
        for (uint32_t i = 0; i < count; i += 8)
            _mm256_store_ps(weight + i,
                            _mm256_mul_ps(_mm256_load_ps(weight + i), _mm256_set1_ps(0.01f)));
    }

    const __m256i firstTwo = _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1);
    const __m256i lastTwo = _mm256_setr_epi32(2, 2, 2, 2, 3, 3, 3, 3);
    for (uint32_t i = 0; i < count; i += 4) {
        const auto moving = static_cast<unsigned>(movingMask >> i) & 15u;
        // Four vertices whose cells are consecutive.
        if (moving == 15 && entries[i + 3].cell == entries[i].cell + 3) [[likely]] {
            const __m256 four = _mm256_castps128_ps256(_mm_load_ps(weight + i));
            auto* cells = reinterpret_cast<float*>(dab.grid + entries[i].cell);
            _mm256_storeu_ps(
                cells, MovePair(dab, way, i, i + 1, _mm256_permutevar8x32_ps(four, firstTwo)));
            _mm256_storeu_ps(
                cells + 8,
                MovePair(dab, way, i + 2, i + 3, _mm256_permutevar8x32_ps(four, lastTwo)));
            continue;
        }
        for (uint32_t k = i; k < i + 4 && k < count; ++k) {
            HWVector& cell = dab.grid[entries[k].cell];
            if (((movingMask >> k) & 1u) != 0)
                cell.lanes = FirstOf(MovePair(dab, way, k, k, _mm256_set1_ps(weight[k])));
            else
                cell = PositionOf(dab.vertices[entries[k].vertex]);
        }
    }
    patch.boundsMin.lanes = dab.least;
    patch.boundsMax.lanes = dab.most;
    return movingMask != 0;
}

#define TROVIK_MOVE_WIDE(way)                                                              \
    TROVIK_AVX2 bool Move##way(DabConstants& patch,                                        \
                               const PatchVertexEntry* entries,                            \
                               uint32_t count,                                             \
                               uint64_t movingMask,                                        \
                               const VertexBatch& batch,                                   \
                               bool withFreeze,                                            \
                               bool inWorldSpace) {                                        \
        return MoveAll(                                                                    \
            patch, entries, count, movingMask, batch, Way::way, withFreeze, inWorldSpace); \
    }

TROVIK_MOVE_WIDE(PushAlong)
TROVIK_MOVE_WIDE(PushByNormals)
TROVIK_MOVE_WIDE(PlaneAlong)
TROVIK_MOVE_WIDE(PlaneByNormals)
TROVIK_MOVE_WIDE(Pull)

}  // namespace

WideMover WideMoverFor(const KernelSwitches& switches) {
    if (switches.withStamp || switches.tiledStamp || switches.withoutRadius ||
        switches.throughLayer || switches.notifyPerVertex)
        return nullptr;
    switch (FamilyOf(switches.averageBit, switches.pullBit)) {
        case Family::Pushing:
            return switches.alongVertexNormal ? &MovePushByNormals : &MovePushAlong;
        case Family::Planing:
            return switches.alongVertexNormal ? &MovePlaneByNormals : &MovePlaneAlong;
        case Family::Pulling:
            return &MovePull;
        case Family::Averaging:
            break;
    }
    return nullptr;
}

}  // namespace trovik

#else

namespace trovik {

WideMover WideMoverFor(const KernelSwitches&) { return nullptr; }

}  // namespace trovik

#endif
