// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/formulas/DisplacementFormula.h"
#include "kernels/lanes/Lanes1.h"
#include "kernels/stages/PackedNormals.h"
#include "kernels/stages/RecordLookup.h"

namespace trovik {

/// Returns the displacement towards the mean of the vertex and its neighbours: the mean position,
/// or the mean layer offset. The loop both reads and writes the position grid, so positions are
/// smoothed in place; it only reads the layer grid.
template <class Switches>
TROVIK_FORCE_INLINE HWVector AveragingDisplacement(const Switches& sw,
                                                   const DabConstants& dab,
                                                   VertexState& v) {
    SwiftStroke& brush = dab.brush;
    HWVector mean;
    if (sw.withGrid) {
        const HWVector* grid = sw.alongVertexNormal ? dab.positionGrid : brush.layerGrid;
        const HWVector* cell = grid + v.cell;
        const uint32_t stride = brush.gridStride;
        mean = MeanOfFive(*cell, cell[-1], cell[1], cell[stride], *(cell - stride));
    } else {
        Vector ring;
        brush.RingAverage(ring, v.vertex, v.face);
        mean = HWVector(ring);
    }
    if (sw.alongVertexNormal) {
        if (!sw.withGrid) v.record = FindRecord(dab.change, v.vertex, v.vertexRecord->changeLink);
        return mean - v.current;
    }

    v.record = &TouchRecord(dab.change, v.vertex, v.face, *v.vertexRecord, true);
    Vector own;
    brush.layer->get(&own, v.record->layerSlot);
    return mean - HWVector(own);
}

/// Returns the component of a stamp axis perpendicular to `dir`, normalised.
TROVIK_FORCE_INLINE HWVector TangentAcross(const HWVector& axis, const HWVector& dir) {
    HWVector tangent = dir & (axis & dir);
    tangent.Normalize();
    return tangent;
}

/// Converts the channels of a vector stamp (tangent U, height, tangent V) to a displacement. The
/// unit of the tangent channels is 1/100 of the stamp's sides, and that of the height is 1/100 of
/// the sides' geometric mean.
TROVIK_FORCE_INLINE HWVector FrameByStamp(const DabConstants& dab,
                                          const VertexState& v,
                                          const HWVector& dir,
                                          const HWVector& displacement) {
    const SwiftStroke& brush = dab.brush;
    const HWVector tangentU = TangentAcross(dab.space.stampAxisU, dir);
    const HWVector tangentV = TangentAcross(dab.space.stampAxisV, dir);
    return ((displacement * v.weightVector.X() * brush.stampScaleHeight) +
            (tangentU * v.weightVector.Y() * brush.stampScaleU)) +
           (tangentV * v.weightVector.Z() * brush.stampScaleV);
}

/// Converts the weight to a displacement, mesh-local.
template <class Switches>
TROVIK_FORCE_INLINE void Displace(const Switches& sw, const DabConstants& dab, VertexState& v) {
    const HWVector dir =
        sw.alongVertexNormal ? UnpackNormal(v.record->originalNormal) : dab.direction;
    const bool byVectorStamp = sw.withStamp && dab.brush.stampIsVector;
    HWVector displacement;
    switch (sw.family) {
        case Family::Pushing:
            displacement = dir;
            break;
        case Family::Averaging:
            displacement = AveragingDisplacement(sw, dab, v);
            break;
        case Family::Pulling:
            displacement = TowardsCenter(dab.center, v.current);
            break;
        case Family::Planing:
            displacement =
                dir *
                PlaneMove(PlaneTerms<F32x1>(dab.brush), F32x1{(dir | v.current).First()}).value;
            // The weight is scaled, except for the tangent channels of a vector stamp.
            if (byVectorStamp)
                v.weightVector = v.weightVector * HWVector(planingWeightScale, 1.0f, 1.0f, 0.0f);
            else
                v.weight = v.weight * planingWeightScale;
            break;
    }

    if (byVectorStamp)
        displacement = FrameByStamp(dab, v, dir, displacement);
    else
        displacement = displacement * v.weight;
    v.displacement = ToMeshSpace(displacement, dab.space.inverseScale, sw.inWorldSpace);
}

}  // namespace trovik
