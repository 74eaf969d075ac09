// SPDX-License-Identifier: Apache-2.0

/// \file Averages four rows at once. Each average depends on the one to its left, through a chain
/// of additions, and on the one above. Each row is therefore processed one vertex behind the row
/// above it, and each register contains two rows. Every average uses exactly the same operands as
/// if the rows were processed one after the other. For this order, see Lamport: "The Parallel
/// Execution of DO Loops" (1974).
#include "kernels/batch/VertexBatch.h"

#if defined(__x86_64__)
#include "kernels/batch/WideVectors.h"
#include "kernels/stages/Displacement.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace trovik {

namespace {

constexpr uint32_t rowCount = 4;

struct FourRows {
    const PatchVertexEntry* entries;
    uint32_t points;
    uint32_t stride;
    Vertex* vertices;
    /// First cell of the top row.
    HWVector* cells;
    /// 1 in mesh-local space, where scaling has no effect.
    HWVector scale;
    const float (*weights)[RowBatches::capacity];

    HWVector* CellOf(uint32_t row, uint32_t column) const { return cells + row * stride + column; }
    Vertex& VertexOf(uint32_t row, uint32_t column) const {
        return vertices[entries[row * points + column].vertex];
    }
};

/// The steps in which the four rows are processed: at step t, row r is at column t - r.
class StepMap {
public:
    StepMap(const RowBatches* rows, uint32_t points) : all{~0ull, ~0ull, ~0ull, ~0ull}, any{} {
        const uint32_t words = (points + 63) / 64;
        for (uint32_t row = 0; row < rowCount; ++row) {
            uint64_t carried = 0;
            for (uint32_t k = 0; k < std::size(all); ++k) {
                const uint64_t movingMask = k < words ? rows[row].movingMask[k] : 0;
                const uint64_t shifted = (movingMask << row) | carried;
                carried = row == 0 ? 0 : movingMask >> (64 - row);
                all[k] &= shifted;
                any[k] |= shifted;
            }
        }
    }
    /// Returns the number of consecutive steps, starting at `step`, in which the vertices of all
    /// rows move.
    uint32_t Together(uint32_t step) const { return LengthOf(all, step, 0); }
    /// Returns the number of consecutive steps, starting at `step`, in which no vertex moves.
    uint32_t Idle(uint32_t step) const { return LengthOf(any, step, ~uint64_t{0}); }

private:
    static uint32_t LengthOf(const uint64_t (&bits)[4], uint32_t step, uint64_t flip) {
        uint32_t length = 0;
        while (step < 256) {
            const uint64_t rest = (bits[step / 64] ^ flip) >> (step % 64);
            const auto here =
                std::min(static_cast<uint32_t>(std::countr_one(rest)), 64 - step % 64);
            length += here;
            if (here < 64 - step % 64) break;
            step += here;
        }
        return length;
    }

    uint64_t all[4];
    uint64_t any[4];
};
static_assert(RowBatches::capacity + rowCount - 1 <= 256);

/// Bounds of the moved vertices in four rows, extended two cells at a time.
class WideBounds {
public:
    TROVIK_AVX2_INLINE explicit WideBounds(const DabConstants& dab)
        : least(Duplicated(dab.boundsMin)),
          most(Duplicated(dab.boundsMax)),
          nanMask(_mm256_setzero_ps()) {}

    /// Only `now` is tested for NaN, because a position that was NaN before is still NaN.
    TROVIK_AVX2_INLINE void Take(__m256 now, __m256 before) {
        least = _mm256_min_ps(least, _mm256_min_ps(now, before));
        most = _mm256_max_ps(most, _mm256_max_ps(now, before));
        nanMask = _mm256_or_ps(nanMask, _mm256_cmp_ps(now, now, _CMP_UNORD_Q));
    }

