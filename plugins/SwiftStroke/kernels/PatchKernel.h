// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/VertexStep.h"
#include "kernels/batch/VertexBatch.h"

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
            if constexpr (sw.family == Family::Pushing && !sw.withStamp)
                v.record->buildUp = batch.buildUp[i];
        }
        reached |= MoveVertex(sw, dab, v);
    }
    patch.boundsMin = dab.boundsMin;
    patch.boundsMax = dab.boundsMax;
    return reached;
}

/// Runs the vertex step over a patch.
/// \return whether the dab reached a vertex of the patch.
template <KernelSwitches switches>
bool SwiftStroke::PatchKernel(uint32_t face) {
    return RunPatch(face, switches, &MoveBatch<switches>);
}

}  // namespace trovik
