// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/stages/DabConstants.h"

namespace trovik {

/// Moves the vertex, directly or through the layer, and updates the grid, the bounds and the
/// renderers. After a move through the layer, the new position is read back from the mesh.
template <class Switches>
TROVIK_FORCE_INLINE void WriteBack(const Switches& sw, DabConstants& dab, VertexState& v) {
    SwiftStroke& brush = dab.brush;
    HWVector moved;
    if (sw.throughLayer) {
        const Vector step = static_cast<Vector>(v.displacement);
        Vector old;
        brush.layer->get(&old, v.record->layerSlot);
        const Vector offset = step + old;
        brush.layer->set(nullptr, v.record->layerSlot, v.vertex, &offset, true);
        // The layer has just written the coordinates one by one. A read with four lanes would wait
        // until they have left the store buffer.
        moved = HWVector(v.vertexRecord->x, v.vertexRecord->y, v.vertexRecord->z, 0.0f);
    } else {
        moved = v.current + v.displacement;
        StorePosition(*v.vertexRecord, moved);
    }
    if (sw.withGrid) dab.positionGrid[v.cell] = moved;

    dab.boundsMin = HWVector::Minimum(dab.boundsMin, moved);
    dab.boundsMax = HWVector::Maximum(dab.boundsMax, moved);
    dab.boundsMin = HWVector::Minimum(dab.boundsMin, v.current);
    dab.boundsMax = HWVector::Maximum(dab.boundsMax, v.current);

    if (sw.notifyPerVertex) {
        for (uint32_t i = 0; i < brush.renderers.fill; ++i)
            brush.renderers.array[i]->rendererVertexChanged(v.vertex, v.face);
    }
}

}  // namespace trovik