    TROVIK_AVX2_INLINE __m128 Least() const { return _mm_min_ps(FirstOf(least), SecondOf(least)); }
    TROVIK_AVX2_INLINE __m128 Most() const { return _mm_max_ps(FirstOf(most), SecondOf(most)); }
    /// Whether one of the positions was NaN, in which case the result depends on the order.
    TROVIK_AVX2_INLINE bool HasNan() const { return _mm256_movemask_ps(nanMask) != 0; }

private:
    __m256 least;
    __m256 most;
    __m256 nanMask;
};

/// Processes a single vertex.
TROVIK_AVX2_INLINE void AverageOne(const FourRows& rows,
                                   uint32_t row,
                                   uint32_t column,
                                   WideBounds& bounds) {
    HWVector& cell = *rows.CellOf(row, column);
    const HWVector* above = &cell - rows.stride;
    const HWVector mean = FiveCellSum(above, rows.stride, rows.stride) * 0.2f;
    const HWVector moved = cell + ((mean - cell) * rows.weights[row][column]) * rows.scale;
    StorePosition(rows.VertexOf(row, column), moved);
    bounds.Take(Duplicated(moved), Duplicated(cell));
    cell = moved;
}

/// Returns the new positions of two vertices, computed from their positions, their four neighbours
/// and their weights.
TROVIK_AVX2_INLINE __m256 Averaged(__m256 position,
                                   __m256 left,
                                   __m256 right,
                                   __m256 below,
                                   __m256 above,
                                   __m256 weights,
                                   __m256 scale,
                                   bool inWorldSpace) {
    __m256 sum = _mm256_add_ps(_mm256_add_ps(position, left), right);
    sum = _mm256_add_ps(_mm256_add_ps(sum, below), above);
    const __m256 mean = _mm256_mul_ps(sum, _mm256_set1_ps(0.2f));
    const __m256 displacement = _mm256_mul_ps(_mm256_sub_ps(mean, position), weights);
    return _mm256_add_ps(position,
                         inWorldSpace ? _mm256_mul_ps(displacement, scale) : displacement);
}

/// Processes steps in which the vertices of all four rows move.
TROVIK_AVX2_INLINE void AverageAllRows(
    const FourRows& rows, uint32_t step, uint32_t count, bool inWorldSpace, WideBounds& allBounds) {
    WideBounds bounds = allBounds;
    HWVector* const first = rows.CellOf(0, step);
    HWVector* const second = rows.CellOf(1, step - 1);
    HWVector* const third = rows.CellOf(2, step - 2);
    HWVector* const fourth = rows.CellOf(3, step - 3);
    const HWVector* const over = first - rows.stride;
    const HWVector* const under = fourth + rows.stride;
    const __m256 scale = Duplicated(rows.scale);
    __m256 leftA = CombineHalves(first[-1].lanes, second[-1].lanes);
    __m256 leftB = CombineHalves(third[-1].lanes, fourth[-1].lanes);
    __m256 positionA = CombineHalves(first->lanes, second->lanes);
    __m256 positionB = CombineHalves(third->lanes, fourth->lanes);
    for (uint32_t i = 0; i < count; ++i) {
        const __m256 rightA = CombineHalves(first[i + 1].lanes, second[i + 1].lanes);
        const __m256 rightB = CombineHalves(third[i + 1].lanes, fourth[i + 1].lanes);
        // The cell below a row's current cell is the cell to the right of the next row's current
        // cell, and the cell above it is the previous result of the row above.
        const __m256 belowA = _mm256_permute2f128_ps(rightA, rightB, 0x21);
        const __m256 belowB = CombineHalves(SecondOf(rightB), under[i].lanes);
        const __m256 aboveA = CombineHalves(over[i].lanes, FirstOf(leftA));
        const __m256 aboveB = _mm256_permute2f128_ps(leftA, leftB, 0x21);
        const uint32_t column = step + i;
        const __m256 weightA = CombineHalves(_mm_set1_ps(rows.weights[0][column]),
                                             _mm_set1_ps(rows.weights[1][column - 1]));
        const __m256 weightB = CombineHalves(_mm_set1_ps(rows.weights[2][column - 2]),
                                             _mm_set1_ps(rows.weights[3][column - 3]));
        leftA = Averaged(positionA, leftA, rightA, belowA, aboveA, weightA, scale, inWorldSpace);
        leftB = Averaged(positionB, leftB, rightB, belowB, aboveB, weightB, scale, inWorldSpace);
        bounds.Take(leftA, positionA);
        bounds.Take(leftB, positionB);
        first[i].lanes = FirstOf(leftA);
        second[i].lanes = SecondOf(leftA);
        third[i].lanes = FirstOf(leftB);
        fourth[i].lanes = SecondOf(leftB);
        StorePositionPair(rows.VertexOf(0, column), rows.VertexOf(1, column - 1), leftA);
        StorePositionPair(rows.VertexOf(2, column - 2), rows.VertexOf(3, column - 3), leftB);
        positionA = rightA;
        positionB = rightB;
    }
    allBounds = bounds;
}

/// Returns whether x, y or z of any cell is -0.
TROVIK_AVX2 bool HoldNegativeZero(const HWVector* cells, uint32_t count) {
    const __m256i negativeZero = _mm256_set1_epi32(std::numeric_limits<int32_t>::min());
    __m256i found = _mm256_setzero_si256();
    uint32_t i = 0;
    for (; i + 1 < count; i += 2) {
        const __m256i two = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(cells + i));
        found = _mm256_or_si256(found, _mm256_cmpeq_epi32(two, negativeZero));
    }
    if (i < count) {
        const __m256i last = _mm256_castps_si256(Duplicated(cells[i]));
        found = _mm256_or_si256(found, _mm256_cmpeq_epi32(last, negativeZero));
    }
    // The lowest lane of each half is w.
    return (_mm256_movemask_ps(_mm256_castsi256_ps(found)) & 0xee) != 0;
}

