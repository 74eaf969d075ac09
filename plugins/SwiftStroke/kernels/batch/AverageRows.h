// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/batch/ApplyStrength.h"
#include "kernels/batch/BatchStages.h"
#include "kernels/batch/RowSteps.h"
#include "kernels/formulas/DisplacementFormula.h"

#include <algorithm>

/// \file Averages several rows at once. Each average depends on the one to its left, through a
/// chain of additions, and on the one above. Each row is therefore processed one vertex behind the
/// row above it, and each of two registers contains as many rows as it has vectors. Every average
/// uses exactly the same operands as if the rows were processed one after the other. For this
/// order, see Lamport: "The Parallel Execution of DO Loops" (1974).
namespace trovik {

/// The rows that are averaged together.
template <class Lanes>
struct RowGroup {
    static constexpr uint32_t rowCount = 2 * Lanes::vectors;

    const PatchVertexEntry* entries;
    uint32_t points;
    uint32_t stride;
    Vertex* vertices;
    /// First cell of the top row.
    HWVector* cells;
    HWVector inverseScale;
    const float (*weights)[RowBatches::capacity];

    TROVIK_FORCE_INLINE HWVector* CellOf(uint32_t row, uint32_t column) const {
        return cells + row * stride + column;
    }
    TROVIK_FORCE_INLINE Vertex& VertexOf(uint32_t row, uint32_t column) const {
        return vertices[entries[row * points + column].vertex];
    }
};

/// Bounds of the moved vertices, extended without regard to list order.
template <class Lanes>
class UnorderedBounds {
public:
    using V = typename Lanes::Vectors;

    TROVIK_FORCE_INLINE explicit UnorderedBounds(const DabConstants& dab)
        : least(Lanes::Repeated(dab.boundsMin)),
          most(Lanes::Repeated(dab.boundsMax)),
          notFinite(V::Splat(0.0f)) {}

    /// Only `now` is tested, because a position that was not finite before still is not.
    TROVIK_FORCE_INLINE void Take(const V& now, const V& before) {
        least = V::Minimum(least, V::Minimum(now, before));
        most = V::Maximum(most, V::Maximum(now, before));
        // The difference is NaN if the position is infinite or NaN.
        notFinite = notFinite + (now - now);
    }

    TROVIK_FORCE_INLINE HWVector Least() const { return Folded(least, &HWVector::Minimum); }
    TROVIK_FORCE_INLINE HWVector Most() const { return Folded(most, &HWVector::Maximum); }
    /// Whether one of the positions was infinite or NaN.
    TROVIK_FORCE_INLINE bool HasSpecial() const {
        const auto sum = [](const HWVector& a, const HWVector& b) { return a + b; };
        const __m128 total = Folded(notFinite, sum).lanes;
        return _mm_movemask_ps(_mm_cmpneq_ps(total, _mm_setzero_ps())) != 0;
    }

private:
    template <uint32_t j = 0, class Fold>
    TROVIK_FORCE_INLINE static HWVector Folded(const V& v, const Fold& fold) {
        if constexpr (j + 1 < Lanes::vectors)
            return fold(Lanes::template Part<j>(v), Folded<j + 1>(v, fold));
        else
            return Lanes::template Part<j>(v);
    }

