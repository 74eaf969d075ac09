// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/math/SameBits.h"
#include "framework/mesh/LevelPositions.h"
#include "framework/multires/Steps.h"

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace trovik::test {

/// All data of a geometry that undo must restore, as bytes.
inline std::string StateOfAll(const LevelGeometry& geometry) {
    std::string state;
    const auto put = [&state](const void* bytes, std::size_t size) {
        if (size != 0) state.append(static_cast<const char*>(bytes), size);
    };
    const uint32_t numbers[] = {geometry.LevelCount(), geometry.BoundIndex()};
    put(numbers, sizeof numbers);
    for (uint32_t i = 0; i < geometry.LevelCount(); ++i) {
        LevelMesh& level = *geometry.Level(i);
        const uint32_t counts[] = {level.VertexCount(),
                                   level.faceCount,
                                   level.CoarserVertexCount(),
                                   level.CornersPerFace(),
                                   level.FrozenVertexCount(),
                                   static_cast<uint32_t>(level.Index())};
        put(counts, sizeof counts);
        put(level.vertices.array, level.VertexCount() * sizeof(Vertex));
        put(level.vertexNormals.array, level.VertexCount() * sizeof(PackedNormal));
        put(level.faceVertexIndices.array, level.faceVertexIndices.fill * sizeof(uint32_t));
        put(level.faceFlags, level.faceCount);
        for (uint32_t face = 0; face < level.faceCount; ++face) {
            for (uint32_t side = 0; side < level.CornersPerFace(); ++side) {
                const uint32_t neighbour = level.QuadEdgeNeighbour(face, side);
                put(&neighbour, sizeof neighbour);
            }
        }
        const SeenByNeighbours seen = geometry.Seen(i);
        for (const SeenDifferences* one : {&seen.fromAbove, &seen.fromBelow}) {
            put(&one->kept, sizeof one->kept);
            put(one->vertices.data(), one->vertices.size() * sizeof(uint32_t));
            put(one->positions.data(), one->positions.size() * sizeof(Vector));
        }
        for (const FreezeDifferences* one : {&seen.freezeFromAbove, &seen.freezeFromBelow}) {
            put(&one->kept, sizeof one->kept);
            put(one->vertices.data(), one->vertices.size() * sizeof(uint32_t));
            put(one->amounts.data(), one->amounts.size());
        }
    }
    return state;
}

/// Moves every vertex of the level by up to `size` along each axis.
inline void Roughen(LevelMesh& level, float size, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> step(-size, size);
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const float x = step(random);
        const float y = step(random);
        level.SetPosition(v, level.Position(v) + Vector(x, y, step(random)));
    }
}

/// Moves each of the level's vertices to the position that `place` returns.
template <typename Place>
void Deform(LevelMesh& level, Place place) {
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        level.SetPosition(v, place(level.Position(v)));
}

}  // namespace trovik::test
