// SPDX-License-Identifier: Apache-2.0
#include "framework/filters/NeighbourMeans.h"

#include "framework/mesh/FaceSides.h"

#include <algorithm>

namespace trovik {

NeighbourMeans::NeighbourMeans(LevelMesh& ofLevel)
    : level(ofLevel), kinds(ofLevel.VertexCount(), Kind::Inner), sums(ofLevel.VertexCount()) {
    const uint32_t corners = ofLevel.CornersPerFace();
    for (uint32_t face = 0; face < ofLevel.faceCount; ++face) {
        const uint32_t* v = ofLevel.faceVertexIndices.array + std::size_t{face} * corners;
        for (uint32_t side = 0; side < corners; ++side) {
            if (ofLevel.QuadEdgeNeighbour(face, side) != openBorder) continue;
            const BorderSide border{v[side], v[(side + 1) % corners]};
            kinds[border.from] = kinds[border.to] = Kind::Border;
            borderSides.push_back(border);
        }
    }
    std::vector<uint32_t> faces(level.VertexCount(), 0);
    ForEachSide(level, [&](uint32_t a, uint32_t) { ++faces[a]; });
    for (const BorderSide& side : borderSides)
        if (faces[side.from] == 1) kinds[side.from] = Kind::Corner;
}

void NeighbourMeans::Compute(const std::vector<Vector>& positions, std::vector<Vector>& means) {
    std::fill(sums.begin(), sums.end(), RunningSum());
    // An inner edge is visited once for each of its two faces, so each neighbour of an inner vertex
    // counts twice.
    ForEachSide(level, [&](uint32_t a, uint32_t b) {
        if (kinds[a] == Kind::Inner) sums[a].Add(positions[b]);
        if (kinds[b] == Kind::Inner) sums[b].Add(positions[a]);
    });
    for (const BorderSide& side : borderSides) {
        sums[side.from].Add(positions[side.to]);
        sums[side.to].Add(positions[side.from]);
    }
    means.resize(positions.size());
    for (std::size_t v = 0; v < positions.size(); ++v) {
        const bool staysInPlace = sums[v].Count() == 0 || kinds[v] == Kind::Corner;
        means[v] = staysInPlace ? positions[v] : MeanOf(sums[v].Value(), sums[v].Count());
    }
}

}  // namespace trovik
