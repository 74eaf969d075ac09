// SPDX-License-Identifier: Apache-2.0
#include "framework/memory/LargePages.h"
#include "host/Mesh.h"

#include <cassert>

namespace trovik {

StoredVertexInfo& MeshChange::Add_uncached(uint32_t vertex,
                                           uint32_t /*face*/,
                                           Vertex& vertexRecord,
                                           bool withLayerSlot) {
    Store<StoredVertexInfo>& store = *records;
    assert(mesh->changeRecords == store.array && "records are made in the linked change only");

    const uint32_t slot = withLayerSlot ? ReserveLayerSlot(vertex) : 0xffffffffu;

    // The vertex is touched only when its record is safely there: a link without a record would
    // lose the stamp.
    const uint32_t index = store.fill;
    if (index < store.capacity) [[likely]] {
        ++store.fill;
    } else {
        store.Append(StoredVertexInfo{});
        if (store.fill == index) throw Error::s_cBadAlloc;
        mesh->changeRecords = store.array;
        PreferLargePages(store.array, uint64_t{store.capacity} * sizeof(StoredVertexInfo));
    }
    StoredVertexInfo& record = store.array[index];
    record.originalPosition[0] = vertexRecord.x;
    record.originalPosition[1] = vertexRecord.y;
    record.originalPosition[2] = vertexRecord.z;
    record.visitStampWord = vertexRecord.changeLink;
    record.originalNormal = vertex < mesh->vertexNormals.capacity
                                ? mesh->vertexNormals.array[vertex]
                                : PackedNormal{0, 0, 0, 0};
    record.buildUp = 0.0f;
    record.vertexIndex = vertex;
    record.reserved = 0;
    record.layerSlot = slot;
    vertexRecord.changeLink = index;
    mesh->changeRecordCount = store.fill;
    return record;
}

}  // namespace trovik
