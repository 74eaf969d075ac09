// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/SurfaceMoves.h"

#include "framework/errors/HostError.h"
#include "framework/layers/SculptLayer.h"
#include "framework/mesh/VertexNeighbours.h"
#include "framework/multires/LevelGeometry.h"

namespace trovik {

StoredVertexInfo& RecordOf(
    LevelMesh& level, LevelChange& change, uint32_t vertex, bool withLayerSlot, uint32_t& near) {
    Vertex& stored = level.vertices.array[vertex];
    const uint32_t link = stored.changeLink;
    if (link < *change.recordCount && change.Records().array[link].vertexIndex == vertex)
        return change.Records().array[link];
    const uint32_t face = level.LowestFaceOf(vertex, near);
    if (face != openBorder) near = face;
    return change.Add_uncached(vertex, face, stored, withLayerSlot);
}

std::vector<uint32_t> SurfaceMoves::Apply(LevelChange& change) {
    SculptLayer* layer = level.ActiveLayer();
    if (layer != nullptr && (!layer->Writable() || layer->EffectiveStrength() == 0.0f))
        layer = nullptr;
    std::vector<uint32_t> vertices;
    vertices.reserve(moves.size());
    for (const auto& [vertex, position] : moves) vertices.push_back(vertex);
    std::vector<uint32_t> around = WithNeighbours(level, vertices);
    // All records are created first, because creating one can fail.
    uint32_t near = openBorder;
    for (const uint32_t vertex : vertices) RecordOf(level, change, vertex, layer != nullptr, near);
    for (const uint32_t vertex : around) RecordOf(level, change, vertex, false, near);

    for (const auto& [vertex, position] : moves) {
        const uint32_t slot = layer == nullptr ? SculptLayer::noSlot : layer->FindSlot(vertex);
        if (slot != SculptLayer::noSlot) {
            const Vector move = position - level.Position(vertex);
            const float fraction = 1.0f / layer->EffectiveStrength();
            const Vector offset = layer->Offset(vertex) + move * fraction;
            layer->set(nullptr, slot, vertex, &offset, true);
        }
        level.SetPosition(vertex, position);
    }
    level.ComputeNormalsOf(around);
    return around;
}

uint32_t SurfaceMoves::ApplyAsStep(LevelGeometry& geometry, const std::string& label) {
    if (moves.empty()) return 0;
    LevelChange change(&level);
    const std::vector<uint32_t> changed = Apply(change);
    change.FinishAs(label);
    geometry.ReportVertices(
        geometry.BoundIndex(), SurfaceChange::Positions | SurfaceChange::Normals, changed);
    return static_cast<uint32_t>(moves.size());
}

SculptLayer* RequireWritableLayer(LevelMesh& level) {
    SculptLayer* layer = level.ActiveLayer();
    if (layer != nullptr && !layer->Writable())
        throw HostError("the active layer \"" + layer->Name() + "\" is hidden or locked");
    return layer;
}

}  // namespace trovik
