// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/VertexStep.h"
#include "kernels/batch/VertexBatch.h"

#include <algorithm>

/// \file
/// The kernel of one patch, and how its 1024 specialisations reach the table. This header is
/// included by the instance files only; each of them makes 64 of the specialisations.
namespace trovik {

/// The weights of a batch by the one of six functions that the switches ask for.
template <KernelSwitches switches>
TROVIK_FORCE_INLINE uint64_t WeighBatchFor(const WeighTerms& terms,
                                           uint32_t count,
                                           VertexBatch& batch) {
    constexpr bool pushing = FamilyOf(switches.averageBit, switches.pullBit) == Family::Pushing;
    if constexpr (!pushing)
        return WeighBatch<BuildUp::None, switches.inWorldSpace>(terms, count, batch);
    else if constexpr (switches.withStamp)
        return WeighBatch<BuildUp::Damps, switches.inWorldSpace>(terms, count, batch);
    else
        return WeighBatch<BuildUp::DampsAndGrows, switches.inWorldSpace>(terms, count, batch);
}

/// Runs the vertex step over a patch, the first half of it batch by batch. A layer that refuses
/// changes ends it at once; the grid then still receives the present positions, since the patch's
/// normals are made from it.
/// \return whether the dab reached a vertex of the patch.
template <KernelSwitches switches>
bool SwiftStroke::PatchKernel(uint32_t face) {
    const TVCrashReporterFlag flag(4, 65536);
    constexpr FixedSwitches<switches> sw;
    if (sw.throughLayer && layer != nullptr && !layer->Writable()) {
        ReadPatchPositions(PatchSlice(face));
        return false;
    }

    const bool mirroredStamp = WantsMirroredStampRead();
    const uint32_t count = BuildWorkList(face);
    DabConstants dab(*this, mirroredStamp);
    const WeighTerms terms(*this);
    VertexBatch batch;
    // A mirrored read makes records in between the vertices' own, whose order is the stroke's
    // order of touch: then every vertex has its turn alone.
    const uint32_t longest = sw.withStamp && mirroredStamp ? 1 : VertexBatch::capacity;
    bool reached = false;
    for (const PatchVertexEntry *entries = patchVertexList, *end = entries + count;
         entries != end;) {
        const uint32_t length = TouchBatch(entries,
                                           std::min(longest, static_cast<uint32_t>(end - entries)),
                                           dab.vertices,
                                           dab.change,
                                           dab.dabStamp,
                                           sw.throughLayer,
                                           batch);
        uint64_t turns = 0;
        if constexpr (sw.withoutRadius) {
            turns = FreshOf(batch, length, dab.dabStamp);
        } else {
            if (terms.facingActive) FaceBatch(*this, length, terms, batch);
            turns = WeighBatchFor<switches>(terms, length, batch);
        }
        if (dab.mesh.meshType == 0) [[unlikely]]
            reached |= MarkedWithinReach(batch, length, terms, sw.inWorldSpace);

        for (uint32_t i = 0; i < length; ++i, ++entries) {
            VertexState v;
            v.vertex = entries->vertex;
            v.face = entries->face;
            v.cell = entries->cell;
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
                if (sw.family == Family::Pushing && !sw.withStamp)
                    v.record->buildUp = batch.buildUp[i];
            }
            reached |= MoveVertex(sw, dab, v);
        }
    }
    dab.StoreBounds();
    strokeVertexCount += count;
    return reached;
}

}  // namespace trovik
