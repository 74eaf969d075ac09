// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/mesh/PolygonMesh.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace trovik {

namespace {

/// Marks a missing corner or vertex.
constexpr std::uint32_t None = 0xFFFFFFFFu;

/// Corners and the half-edges that start at them. Both are indexed by the corner's index in
/// faceVertices.
class CornerRing {
public:
    explicit CornerRing(const PolygonMesh& mesh) : vertices(mesh.faceVertices) {
        nextCorner.resize(vertices.size());
        previousCorner.resize(vertices.size());
        std::uint32_t first = 0;
        for (const std::uint32_t size : mesh.faceSizes) {
            for (std::uint32_t i = 0; i < size; ++i) {
                nextCorner[first + i] = first + (i + 1 == size ? 0 : i + 1);
                previousCorner[first + i] = first + (i == 0 ? size - 1 : i - 1);
            }
            first += size;
        }
        assert(first == vertices.size());
    }

    std::uint32_t Count() const { return static_cast<std::uint32_t>(nextCorner.size()); }
    std::uint32_t Vertex(std::uint32_t corner) const { return vertices[corner]; }
    std::uint32_t Next(std::uint32_t corner) const { return nextCorner[corner]; }
    std::uint32_t Previous(std::uint32_t corner) const { return previousCorner[corner]; }
    /// Returns the end vertex of the half-edge that starts at a corner.
    std::uint32_t Head(std::uint32_t corner) const { return vertices[nextCorner[corner]]; }

private:
    const std::vector<std::uint32_t>& vertices;
    std::vector<std::uint32_t> nextCorner;
    std::vector<std::uint32_t> previousCorner;
};

/// Half-edges grouped by the lower-numbered endpoint of their undirected edge; each group is sorted
/// by the pair (higher endpoint, half-edge).
struct EdgeGroups {
    std::vector<std::size_t> firstOfVertex;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> halfEdges;
};

EdgeGroups GroupByEdge(const CornerRing& ring, std::size_t vertexCount, JobControl* job) {
    JobPhase phase(job, "Grouping edges", std::uint64_t{ring.Count()} * 2 + vertexCount);
    EdgeGroups groups;
    groups.firstOfVertex.assign(vertexCount + 1, 0);
    const auto lowerEnd = [&ring](std::uint32_t halfEdge) {
        return std::min(ring.Vertex(halfEdge), ring.Head(halfEdge));
    };
    for (std::uint32_t halfEdge = 0; halfEdge < ring.Count(); ++halfEdge) {
        ++groups.firstOfVertex[lowerEnd(halfEdge) + 1];
        phase.Add();
    }
    for (std::size_t vertex = 0; vertex < vertexCount; ++vertex) {
        groups.firstOfVertex[vertex + 1] += groups.firstOfVertex[vertex];
    }
    groups.halfEdges.resize(ring.Count());
    std::vector<std::size_t> free(groups.firstOfVertex.begin(), groups.firstOfVertex.end() - 1);
    for (std::uint32_t halfEdge = 0; halfEdge < ring.Count(); ++halfEdge) {
        const std::uint32_t higherEnd = std::max(ring.Vertex(halfEdge), ring.Head(halfEdge));
        groups.halfEdges[free[lowerEnd(halfEdge)]++] = {higherEnd, halfEdge};
        phase.Add();
    }
    for (std::size_t vertex = 0; vertex < vertexCount; ++vertex) {
        const auto begin = groups.halfEdges.begin();
        std::sort(begin + static_cast<std::ptrdiff_t>(groups.firstOfVertex[vertex]),
                  begin + static_cast<std::ptrdiff_t>(groups.firstOfVertex[vertex + 1]));
        phase.Add();
    }
    phase.Finish();
    return groups;
}

/// Calls `visit(first, last)` for each undirected edge, with a range of pairs (higher endpoint,
/// half-edge).
template <class Visit>
void ForEachEdge(const EdgeGroups& groups, const Visit& visit) {
    for (std::size_t vertex = 0; vertex + 1 < groups.firstOfVertex.size(); ++vertex) {
        std::size_t first = groups.firstOfVertex[vertex];
        while (first < groups.firstOfVertex[vertex + 1]) {
            std::size_t last = first + 1;
            while (last < groups.firstOfVertex[vertex + 1] &&
                   groups.halfEdges[last].first == groups.halfEdges[first].first) {
                ++last;
            }
            visit(first, last);
            first = last;
        }
    }
}

/// Returns, for each half-edge, the half-edge of the neighbouring face, or None at borders and at
/// edges that will be split.
std::vector<std::uint32_t> FindTwins(const CornerRing& ring,
                                     const EdgeGroups& groups,
                                     ManifoldReport& report,
                                     JobControl* job) {
    JobPhase phase(job, "Pairing edges", groups.halfEdges.size());
    std::vector<std::uint32_t> twins(ring.Count(), None);
    ForEachEdge(groups, [&](std::size_t first, std::size_t last) {
        phase.Add(last - first);
        if (last - first > 2) {
            ++report.nonManifoldEdges;
        } else if (last - first == 2) {
            const std::uint32_t a = groups.halfEdges[first].second;
            const std::uint32_t b = groups.halfEdges[first + 1].second;
            if (ring.Vertex(a) == ring.Vertex(b)) {
                ++report.misorientedEdges;
            } else {
                twins[a] = b;
                twins[b] = a;
            }
        }
    });
    phase.Finish();
    return twins;
}

/// Consecutive corners around a vertex, each adjacent to the next across an edge that is not split.
struct Fan {
    std::uint32_t vertex;
    std::uint32_t corner;
};

/// Calls `visit(corner)` for all corners of the fan that contains `start`.
template <class Visit>
void WalkFan(const CornerRing& ring,
             const std::vector<std::uint32_t>& twins,
             std::uint32_t start,
             const Visit& visit) {
    // Rotate across the half-edges that leave the vertex. On returning to the start, the fan is
    // complete.
    std::uint32_t corner = start;
    do {
        visit(corner);
        const std::uint32_t twin = twins[corner];
        corner = twin == None ? None : ring.Next(twin);
    } while (corner != None && corner != start);
    if (corner == start) {
        return;
    }
    // A border was reached: rotate in the other direction, across the half-edges that end at the
    // vertex.
    for (corner = twins[ring.Previous(start)]; corner != None;
         corner = twins[ring.Previous(corner)]) {
        visit(corner);
    }
}

/// Returns the fans that need a copy of their vertex, ordered by vertex and then by lowest-numbered
/// face.
std::vector<Fan> FindFurtherFans(const CornerRing& ring,
                                 const std::vector<std::uint32_t>& twins,
                                 std::size_t vertexCount,
                                 JobControl* job) {
    JobPhase phase(job, "Finding fans", ring.Count());
    std::vector<Fan> further;
    std::vector<bool> cornerSeen(ring.Count(), false);
    std::vector<bool> vertexSeen(vertexCount, false);
    // Corners are stored in face order, so the first corner found in a fan belongs to the fan's
    // lowest-numbered face.
    for (std::uint32_t corner = 0; corner < ring.Count(); ++corner) {
        phase.Add();
        if (cornerSeen[corner]) {
            continue;
        }
        WalkFan(ring, twins, corner, [&](std::uint32_t seen) { cornerSeen[seen] = true; });
        const std::uint32_t vertex = ring.Vertex(corner);
        if (vertexSeen[vertex]) {
            further.push_back({vertex, corner});
        }
        vertexSeen[vertex] = true;
    }
    phase.Finish();
    std::stable_sort(further.begin(), further.end(), [](const Fan& a, const Fan& b) {
        return a.vertex < b.vertex;
    });
    return further;
}

/// At most one half-edge without a twin starts in each fan, and at most one ends there. Two fans
/// are therefore connected by at most two such half-edges, in opposite directions, and vertex pairs
/// describe an oriented manifold. However, if both half-edges exist, the two faces become
/// neighbours again when neighbours are found by vertex pairs.
///
/// \param ring  must contain the vertex numbers of the result.
void FindClosedCuts(const CornerRing& ring, const EdgeGroups& groups, ManifoldReport& report) {
    std::vector<std::array<std::uint32_t, 2>> ends;
    ForEachEdge(groups, [&](std::size_t first, std::size_t last) {
        if (last - first <= 2) {
            return;
        }
        ends.clear();
        for (std::size_t entry = first; entry < last; ++entry) {
            const std::uint32_t halfEdge = groups.halfEdges[entry].second;
            const auto [low, high] = std::minmax({ring.Vertex(halfEdge), ring.Head(halfEdge)});
            ends.push_back({low, high});
        }
        std::sort(ends.begin(), ends.end());
        for (std::size_t entry = 1; entry < ends.size(); ++entry) {
            if (ends[entry] == ends[entry - 1]) {
                report.closedCuts.push_back(ends[entry]);
            }
        }
    });
}

}  // namespace

