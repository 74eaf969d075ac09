// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/VertexNeighbours.h"

#include "framework/mesh/LevelHierarchy.h"
#include "framework/mesh/NewVertices.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace trovik {

namespace {

/// Returns the corners of all faces. A vertex is repeated for each of its faces.
std::vector<uint32_t> AllCornersOf(const LevelMesh& level, const std::vector<uint32_t>& faces) {
    const std::size_t corners = level.CornersPerFace();
    std::vector<uint32_t> vertices;
    vertices.reserve(faces.size() * corners);
    for (const uint32_t face : faces) {
        const uint32_t* first = level.faceVertexIndices.array + face * corners;
        vertices.insert(vertices.end(), first, first + corners);
    }
    return vertices;
}

/// Finds the faces of the level below that own the vertices, and returns all children of these
/// faces in ascending order. The children are faces of this level.
std::vector<uint32_t> FacesOfOwners(LevelMesh& level, const std::vector<uint32_t>& vertices) {
    const uint32_t children =
        level.Hierarchy().Level(static_cast<uint32_t>(level.Index()) - 1)->CornersPerFace();
    NewVertices ofLevel(level, 1);
    std::vector<uint32_t> owners;
    uint32_t near = openBorder;
    for (const uint32_t vertex : vertices) {
        if (vertex >= level.CoarserVertexCount()) {
            if (ofLevel.Find(vertex) || owners.empty()) owners.push_back(ofLevel.Patch());
            continue;
        }
        const uint32_t lowest = level.LowestFaceOf(vertex, near);
        if (lowest == openBorder) continue;
        near = lowest;
        owners.push_back(lowest / children);
    }
    MakeSet(owners);
    std::vector<uint32_t> faces;
    faces.reserve(owners.size() * children);
    for (const uint32_t owner : owners)
        for (uint32_t child = 0; child < children; ++child)
            faces.push_back(owner * children + child);
    return faces;
}

}  // namespace

void MakeSet(std::vector<uint32_t>& list) {
    constexpr std::size_t sortedSooner = 64;
    if (list.size() > sortedSooner) {
        list = IndexSet(list).Members();
        return;
    }
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
}

std::vector<uint32_t> FacesAt(LevelMesh& level, const std::vector<uint32_t>& vertices) {
    std::vector<uint32_t> faces;
    if (vertices.size() * 4 < level.VertexCount()) {
        if (level.Index() > 0)
            return FacesAt(level, IndexSet(vertices), FacesOfOwners(level, vertices));
        for (const uint32_t vertex : vertices) {
            const uint32_t lowest = level.LowestFaceOf(vertex);
            if (lowest != openBorder) level.FacesAround(vertex, lowest, faces);
        }
        MakeSet(faces);
        return faces;
    }
    // If the list covers a large part of the level, testing every face is faster.
    std::vector<bool> marked(level.VertexCount(), false);
    for (const uint32_t vertex : vertices) marked[vertex] = true;
    const uint32_t corners = level.CornersPerFace();
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        const uint32_t* v = level.faceVertexIndices.array + face * corners;
        if (std::any_of(v, v + corners, [&marked](uint32_t vertex) { return marked[vertex]; }))
            faces.push_back(face);
    }
    return faces;
}

// A vertex that is not from level 0 has at most four faces. If four of its faces are in the list,
// the list is therefore complete for this vertex; the faces of every other vertex are searched for
// individually.
std::vector<uint32_t> FacesAt(LevelMesh& level,
                              const IndexSet& vertices,
                              const std::vector<uint32_t>& faces) {
    constexpr uint8_t allCorners = 4;
    std::vector<uint8_t> found(vertices.Count(), 0);
    const uint32_t corners = level.CornersPerFace();
    std::vector<uint32_t> around;
    around.reserve(faces.size());
    for (const uint32_t face : faces) {
        const uint32_t* v = level.faceVertexIndices.array + std::size_t{face} * corners;
        bool isAround = false;
        for (uint32_t k = 0; k < corners; ++k) {
            const uint32_t rank = vertices.RankOf(v[k]);
            if (rank == IndexSet::noRank) continue;
            isAround = true;
            ++found[rank];
        }
        if (isAround) around.push_back(face);
    }
    const uint32_t ofLevel0 = level.Hierarchy().Level(0)->VertexCount();
    std::vector<uint32_t> further;
    uint32_t near = openBorder;
    const std::vector<uint32_t> members = vertices.Members();
    for (std::size_t i = 0; i < members.size(); ++i) {
        if (members[i] >= ofLevel0 && found[i] == allCorners) continue;
        const uint32_t lowest = level.LowestFaceOf(members[i], near);
        if (lowest == openBorder) continue;
        near = lowest;
        level.FacesAround(members[i], lowest, further);
    }
    if (further.empty()) return around;
    MakeSet(further);
    std::vector<uint32_t> all;
    all.reserve(around.size() + further.size());
    std::set_union(
        around.begin(), around.end(), further.begin(), further.end(), std::back_inserter(all));
    return all;
}

std::vector<uint32_t> WithFacesAround(LevelMesh& level, std::vector<uint32_t> faces) {
    MakeSet(faces);
    return FacesAt(level, CornerSetOf(level, faces), faces);
}

void FacesAt(LevelMesh& level, uint32_t vertex, std::vector<uint32_t>& faces) {
    faces.clear();
    const uint32_t lowest = level.LowestFaceOf(vertex);
    if (lowest == openBorder) return;
    level.FacesAround(vertex, lowest, faces);
    std::sort(faces.begin(), faces.end());
    faces.erase(std::unique(faces.begin(), faces.end()), faces.end());
}

std::vector<uint32_t> CornersOf(const LevelMesh& level, const std::vector<uint32_t>& faces) {
    return CornerSetOf(level, faces).Members();
}

IndexSet CornerSetOf(const LevelMesh& level, const std::vector<uint32_t>& faces) {
    return IndexSet(AllCornersOf(level, faces));
}

std::vector<uint32_t> WithNeighbours(LevelMesh& level, const std::vector<uint32_t>& vertices) {
    std::vector<uint32_t> around = CornersOf(level, FacesAt(level, vertices));
    around.insert(around.end(), vertices.begin(), vertices.end());
    MakeSet(around);
    return around;
}

}  // namespace trovik
