// SPDX-License-Identifier: Apache-2.0
#include "framework/baking/MapDisplacement.h"

#include "framework/baking/DisplacementMap.h"
#include "framework/baking/SurfaceFrames.h"
#include "framework/edits/SurfaceMoves.h"
#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/math/IsFinite.h"
#include "framework/mesh/LevelPositions.h"
#include "framework/mesh/UnfrozenFraction.h"
#include "framework/mesh/VertexNeighbours.h"
#include "framework/multires/LevelChange.h"

#include <algorithm>
#include <vector>

namespace trovik {

namespace {

/// Returns the displacement of a vertex by the map, before the mask is applied.
Vector MoveOf(std::uint32_t vertex, const SurfaceFrames& frames, DisplacementMap& map) {
    Vector sum;
    float count = 0.0f;
    for (std::uint32_t number = frames.FirstOf(vertex); number != SurfaceFrames::none;
         number = frames.After(number)) {
        const Vector value = map.At(frames.UvOf(number));
        if (map.Kind() == MapKind::Displacement)
            sum += frames.Normal(vertex) * value.x;
        else if (map.Space() == MapSpace::Tangent)
            sum += frames.Frame(number).FromFrame(value);
        else
            sum += value;
        count += 1.0f;
    }
    return count > 1.0f ? sum * (1.0f / count) : sum;
}

/// Recomputes the normals of these vertices from the current positions; all other normals are
/// unchanged.
void RefreshNormals(LevelMesh& level, const std::vector<std::uint32_t>& vertices) {
    // If an eighth or more of the vertices are affected, gathering the normals of the faces around
    // each of them costs more than a single pass over all faces.
    if (vertices.size() < level.VertexCount() / 8) {
        level.ComputeNormalsOf(vertices);
        return;
    }
    std::vector<PackedNormal> before(level.vertexNormals.array,
                                     level.vertexNormals.array + level.vertexNormals.fill);
    level.ComputeNormals();
    for (const std::uint32_t vertex : vertices)
        if (vertex < before.size()) before[vertex] = level.vertexNormals.array[vertex];
    std::copy(before.begin(), before.end(), level.vertexNormals.array);
}

}  // namespace

std::uint64_t DisplaceByMap(LevelGeometry& geometry,
                            const DisplacementOptions& options,
                            JobControl* job) {
    LevelMesh& level = *geometry.Bound();
    SculptLayer* layer = RequireWritableLayer(level);
    const LevelUvs uvs(geometry, geometry.BoundIndex());
    const SurfaceFrames frames(level, uvs, PositionsOf(level), job);

    DisplacementMap map(options);
    std::vector<Vector> moves(level.VertexCount());
    std::vector<std::uint32_t> moved;
    JobPhase phase(job, "Reading the map", level.VertexCount());
    for (std::uint32_t v = 0; v < level.VertexCount(); ++v) {
        phase.Add();
        const Vector move = MoveOf(v, frames, map);
        moves[v] = move * UnfrozenFraction(level.FreezeOfTools(v));
        if (!IsFinite(moves[v]))
            throw HostError(options.path + ": vertex " + std::to_string(v) +
                            " would get a non-finite position");
        if (!(moves[v] == Vector())) moved.push_back(v);
    }
    phase.Finish();
    if (moved.empty()) return 0;

    const std::vector<std::uint32_t> around = WithNeighbours(level, moved);
    LevelChange change(&level);
    // All undo records are created first, so that nothing has moved if an allocation fails.
    for (const std::uint32_t vertex : around)
        change.Add_uncached(vertex,
                            level.LowestFaceOf(vertex),
                            level.vertices.array[vertex],
                            layer != nullptr && !(moves[vertex] == Vector()));
    for (const std::uint32_t vertex : moved) {
        if (layer == nullptr) {
            level.SetPosition(vertex, level.Position(vertex) + moves[vertex]);
        } else {
            const std::uint32_t slot = layer->FindSlot(vertex);
            const Vector offset = layer->Offset(vertex) + moves[vertex];
            layer->set(nullptr, slot, vertex, &offset, true);
        }
    }
    RefreshNormals(level, around);
    change.FinishAs("Displace");
    level.ContentChanged();
    geometry.ReportVertices(
        geometry.BoundIndex(), SurfaceChange::Positions | SurfaceChange::Normals, around);
    return moved.size();
}

}  // namespace trovik
