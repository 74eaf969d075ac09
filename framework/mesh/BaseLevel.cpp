// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/BaseLevel.h"

#include "framework/jobs/JobPhase.h"
#include "framework/memory/FilledStore.h"
#include "framework/mesh/AttributeRefinement.h"
#include "framework/mesh/CatmullClarkRules.h"
#include "host/Mesh.h"

#include <algorithm>
#include <map>
#include <utility>

namespace trovik {

namespace {

/// A side of a face, as stored in the table of its edge's lower-numbered endpoint.
struct EdgeSide {
    uint32_t higherEnd;
    /// face * 4 + side.
    uint32_t packedSide;
    /// Whether the side runs from the lower-numbered endpoint to the higher one.
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

/// The points that determine the refined position of one vertex of a polygon mesh.
struct Surroundings {
    /// The face point and the next corner of each face at the vertex.
    std::vector<Vector> around;
    /// The opposite endpoints of the border edges at the vertex.
    std::vector<Vector> borderEnds;
};

struct EdgePoint {
    uint32_t vertex;
    uint32_t firstEnd;
    uint32_t secondEnd;
    uint32_t faces = 0;
    Vector facePoints[2] = {};
};

}  // namespace

bool HasUniformFaces(const PolygonMesh& polygons) {
    const auto all = [&polygons](uint32_t corners) {
        return std::all_of(polygons.faceSizes.begin(),
                           polygons.faceSizes.end(),
                           [corners](uint32_t size) { return size == corners; });
    };
    return all(3) || all(4);
}

PolygonMesh ToUniformFaces(const PolygonMesh& polygons, JobControl* job) {
    return HasUniformFaces(polygons) ? polygons : RefineToQuads(polygons, job);
}

PolygonMesh RefineToQuads(const PolygonMesh& polygons, JobControl* job) {
    JobPhase phase(job, "Splitting faces", polygons.faceSizes.size());
    PolygonMesh quads;
    quads.name = polygons.name;
    const auto oldCount = static_cast<uint32_t>(polygons.positions.size());
    quads.positions = polygons.positions;
    std::vector<Surroundings> around(oldCount);
    std::map<uint64_t, EdgePoint> edges;
    std::vector<Vector> facePoints(polygons.faceSizes.size());
    std::vector<Vector> corners;

    // Assigns the numbers first: a face's new edge points in the order of its sides, then its face
    // point.
    std::size_t first = 0;
    uint32_t next = oldCount;
    for (std::size_t face = 0; face < polygons.faceSizes.size(); ++face) {
        const uint32_t n = polygons.faceSizes[face];
        const uint32_t* v = polygons.faceVertices.data() + first;
        corners.clear();
        for (uint32_t k = 0; k < n; ++k) corners.push_back(At(polygons, v[k]));
        const Vector centre = FacePointRule(ExactSum(corners.data(), n), n);
        facePoints[face] = centre;
        std::vector<uint32_t> edgeVertices(n);
        for (uint32_t k = 0; k < n; ++k) {
            const uint32_t a = v[k];
            const uint32_t b = v[(k + 1) % n];
            auto [entry, made] = edges.try_emplace(EdgeKey(a, b), EdgePoint{next, a, b});
            if (made) ++next;
            EdgePoint& edge = entry->second;
            if (edge.faces < 2) edge.facePoints[edge.faces] = centre;
            ++edge.faces;
            edgeVertices[k] = edge.vertex;
            around[a].around.push_back(centre);
            around[a].around.push_back(At(polygons, b));
        }
        const uint32_t facePoint = next++;
        for (uint32_t k = 0; k < n; ++k) {
            quads.faceSizes.push_back(4);
            for (const uint32_t corner :
                 {v[k], edgeVertices[k], facePoint, edgeVertices[(k + n - 1) % n]})
                quads.faceVertices.push_back(corner);
        }
        first += n;
        phase.Add();
    }
    phase.Finish();

    quads.positions.resize(next);
    JobPhase edgePhase(job, "Placing edge points", edges.size());
    for (const auto& [key, edge] : edges) {
        edgePhase.Add();
        const Vector a = At(polygons, edge.firstEnd);
        const Vector b = At(polygons, edge.secondEnd);
        quads.positions[edge.vertex] =
            Plain(edge.faces == 2 ? EdgePointRule(a, b, edge.facePoints[0], edge.facePoints[1])
                                  : BorderEdgePointRule(a, b));
        if (edge.faces == 2) continue;
        around[edge.firstEnd].borderEnds.push_back(b);
        around[edge.secondEnd].borderEnds.push_back(a);
    }
    edgePhase.Finish();
    std::size_t quadAt = 0;
    for (std::size_t face = 0; face < facePoints.size(); ++face) {
        quads.positions[quads.faceVertices[quadAt * 4 + 2]] = Plain(facePoints[face]);
        quadAt += polygons.faceSizes[face];
    }
    JobPhase vertexPhase(job, "Placing vertices", oldCount);
    for (uint32_t v = 0; v < oldCount; ++v) {
        vertexPhase.Add();
        const Surroundings& s = around[v];
        if (s.around.empty()) continue;
        const Vector p = At(polygons, v);
        const auto faces = static_cast<uint32_t>(s.around.size() / 2);
        quads.positions[v] =
            Plain(s.borderEnds.empty()
                      ? VertexPointRule(p, ExactSum(s.around.data(), s.around.size()), faces)
                      : BorderVertexPointRule(
                            p, ExactSum(s.borderEnds.data(), s.borderEnds.size()), faces));
    }
    vertexPhase.Finish();
    quads.attributes = SplitIntoQuads(polygons, quads);
    return quads;
}

std::string RefinementNote(const PolygonMesh& polygons) {
    const auto triangles = static_cast<std::size_t>(
        std::count(polygons.faceSizes.begin(), polygons.faceSizes.end(), 3u));
    if (triangles * 2 < polygons.faceSizes.size()) return {};
    return "Catmull-Clark refinement gives a triangle mesh a scaly surface (a herringbone "
           "pattern); a quad mesh stays smooth";
}

void FindNeighbours(const Store<uint32_t>& faceVertexIndices,
                    uint32_t faceCount,
                    uint32_t corners,
                    uint32_t vertexCount,
                    Store<uint32_t>& neighbours,
                    JobControl* job) {
    JobPhase phase(job, "Finding neighbours", uint64_t{faceCount} * 2 + vertexCount);
    const auto forEachSide = [&](uint32_t face, const auto& visit) {
        const uint32_t* v = faceVertexIndices.array + face * corners;
        for (uint32_t k = 0; k < corners; ++k) visit(v[k], v[(k + 1) % corners], face * 4 + k);
        phase.Add();
    };
    // Sides, grouped by the lower-numbered endpoint of their edge.
    std::vector<uint32_t> firstOfVertex(std::size_t{vertexCount} + 1, 0);
    for (uint32_t face = 0; face < faceCount; ++face)
        forEachSide(face, [&](uint32_t a, uint32_t b, uint32_t) {
            ++firstOfVertex[std::size_t{std::min(a, b)} + 1];
        });
    for (std::size_t v = 0; v < vertexCount; ++v) firstOfVertex[v + 1] += firstOfVertex[v];
    std::vector<EdgeSide> sides(static_cast<std::size_t>(faceCount) * corners);
    std::vector<uint32_t> next(firstOfVertex.begin(), firstOfVertex.end() - 1);
    for (uint32_t face = 0; face < faceCount; ++face)
        forEachSide(face, [&](uint32_t a, uint32_t b, uint32_t packedSide) {
            sides[next[std::min(a, b)]++] = {std::max(a, b), packedSide, a < b};
        });
    std::vector<uint32_t> found(sides.size(), openBorder);
    const auto slot = [corners](uint32_t packedSide) {
        return (packedSide >> 2) * corners + (packedSide & 3u);
    };
    for (std::size_t v = 0; v < vertexCount; ++v) {
        phase.Add();
        EdgeSide* const last = sides.data() + firstOfVertex[v + 1];
        EdgeSide* first = sides.data() + firstOfVertex[v];
        std::sort(first, last, [](const EdgeSide& a, const EdgeSide& b) {
            return a.higherEnd != b.higherEnd ? a.higherEnd < b.higherEnd
                                              : a.packedSide < b.packedSide;
        });
        while (first != last) {
            EdgeSide* end = first + 1;
            while (end != last && end->higherEnd == first->higherEnd) ++end;
            if (end - first == 2 && first[0].rising != first[1].rising) {
                found[slot(first[0].packedSide)] = first[1].packedSide;
                found[slot(first[1].packedSide)] = first[0].packedSide;
            }
            first = end;
        }
    }
    phase.Finish();
    FillStore(neighbours, faceCount * corners, openBorder);
    std::copy(found.begin(), found.end(), neighbours.array);
}

}  // namespace trovik
