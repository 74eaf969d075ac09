// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

namespace trovik {

/// Returns the record of the vertex in the change, or null. Costs two loads and two comparisons,
/// without a call.
TROVIK_FORCE_INLINE StoredVertexInfo* FindRecord(const MeshChange& change,
                                                 uint32_t vertex,
                                                 uint32_t changeLink) {
    if (changeLink >= *change.recordCount) return nullptr;
    StoredVertexInfo* record = change.records->array + changeLink;
    return record->vertexIndex == vertex ? record : nullptr;
}

/// Returns the vertex's record and creates it at first touch. The reference is valid until the next
/// record is created.
TROVIK_FORCE_INLINE StoredVertexInfo& TouchRecord(
    MeshChange& change, uint32_t vertex, uint32_t face, Vertex& vertexRecord, bool withLayerSlot) {
    StoredVertexInfo* record = FindRecord(change, vertex, vertexRecord.changeLink);
    if (record != nullptr) [[likely]]
        return *record;
    return change.Add_uncached(vertex, face, vertexRecord, withLayerSlot);
}

}  // namespace trovik
