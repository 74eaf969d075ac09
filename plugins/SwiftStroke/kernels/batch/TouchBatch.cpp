// SPDX-License-Identifier: Apache-2.0
#include "kernels/batch/VertexBatch.h"
#include "kernels/stages/RecordLookup.h"

#include <emmintrin.h>

namespace trovik {

namespace {

/// Makes the records that a batch lacks. The records may move with each, so all of the batch are
/// found again afterwards.
uint32_t MakeRecords(const PatchVertexEntry* entries,
                     uint32_t count,
                     Vertex* vertices,
                     MeshChange& change,
                     bool withLayerSlot) {
    for (uint32_t i = 0; i < count; ++i) {
        const PatchVertexEntry& entry = entries[i];
        Vertex& vertex = vertices[entry.vertex];
        if (FindRecord(change, entry.vertex, vertex.changeLink) != nullptr) continue;
        try {
            change.Add_uncached(entry.vertex, entry.face, vertex, withLayerSlot);
        } catch (...) {
            // Those before take their turn; the next batch begins here and meets the refusal again.
            if (i == 0) throw;
            return i;
        }
    }
    return count;
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
    const uint32_t recordCount = *change.recordCount;
    bool complete = true;
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t link = vertices[entries[i].vertex].changeLink;
        if (link >= recordCount || records[link].vertexIndex != entries[i].vertex) [[unlikely]] {
            complete = false;
            break;
        }
        batch.records[i] = records + link;
    }
    if (!complete) {
        count = MakeRecords(entries, count, vertices, change, withLayerSlot);
        records = change.records->array;
        for (uint32_t i = 0; i < count; ++i)
            batch.records[i] = records + vertices[entries[i].vertex].changeLink;
    }
    // Position and mark lie side by side and travel together. One by one, since a patch that is
    // glued to itself lists a vertex twice: the second turn finds the mark of the first.
    for (uint32_t i = 0; i < count; ++i) {
        StoredVertexInfo& record = *batch.records[i];
        _mm_store_ps(batch.start[i], _mm_loadu_ps(reinterpret_cast<const float*>(&record)));
        batch.buildUp[i] = record.buildUp;
        record.visitStampWord = dabStamp;
    }
    return count;
}

}  // namespace trovik
