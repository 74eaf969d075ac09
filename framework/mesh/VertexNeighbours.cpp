// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/VertexNeighbours.h"

#include "framework/mesh/LevelMesh.h"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace trovik {

void MakeSet(std::vector<uint32_t>& list) {
    constexpr std::size_t wordBits = 64;
    if (list.empty()) return;
    const auto [low, high] = std::minmax_element(list.begin(), list.end());
    const uint32_t first = *low;
    const std::size_t words = (*high - first) / wordBits + 1;
    if (words > list.size() * 4) {
        std::sort(list.begin(), list.end());
        list.erase(std::unique(list.begin(), list.end()), list.end());
        return;
    }
    // If the numbers are close together, marking is faster than sorting.
    std::vector<uint64_t> marks(words, 0);
    for (const uint32_t number : list)
        marks[(number - first) / wordBits] |= uint64_t{1} << ((number - first) % wordBits);
    list.clear();
    for (std::size_t word = 0; word < words; ++word) {
        for (uint64_t rest = marks[word]; rest != 0; rest &= rest - 1) {
            const auto bit = static_cast<std::size_t>(std::countr_zero(rest));
            list.push_back(first + static_cast<uint32_t>(word * wordBits + bit));
        }
    }
}

std::vector<uint32_t> FacesAt(LevelMesh& level, const std::vector<uint32_t>& vertices) {
    std::vector<uint32_t> faces;
    if (vertices.size() * 4 < level.VertexCount()) {
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

void FacesAt(LevelMesh& level, uint32_t vertex, std::vector<uint32_t>& faces) {
    faces.clear();
    const uint32_t lowest = level.LowestFaceOf(vertex);
    if (lowest == openBorder) return;
    level.FacesAround(vertex, lowest, faces);
    std::sort(faces.begin(), faces.end());
    faces.erase(std::unique(faces.begin(), faces.end()), faces.end());
}

std::vector<uint32_t> CornersOf(const LevelMesh& level, const std::vector<uint32_t>& faces) {
    const uint32_t corners = level.CornersPerFace();
    std::vector<uint32_t> vertices;
    vertices.reserve(faces.size() * corners);
    for (const uint32_t face : faces)
        for (uint32_t k = 0; k < corners; ++k)
            vertices.push_back(level.faceVertexIndices.array[face * corners + k]);
    MakeSet(vertices);
    return vertices;
}

std::vector<uint32_t> WithNeighbours(LevelMesh& level, const std::vector<uint32_t>& vertices) {
    std::vector<uint32_t> around = CornersOf(level, FacesAt(level, vertices));
    around.insert(around.end(), vertices.begin(), vertices.end());
    MakeSet(around);
    return around;
}

}  // namespace trovik
