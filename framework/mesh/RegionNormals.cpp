// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/RegionNormals.h"

#include "framework/mesh/LevelMesh.h"
#include "framework/mesh/VertexLanes.h"
#include "framework/mesh/VertexNeighbours.h"

#include <algorithm>

namespace trovik {

namespace {

/// Elements per unit of work. Smaller regions are updated on the calling thread.
constexpr std::size_t elementsPerBlock = 16384;

}  // namespace

RegionNormals::RegionNormals(LevelMesh& ofLevel, const std::vector<uint32_t>& moved)
    : level(ofLevel) {
    const std::vector<uint32_t> around = FacesAt(level, moved);
    const IndexSet members = CornerSetOf(level, around);
    vertices = members.Members();
    faces = FacesAt(level, members, around);
    faceNormals.resize(faces.size());
    const std::size_t corners = level.CornersPerFace();
    firstFace.assign(vertices.size() + 1, 0);
    const auto forEachCorner = [&](const auto& visit) {
        for (uint32_t i = 0; i < faces.size(); ++i) {
            const uint32_t* v = level.faceVertexIndices.array + faces[i] * corners;
            for (std::size_t k = 0; k < corners; ++k)
                if (const uint32_t rank = members.RankOf(v[k]); rank != IndexSet::noRank)
                    visit(rank, i);
        }
    };
    forEachCorner([&](uint32_t rank, uint32_t) { ++firstFace[rank + 1]; });
    for (std::size_t i = 1; i < firstFace.size(); ++i) firstFace[i] += firstFace[i - 1];
    facesOfVertices.resize(firstFace.back());
    std::vector<uint32_t> next(firstFace.begin(), firstFace.end() - 1);
    forEachCorner([&](uint32_t rank, uint32_t face) { facesOfVertices[next[rank]++] = face; });
}

void RegionNormals::Update(unsigned threads) {
    const auto blocks = [](std::size_t count) {
        return static_cast<uint32_t>((count + elementsPerBlock - 1) / elementsPerBlock);
    };
    RunInParallel(
        blocks(faces.size()),
        1,
        [this](uint32_t block) {
            const std::size_t begin = block * elementsPerBlock;
            UpdateFaces(begin, std::min(begin + elementsPerBlock, faces.size()));
        },
        threads);
    RunInParallel(
        blocks(vertices.size()),
        1,
        [this](uint32_t block) {
            const std::size_t begin = block * elementsPerBlock;
            UpdateVertices(begin, std::min(begin + elementsPerBlock, vertices.size()));
        },
        threads);
}

// The arithmetic is that of LevelMesh::FaceNormal.
void RegionNormals::UpdateFaces(std::size_t begin, std::size_t end) {
    const uint32_t corners = level.CornersPerFace();
    const Vertex* const at = level.vertices.array;
    const uint32_t* const members = faces.data();
    HWVector* const normals = faceNormals.data();
    for (std::size_t i = begin; i < end; ++i) {
        const uint32_t* v = level.faceVertexIndices.array + members[i] * corners;
        const HWVector first = PositionLanes(at[v[0]]);
        const HWVector second = PositionLanes(at[v[1]]);
        const HWVector third = PositionLanes(at[v[2]]);
        normals[i] = corners == 4 ? (third - first) & (PositionLanes(at[v[3]]) - second)
                                  : (second - first) & (third - first);
    }
}

// The sum has the same order as in LevelMesh::ComputeNormals.
void RegionNormals::UpdateVertices(std::size_t begin, std::size_t end) {
    const uint32_t* const members = vertices.data();
    const uint32_t* const first = firstFace.data();
    const uint32_t* const around = facesOfVertices.data();
    const HWVector* const normals = faceNormals.data();
    PackedNormal* const packed = level.vertexNormals.array;
    for (std::size_t i = begin; i < end; ++i) {
        if (first[i] == first[i + 1]) continue;
        HWVector sum = HWVector::Zero();
        for (uint32_t k = first[i]; k < first[i + 1]; ++k) sum = sum + normals[around[k]];
        PackNormal(packed[members[i]], sum);
    }
}

}  // namespace trovik
