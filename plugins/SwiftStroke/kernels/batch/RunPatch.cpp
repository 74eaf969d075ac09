// SPDX-License-Identifier: Apache-2.0

/// \file
/// What all patch kernels share: the first half of the vertices' turns, batch by batch. The
/// switches are asked once a patch or once a batch here; the loops over vertices hold none of them.
#include "kernels/batch/VectorWidth.h"
#include "kernels/batch/VertexBatch.h"
#include "kernels/stages/DabConstants.h"

#include <algorithm>

namespace trovik {

namespace {

using Weigher = uint64_t (*)(const WeighTerms&, uint32_t, VertexBatch&);

template <BuildUp buildUp>
Weigher WeigherOf(bool inWorldSpace) {
    if (PresentVectorWidth() == VectorWidth::Eight)
        return inWorldSpace ? &WeighBatchWide<buildUp, true> : &WeighBatchWide<buildUp, false>;
    return inWorldSpace ? &WeighBatch<buildUp, true> : &WeighBatch<buildUp, false>;
}

/// Build-up belongs to pushing, and with a stamp it is counted by the stamp's stage.
Weigher WeigherFor(const KernelSwitches& switches) {
    const bool world = switches.inWorldSpace;
    if (FamilyOf(switches.averageBit, switches.pullBit) != Family::Pushing)
        return WeigherOf<BuildUp::None>(world);
    return switches.withStamp ? WeigherOf<BuildUp::Damps>(world)
                              : WeigherOf<BuildUp::DampsAndGrows>(world);
}

}  // namespace

bool SwiftStroke::RunPatch(uint32_t face, const KernelSwitches& switches, BatchMover move) {
    const TVCrashReporterFlag flag(4, 65536);
    // A layer that refuses changes ends the kernel at once; the grid still receives the present
    // positions, since the patch's normals are made from it.
    if (switches.throughLayer && layer != nullptr && !layer->Writable()) {
        ReadPatchPositions(PatchSlice(face));
        return false;
    }

    const bool mirroredStamp = WantsMirroredStampRead();
    const uint32_t count = BuildWorkList(face);
    DabConstants dab(*this, mirroredStamp);
    const WeighTerms terms(dab);
    const Weigher weigh = WeigherFor(switches);
    // A mirrored read makes records in between the vertices' own, and their order is the stroke's
    // order of touch: then every vertex has its turn alone.
    const uint32_t longest = switches.withStamp && mirroredStamp ? 1 : VertexBatch::capacity;
    VertexBatch batch;
    bool reached = false;
    const PatchVertexEntry* const end = patchVertexList + count;
    for (const PatchVertexEntry* entries = patchVertexList; entries != end;) {
        const uint32_t length = TouchBatch(entries,
                                           std::min(longest, static_cast<uint32_t>(end - entries)),
                                           dab.vertices,
                                           dab.change,
                                           dab.dabStamp,
                                           switches.throughLayer,
                                           batch);
        uint64_t turns = 0;
        if (switches.withoutRadius) {
            turns = FreshOf(batch, length, dab.dabStamp);
        } else {
            if (terms.facingActive) FaceBatch(*this, length, terms, batch);
            turns = weigh(terms, length, batch);
        }
        if (dab.mesh.meshType == 0) [[unlikely]]
            reached |= MarkedWithinReach(batch, length, terms, switches.inWorldSpace);
        reached |= move(dab, entries, length, turns, batch);
        entries += length;
    }
    dab.StoreBounds();
    strokeVertexCount += count;
    if (!reached && resting.IsOpen()) LearnPatch(face);
    return reached;
}

}  // namespace trovik
