// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace trovik {

/// Provides access to the faces of a polygon mesh by number. Borrows the mesh, whose faces must not
/// change.
class FaceTable {
public:
    explicit FaceTable(const PolygonMesh& ofMesh) : mesh(ofMesh) {
        firstCorners.reserve(mesh.faceSizes.size() + 1);
        std::size_t corner = 0;
        firstCorners.push_back(0);
        for (const uint32_t size : mesh.faceSizes) firstCorners.push_back(corner += size);
    }

    std::size_t FaceCount() const { return mesh.faceSizes.size(); }
    std::size_t FirstCorner(std::size_t face) const { return firstCorners[face]; }
    std::span<const uint32_t> Vertices(std::size_t face) const {
        return {mesh.faceVertices.data() + firstCorners[face], mesh.faceSizes[face]};
    }

private:
    const PolygonMesh& mesh;
    std::vector<std::size_t> firstCorners;
};

/// One side of a face: the edge from corner `corner` to the next corner.
struct FaceSide {
    /// The lower and the higher vertex of the edge.
    uint32_t low;
    uint32_t high;
    uint32_t face;
    uint32_t corner;
    /// Whether the face traverses the edge from `low` to `high`.
    bool rises;

    bool HasEdgeOf(const FaceSide& other) const { return low == other.low && high == other.high; }
};

/// Returns the sides of all faces, sorted by edge and then by face. Cost: O(n log n).
std::vector<FaceSide> SortedSides(const PolygonMesh& mesh);

/// Calls `visit(first, end)` with the range of sides of each edge.
template <typename Visit>
void ForEachEdge(const std::vector<FaceSide>& sides, const Visit& visit) {
    for (std::size_t first = 0; first < sides.size();) {
        std::size_t end = first + 1;
        while (end < sides.size() && sides[end].HasEdgeOf(sides[first])) ++end;
        visit(sides.data() + first, sides.data() + end);
        first = end;
    }
}

/// Assigns a number to each face, so that faces with a common vertex have the same number. Numbers
/// count from 0 in the order of the lowest faces. \return the numbers, and their count.
TROVIK_API std::pair<std::vector<uint32_t>, uint32_t> ComponentsOf(const PolygonMesh& mesh);

}  // namespace trovik