    V least;
    V most;
    V notFinite;
};

/// Processes a single vertex.
template <class Lanes, bool inWorldSpace>
TROVIK_FORCE_INLINE void AverageOne(const RowGroup<Lanes>& rows,
                                    uint32_t row,
                                    uint32_t column,
                                    UnorderedBounds<Lanes>& bounds) {
    HWVector* const cell = rows.CellOf(row, column);
    const HWVector before = *cell;
    const HWVector mean =
        MeanOfFive(before, cell[-1], cell[1], cell[rows.stride], *(cell - rows.stride));
    const HWVector moved =
        before +
        ToMeshSpace((mean - before) * rows.weights[row][column], rows.inverseScale, inWorldSpace);
    StorePosition(rows.VertexOf(row, column), moved);
    bounds.Take(Lanes::Repeated(moved), Lanes::Repeated(before));
    *cell = moved;
}

/// Processes steps in which the vertices of all rows move.
template <class Lanes, bool inWorldSpace>
TROVIK_FORCE_INLINE void AverageAllRows(const RowGroup<Lanes>& rows,
                                        uint32_t step,
                                        uint32_t count,
                                        UnorderedBounds<Lanes>& allBounds) {
    using V = typename Lanes::Vectors;
    constexpr uint32_t half = Lanes::vectors;
    UnorderedBounds<Lanes> bounds = allBounds;
    // Row r is at column step - r. Register A contains the upper half of the rows.
    HWVector* const first = rows.CellOf(0, step);
    const uint32_t toNext = rows.stride - 1;
    const V inverseScale = Lanes::Repeated(rows.inverseScale);
    const auto upper = [=](uint32_t j) -> HWVector& { return first[j * toNext]; };
    const auto lower = [=](uint32_t j) -> HWVector& { return first[(half + j) * toNext]; };
    const HWVector* const over = first - rows.stride;
    const HWVector* const under = &lower(half - 1) + rows.stride;
    V leftA = Lanes::Combined([=](uint32_t j) { return (&upper(j))[-1]; });
    V leftB = Lanes::Combined([=](uint32_t j) { return (&lower(j))[-1]; });
    V positionA = Lanes::Combined(upper);
    V positionB = Lanes::Combined(lower);
    const auto moved = [=](const V& position, const V& mean, const V& weights) {
        return position + ToMeshSpace((mean - position) * weights, inverseScale, inWorldSpace);
    };
    for (uint32_t i = 0; i < count; ++i) {
        const V rightA = Lanes::Combined([=](uint32_t j) { return (&upper(j))[i + 1]; });
        const V rightB = Lanes::Combined([=](uint32_t j) { return (&lower(j))[i + 1]; });
        // Each row is one column behind the row above it. Therefore, the neighbour below a row's
        // current cell is also the right neighbour of the next row's current cell, and the
        // neighbour above is the last result of the row above.
        const V belowA = Lanes::FromNext(rightA, rightB);
        const V belowB = Lanes::FromNext(rightB, Lanes::Repeated(under[i]));
        const V aboveA = Lanes::FromPrevious(Lanes::Repeated(over[i]), leftA);
        const V aboveB = Lanes::FromPrevious(leftA, leftB);
        const uint32_t column = step + i;
        const V weightA = Lanes::Spread([&](uint32_t j) { return rows.weights[j][column - j]; });
        const V weightB =
            Lanes::Spread([&](uint32_t j) { return rows.weights[half + j][column - half - j]; });
        leftA = moved(positionA, MeanOfFive(positionA, leftA, rightA, belowA, aboveA), weightA);
        leftB = moved(positionB, MeanOfFive(positionB, leftB, rightB, belowB, aboveB), weightB);
        bounds.Take(leftA, positionA);
        bounds.Take(leftB, positionB);
        Lanes::StoreParts([=](uint32_t j) -> HWVector& { return (&upper(j))[i]; }, leftA);
        Lanes::StoreParts([=](uint32_t j) -> HWVector& { return (&lower(j))[i]; }, leftB);
        Lanes::StorePositions([&](uint32_t j) -> Vertex& { return rows.VertexOf(j, column - j); },
                              leftA);
        Lanes::StorePositions(
            [&](uint32_t j) -> Vertex& { return rows.VertexOf(half + j, column - half - j); },
            leftB);
        positionA = rightA;
        positionB = rightB;
    }
    allBounds = bounds;
}

/// Returns whether x, y or z of any cell is -0. Requires at least one register of cells.
template <class Lanes>
TROVIK_FORCE_INLINE bool HoldNegativeZero(const HWVector* cells, uint32_t count) {
    using I = typename Lanes::Numbers::Integers;
    const I negativeZero = I::Splat(0x80000000u);
    uint32_t found = 0;
    for (uint32_t i = 0; i < count; i += Lanes::vectors)
        found |=
            Lanes::BitsOf(I::BitsOf(cells + std::min(i, count - Lanes::vectors)) == negativeZero);
    // The lowest lane of each vector is w.
    return (found & 0xeeeeu) != 0;
}

/// Stores the bounds.
/// \return false, without any effect, if the order matters: if a position may be NaN, or if a bound
/// is a zero whose sign depends on the order.
template <class Lanes>
TROVIK_FORCE_INLINE bool StoreBounds(DabConstants& patch,
                                     const UnorderedBounds<Lanes>& bounds,
                                     uint32_t points,
                                     const HWVector (*before)[RowBatches::capacity]) {
    if (bounds.HasSpecial()) return false;
    const HWVector ends[] = {bounds.Least(), bounds.Most()};
    const auto hasZero = [](const HWVector& v) {
        return (_mm_movemask_ps(_mm_cmpeq_ps(v.lanes, _mm_setzero_ps())) & 14) != 0;
    };
    if (hasZero(ends[0]) || hasZero(ends[1])) {
        // A sum is -0 only if both operands are -0, so a -0 must have been present before.
        const HWVector earlier[] = {patch.boundsMin, patch.boundsMax};
        bool negative = HoldNegativeZero<Lanes>(earlier, 2);
        for (uint32_t row = 0; row < RowGroup<Lanes>::rowCount && !negative; ++row)
            negative = HoldNegativeZero<Lanes>(before[row], points);
        if (negative) return false;
    }
    patch.boundsMin = ends[0];
    patch.boundsMax = ends[1];
    return true;
}

/// The implementation of BatchStages::rowMovers for a vector width.
template <class Lanes, bool inWorldSpace>
bool AverageRows(DabConstants& patch,
                 const PatchVertexEntry* entries,
                 uint32_t points,
                 const RowBatches* batches,
                 bool withFreeze) {
    constexpr uint32_t rowCount = RowGroup<Lanes>::rowCount;
    static_assert(rowCount <= maxRowsTogether && rowCount <= RowSteps::maxRows);
    alignas(64) float weights[rowCount][RowBatches::capacity];
    HWVector before[rowCount][RowBatches::capacity];
    const RowGroup<Lanes> rows = {entries,
                                  points,
                                  patch.brush.gridStride,
                                  patch.vertices,
                                  patch.positionGrid + entries->cell,
                                  patch.space.inverseScale,
                                  weights};
    for (uint32_t row = 0; row < rowCount; ++row) {
        for (uint32_t first = 0; first < points; first += VertexBatch::capacity) {
            ApplyStrengthToBatch<typename Lanes::Numbers>(
                patch,
                entries + row * points + first,
                std::min(points - first, VertexBatch::capacity),
                withFreeze,
                batches[row].batches[first / VertexBatch::capacity].weight,
                weights[row] + first);
        }
        std::copy_n(rows.CellOf(row, 0), points, before[row]);
    }

    UnorderedBounds<Lanes> bounds(patch);
    const RowSteps map(batches, rowCount, points);
    const uint32_t steps = points + rowCount - 1;
    bool reached = false;
    for (uint32_t step = 0; step < steps;) {
        step += map.Idle(step);
        if (step >= steps) break;
        reached = true;
        const uint32_t together = map.Together(step);
        if (together > 0) {
            AverageAllRows<Lanes, inWorldSpace>(rows, step, together, bounds);
            step += together;
            continue;
        }
        for (uint32_t row = 0; row < rowCount && row <= step; ++row) {
            const uint32_t column = step - row;
            if (column < points && batches[row].IsMoving(column))
                AverageOne<Lanes, inWorldSpace>(rows, row, column, bounds);
        }
        ++step;
    }

    if (!StoreBounds<Lanes>(patch, bounds, points, before)) {
        for (uint32_t row = 0; row < rowCount; ++row)
            ExtendBounds(patch, rows.CellOf(row, 0), before[row], points, batches[row]);
    }
    return reached;
}

}  // namespace trovik
