// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/VertexStep.h"
#include "kernels/batch/VertexBatch.h"

/// \file The patch kernel. Only the instance files include this header; each of them instantiates
/// up to 64 of the 768 specialisations.
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
        if constexpr (BuildUpOf(sw.family, sw.withStamp) == BuildUp::DampsAndGrows &&
                      !sw.withoutRadius)
            v.record->buildUp = batch.buildUp[i];
    }
    patch.boundsMin = dab.boundsMin;
    patch.boundsMax = dab.boundsMax;
    return reached;
}

/// Runs the vertex step for a patch.
/// \return whether the dab reached any vertex of the patch.
template <KernelSwitches switches>
bool SwiftStroke::PatchKernel(uint32_t face) {
    BatchMovers movers = {};
    if constexpr (!MovesInAnyOrder(switches)) movers.batch = &MoveBatch<switches>;
    return RunPatch(face, switches, movers);
}

}  // namespace trovik
