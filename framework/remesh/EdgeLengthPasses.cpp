// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/EdgeLengthPasses.h"

#include "framework/jobs/JobPhase.h"

namespace trovik {

namespace {

constexpr uint32_t none = EditableMesh::none;
/// Most sweeps over all edges for each kind of edit. Later passes continue.
constexpr int maxSplitSweeps = 100;
constexpr int maxCollapseSweeps = 10;
constexpr int maxFlipSweeps = 4;

/// Calls `edit(half-edge)` for each edge, until no edge is changed. Edits may move an edge to
/// half-edges with higher indices, so those that are added during a sweep are visited too.
template <typename Edit>
void Sweep(EditableMesh& mesh, int maxSweeps, JobPhase& phase, const Edit& edit) {
    bool isChanged = true;
    for (int sweep = 0; sweep < maxSweeps && isChanged; ++sweep) {
        isChanged = false;
        for (uint32_t h = 0; h < mesh.FaceLimit() * 3; ++h) {
            phase.Poll();
            if (!mesh.HasFace(EditableMesh::FaceOf(h))) continue;
            const uint32_t twin = mesh.Twin(h);
            if (twin != none && twin < h) continue;
            if (edit(h)) isChanged = true;
        }
    }
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

void RunPass(EditableMesh& mesh,
             const EdgeLengths& lengths,
             const PassLimits& limits,
             SurfaceRelaxation& relaxation,
             JobPhase& phase) {
    if (limits.splits) {
        Sweep(mesh, maxSplitSweeps, phase, [&](uint32_t h) {
            return mesh.FaceCount() < limits.maxFaces && SplitLongEdge(mesh, h, lengths) != none;
        });
    }
    phase.Add();
    if (limits.collapses) {
        Sweep(mesh, maxCollapseSweeps, phase, [&](uint32_t h) {
            return mesh.FaceCount() > limits.minFaces &&
                   static_cast<bool>(CollapseShortEdge(mesh, h, lengths));
        });
    }
    phase.Add();
    Sweep(mesh, maxFlipSweeps, phase, [&](uint32_t h) {
        return (!limits.keepsOldVertices || HasNewVertex(mesh, h)) && FlipToImprove(mesh, h);
    });
    phase.Add();
    relaxation.Relax(mesh, limits.keepsOldVertices, phase);
    phase.Add();
}

}  // namespace trovik
