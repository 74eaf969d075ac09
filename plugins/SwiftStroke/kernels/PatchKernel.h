// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/VertexStep.h"
#include "kernels/batch/VertexBatch.h"

#include <algorithm>

/// \file
/// The kernel of one patch, and how its 1024 specialisations reach the table. This header is
/// included by the instance files only; each of them makes a share of the specialisations.
namespace trovik {

/// The second half of the turns of a batch, in the order of the work list. Out of line, so that
/// the loop has the registers to itself.
/// \param turns  bit i: vertex i moves; the others only enter the grid.
/// \return whether the dab reached one of them.
template <KernelSwitches switches>
__attribute__((noinline)) bool MoveBatch(DabConstants& patch,
                                         const PatchVertexEntry* entries,
                                         uint32_t count,
                                         uint64_t turns,
                                         const VertexBatch& batch) {
    constexpr FixedSwitches<switches> sw;
    DabConstants dab = patch;
    bool reached = false;
    for (uint32_t i = 0; i < count; ++i) {
        VertexState v;
        v.vertex = entries[i].vertex;
        v.face = entries[i].face;
        v.cell = entries[i].cell;
        v.vertexRecord = dab.vertices + v.vertex;
        v.current = PositionOf(*v.vertexRecord);
        if (((turns >> i) & 1u) == 0) {
            dab.positionGrid[v.cell] = v.current;
            continue;
        }
        v.record = batch.records[i];
        if constexpr (sw.withStamp) v.startPosition = ReversedXyz(_mm_load_ps(batch.start[i]));
        if constexpr (sw.withoutRadius) {
            Weigh(sw, dab, v);
        } else {
            v.weight = batch.weight[i];
        }
        reached |= MoveVertex(sw, dab, v);
        // After the move, which need not wonder then whether this was a vertex.
        if constexpr (sw.family == Family::Pushing && !sw.withStamp && !sw.withoutRadius)
            v.record->buildUp = batch.buildUp[i];
    }
    patch.boundsMin = dab.boundsMin;
    patch.boundsMax = dab.boundsMax;
    return reached;
}

/// Whether a kernel may take two rows at once: one that averages positions, and that nobody hears
/// of from vertex to vertex. An average waits for the one to its left, addition by addition; two
/// rows keep the processor busy.
constexpr bool MayPairRows(const KernelSwitches& s) {
    return FamilyOf(s.averageBit, s.pullBit) == Family::Averaging && s.alongVertexNormal &&
           !s.withStamp && !s.tiledStamp && !s.withoutRadius && !s.throughLayer &&
           !s.notifyPerVertex;
}

/// One vertex of a row that is averaged. \param left  what the cell to the left holds; leaves as
/// what this cell holds.
template <KernelSwitches switches>
TROVIK_FORCE_INLINE void AverageInRow(const DabConstants& dab,
                                      const PatchVertexEntry& entry,
                                      bool moves,
                                      float weight,
                                      uint32_t stride,
                                      HWVector& left) {
    constexpr FixedSwitches<switches> sw;
    VertexState v;
    v.vertexRecord = dab.vertices + entry.vertex;
    HWVector place = PositionOf(*v.vertexRecord);
    if (moves) {
        v.weight = weight;
        Strengthen(sw, dab, v);
        const HWVector mean = FiveCellSum(dab.positionGrid, left, entry.cell, stride) * 0.2f;
        HWVector displacement = (mean - place) * v.weight;
        if (sw.inWorldSpace) displacement = displacement * dab.space.inverseScale;
        place = place + displacement;
        StorePosition(*v.vertexRecord, place);
    }
    dab.positionGrid[entry.cell] = place;
    left = place;
}

/// Two rows of the second half of turns. The lower row runs one vertex behind the upper: it needs
/// the upper's result above it, and the upper needs what was below it before. Cells keep `current`
/// of each vertex until its turn, so bounds follow when both rows are done, in the order of the
/// list, from what the cells held before and hold then.
template <KernelSwitches switches>
__attribute__((noinline)) bool MoveRowPair(DabConstants& patch,
                                           const PatchVertexEntry* entries,
                                           uint32_t points,
                                           const RowBatches& upper,
                                           const RowBatches& lower) {
    const DabConstants dab = patch;
    const uint32_t stride = dab.brush.gridStride;
    const HWVector* grid = dab.positionGrid;
    const PatchVertexEntry* const under = entries + points;
    HWVector before[2][RowBatches::capacity];
    std::copy_n(grid + entries->cell, points, before[0]);
    std::copy_n(grid + under->cell, points, before[1]);

    HWVector left = grid[entries->cell - 1];
    HWVector leftUnder = grid[under->cell - 1];
    const auto turn =
        [&dab, stride](
            const PatchVertexEntry* row, const RowBatches& batches, uint32_t i, HWVector& atLeft) {
            AverageInRow<switches>(
                dab, row[i], batches.IsTurnOf(i), batches.WeightOf(i), stride, atLeft);
        };
    turn(entries, upper, 0, left);
    for (uint32_t i = 1; i < points; ++i) {
        turn(entries, upper, i, left);
        turn(under, lower, i - 1, leftUnder);
    }
    turn(under, lower, points - 1, leftUnder);

    const bool above = WidenBounds(patch, grid + entries->cell, before[0], points, upper);
    const bool below = WidenBounds(patch, grid + under->cell, before[1], points, lower);
    return above || below;
}

/// Runs the vertex step over a patch.
/// \return whether the dab reached a vertex of the patch.
template <KernelSwitches switches>
bool SwiftStroke::PatchKernel(uint32_t face) {
    BatchMovers movers = {&MoveBatch<switches>, nullptr};
    if constexpr (MayPairRows(switches)) movers.rowPair = &MoveRowPair<switches>;
    return RunPatch(face, switches, movers);
}

}  // namespace trovik
