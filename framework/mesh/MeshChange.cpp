// SPDX-License-Identifier: Apache-2.0
#include "framework/memory/SystemMemory.h"
#include "host/Mesh.h"

#include <cassert>

namespace trovik {

StoredVertexInfo& MeshChange::Add_uncached(uint32_t vertex,
                                           uint32_t /*face*/,
                                           Vertex& vertexRecord,
                                           bool withLayerSlot) {
    Store<StoredVertexInfo>& store = *records;
    assert(mesh->changeRecords == store.array && "records must be added to the linked change");

    const uint32_t slot = withLayerSlot ? ReserveLayerSlot(vertex) : noLayerSlot;

    // The vertex is modified only after its record is stored, because the vertex's stamp would be
    // lost if a link were set without a record.
    if (!HasRoom()) {
        const uint32_t index = store.fill;
        store.Append(StoredVertexInfo{});
        if (store.fill == index) throw Error::s_cBadAlloc;
        store.fill = index;
        mesh->changeRecords = store.array;
        PreferLargePages(store.array, uint64_t{store.capacity} * sizeof(StoredVertexInfo));
    }
    return RecordMaker(*this).Add(vertex, vertexRecord, slot);
}

}  // namespace trovik
