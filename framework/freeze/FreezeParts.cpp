// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeParts.h"

#include "framework/mesh/AttributeRefinement.h"

#include <algorithm>
#include <numeric>

namespace trovik {

namespace {

/// Union-find over vertices: all vertices of a face are in the same set. Paths are halved as in
/// Tarjan, van Leeuwen: "Worst-Case Analysis of Set Union Algorithms" (1984).
class VertexSets {
public:
    explicit VertexSets(uint32_t count) : parent(count) {
        std::iota(parent.begin(), parent.end(), 0u);
    }
    uint32_t Of(uint32_t vertex) {
        while (parent[vertex] != vertex) {
            parent[vertex] = parent[parent[vertex]];
            vertex = parent[vertex];
        }
        return vertex;
    }
    void Join(uint32_t a, uint32_t b) {
        a = Of(a);
        b = Of(b);
        // The lower vertex number becomes the root, which keeps paths short if vertices are
        // numbered in face order.
        if (a < b)
            parent[b] = a;
        else
            parent[a] = b;
    }

private:
    std::vector<uint32_t> parent;
};

template <typename WeightAt>
std::vector<float> WeightsByPosition(const LevelGeometry& geometry, WeightAt weightAt) {
    const LevelMesh& level = *geometry.Bound();
    const Matrix& toWorld = geometry.Transform().ToWorld();
    std::vector<float> weights(level.VertexCount());
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        weights[v] = weightAt(toWorld.AffineTransform(level.Position(v), 1.0f));
    return weights;
}

}  // namespace

std::vector<float> WeightsOfComponent(const LevelMesh& level, uint32_t vertex) {
    VertexSets sets(level.VertexCount());
    const uint32_t corners = level.CornersPerFace();
    const uint32_t* face = level.faceVertexIndices.array;
    for (uint32_t number = 0; number < level.faceCount; ++number, face += corners)
        for (uint32_t k = 1; k < corners; ++k) sets.Join(face[0], face[k]);
    const uint32_t wanted = sets.Of(vertex);
    std::vector<float> weights(level.VertexCount());
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        weights[v] = sets.Of(v) == wanted ? 1.0f : 0.0f;
    return weights;
}

std::vector<float> WeightsOfGroup(const LevelGeometry& geometry,
                                  uint32_t levelIndex,
                                  uint32_t group) {
    const LevelMesh& level = *geometry.Level(levelIndex);
    const uint32_t baseCorners = geometry.Level(0)->CornersPerFace();
    const std::vector<uint32_t>& groups = geometry.Attributes().faceGroups;
    std::vector<float> weights(level.VertexCount(), 0.0f);
    const uint32_t corners = level.CornersPerFace();
    const uint32_t* vertices = level.faceVertexIndices.array;
    for (uint32_t face = 0; face < level.faceCount; ++face, vertices += corners) {
        const uint32_t base = BaseFace(baseCorners, levelIndex, face);
        const uint32_t ofFace = base < groups.size() ? groups[base] : SurfaceAttributes::none;
        if (ofFace != group) continue;
        for (uint32_t k = 0; k < corners; ++k) weights[vertices[k]] = 1.0f;
    }
    return weights;
}

std::vector<float> WeightsInSphere(const LevelGeometry& geometry,
                                   const Vector& center,
                                   float radius,
                                   float soft) {
    return WeightsByPosition(geometry, [&](const Vector& position) {
        const float rim = (position - center).Length() / radius;
        if (!(rim <= 1.0f)) return 0.0f;
        return soft > 0.0f ? std::min(1.0f, (1.0f - rim) / soft) : 1.0f;
    });
}

std::vector<float> WeightsInBox(const LevelGeometry& geometry,
                                const Vector& low,
                                const Vector& high) {
    return WeightsByPosition(geometry, [&](const Vector& p) {
        const bool inside = p.x >= low.x && p.y >= low.y && p.z >= low.z && p.x <= high.x &&
                            p.y <= high.y && p.z <= high.z;
        return inside ? 1.0f : 0.0f;
    });
}

}  // namespace trovik
