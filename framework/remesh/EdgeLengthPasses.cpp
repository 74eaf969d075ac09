// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/EdgeLengthPasses.h"

#include "framework/jobs/JobPhase.h"

namespace trovik {

namespace {

constexpr uint32_t none = EditableMesh::none;
/// Most sweeps over all edges for each kind of edit. Later passes continue.
constexpr int maxSplitSweeps = 24;
constexpr int maxCollapseSweeps = 10;
constexpr int maxFlipSweeps = 4;

/// Calls `edit(half-edge)` once for each edge that exists when it is its turn, until no edge is
/// changed. \return the number of changes.
template <typename Edit>
uint64_t Sweep(EditableMesh& mesh, int maxSweeps, JobPhase& phase, const Edit& edit) {
    uint64_t all = 0;
    for (int sweep = 0; sweep < maxSweeps; ++sweep) {
        uint64_t changes = 0;
        const uint32_t end = mesh.FaceLimit() * 3;
        for (uint32_t h = 0; h < end; ++h) {
            phase.Poll();
            if (!mesh.HasFace(EditableMesh::FaceOf(h))) continue;
            const uint32_t twin = mesh.Twin(h);
            if (twin != none && twin < h) continue;
            if (edit(h)) ++changes;
        }
        all += changes;
        if (changes == 0) break;
    }
    return all;
}

bool HasNewVertex(const EditableMesh& mesh, uint32_t halfEdge) {
    for (const uint32_t h : {halfEdge, mesh.Twin(halfEdge)}) {
        if (h == none) continue;
        for (const uint32_t v : mesh.VerticesOf(EditableMesh::FaceOf(h)))
            if (mesh.SourceOf(v) == none) return true;
    }
    return false;
}

}  // namespace

bool RunPass(EditableMesh& mesh,
             const EdgeLengths& lengths,
             const PassLimits& limits,
             SurfaceRelaxation& relaxation,
             JobPhase& phase) {
    uint64_t changes = 0;
    if (limits.splits) {
        changes += Sweep(mesh, maxSplitSweeps, phase, [&](uint32_t h) {
            return mesh.FaceCount() < limits.mostFaces && SplitLongEdge(mesh, h, lengths) != none;
        });
    }
    phase.Add();
    if (limits.collapses) {
        changes += Sweep(mesh, maxCollapseSweeps, phase, [&](uint32_t h) {
            return mesh.FaceCount() > limits.leastFaces && CollapseShortEdge(mesh, h, lengths);
        });
    }
    phase.Add();
    Sweep(mesh, maxFlipSweeps, phase, [&](uint32_t h) {
        return (!limits.keepsOldVertices || HasNewVertex(mesh, h)) && FlipToImprove(mesh, h);
    });
    phase.Add();
    relaxation.Relax(mesh, limits.keepsOldVertices, phase);
    phase.Add();
    return changes > 0;
}

}  // namespace trovik
