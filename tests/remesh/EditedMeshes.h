// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"
#include "host/Vector.h"

#include <algorithm>

/// \file Changes of meshes, for tests of operations that replace the mesh.
namespace trovik::test {

/// Adds the faces of another mesh as a separate component, moved by `offset` and scaled.
inline void Append(PolygonMesh& mesh, const PolygonMesh& other, float scale, const Vector& offset) {
    const auto first = static_cast<uint32_t>(mesh.positions.size());
    for (const auto& p : other.positions)
        mesh.positions.push_back(
            {p[0] * scale + offset.x, p[1] * scale + offset.y, p[2] * scale + offset.z});
    for (const uint32_t v : other.faceVertices) mesh.faceVertices.push_back(first + v);
    mesh.faceSizes.insert(mesh.faceSizes.end(), other.faceSizes.begin(), other.faceSizes.end());
}

inline void Flip(PolygonMesh& mesh, std::size_t face) {
    const std::size_t size = mesh.faceSizes[0];
    std::reverse(mesh.faceVertices.begin() + static_cast<std::ptrdiff_t>(face * size),
                 mesh.faceVertices.begin() + static_cast<std::ptrdiff_t>((face + 1) * size));
}

/// Removes the faces for which `isRemoved(centre)` is true.
template <typename IsRemoved>
void Cut(PolygonMesh& mesh, IsRemoved isRemoved) {
    const std::size_t size = mesh.faceSizes[0];
    std::vector<uint32_t> kept;
    for (std::size_t i = 0; i < mesh.faceVertices.size(); i += size) {
        Vector centre;
        for (std::size_t k = 0; k < size; ++k) {
            const auto& p = mesh.positions[mesh.faceVertices[i + k]];
            centre += Vector(p[0], p[1], p[2]) * (1.0f / static_cast<float>(size));
        }
        if (!isRemoved(centre))
            kept.insert(kept.end(), &mesh.faceVertices[i], &mesh.faceVertices[i] + size);
    }
    mesh.faceVertices = kept;
    mesh.faceSizes.resize(kept.size() / size);
}

/// Gives every face its own vertices.
inline void Explode(PolygonMesh& mesh) {
    std::vector<std::array<float, 3>> positions;
    for (uint32_t& v : mesh.faceVertices) {
        positions.push_back(mesh.positions[v]);
        v = static_cast<uint32_t>(positions.size() - 1);
    }
    mesh.positions = positions;
}

}  // namespace trovik::test
