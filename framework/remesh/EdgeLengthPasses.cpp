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

/// Sweeps until no edge is changed. \return the number of changes.
template <typename Edit>
uint64_t Sweep(EditableMesh& mesh, int maxSweeps, JobPhase& phase, const Edit& edit) {
    uint64_t all = 0;
    for (int sweep = 0; sweep < maxSweeps; ++sweep) {
        const uint64_t changes = SweepOnce(mesh, phase, edit);
        all += changes;
        if (changes == 0) break;
    }
    return all;
}

/// Splits long edges, roughly the longest ones first: splitting an edge that is not the longest of
/// its faces gives thinner faces.
uint64_t SplitLongEdges(EditableMesh& mesh,
                        const EdgeLengths& lengths,
                        uint32_t mostFaces,
                        JobPhase& phase) {
    float longest = 0.0f;
    SweepOnce(mesh, phase, [&](uint32_t h) {
        if (!mesh.IsKeptEdge(h)) longest = std::max(longest, EdgeLength(mesh, h));
        return false;
    });
    uint64_t changes = 0;
    while (longest > lengths.longest) {
        longest = std::max(longest * 0.8f, lengths.longest);
        EdgeLengths step = lengths;
        step.longest = longest;
        changes += SweepOnce(mesh, phase, [&](uint32_t h) {
            return mesh.FaceCount() < mostFaces && SplitLongEdge(mesh, h, step) != none;
        });
    }
    return changes;
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
    if (limits.splits) changes += SplitLongEdges(mesh, lengths, limits.mostFaces, phase);
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
