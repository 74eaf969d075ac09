// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/display/PatchPacker.h"
#include "framework/multires/LevelGeometry.h"
#include "tests/meshes/MeshZoo.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <vector>

namespace trovik::test {

/// All patches of a level, packed into one array.
inline std::vector<DisplayVertex> PackLevel(const LevelMesh& level, const PatchLayout& layout) {
    std::vector<DisplayVertex> vertices(layout.TotalVertexCount());
    PatchPacker(level, layout).PackAll(vertices, 1);
    return vertices;
}

inline bool SameVertices(const std::vector<DisplayVertex>& a, const std::vector<DisplayVertex>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0;
}

/// For each vertex of a patch, the vertex of the level that it copies.
inline std::vector<uint32_t> MeshVerticesOf(const LevelMesh& level,
                                            const PatchLayout& layout,
                                            uint32_t patch) {
    if (!layout.IsGrid()) {
        const auto vertices = layout.Buckets()->Vertices(patch);
        return {vertices.begin(), vertices.end()};
    }
    const std::size_t slice = std::size_t{patch} * (1u << (2 * layout.Depth())) * 4;
    std::vector<uint32_t> vertices(layout.VertexCount(patch));
    for (std::size_t i = 0; i < vertices.size(); ++i)
        vertices[i] = level.faceVertexIndices.array[slice + layout.GridSlots()[i]];
    return vertices;
}

/// Three vertices of the level, the smallest first, in the orientation of the triangle.
using Triangle = std::array<uint32_t, 3>;
inline Triangle Canonical(Triangle corners) {
    std::rotate(corners.begin(), std::min_element(corners.begin(), corners.end()), corners.end());
    return corners;
}

/// Returns the triangles of all faces, each with its face. The triangles of a quad are (0, 1, 2)
/// and (0, 2, 3).
inline std::multimap<Triangle, uint32_t> TrianglesOf(const LevelMesh& level) {
    std::multimap<Triangle, uint32_t> triangles;
    const uint32_t corners = level.CornersPerFace();
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        const uint32_t* v = level.faceVertexIndices.array + std::size_t{face} * corners;
        for (uint32_t k = 2; k < corners; ++k)
            triangles.emplace(Canonical({v[0], v[k - 1], v[k]}), face);
    }
    return triangles;
}

/// Calls visit(level, name) for the test meshes and larger ones, each at its levels 0 to `levels`.
template <class Visit>
void ForEachLevel(unsigned levels, Visit visit) {
    std::vector<ZooMesh> meshes = AllMeshes();
    meshes.push_back({"sphere", SphereQuads(2)});
    for (ZooMesh& zoo : meshes) {
        LevelGeometry geometry(zoo.mesh);
        for (unsigned i = 0; i <= levels; ++i) {
            if (i > 0) geometry.Subdivide();
            visit(*geometry.Bound(), zoo.name + ", level " + std::to_string(i));
        }
    }
}

}  // namespace trovik::test
