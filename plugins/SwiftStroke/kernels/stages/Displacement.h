// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/stages/DabConstants.h"
#include "kernels/stages/RecordLookup.h"

namespace trovik {

/// Returns the sum of a cell and its four neighbours: centre, left, right, below, above. The order
/// of the additions affects the result.
TROVIK_FORCE_INLINE HWVector FiveCellSum(const HWVector* grid,
                                         const HWVector& left,
                                         uint32_t cell,
                                         uint32_t stride) {
    return (((grid[cell] + left) + grid[cell + 1]) + grid[cell + stride]) + grid[cell - stride];
}
TROVIK_FORCE_INLINE HWVector FiveCellSum(const HWVector* grid, uint32_t cell, uint32_t stride) {
    return FiveCellSum(grid, grid[cell - 1], cell, stride);
}

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
        mean = FiveCellSum(grid, v.cell, brush.gridStride) * 0.2f;
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

/// Returns the displacement to the plane along `dir`, limited by the clamps; the upper clamp is
/// applied first.
TROVIK_FORCE_INLINE HWVector PlaningDisplacement(const DabConstants& dab,
                                                 const VertexState& v,
                                                 const HWVector& dir) {
    const SwiftStroke& brush = dab.brush;
    const float height = (dir | v.current).First();
    float move = (brush.planeOffset * brush.strokePlaneSign) + (brush.planeDistance - height);
    move = move * brush.planeDirectionSign;
    if (move > brush.planeClampMax) move = brush.planeClampMax;
    if (brush.planeClampMin > move) move = brush.planeClampMin;
    return dir * move;
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
    const HWVector dir = sw.alongVertexNormal ? NormalOf(*v.record) : dab.direction;
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
            displacement = (dab.center - v.current) * 0.1f;
            break;
        case Family::Planing:
            displacement = PlaningDisplacement(dab, v, dir);
            // The weight is scaled by 1/100, except for the tangent channels of a vector stamp.
            if (byVectorStamp)
                v.weightVector = v.weightVector * HWVector(0.01f, 1.0f, 1.0f, 0.0f);
            else
                v.weight = v.weight * 0.01f;
            break;
    }

    if (byVectorStamp)
        displacement = FrameByStamp(dab, v, dir, displacement);
    else
        displacement = displacement * v.weight;
    if (sw.inWorldSpace) displacement = displacement * dab.space.inverseScale;
    v.displacement = displacement;
}

}  // namespace trovik
