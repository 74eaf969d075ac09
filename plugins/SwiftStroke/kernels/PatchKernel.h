// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/VertexStep.h"
#include "kernels/batch/VertexBatch.h"

#include <algorithm>

/// \file The patch kernel. Only the instance files include this header; each of them instantiates
/// 64 of the 1024 specialisations.
namespace trovik {

/// Runs the second stage of the vertex step for a batch, in work-list order. Not inlined, so that
/// the loop can use all registers.
/// \param movingMask  bit i is set if vertex i moves; the positions of the others are only copied
/// to the grid.
/// \return whether the dab reached any of the vertices.
template <KernelSwitches switches>
__attribute__((noinline)) bool MoveBatch(DabConstants& patch,
                                         const PatchVertexEntry* entries,
                                         uint32_t count,
                                         uint64_t movingMask,
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
        if (((movingMask >> i) & 1u) == 0) {
            dab.positionGrid[v.cell] = v.current;
            continue;
        }
        v.record = batch.records[i];
        if constexpr (sw.withStamp) v.startPosition = ReversedXyz(_mm_load_ps(batch.start[i]));
        if constexpr (sw.withoutRadius) {
            ComputeWeight(sw, dab, v);
        } else {
            v.weight = batch.weight[i];
        }
        reached |= MoveVertex(sw, dab, v);
        // The build-up is stored after the move. If it were stored earlier, the compiler would have
        // to assume that the vertex might have changed.
        if constexpr (sw.family == Family::Pushing && !sw.withStamp && !sw.withoutRadius)
            v.record->buildUp = batch.buildUp[i];
    }
    patch.boundsMin = dab.boundsMin;
    patch.boundsMax = dab.boundsMax;
    return reached;
}

/// Returns whether a kernel may process two rows at once. This requires that the kernel averages
/// positions and that no renderer is notified per vertex. Each average depends on the one to its
/// left through a chain of additions; processing two independent rows hides the latency of that
/// chain.
constexpr bool MayPairRows(const KernelSwitches& s) {
    return FamilyOf(s.averageBit, s.pullBit) == Family::Averaging && s.alongVertexNormal &&
           !s.withStamp && !s.tiledStamp && !s.withoutRadius && !s.throughLayer &&
           !s.notifyPerVertex;
}

/// Averages one vertex of a row.
/// \param left  on entry, the position in the cell to the left; on return, the position in this
/// cell.
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
    HWVector position = PositionOf(*v.vertexRecord);
    if (moves) {
        v.weight = weight;
        ApplyStrength(sw, dab, v);
        const HWVector mean = FiveCellSum(dab.positionGrid, left, entry.cell, stride) * 0.2f;
        HWVector displacement = (mean - position) * v.weight;
        if (sw.inWorldSpace) displacement = displacement * dab.space.inverseScale;
        position = position + displacement;
        StorePosition(*v.vertexRecord, position);
    }
    dab.positionGrid[entry.cell] = position;
    left = position;
}

/// Runs the second stage for two rows. The lower row is processed one vertex behind the upper row,
/// because it needs the new values from the upper row, while the upper row needs the old values
/// from the lower row. A cell contains the current position of its vertex until the vertex is
/// processed. The bounds are therefore computed after both rows, in list order, from the cells' old
/// and new values.
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
                dab, row[i], batches.IsMoving(i), batches.WeightOf(i), stride, atLeft);
        };
    turn(entries, upper, 0, left);
    for (uint32_t i = 1; i < points; ++i) {
        turn(entries, upper, i, left);
        turn(under, lower, i - 1, leftUnder);
    }
    turn(under, lower, points - 1, leftUnder);

    const bool above = ExtendBounds(patch, grid + entries->cell, before[0], points, upper);
    const bool below = ExtendBounds(patch, grid + under->cell, before[1], points, lower);
    return above || below;
}

/// Runs the vertex step for a patch.
/// \return whether the dab reached any vertex of the patch.
template <KernelSwitches switches>
bool SwiftStroke::PatchKernel(uint32_t face) {
    BatchMovers movers = {&MoveBatch<switches>, nullptr};
    if constexpr (MayPairRows(switches)) movers.rowPair = &MoveRowPair<switches>;
    return RunPatch(face, switches, movers);
}

}  // namespace trovik
