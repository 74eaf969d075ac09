// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/stages/Displacement.h"
#include "kernels/stages/StampSampling.h"
#include "kernels/stages/Weight.h"
#include "kernels/stages/WorldSpace.h"
#include "kernels/stages/WriteBack.h"

/// \file The brush algorithm for one vertex: look up its record, mark it, compute the weight,
/// sample the stamp, apply the strength, compute the displacement, write the result. StepVertex
/// runs all of it, for meshes without quads (VertexKernel.cpp). The patch kernels (PatchKernel.h)
/// run the first stage, up to the weight, over batches of vertices (kernels/batch), and then the
/// second stage: MoveVertex or a batch version of it. The formulas that the stages and the batch
/// versions share are templates over lanes (kernels/formulas), and tests check that the results of
/// the batch versions are bit-identical to those of StepVertex.
namespace trovik {

/// Updates the grid without moving the vertex.
template <class Switches>
TROVIK_FORCE_INLINE bool LeaveVertex(const Switches& sw,
                                     const DabConstants& dab,
                                     const VertexState& v,
                                     bool reached) {
    if (sw.withGrid) dab.positionGrid[v.cell] = v.current;
    return reached;
}

/// Runs the second stage for a vertex whose weight has been computed: stamp, strength,
/// displacement, write-back.
/// \return whether the dab reached it.
template <class Switches>
TROVIK_FORCE_INLINE bool MoveVertex(const Switches& sw, DabConstants& dab, VertexState& v) {
    v.weightVector = HWVector::Splat(v.weight);
    if (sw.withStamp && ApplyStamp(sw, dab, v) == StageResult::OutOfReach)
        return LeaveVertex(sw, dab, v, sw.withoutRadius);
    ApplyStrength(sw, dab, v);
    Displace(sw, dab, v);
    WriteBack(sw, dab, v);
    return true;
}

/// Processes one vertex.
/// \return whether the dab reached it.
template <class Switches>
TROVIK_FORCE_INLINE bool StepVertex(const Switches& sw,
                                    DabConstants& dab,
                                    const PatchVertexEntry& entry) {
    VertexState v;
    v.vertex = entry.vertex;
    v.face = entry.face;
    v.cell = entry.cell;
    v.vertexRecord = dab.vertices + v.vertex;
    v.current = PositionOf(*v.vertexRecord);
    v.record = &TouchRecord(dab.change, v.vertex, v.face, *v.vertexRecord, sw.throughLayer);
    const float* start = v.record->originalPosition;
    v.startPosition = HWVector(start[0], start[1], start[2], 0.0f);
    v.measured = sw.inWorldSpace ? ToWorld(dab.space, v.startPosition) : v.startPosition;

    // A vertex on a seam belongs to several patches; the first one that reaches it moves it.
    const bool marked = v.record->visitStampWord == dab.dabStamp;
    v.record->visitStampWord = dab.dabStamp;
    if (marked) {
        bool reached = false;
        if (dab.mesh.meshType == 0) {
            const HWVector toCenter = dab.center - v.measured;
            reached = (toCenter | toCenter).First() <= dab.radiusSquared;
        }
        return LeaveVertex(sw, dab, v, reached);
    }

    if (ComputeWeight(sw, dab, v) == StageResult::OutOfReach) return LeaveVertex(sw, dab, v, false);
    return MoveVertex(sw, dab, v);
}

}  // namespace trovik
