// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/SurfaceRelaxation.h"

#include "framework/jobs/JobPhase.h"
#include "framework/tessellation/EdgeOperations.h"
#include "framework/threads/WorkerThreads.h"

#include <algorithm>

namespace trovik {

namespace {

constexpr uint32_t none = EditableMesh::none;
/// Number of vertices that are processed in parallel between two checks for cancellation.
constexpr std::size_t verticesPerRun = 8192;

/// Calls `work(first, count)` for consecutive runs of vertices, and polls once per vertex.
template <typename Work>
void InRuns(std::size_t total, JobPhase& phase, const Work& work) {
    for (std::size_t first = 0; first < total; first += verticesPerRun) {
        const auto count = static_cast<uint32_t>(std::min(verticesPerRun, total - first));
        work(first, count);
        for (uint32_t i = 0; i < count; ++i) phase.Poll();
    }
}

}  // namespace

void SurfaceRelaxation::TakeUv(EditableMesh& mesh, uint32_t vertex, const NearestPoint& at) {
    const uint32_t own = mesh.UvOf(mesh.HalfEdgeOf(vertex));
    if (own == none) return;
    const SurfaceAttributes& attributes = source.Attributes();
    const LevelMesh& level = source.Level();
    std::array<float, 2> uv = {0.0f, 0.0f};
    for (std::size_t i = 0; i < 3; ++i) {
        const auto corner = static_cast<uint32_t>(level.CornerOf(at.face, at.vertices[i]));
        const uint32_t index = attributes.cornerUvs[at.face * level.CornersPerFace() + corner];
        if (index == SurfaceAttributes::none) return;
        for (std::size_t c = 0; c < 2; ++c) uv[c] += at.weights[i] * attributes.uvs[index][c];
    }
    // Near a seam, the nearest point may be on its other side, with a UV that is far from those of
    // the neighbours. The interpolated UV is then kept.
    std::array<float, 2> low = mesh.Uv(own);
    std::array<float, 2> high = low;
    mesh.ForEachOutgoing(vertex, [&](uint32_t h) {
        for (const uint32_t corner : {EditableMesh::Next(h), EditableMesh::Previous(h)}) {
            if (mesh.UvOf(corner) == none) continue;
            for (std::size_t c = 0; c < 2; ++c) {
                low[c] = std::min(low[c], mesh.Uv(mesh.UvOf(corner))[c]);
                high[c] = std::max(high[c], mesh.Uv(mesh.UvOf(corner))[c]);
            }
        }
    });
    for (std::size_t c = 0; c < 2; ++c) {
        const float margin = (high[c] - low[c]) * 0.25f;
        if (!(uv[c] >= low[c] - margin && uv[c] <= high[c] + margin)) return;
    }
    mesh.SetUv(own, uv);
}

void SurfaceRelaxation::MoveAll(EditableMesh& mesh,
                                const std::vector<uint32_t>& vertices,
                                const std::vector<Vector>& points,
                                std::vector<uint32_t>& refused,
                                JobPhase& phase) {
    const bool hasParts = parts.firstFaces.size() > 1;
    std::vector<NearestPoint> nearest;
    nearest.reserve(points.size());
    std::vector<NearestLimits> limits;
    InRuns(vertices.size(), phase, [&](std::size_t first, uint32_t count) {
        limits.resize(count);
        RunInParallel(count, 256, [&](uint32_t i) {
            const uint32_t v = vertices[first + i];
            limits[i].parts = {};
            if (hasParts) {
                limits[i].parts = parts.partOfFace;
                limits[i].part = mesh.TagOf(EditableMesh::FaceOf(mesh.HalfEdgeOf(v)));
            }
            limits[i].facing = NormalAt(mesh, v);
        });
        const auto begin = points.begin() + static_cast<std::ptrdiff_t>(first);
        const std::vector<NearestPoint> some = source.Nearest({begin, begin + count}, limits);
        nearest.insert(nearest.end(), some.begin(), some.end());
    });
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        phase.Poll();
        if (nearest[i].position == mesh.Position(vertices[i])) continue;
        if (MoveFreeVertex(mesh, vertices[i], nearest[i].position))
            TakeUv(mesh, vertices[i], nearest[i]);
        else
            refused.push_back(vertices[i]);
    }
}

void SurfaceRelaxation::Relax(EditableMesh& mesh, bool onlyNew, JobPhase& phase) {
    std::vector<uint32_t> vertices;
    for (uint32_t v = 0; v < mesh.VertexLimit(); ++v) {
        if (!mesh.HasVertex(v) || (onlyNew && mesh.SourceOf(v) != none)) continue;
        if (mesh.KindOf(v) == EditableMesh::VertexKind::Free) vertices.push_back(v);
        phase.Poll();
    }
    std::vector<Vector> points(vertices.size());
    InRuns(vertices.size(), phase, [&](std::size_t first, uint32_t count) {
        RunInParallel(count, 256, [&](uint32_t i) {
            points[first + i] = RelaxedPosition(mesh, vertices[first + i]);
        });
    });
    std::vector<uint32_t> refused;
    MoveAll(mesh, vertices, points, refused, phase);
    if (refused.empty()) return;
    points.resize(refused.size());
    for (std::size_t i = 0; i < refused.size(); ++i) points[i] = mesh.Position(refused[i]);
    std::vector<uint32_t> unmoved;
    MoveAll(mesh, refused, points, unmoved, phase);
}

}  // namespace trovik
