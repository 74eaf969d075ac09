// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/SurfaceFeatures.h"

#include "framework/jobs/JobPhase.h"
#include "framework/tessellation/EdgeOperations.h"

#include <cmath>

namespace trovik {

namespace {

constexpr uint32_t none = EditableMesh::none;

/// Whether two faces have the same group, material and smoothing group.
bool HaveSameData(const SurfaceAttributes& attributes, uint32_t a, uint32_t b) {
    for (const auto* list :
         {&attributes.faceGroups, &attributes.faceMaterials, &attributes.faceSmoothing})
        if (!list->empty() && (*list)[a] != (*list)[b]) return false;
    return true;
}

void MarkEdges(EditableMesh& mesh,
               SourceSurface& source,
               const KeptFeatures& kept,
               JobControl* job) {
    const SurfaceAttributes& attributes = source.Attributes(job);
    constexpr float degree = 0.017453293f;
    const bool keepsCreases = kept.creaseAngle < 180.0f;
    const float minCosine = std::cos(kept.creaseAngle * degree);
    JobPhase phase(job, "Finding features", mesh.FaceLimit());
    for (uint32_t h = 0; h < mesh.FaceLimit() * 3; ++h) {
        if (h % 3 == 0) phase.Add();
        const uint32_t twin = mesh.Twin(h);
        if (twin == none || twin < h) continue;
        const uint32_t face = EditableMesh::FaceOf(h);
        const uint32_t neighbour = EditableMesh::FaceOf(twin);
        // The diagonals of quads are not features.
        if (mesh.TagOf(face) == mesh.TagOf(neighbour)) continue;
        bool isFeature =
            kept.groups && !HaveSameData(attributes, mesh.TagOf(face), mesh.TagOf(neighbour));
        if (keepsCreases) {
            const Vector a = AreaNormalOf(mesh, face);
            const Vector b = AreaNormalOf(mesh, neighbour);
            isFeature = isFeature || (a | b) < minCosine * a.Length() * b.Length();
        }
        if (isFeature) mesh.SetFeature(h, true);
    }
    phase.Finish();
}

void FixVertices(EditableMesh& mesh, const LevelMesh& level, bool keepsBorders) {
    for (uint32_t v = 0; v < mesh.VertexLimit(); ++v) {
        if (!mesh.HasVertex(v)) continue;
        if (level.Freeze(mesh.SourceOf(v)) >= keptMaskAmount) mesh.SetKept(v);
        if (keepsBorders && mesh.IsBorderVertex(v)) mesh.SetFixed(v);
    }
}

/// Numbers the parts in the order of their lowest triangles, and sets the tags.
SurfaceParts FindParts(EditableMesh& mesh, std::size_t faceCount) {
    SurfaceParts parts;
    parts.partOfFace.assign(faceCount, none);
    std::vector<bool> isDone(mesh.FaceLimit());
    std::vector<uint32_t> pending;
    for (uint32_t start = 0; start < mesh.FaceLimit(); ++start) {
        if (isDone[start]) continue;
        const auto part = static_cast<uint32_t>(parts.firstFaces.size());
        parts.firstFaces.push_back(mesh.TagOf(start));
        isDone[start] = true;
        pending.push_back(start);
        while (!pending.empty()) {
            const uint32_t face = pending.back();
            pending.pop_back();
            parts.partOfFace[mesh.TagOf(face)] = part;
            mesh.SetTag(face, part);
            for (uint32_t h = face * 3; h < face * 3 + 3; ++h) {
                if (mesh.IsBorder(h) || mesh.IsFeature(h)) continue;
                const uint32_t neighbour = EditableMesh::FaceOf(mesh.Twin(h));
                if (isDone[neighbour]) continue;
                isDone[neighbour] = true;
                pending.push_back(neighbour);
            }
        }
    }
    return parts;
}

}  // namespace

SurfaceParts MarkFeatures(EditableMesh& mesh,
                          SourceSurface& source,
                          const KeptFeatures& kept,
                          JobControl* job) {
    MarkEdges(mesh, source, kept, job);
    FixVertices(mesh, source.Level(), kept.borders);
    return FindParts(mesh, source.Level().faceCount);
}

}  // namespace trovik