/// Stores the bounds, which were accumulated without regard to list order.
/// \return false, without any effect, if the order matters: if a position is NaN, or if a bound is
/// a zero whose sign depends on the order.
TROVIK_AVX2_INLINE bool StoreBounds(DabConstants& patch,
                                    const WideBounds& bounds,
                                    const FourRows& rows,
                                    const HWVector (*before)[RowBatches::capacity]) {
    if (bounds.HasNan()) return false;
    const __m128 least = bounds.Least();
    const __m128 most = bounds.Most();
    const __m128 zeros =
        _mm_or_ps(_mm_cmpeq_ps(least, _mm_setzero_ps()), _mm_cmpeq_ps(most, _mm_setzero_ps()));
    if ((_mm_movemask_ps(zeros) & 14) != 0) {
        // A sum is -0 only if both operands are -0, so a -0 must have been present before.
        bool negative =
            HoldNegativeZero(&patch.boundsMin, 1) || HoldNegativeZero(&patch.boundsMax, 1);
        for (uint32_t row = 0; row < rowCount && !negative; ++row)
            negative = HoldNegativeZero(before[row], rows.points);
        if (negative) return false;
    }
    patch.boundsMin.lanes = least;
    patch.boundsMax.lanes = most;
    return true;
}

TROVIK_AVX2_INLINE bool AverageRows(DabConstants& patch,
                                    const PatchVertexEntry* entries,
                                    uint32_t points,
                                    const RowBatches* batches,
                                    bool withFreeze,
                                    bool inWorldSpace) {
    alignas(32) float weights[rowCount][RowBatches::capacity];
    HWVector before[rowCount][RowBatches::capacity];
    FourRows rows;
    rows.entries = entries;
    rows.points = points;
    rows.stride = patch.brush.gridStride;
    rows.vertices = patch.vertices;
    rows.cells = patch.positionGrid + entries->cell;
    rows.scale = inWorldSpace ? patch.space.inverseScale : HWVector::Splat(1.0f);
    rows.weights = weights;
    for (uint32_t row = 0; row < rowCount; ++row) {
        for (uint32_t first = 0; first < points; first += VertexBatch::capacity) {
            ApplyStrengthToBatch(patch,
                                 entries + row * points + first,
                                 std::min(points - first, VertexBatch::capacity),
                                 withFreeze,
                                 batches[row].batches[first / VertexBatch::capacity].weight,
                                 weights[row] + first);
        }
        std::copy_n(rows.CellOf(row, 0), points, before[row]);
    }

    WideBounds bounds(patch);
    const StepMap map(batches, points);
    const uint32_t steps = points + rowCount - 1;
    bool reached = false;
    for (uint32_t step = 0; step < steps;) {
        step += map.Idle(step);
        if (step >= steps) break;
        reached = true;
        const uint32_t together = map.Together(step);
        if (together > 0) {
            AverageAllRows(rows, step, together, inWorldSpace, bounds);
            step += together;
            continue;
        }
        for (uint32_t row = 0; row < rowCount && row <= step; ++row) {
            const uint32_t column = step - row;
            if (column < points && batches[row].IsMoving(column))
                AverageOne(rows, row, column, bounds);
        }
        ++step;
    }

    if (!StoreBounds(patch, bounds, rows, before)) {
        for (uint32_t row = 0; row < rowCount; ++row)
            ExtendBounds(patch, rows.CellOf(row, 0), before[row], points, batches[row]);
    }
    return reached;
}

/// Calls AverageRows with inWorldSpace as a compile-time constant.
TROVIK_AVX2 bool AverageFourRows(DabConstants& patch,
                                 const PatchVertexEntry* entries,
                                 uint32_t points,
                                 const RowBatches* batches,
                                 bool withFreeze,
                                 bool inWorldSpace) {
    return inWorldSpace ? AverageRows(patch, entries, points, batches, withFreeze, true)
                        : AverageRows(patch, entries, points, batches, withFreeze, false);
}

}  // namespace

WideRowMover WideRowMoverFor() { return &AverageFourRows; }

}  // namespace trovik

#else

namespace trovik {

WideRowMover WideRowMoverFor() { return nullptr; }

}  // namespace trovik

#endif