ManifoldReport MakeOrientedManifold(PolygonMesh& mesh, JobControl* job) {
    ManifoldReport report;
    const std::size_t vertexCount = mesh.positions.size();
    const CornerRing ring(mesh);
    const EdgeGroups groups = GroupByEdge(ring, vertexCount, job);
    const std::vector<std::uint32_t> twins = FindTwins(ring, groups, report, job);
    const std::vector<Fan> further = FindFurtherFans(ring, twins, vertexCount, job);
    if (further.size() > std::size_t{None} - 1 - vertexCount) {
        throw HostError(mesh.name + ": splitting the mesh into oriented manifolds needs " +
                        std::to_string(vertexCount + further.size()) +
                        " vertices, more than a 32-bit index can address");
    }

    std::uint32_t splitVertex = None;
    for (const Fan& fan : further) {
        report.splitVertices += fan.vertex != splitVertex ? 1 : 0;
        splitVertex = fan.vertex;
        const auto copy = static_cast<std::uint32_t>(mesh.positions.size());
        // Copied, because growth of the vector would invalidate a reference.
        const std::array<float, 3> position = mesh.positions[fan.vertex];
        mesh.positions.push_back(position);
        if (!mesh.normals.empty()) {
            const std::array<float, 3> normal = mesh.normals[fan.vertex];
            mesh.normals.push_back(normal);
        }
        if (std::vector<std::array<float, 4>>& colors = mesh.attributes.colors; !colors.empty()) {
            const std::array<float, 4> color = colors[fan.vertex];
            colors.push_back(color);
        }
        WalkFan(ring, twins, fan.corner, [&](std::uint32_t corner) {
            mesh.faceVertices[corner] = copy;
        });
    }
    report.addedVertices = further.size();
    if (report.nonManifoldEdges > 0) {
        FindClosedCuts(ring, groups, report);
    }
    return report;
}

}  // namespace trovik
