// SPDX-License-Identifier: Apache-2.0
#include "framework/levels/BaseLevel.h"

#include "framework/levels/AttributeRefinement.h"
#include "host/Mesh.h"

#include <algorithm>
#include <map>
#include <utility>

namespace trovik {

namespace {

struct HalfEdge {
    uint64_t key;
    uint32_t place;
    bool rising;
};

uint64_t EdgeKey(uint32_t a, uint32_t b) {
    const auto [low, high] = std::minmax(a, b);
    return static_cast<uint64_t>(low) << 32 | high;
}

Vector At(const PolygonMesh& mesh, uint32_t vertex) {
    const auto& p = mesh.positions[vertex];
    return {p[0], p[1], p[2]};
}

std::array<float, 3> Plain(const Vector& v) { return {v.x, v.y, v.z}; }

/// What surrounds a vertex of a polygon mesh, added up in face order.
struct Surroundings {
    Vector facePoints;
    Vector nextCorners;
    Vector borderEnds;
    uint32_t faces = 0;
    bool onBorder = false;
};

struct EdgePoint {
    uint32_t vertex;
    Vector sum;
    uint32_t faces;
    uint32_t firstEnd;
    uint32_t secondEnd;
};

}  // namespace

PolygonMesh ToUniformFaces(const PolygonMesh& polygons) {
    const auto all = [&polygons](uint32_t corners) {
        return std::all_of(polygons.faceSizes.begin(),
                           polygons.faceSizes.end(),
                           [corners](uint32_t size) { return size == corners; });
    };
    if (all(3) || all(4)) return polygons;

    PolygonMesh quads;
    quads.name = polygons.name;
    const auto oldCount = static_cast<uint32_t>(polygons.positions.size());
    quads.positions = polygons.positions;
    std::vector<Surroundings> around(oldCount);
    std::map<uint64_t, EdgePoint> edges;
    std::vector<Vector> facePoints(polygons.faceSizes.size());

    // Numbers first: a face's new edge points, sides in order, then its face point.
    std::size_t first = 0;
    uint32_t next = oldCount;
    for (std::size_t face = 0; face < polygons.faceSizes.size(); ++face) {
        const uint32_t n = polygons.faceSizes[face];
        const uint32_t* v = polygons.faceVertices.data() + first;
        Vector centre;
        for (uint32_t k = 0; k < n; ++k) centre += At(polygons, v[k]);
        centre *= 1.0f / static_cast<float>(n);
        facePoints[face] = centre;
        std::vector<uint32_t> edgeVertices(n);
        for (uint32_t k = 0; k < n; ++k) {
            const uint32_t a = v[k];
            const uint32_t b = v[(k + 1) % n];
            auto [entry, made] = edges.try_emplace(EdgeKey(a, b), EdgePoint{next, {}, 0, a, b});
            if (made) ++next;
            entry->second.sum += centre;
            ++entry->second.faces;
            edgeVertices[k] = entry->second.vertex;
            around[a].facePoints += centre;
            around[a].nextCorners += At(polygons, b);
            ++around[a].faces;
        }
        const uint32_t facePoint = next++;
        for (uint32_t k = 0; k < n; ++k) {
            quads.faceSizes.push_back(4);
            for (const uint32_t corner :
                 {v[k], edgeVertices[k], facePoint, edgeVertices[(k + n - 1) % n]})
                quads.faceVertices.push_back(corner);
        }
        first += n;
    }

    quads.positions.resize(next);
    for (const auto& [key, edge] : edges) {
        const Vector ends = At(polygons, edge.firstEnd) + At(polygons, edge.secondEnd);
        quads.positions[edge.vertex] =
            Plain(edge.faces == 2 ? (ends + edge.sum) * 0.25f : ends * 0.5f);
        if (edge.faces == 2) continue;
        for (const auto& [end, other] :
             {std::pair{edge.firstEnd, edge.secondEnd}, {edge.secondEnd, edge.firstEnd}}) {
            around[end].onBorder = true;
            around[end].borderEnds += At(polygons, other);
        }
    }
    std::size_t quadAt = 0;
    for (std::size_t face = 0; face < facePoints.size(); ++face) {
        quads.positions[quads.faceVertices[quadAt * 4 + 2]] = Plain(facePoints[face]);
        quadAt += polygons.faceSizes[face];
    }
    for (uint32_t v = 0; v < oldCount; ++v) {
        const Surroundings& s = around[v];
        const Vector p = At(polygons, v);
        if (s.faces == 0 || (s.onBorder && s.faces == 1)) continue;
        if (s.onBorder) {
            quads.positions[v] = Plain(p * 0.75f + s.borderEnds * 0.125f);
        } else {
            const auto n = static_cast<float>(s.faces);
            quads.positions[v] =
                Plain(p * ((n - 2.0f) / n) + (s.facePoints + s.nextCorners) * (1.0f / (n * n)));
        }
    }
    quads.attributes = SplitIntoQuads(polygons, quads);
    return quads;
}

void FindNeighbours(const Store<uint32_t>& faceVertexIndices,
                    uint32_t faceCount,
                    uint32_t corners,
                    Store<uint32_t>& neighbours) {
    std::vector<HalfEdge> edges;
    edges.reserve(static_cast<std::size_t>(faceCount) * corners);
    for (uint32_t face = 0; face < faceCount; ++face) {
        const uint32_t* v = faceVertexIndices.array + face * corners;
        for (uint32_t k = 0; k < corners; ++k) {
            const uint32_t a = v[k];
            const uint32_t b = v[(k + 1) % corners];
            edges.push_back({EdgeKey(a, b), face * 4 + k, a < b});
        }
    }
    std::sort(edges.begin(), edges.end(), [](const HalfEdge& a, const HalfEdge& b) {
        return a.key != b.key ? a.key < b.key : a.place < b.place;
    });
    neighbours.SetFill(faceCount * corners, false);
    std::fill_n(neighbours.array, neighbours.fill, openBorder);
    const auto slot = [corners](uint32_t place) { return (place >> 2) * corners + (place & 3u); };
    for (std::size_t i = 0; i < edges.size();) {
        std::size_t end = i;
        while (end < edges.size() && edges[end].key == edges[i].key) ++end;
        if (end - i == 2 && edges[i].rising != edges[i + 1].rising) {
            neighbours.array[slot(edges[i].place)] = edges[i + 1].place;
            neighbours.array[slot(edges[i + 1].place)] = edges[i].place;
        }
        i = end;
    }
}

}  // namespace trovik
