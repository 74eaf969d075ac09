// SPDX-License-Identifier: Apache-2.0
#include "framework/baking/MapDisplacement.h"

#include "framework/baking/DisplacementMap.h"
#include "framework/baking/SurfaceFrames.h"
#include "framework/edits/LevelChange.h"
#include "framework/errors/HostError.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace trovik {

namespace {

/// Which way the vertex goes by the map, as if nothing were frozen.
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

/// The vertices of all faces that hold a moved one, each with one of its faces: their normals turn.
std::vector<std::pair<std::uint32_t, std::uint32_t>> AroundMoved(const LevelMesh& level,
                                                                 const std::vector<Vector>& moves) {
    std::vector<bool> taken(level.VertexCount(), false);
    std::vector<std::pair<std::uint32_t, std::uint32_t>> around;
    const std::uint32_t corners = level.CornersPerFace();
    for (std::uint32_t face = 0; face < level.faceCount; ++face) {
        const std::uint32_t* v = level.faceVertexIndices.array + std::size_t{face} * corners;
        const bool turns = std::any_of(
            v, v + corners, [&moves](std::uint32_t one) { return !(moves[one] == Vector()); });
        for (std::uint32_t k = 0; turns && k < corners; ++k) {
            if (taken[v[k]]) continue;
            taken[v[k]] = true;
            around.emplace_back(v[k], face);
        }
    }
    return around;
}

/// Normals of these vertices by the level's present shape; the others keep their bits.
void RefreshNormals(LevelMesh& level,
                    const std::vector<std::pair<std::uint32_t, std::uint32_t>>& around) {
    std::vector<std::uint32_t> vertices;
    vertices.reserve(around.size());
    for (const auto& [vertex, face] : around) vertices.push_back(vertex);
    // Going around each vertex costs more than going once over all faces.
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

std::uint64_t DisplaceByMap(LevelGeometry& geometry, const DisplacementOptions& options) {
    LevelMesh& level = *geometry.Bound();
    SculptLayer* layer = level.ActiveLayer();
    if (layer != nullptr && !layer->Writable())
        throw HostError("the active layer \"" + layer->Name() + "\" is hidden or locked");
    const LevelUvs uvs(geometry, geometry.BoundIndex());
    std::vector<Vector> positions(level.VertexCount());
    for (std::uint32_t v = 0; v < level.VertexCount(); ++v) positions[v] = level.Position(v);
    const SurfaceFrames frames(level, uvs, positions);
    std::vector<Vector>().swap(positions);

    DisplacementMap map(options);
    std::vector<Vector> moves(level.VertexCount());
    std::uint64_t moved = 0;
    for (std::uint32_t v = 0; v < level.VertexCount(); ++v) {
        const Vector move = MoveOf(v, frames, map);
        const std::uint8_t frozen = level.Freeze(v);
        moves[v] = frozen == 0 ? move : move * (1.0f - frozen / 127.0f);
        if (!std::isfinite(moves[v].x) || !std::isfinite(moves[v].y) || !std::isfinite(moves[v].z))
            throw HostError(options.path + ": vertex " + std::to_string(v) +
                            " would be moved beyond all numbers");
        if (!(moves[v] == Vector())) ++moved;
    }
    if (moved == 0) return 0;

    const auto around = AroundMoved(level, moves);
    const std::unique_ptr<MeshChange> change(level.StartChange());
    // All records first: where memory is refused, nothing has moved.
    for (const auto& [vertex, face] : around)
        change->Add_uncached(vertex,
                             face,
                             level.vertices.array[vertex],
                             layer != nullptr && !(moves[vertex] == Vector()));
    for (std::uint32_t i = 0; i < change->records->fill; ++i) {
        const StoredVertexInfo& record = change->records->array[i];
        const std::uint32_t vertex = record.vertexIndex;
        if (moves[vertex] == Vector()) continue;
        if (layer == nullptr) {
            level.SetPosition(vertex, level.Position(vertex) + moves[vertex]);
        } else {
            Vector offset;
            layer->get(&offset, record.layerSlot);
            offset += moves[vertex];
            layer->set(nullptr, record.layerSlot, vertex, &offset, true);
        }
    }
    RefreshNormals(level, around);
    UndoHistory& history = geometry.History();
    const std::string label = history.NextLabel();
    history.SetNextLabel("Displace");
    change->Finish(true, false);
    history.SetNextLabel(label);
    level.ContentChanged();
    return moved;
}

}  // namespace trovik
