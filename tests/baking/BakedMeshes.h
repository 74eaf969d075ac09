// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelPositions.h"
#include "framework/multires/LevelGeometry.h"
#include "tests/meshes/MeshZoo.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace trovik::test {

/// Gives each face its own UV island, in a cell of a grid of `columns` by `columns`; the islands of
/// odd faces are mirrored. A `margin` in each cell is unused.
inline PolygonMesh WithIslands(PolygonMesh mesh, unsigned columns, float margin) {
    const float cell = 1.0f / static_cast<float>(columns);
    SurfaceAttributes& more = mesh.attributes;
    for (std::uint32_t face = 0; face < mesh.faceSizes.size(); ++face) {
        const float u = static_cast<float>(face % columns) * cell;
        const std::uint32_t row = face / columns;
        const float v = static_cast<float>(row) * cell;
        const float low = margin * cell;
        const float high = cell - low;
        std::vector<std::array<float, 2>> corners = {
            {low, low}, {high, low}, {high, high}, {low, high}};
        corners.resize(mesh.faceSizes[face]);
        for (std::array<float, 2>& corner : corners) {
            if (face % 2 == 1) corner[0] = cell - corner[0];
            more.cornerUvs.push_back(static_cast<std::uint32_t>(more.uvs.size()));
            more.uvs.push_back({u + corner[0], v + corner[1]});
        }
    }
    return mesh;
}

/// Returns an arched surface of n x n quads with one UV island that fills the texture except for a
/// margin.
inline PolygonMesh ArchedSheet(unsigned n, float margin) {
    PolygonMesh mesh = GridMesh(n, n);
    const auto side = static_cast<float>(n);
    for (std::array<float, 3>& p : mesh.positions) {
        mesh.attributes.uvs.push_back({margin + (1.0f - 2.0f * margin) * p[0] / side,
                                       margin + (1.0f - 2.0f * margin) * p[1] / side});
        p[2] = 0.2f * p[0] * (side - p[0]) + 0.05f * p[1] * p[1];
    }
    mesh.attributes.cornerUvs = mesh.faceVertices;
    return mesh;
}

inline std::unique_ptr<LevelGeometry> Refined(const PolygonMesh& mesh, unsigned levels) {
    auto geometry = std::make_unique<LevelGeometry>(mesh);
    for (unsigned i = 0; i < levels; ++i) geometry->Subdivide();
    return geometry;
}

/// Returns a pseudo-random number from -1 to 1 that depends on the vertex.
inline float Noise(std::uint32_t vertex, std::uint32_t which) {
    std::uint32_t bits = vertex * 2654435761u + which * 40503u + 12345u;
    bits = (bits ^ bits >> 15) * 2246822519u;
    bits ^= bits >> 13;
    return static_cast<float>(bits & 0xffffu) / 32767.5f - 1.0f;
}

/// Returns waves of about the given size with added noise.
inline Vector Wave(const Vector& p, std::uint32_t vertex, float size) {
    const Vector wave(std::sin(3.0f * p.y + p.z), std::cos(2.0f * p.x), std::sin(2.0f * p.x * p.y));
    const Vector noise(Noise(vertex, 0), Noise(vertex, 1), Noise(vertex, 2));
    return (wave + noise * 0.2f) * size;
}

/// Moves each vertex of the highest level and marks all detail as carried down, so that the base
/// does not change.
template <typename Move>
void MoveHighest(LevelGeometry& geometry, Move move) {
    LevelMesh& level = *geometry.Bound();
    for (std::uint32_t v = 0; v < level.VertexCount(); ++v)
        level.SetPosition(v, level.Position(v) + move(v, level.Position(v)));
    level.ComputeNormals();
    geometry.Restore(geometry.BoundIndex(), {});
}

/// Returns the largest difference between the displacements at the two ends of an edge.
inline float LargestStep(const LevelMesh& level,
                         const std::vector<Vector>& a,
                         const std::vector<Vector>& b) {
    float largest = 0.0f;
    for (std::uint32_t face = 0; face < level.faceCount; ++face) {
        const std::uint32_t* v = level.faceVertexIndices.array + face * 4;
        for (std::uint32_t k = 0; k < 4; ++k) {
            const std::uint32_t from = v[k];
            const std::uint32_t to = v[(k + 1) & 3u];
            largest = std::max(largest, ((a[from] - b[from]) - (a[to] - b[to])).Length());
        }
    }
    return largest;
}

inline float LargestDistance(const std::vector<Vector>& a, const std::vector<Vector>& b) {
    float largest = 0.0f;
    for (std::size_t v = 0; v < a.size(); ++v) largest = std::max(largest, (a[v] - b[v]).Length());
    return largest;
}

}  // namespace trovik::test
