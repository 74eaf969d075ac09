// SPDX-License-Identifier: Apache-2.0

/// \file The part that all patch kernels have in common: the first stage of the vertex step, batch
/// by batch. The switches are tested once per patch or per batch here; the loops over vertices do
/// not test them.
#include "kernels/batch/BatchStages.h"
#include "kernels/stages/Weight.h"

#include <algorithm>
#include <bit>

namespace trovik {

namespace {

WeightFunction WeightFunctionFor(const BatchStages& stages, const KernelSwitches& switches) {
    const Family family = FamilyOf(switches.averageBit, switches.pullBit);
    const BuildUp buildUp = BuildUpOf(family, switches.withStamp);
    return stages.weights[static_cast<unsigned>(buildUp)][switches.inWorldSpace ? 1 : 0];
}

/// \return null if the kernel depends on the vertex order.
OrderFreeMover MoverFor(const BatchStages& stages, const KernelSwitches& switches) {
    if (!MovesInAnyOrder(switches)) return nullptr;
    const Way way =
        WayOf(FamilyOf(switches.averageBit, switches.pullBit), switches.alongVertexNormal);
    return stages.movers[static_cast<unsigned>(way)][switches.inWorldSpace ? 1 : 0];
}

/// \return null if the kernel does not average rows.
RowMover RowMoverFor(const BatchStages& stages, const KernelSwitches& switches) {
    return AveragesRows(switches) ? stages.rowMovers[switches.inWorldSpace ? 1 : 0] : nullptr;
}

/// Fills `facing` for the vertices that this dab visits for the first time. Reads the camera for
/// each of them.
void FaceBatch(const DabConstants& dab, uint32_t count, VertexBatch& batch) {
    for (uint32_t i = 0; i < count; ++i) {
        const bool marked = std::bit_cast<uint32_t>(batch.start[i][3]) == dab.dabStamp;
        batch.facing[i] = marked ? 1.0f : FacingFactor(dab.brush, *batch.records[i]);
    }
}

/// One run of a kernel over a patch.
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
          stages(StagesOf(CurrentVectorWidth())),
          weigh(WeightFunctionFor(stages, kernelSwitches)),
          mover(MoverFor(stages, kernelSwitches)),
          rowMover(RowMoverFor(stages, kernelSwitches)),
          // With a mirrored stamp lookup, every vertex is processed separately, because the lookup
          // creates further records, and records must be in the order of first touch.
          longest(kernelSwitches.withStamp && mirroredStamp ? 1 : VertexBatch::capacity) {}

    /// Processes the entries from `entries` to `end`.
    /// \param records  the records of these entries if the patch is cached, otherwise null.
    /// \return whether the dab reached a vertex.
    bool Run(const PatchVertexEntry* entries,
             const PatchVertexEntry* end,
             const PatchCache::Run* records) {
        known.run = records;
        if (rowMover != nullptr && brush.ListsEachVertexOnce() && dab.mesh.meshType == 1)
            entries = RunRows(entries, end);
        VertexBatch batch;
        while (entries != end) {
            uint64_t movingMask = 0;
            const uint32_t length =
                Take(entries, static_cast<uint32_t>(end - entries), batch, movingMask);
            Move(entries, length, movingMask, batch);
            entries += length;
        }
        dab.StoreBounds();
        return reached;
    }

private:
    /// Runs the first stage for at most `count` vertices.
    /// \return the number of vertices that were processed.
    uint32_t Take(const PatchVertexEntry* entries,
                  uint32_t count,
                  VertexBatch& batch,
                  uint64_t& movingMask) {
        uint32_t length = std::min(longest, count);
        if (known.run != nullptr)
            TouchCached(known,
                        length,
                        fetchesLate ? entries : nullptr,
                        dab.vertices,
                        dab.change.records->array,
                        dab.dabStamp,
                        batch);
        else
            length = TouchBatch(entries,
                                length,
                                dab.vertices,
                                dab.change,
                                dab.dabStamp,
                                switches.throughLayer,
                                batch);
        if (brush.patchCache.IsAdding()) [[unlikely]]
            brush.patchCache.AddEntries(
                entries, length, batch.start, batch.records, dab.change.records->array);
        if (switches.withoutRadius) {
            movingMask = FreshOf(batch, length, dab.dabStamp);
        } else {
            if (dab.facingActive) FaceBatch(dab, length, batch);
            movingMask = weigh(dab, length, batch);
        }
        if (dab.mesh.meshType == 0) [[unlikely]]
            reached |= MarkedWithinReach(batch, length, dab, switches.inWorldSpace);
        return length;
    }

