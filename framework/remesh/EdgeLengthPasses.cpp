// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/EdgeLengthPasses.h"

#include "framework/jobs/JobPhase.h"

#include <algorithm>

namespace trovik {

namespace {

constexpr uint32_t none = EditableMesh::none;
/// Most sweeps over all edges for each kind of edit. Later passes continue.
constexpr int maxCollapseSweeps = 10;
constexpr int maxFlipSweeps = 4;

/// Calls `edit(half-edge)` for each edge. Edits may move an edge to half-edges with higher indices,
/// so those that are added during the sweep are visited too. \return the number of changes.
template <typename Edit>
uint64_t SweepOnce(EditableMesh& mesh, JobPhase& phase, const Edit& edit) {
    uint64_t changes = 0;
    for (uint32_t h = 0; h < mesh.FaceLimit() * 3; ++h) {
        phase.Poll();
        if (!mesh.HasFace(EditableMesh::FaceOf(h))) continue;
        const uint32_t twin = mesh.Twin(h);
        if (twin != none && twin < h) continue;
        if (edit(h)) ++changes;
    }
    return changes;
}

/// Sweeps until no edge is changed.
template <typename Edit>
void Sweep(EditableMesh& mesh, int maxSweeps, JobPhase& phase, const Edit& edit) {
    for (int sweep = 0; sweep < maxSweeps; ++sweep)
        if (SweepOnce(mesh, phase, edit) == 0) break;
}

/// Splits long edges, roughly the longest ones first: splitting an edge that is not the longest of
/// its faces gives thinner faces.
void SplitLongEdges(EditableMesh& mesh,
                    const EdgeLengths& lengths,
                    uint32_t mostFaces,
                    JobPhase& phase) {
    float longest = 0.0f;
    SweepOnce(mesh, phase, [&](uint32_t h) {
        if (!mesh.IsKeptEdge(h)) longest = std::max(longest, EdgeLength(mesh, h));
        return false;
    });
    while (longest > lengths.longest) {
        longest = std::max(longest * 0.8f, lengths.longest);
        EdgeLengths step = lengths;
        step.longest = longest;
        SweepOnce(mesh, phase, [&](uint32_t h) {
            return mesh.FaceCount() < mostFaces && SplitLongEdge(mesh, h, step) != none;
        });
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
    if (limits.splits) SplitLongEdges(mesh, lengths, limits.mostFaces, phase);
    phase.Add();
    if (limits.collapses) {
        Sweep(mesh, maxCollapseSweeps, phase, [&](uint32_t h) {
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
}

}  // namespace trovik
