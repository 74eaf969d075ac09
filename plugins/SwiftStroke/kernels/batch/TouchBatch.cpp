// SPDX-License-Identifier: Apache-2.0
#include "kernels/batch/VertexBatch.h"
#include "kernels/stages/RecordLookup.h"

namespace trovik {

namespace {

/// Makes the record of vertex `at` of the batch, which has none. Records may move; those of the
/// vertices before it are found again.
/// \return false where memory was refused and the batch can end before this vertex: those before
/// it take their turn, and the next batch begins here and meets the refusal again.
__attribute__((noinline)) bool MakeRecord(const PatchVertexEntry* entries,
                                          uint32_t at,
                                          Vertex* vertices,
                                          MeshChange& change,
                                          bool withLayerSlot,
                                          VertexBatch& batch) {
    const PatchVertexEntry& entry = entries[at];
    Vertex& vertex = vertices[entry.vertex];
    if (!withLayerSlot && change.HasRoom()) {
        change.AddWithinRoom(entry.vertex, vertex, MeshChange::noLayerSlot);
        return true;
    }
    const StoredVertexInfo* before = change.records->array;
    try {
        change.Add_uncached(entry.vertex, entry.face, vertex, withLayerSlot);
    } catch (...) {
        if (at == 0) throw;
        return false;
    }
    StoredVertexInfo* const now = change.records->array;
    for (uint32_t k = 0; k < at && now != before; ++k)
        batch.records[k] = now + (batch.records[k] - before);
    return true;
}

}  // namespace

uint32_t TouchBatch(const PatchVertexEntry* entries,
                    uint32_t count,
                    Vertex* vertices,
                    MeshChange& change,
                    uint32_t dabStamp,
                    bool withLayerSlot,
                    VertexBatch& batch) {
    StoredVertexInfo* records = change.records->array;
    uint32_t recordCount = *change.recordCount;
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t vertex = entries[i].vertex;
        uint32_t link = vertices[vertex].changeLink;
        if (link >= recordCount || records[link].vertexIndex != vertex) [[unlikely]] {
            if (!MakeRecord(entries, i, vertices, change, withLayerSlot, batch)) return i;
            records = change.records->array;
            recordCount = *change.recordCount;
            link = vertices[vertex].changeLink;
        }
        // Position and mark lie side by side and travel together. Each mark is stored before the
        // next one is read: a patch that is glued to itself lists a vertex twice.
        StoredVertexInfo* record = records + link;
        batch.records[i] = record;
        _mm_store_ps(batch.start[i], _mm_loadu_ps(reinterpret_cast<const float*>(record)));
        batch.buildUp[i] = record->buildUp;
        record->visitStampWord = dabStamp;
    }
    return count;
}

}  // namespace trovik
