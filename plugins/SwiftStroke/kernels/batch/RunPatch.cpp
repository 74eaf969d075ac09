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

/// The run of one kernel over one patch.
class PatchRun {
public:
    PatchRun(SwiftStroke& swiftStroke,
             const KernelSwitches& kernelSwitches,
             const BatchMovers& kernelMovers,
             bool mirroredStamp)
        : brush(swiftStroke),
          switches(kernelSwitches),
          movers(kernelMovers),
          dab(swiftStroke, mirroredStamp),
          terms(dab),
          weigh(WeigherFor(kernelSwitches)),
          // A mirrored read makes records in between the vertices' own, and their order is the
          // stroke's order of touch: then every vertex has its turn alone.
          longest(kernelSwitches.withStamp && mirroredStamp ? 1 : VertexBatch::capacity) {}

    /// All turns from `entries` on. \return whether the dab reached a vertex.
    bool Run(const PatchVertexEntry* entries, const PatchVertexEntry* end) {
        if (movers.rowPair != nullptr && brush.ListsEachVertexOnce() && dab.mesh.meshType == 1)
            entries = RunRowPairs(entries, end);
        VertexBatch batch;
        while (entries != end) {
            uint64_t turns = 0;
            const uint32_t length =
                Take(entries, static_cast<uint32_t>(end - entries), batch, turns);
            reached |= movers.batch(dab, entries, length, turns, batch);
            entries += length;
        }
        dab.StoreBounds();
        return reached;
    }

private:
    /// The first half of the turns of at most `count` vertices. \return of how many.
    uint32_t Take(const PatchVertexEntry* entries,
                  uint32_t count,
                  VertexBatch& batch,
                  uint64_t& turns) {
        const uint32_t length = TouchBatch(entries,
                                           std::min(longest, count),
                                           dab.vertices,
                                           dab.change,
                                           dab.dabStamp,
                                           switches.throughLayer,
                                           batch);
        if (switches.withoutRadius) {
            turns = FreshOf(batch, length, dab.dabStamp);
        } else {
            if (terms.facingActive) FaceBatch(brush, length, terms, batch);
            turns = weigh(terms, length, batch);
        }
        if (dab.mesh.meshType == 0) [[unlikely]]
            reached |= MarkedWithinReach(batch, length, terms, switches.inWorldSpace);
        return length;
    }

    /// As many pairs of rows as there are. \return the first entry that has not had its turn.
    const PatchVertexEntry* RunRowPairs(const PatchVertexEntry* entries,
                                        const PatchVertexEntry* end) {
        const uint32_t points = (1u << brush.patchLevel) + 1;
        if (points > RowBatches::capacity) return entries;
        RowBatches upper, lower;
        for (; end - entries >= 2 * static_cast<std::ptrdiff_t>(points); entries += 2 * points) {
            const uint32_t above = TakeRow(entries, points, upper);
            const uint32_t below = above == points ? TakeRow(entries + points, points, lower) : 0;
            if (below < points) {
                // Memory for a record was refused. Who came before it moves, row after row.
                MoveRow(entries, above, upper);
                MoveRow(entries + points, below, lower);
                return entries + above + below;
            }
            reached |= movers.rowPair(dab, entries, points, upper, lower);
        }
        return entries;
    }

    uint32_t TakeRow(const PatchVertexEntry* entries, uint32_t points, RowBatches& row) {
        uint32_t taken = 0;
        for (uint32_t k = 0; taken < points; ++k) {
            const uint32_t wanted = std::min(points - taken, VertexBatch::capacity);
            try {
                const uint32_t length = Take(entries + taken, wanted, row.batches[k], row.turns[k]);
                taken += length;
                if (length < wanted) break;
            } catch (...) {
                // Refused at once. What was taken before has its turn first; the batch after that
                // meets the refusal again.
                break;
            }
        }
        return taken;
    }

    void MoveRow(const PatchVertexEntry* entries, uint32_t count, const RowBatches& row) {
        for (uint32_t k = 0; count > 0; ++k) {
            const uint32_t length = std::min(count, VertexBatch::capacity);
            reached |= movers.batch(dab, entries, length, row.turns[k], row.batches[k]);
            entries += length;
            count -= length;
        }
    }

    SwiftStroke& brush;
    const KernelSwitches& switches;
    const BatchMovers& movers;
    DabConstants dab;
    WeighTerms terms;
    Weigher weigh;
    uint32_t longest;
    bool reached = false;
};

}  // namespace

bool SwiftStroke::RunPatch(uint32_t face,
                           const KernelSwitches& switches,
                           const BatchMovers& movers) {
    const TVCrashReporterFlag flag(4, 65536);
    // A layer that refuses changes ends the kernel at once; the grid still receives the present
    // positions, since the patch's normals are made from it.
    if (switches.throughLayer && layer != nullptr && !layer->Writable()) {
        ReadPatchPositions(PatchSlice(face));
        return false;
    }

    const bool mirroredStamp = WantsMirroredStampRead();
    const uint32_t count = BuildWorkList(face);
    const bool reached = PatchRun(*this, switches, movers, mirroredStamp)
                             .Run(patchVertexList, patchVertexList + count);
    strokeVertexCount += count;
    if (!reached && resting.IsOpen()) LearnPatch(face);
    return reached;
}

}  // namespace trovik
