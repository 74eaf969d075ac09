// SPDX-License-Identifier: Apache-2.0

/// \file
/// Walks over faces and vertices. A walk marks visited elements with stamps that are stored in the
/// mesh, so its cost depends only on the elements that it reaches.
#include "framework/memory/FilledStore.h"
#include "framework/mesh/LevelHierarchy.h"

#include <algorithm>
#include <cassert>
#include <limits>

namespace trovik {

namespace {

/// Returns the next stamp. Before the counter overflows, all stamps are reset.
uint32_t NextWalk(uint32_t& walk, Store<uint32_t>& stamps) {
    if (walk == std::numeric_limits<uint32_t>::max()) {
        std::fill_n(stamps.array, stamps.fill, 0u);
        walk = 0;
    }
    return ++walk;
}

}  // namespace

class LevelMesh::WalkScope {
public:
    WalkScope(LevelMesh& walkedMesh, const std::vector<FaceVisit>& walkVisits)
        : mesh(walkedMesh), visits(walkVisits) {
        assert(!mesh.walking && "a walk cannot start inside another walk on the same level");
        mesh.walking = true;
    }
    ~WalkScope() {
        mesh.walking = false;
        for (GeometryObserver* observer : mesh.hierarchy->Observers())
            observer->WalkEnded(mesh, visits);
    }
    WalkScope(const WalkScope&) = delete;
    WalkScope& operator=(const WalkScope&) = delete;

private:
    LevelMesh& mesh;
    const std::vector<FaceVisit>& visits;
};

void LevelMesh::EnumerateFaces(uint32_t face, FaceEnumerator* enumerator, int) {
    const WalkScope scope(*this, lastFaceWalk);
    lastFaceWalk.clear();
    if (face >= faceCount) return;
    const uint32_t walk = NextWalk(faceWalk, faceWalkStamps);
    const uint32_t sides = CornersPerFace();
    walkQueue.clear();
    walkQueue.push_back(face);
    faceWalkStamps.array[face] = walk;
    for (std::size_t head = 0; head < walkQueue.size(); ++head) {
        const uint32_t at = walkQueue[head];
        const bool answer = enumerator->Tester(this, at);
        lastFaceWalk.push_back({at, answer});
        if (!answer) continue;
        enumerator->Operator(this, at);
        for (uint32_t side = 0; side < sides; ++side) {
            const uint32_t neighbour = QuadEdgeNeighbour(at, side);
            if (neighbour == openBorder || faceWalkStamps.array[neighbour >> 2] == walk) continue;
            faceWalkStamps.array[neighbour >> 2] = walk;
            walkQueue.push_back(neighbour >> 2);
        }
    }
}

template <typename Report>
uint32_t LevelMesh::ForEachAdjacent(uint32_t vertex, uint32_t face, Report report) {
    if (face >= faceCount || CornerOf(face, vertex) < 0) face = LowestFaceOf(vertex);
    if (face == openBorder) return 0;
    const uint32_t corners = CornersPerFace();
    const auto firstCorner = static_cast<uint32_t>(CornerOf(face, vertex));
    const auto next = [this, corners](uint32_t f, uint32_t c) {
        return faceVertexIndices.array[f * corners + (c + 1) % corners];
    };
    uint32_t reports = 0;
    uint32_t at = face;
    uint32_t corner = firstCorner;
    while (true) {
        report(next(at, corner), at);
        ++reports;
        const uint32_t previousSide = (corner + corners - 1) % corners;
        const uint32_t neighbour = QuadEdgeNeighbour(at, previousSide);
        if (neighbour == openBorder) {
            report(faceVertexIndices.array[at * corners + previousSide], at);
            ++reports;
            break;
        }
        // The neighbour traverses the edge in the opposite direction, so its side starts at the
        // vertex.
        at = neighbour >> 2;
        corner = neighbour & 3u;
        if (at == face && corner == firstCorner) return reports;
    }
    at = face;
    corner = firstCorner;
    while (true) {
        const uint32_t neighbour = QuadEdgeNeighbour(at, corner);
        if (neighbour == openBorder) return reports;
        at = neighbour >> 2;
        corner = ((neighbour & 3u) + 1) % corners;
        report(next(at, corner), at);
        ++reports;
    }
}

uint32_t LevelMesh::EnumerateAdjacentVertices(AdjacentVertexEnumerator* enumerator,
                                              uint32_t vertex,
                                              uint32_t face) {
    return ForEachAdjacent(vertex, face, [enumerator](uint32_t adjacent, uint32_t inFace) {
        enumerator->Operator(adjacent, inFace);
    });
}

void LevelMesh::EnumerateVertices(uint32_t face, VertexEnumerator* enumerator) {
    const WalkScope scope(*this, lastVertexWalk);
    lastVertexWalk.clear();
    // Increments the stamp even if the visitor throws, so that the next walk ignores the marks of
    // this one.
    struct StampStep {
        ~StampStep() { ++stamp; }
        uint32_t& stamp;
    };
    const StampStep endOfWalk{visitStamp};
    if (face < faceCount) {
        if (vertexWalkStamps.fill != vertexCount) FillStore(vertexWalkStamps, vertexCount, 0u);
        const uint32_t walk = NextWalk(vertexWalk, vertexWalkStamps);
        // The queue contains pairs of a vertex and the face in which it was found.
        walkQueue.clear();
        const auto queue = [this, walk](uint32_t vertex, uint32_t inFace) {
            if (vertexWalkStamps.array[vertex] == walk) return;
            vertexWalkStamps.array[vertex] = walk;
            walkQueue.push_back(vertex);
            walkQueue.push_back(inFace);
        };
        const uint32_t corners = CornersPerFace();
        for (uint32_t k = 0; k < corners; ++k)
            queue(faceVertexIndices.array[face * corners + k], face);
        for (std::size_t head = 0; head < walkQueue.size(); head += 2) {
            const uint32_t vertex = walkQueue[head];
            const uint32_t inFace = walkQueue[head + 1];
            const bool answer = enumerator->Tester(this, vertex, inFace);
            lastVertexWalk.push_back({vertex, answer});
            if (!answer) continue;
            enumerator->Operator(this, vertex, inFace);
            ForEachAdjacent(vertex, inFace, queue);
        }
    }
}

void LevelMesh::FacesAround(uint32_t vertex, uint32_t face, std::vector<uint32_t>& faces) {
    const uint32_t corners = CornersPerFace();
    const auto firstCorner = static_cast<uint32_t>(CornerOf(face, vertex));
    uint32_t at = face;
    uint32_t corner = firstCorner;
    while (true) {
        faces.push_back(at);
        const uint32_t neighbour = QuadEdgeNeighbour(at, (corner + corners - 1) % corners);
        if (neighbour == openBorder) break;
        at = neighbour >> 2;
        corner = neighbour & 3u;
        if (at == face && corner == firstCorner) return;
    }
    at = face;
    corner = firstCorner;
    while (true) {
        const uint32_t neighbour = QuadEdgeNeighbour(at, corner);
        if (neighbour == openBorder) return;
        at = neighbour >> 2;
        corner = ((neighbour & 3u) + 1) % corners;
        faces.push_back(at);
    }
}

}  // namespace trovik