    void Move(const PatchVertexEntry* entries,
              uint32_t count,
              uint64_t movingMask,
              const VertexBatch& batch) {
        reached |= mover != nullptr
                       ? mover(dab, entries, count, movingMask, batch, switches.withFreeze)
                       : movers.batch(dab, entries, count, movingMask, batch);
    }

    /// Averages as many groups of rows as possible.
    /// \return the first entry that was not processed.
    const PatchVertexEntry* RunRows(const PatchVertexEntry* entries, const PatchVertexEntry* end) {
        const uint32_t points = (1u << brush.patchLevel) + 1;
        if (points > RowBatches::capacity) return entries;
        const uint32_t together = stages.rowsTogether;
        RowBatches rows[maxRowsTogether];
        const std::size_t inAll = std::size_t{together} * points;
        for (; static_cast<std::size_t>(end - entries) >= inAll; entries += inAll) {
            for (uint32_t row = 0; row < together; ++row) {
                const uint32_t taken = TakeRow(entries + row * points, points, rows[row]);
                if (taken == points) continue;
                // Memory for a record could not be allocated. The vertices before the one that
                // needed this record are moved, row by row.
                for (uint32_t before = 0; before < row; ++before)
                    MoveRow(entries + before * points, points, rows[before]);
                MoveRow(entries + row * points, taken, rows[row]);
                return entries + row * points + taken;
            }
            reached |= rowMover(dab, entries, points, rows, switches.withFreeze);
        }
        return entries;
    }

    uint32_t TakeRow(const PatchVertexEntry* entries, uint32_t points, RowBatches& row) {
        uint32_t taken = 0;
        for (uint32_t k = 0; taken < points; ++k) {
            const uint32_t wanted = std::min(points - taken, VertexBatch::capacity);
            try {
                const uint32_t length =
                    Take(entries + taken, wanted, row.batches[k], row.movingMask[k]);
                taken += length;
                if (length < wanted) break;
            } catch (...) {
                // The allocation of the first record failed. The vertices before it are moved
                // first; the error then recurs in the next batch.
                break;
            }
        }
        return taken;
    }

    void MoveRow(const PatchVertexEntry* entries, uint32_t count, const RowBatches& row) {
        for (uint32_t k = 0; count > 0; ++k) {
            const uint32_t length = std::min(count, VertexBatch::capacity);
            Move(entries, length, row.movingMask[k], row.batches[k]);
            entries += length;
            count -= length;
        }
    }

    SwiftStroke& brush;
    const KernelSwitches& switches;
    const BatchMovers& movers;
    DabConstants dab;
    RecordWalk known;
    const BatchStages& stages;
    WeightFunction weigh;
    OrderFreeMover mover;
    RowMover rowMover;
    uint32_t longest;
    bool fetchesLate = brush.PrefetchesLate();
    bool reached = false;
};

}  // namespace

bool ExtendBounds(DabConstants& patch,
                  const HWVector* now,
                  const HWVector* before,
                  uint32_t points,
                  const RowBatches& row) {
    bool any = false;
    HWVector least = patch.boundsMin;
    HWVector most = patch.boundsMax;
    for (uint32_t i = 0; i < points; ++i) {
        if (!row.IsMoving(i)) continue;
        any = true;
        least = HWVector::Minimum(HWVector::Minimum(least, now[i]), before[i]);
        most = HWVector::Maximum(HWVector::Maximum(most, now[i]), before[i]);
    }
    patch.boundsMin = least;
    patch.boundsMax = most;
    return any;
}

bool SwiftStroke::RunPatch(uint32_t face,
                           const KernelSwitches& switches,
                           const BatchMovers& movers) {
    const TVCrashReporterFlag flag(4, 65536);
    // If the layer does not accept changes, the kernel ends immediately. The grid still receives
    // the current positions, because the normals of the patch are computed from it.
    if (switches.throughLayer && layer != nullptr && !layer->Writable()) {
        ReadPatchPositions(PatchSlice(face));
        return false;
    }

    const bool mirroredStamp = WantsMirroredStampRead();
    const uint32_t points = (1u << patchLevel) + 1;
    const uint32_t count = IsListed(PatchSlice(face)) ? points * points : BuildWorkList(face);
    const PatchCache::Patch* known = patchCache.Find(face);
    const PatchCache::Run* records = nullptr;
    patchCache.StopAdding();
    if (known != nullptr)
        records = patchCache.RunsOf(*known).data();
    else if (patchCache.IsOpen() && ListsEachVertexOnce())
        patchCache.StartAdding(count);
    const bool reached = PatchRun(*this, switches, movers, mirroredStamp)
                             .Run(patchVertexList, patchVertexList + count, records);
    strokeVertexCount += count;
    patchCache.Keep(face);
    return reached;
}

}  // namespace trovik
