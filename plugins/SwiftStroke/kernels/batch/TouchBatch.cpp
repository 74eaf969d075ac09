// SPDX-License-Identifier: Apache-2.0
#include "kernels/batch/VertexBatch.h"
#include "kernels/stages/RecordLookup.h"

namespace trovik {

namespace {

/// Makes the record of a vertex that has none. \return false where memory was refused and the batch
/// can end before this vertex: those before it take their turn, and the next batch begins here and
/// meets the refusal again.
bool MakeRecord(const PatchVertexEntry& entry,
                Vertex& vertex,
                MeshChange& change,
                bool withLayerSlot,
                bool isFirst) {
    try {
        change.Add_uncached(entry.vertex, entry.face, vertex, withLayerSlot);
    } catch (...) {
        if (isFirst) throw;
        return false;
    }
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
        const uint32_t link = vertices[vertex].changeLink;
        StoredVertexInfo* record = records + link;
        if (link >= recordCount || record->vertexIndex != vertex) [[unlikely]] {
            if (!withLayerSlot && change.HasRoom()) {
                record = &change.AddWithinRoom(vertex, vertices[vertex], MeshChange::noLayerSlot);
            } else {
                if (!MakeRecord(entries[i], vertices[vertex], change, withLayerSlot, i == 0))
                    return i;
                // The records may have moved.
                for (uint32_t k = 0; k < i && records != change.records->array; ++k)
                    batch.records[k] = change.records->array + (batch.records[k] - records);
                records = change.records->array;
                record = records + vertices[vertex].changeLink;
            }
            recordCount = *change.recordCount;
        }
        // Position and mark lie side by side and travel together. Each mark is stored before the
        // next one is read: a patch that is glued to itself lists a vertex twice.
        batch.records[i] = record;
        _mm_store_ps(batch.start[i], _mm_loadu_ps(reinterpret_cast<const float*>(record)));
        batch.buildUp[i] = record->buildUp;
        record->visitStampWord = dabStamp;
    }
    return count;
}

}  // namespace trovik
