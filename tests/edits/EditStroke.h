// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelChange.h"
#include "framework/multires/LevelGeometry.h"

#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace trovik::test {

/// All vertex data that undo must restore, as bytes.
struct VertexState {
    uint8_t bytes[sizeof(Vertex) + sizeof(PackedNormal)];
    bool operator==(const VertexState&) const = default;
};

inline std::vector<VertexState> StateOf(const LevelMesh& mesh) {
    std::vector<VertexState> states(mesh.VertexCount());
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        std::memcpy(states[v].bytes, &mesh.vertices.array[v], sizeof(Vertex));
        std::memcpy(
            states[v].bytes + sizeof(Vertex), &mesh.vertexNormals.array[v], sizeof(PackedNormal));
    }
    return states;
}

inline StoredVertexInfo* FindRecord(const MeshChange& change, uint32_t vertex) {
    const uint32_t link = change.mesh->vertices.array[vertex].changeLink;
    if (link >= *change.recordCount || change.records->array[link].vertexIndex != vertex)
        return nullptr;
    return &change.records->array[link];
}

inline StoredVertexInfo& TouchRecord(MeshChange& change, uint32_t vertex, bool withSlot = true) {
    if (StoredVertexInfo* record = FindRecord(change, vertex)) return *record;
    return change.Add_uncached(vertex, 0, change.mesh->vertices.array[vertex], withSlot);
}

/// Moves a vertex and changes its normal, with a record, as a brush does.
inline void MoveVertex(MeshChange& change, uint32_t vertex, const Vector& step) {
    TouchRecord(change, vertex);
    Vertex& v = change.mesh->vertices.array[vertex];
    v.x += step.x;
    v.y += step.y;
    v.z += step.z;
    PackedNormal& normal = change.mesh->vertexNormals.array[vertex];
    normal.x = static_cast<int16_t>(normal.x / 2 + 3);
    normal.y = static_cast<int16_t>(normal.y - 1);
}

/// Random moves of random vertices.
inline void MoveSome(MeshChange& change, std::mt19937& random, unsigned moves) {
    std::uniform_real_distribution<float> step(-0.3f, 0.3f);
    std::uniform_int_distribution<uint32_t> vertex(0, change.mesh->vertices.fill - 1);
    for (unsigned i = 0; i < moves; ++i) {
        const uint32_t v = vertex(random);
        MoveVertex(change, v, {step(random), step(random), step(random)});
    }
}

inline void RandomStroke(LevelMesh& mesh, std::mt19937& random, unsigned moves) {
    const std::unique_ptr<MeshChange> change(mesh.StartChange());
    MoveSome(*change, random, moves);
    change->Finish(true, false);
}

}  // namespace trovik::test
