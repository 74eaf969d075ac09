// SPDX-License-Identifier: Apache-2.0
#include "kernels/batch/VertexBatch.h"
#include "kernels/stages/DabConstants.h"
#include "kernels/stages/RecordLookup.h"
#include "kernels/stages/WorldSpace.h"

#include <algorithm>
#include <bit>

namespace trovik {

namespace {

/// Creates the record of the batch's vertex `at`, which must not have one. If the record array is
/// reallocated, pointers to the records of earlier vertices are updated.
/// \return false if memory could not be allocated and the batch can end before this vertex: the
/// earlier vertices are processed, and the next batch starts with this vertex, where the error
/// occurs again.
__attribute__((noinline)) bool MakeRecord(const PatchVertexEntry* entries,
                                          uint32_t at,
                                          Vertex* vertices,
                                          MeshChange& change,
                                          bool withLayerSlot,
                                          VertexBatch& batch) {
    const PatchVertexEntry& entry = entries[at];
    const StoredVertexInfo* before = change.records->array;
    try {
        change.Add_uncached(entry.vertex, entry.face, vertices[entry.vertex], withLayerSlot);
    } catch (...) {
        if (at == 0) throw;
        return false;
    }
    StoredVertexInfo* const now = change.records->array;
    for (uint32_t k = 0; k < at && now != before; ++k)
        batch.records[k] = now + (batch.records[k] - before);
    return true;
}

/// Position and mark are adjacent and are copied together. Each mark is stored before the next one
/// is read, because a patch that is joined to itself lists a vertex twice.
TROVIK_FORCE_INLINE void Touch(StoredVertexInfo& record,
                               uint32_t dabStamp,
                               VertexBatch& batch,
                               std::size_t i) {
    batch.records[i] = &record;
    _mm_store_ps(batch.start[i], _mm_loadu_ps(reinterpret_cast<const float*>(&record)));
    batch.buildUp[i] = record.buildUp;
    record.visitStampWord = dabStamp;
}

}  // namespace

uint32_t TouchBatch(const PatchVertexEntry* entries,
                    uint32_t count,
                    Vertex* vertices,
                    MeshChange& change,
                    uint32_t dabStamp,
                    bool withLayerSlot,
                    VertexBatch& batch) {
    if (!withLayerSlot && change.HasRoom(count)) {
        RecordMaker maker(change);
        for (uint32_t i = 0; i < count; ++i) {
            const uint32_t vertex = entries[i].vertex;
            StoredVertexInfo* record = maker.Find(vertex, vertices[vertex]);
            if (record == nullptr)
                record = &maker.Add(vertex, vertices[vertex], MeshChange::noLayerSlot);
            Touch(*record, dabStamp, batch, i);
        }
        return count;
    }
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t vertex = entries[i].vertex;
        if (FindRecord(change, vertex, vertices[vertex].changeLink) == nullptr &&
            !MakeRecord(entries, i, vertices, change, withLayerSlot, batch))
            return i;
        Touch(change.records->array[vertices[vertex].changeLink], dabStamp, batch, i);
    }
    return count;
}

void TouchCached(RecordWalk& walk,
                 uint32_t count,
                 const PatchVertexEntry* fetched,
                 const Vertex* vertices,
                 StoredVertexInfo* records,
                 uint32_t dabStamp,
                 VertexBatch& batch) {
    for (uint32_t i = 0; i < count;) {
        const uint32_t length = std::min(count - i, walk.run->count - walk.done);
        StoredVertexInfo* record = records + walk.run->first + walk.done;
        const uint32_t end = i + length;
        if (fetched == nullptr) {
            for (; i < end; ++i) Touch(*record++, dabStamp, batch, i);
        } else {
            // Prefetches one vertex per iteration, because CPUs drop prefetches that are issued too
            // quickly.
            for (; i < end; ++i) {
                Touch(*record++, dabStamp, batch, i);
                __builtin_prefetch(vertices + fetched[i].vertex);
            }
        }
        walk.done += length;
        if (walk.done == walk.run->count) walk = {walk.run + 1, 0};
    }
}

uint64_t FreshOf(const VertexBatch& batch, uint32_t count, uint32_t dabStamp) {
    uint64_t fresh = 0;
    for (uint32_t i = 0; i < count; ++i) {
        if (std::bit_cast<uint32_t>(batch.start[i][3]) != dabStamp) fresh |= uint64_t{1} << i;
    }
    return fresh;
}

bool MarkedWithinReach(const VertexBatch& batch,
                       uint32_t count,
                       const DabConstants& dab,
                       bool inWorldSpace) {
    for (uint32_t i = 0; i < count; ++i) {
        const float* start = batch.start[i];
        if (std::bit_cast<uint32_t>(start[3]) != dab.dabStamp) continue;
        HWVector position(start[0], start[1], start[2], 0.0f);
        if (inWorldSpace) position = ToWorld(dab.space, position);
        const HWVector toCenter = dab.center - position;
        if ((toCenter | toCenter).First() <= dab.radiusSquared) return true;
    }
    return false;
}

}  // namespace trovik
