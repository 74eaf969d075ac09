// SPDX-License-Identifier: Apache-2.0

/// \file
/// Implicit topology: the neighbour across a side is determined by the base mesh and the digits of
/// the face number. The four children of a quad meet at its face point. Child k keeps the
/// orientation of the quad:
///
///      corner 0 ---- e0 ---- corner 1        child 0: corners  c0 e0 fp e3
///         |  child 0 | child 1  |            child 1: corners  e0 c1 e1 fp
///        e3 -------- fp ------- e1           child 2: corners  fp e1 c2 e2
///         |  child 3 | child 2  |            child 3: corners  e3 fp e2 c3
///      corner 3 ---- e2 ---- corner 2
///
/// Sides k + 1 and k + 2 of child k are therefore inside the parent. Side k is the first half of
/// side k of the parent, and side k + 3 is the second half of side k + 3 of the parent. Two
/// adjacent faces traverse their common edge in opposite directions, so the first half of one side
/// is adjacent to the second half of the other. Neighbours are found by going up to a common
/// ancestor and down again, as in Samet: "Neighbor Finding Techniques for Images Represented by
/// Quadtrees" (1982).
#include "framework/mesh/LevelHierarchy.h"

#include <algorithm>

namespace trovik {

namespace {

/// The location of a child's side. A side inside the parent is adjacent to a sibling; any other
/// side is half of one of the parent's sides.
struct ChildSide {
    bool inside;
    uint32_t sibling;
    uint32_t siblingSide;
    uint32_t parentSide;
    bool firstHalf;
};

ChildSide QuadChildSide(uint32_t child, uint32_t side) {
    switch ((side - child) & 3u) {
        case 0:
            return {false, 0, 0, child, true};
        case 1:
            return {true, (child + 1) & 3u, (child + 3) & 3u, 0, false};
        case 2:
            return {true, (child + 3) & 3u, child, 0, false};
        default:
            return {false, 0, 0, (child + 3) & 3u, false};
    }
}

/// Corner 0 of each child of a triangle is a corner of the triangle.
ChildSide TriangleChildSide(uint32_t child, uint32_t side) {
    switch (side) {
        case 0:
            return {false, 0, 0, child, true};
        case 1:
            return {true, (child + 1) % 3u, 2, 0, false};
        case 2:
            return {true, (child + 2) % 3u, 1, 0, false};
        default:
            return {false, 0, 0, (child + 2) % 3u, false};
    }
}

}  // namespace

uint32_t LevelMesh::QuadEdgeNeighbour(uint32_t face, uint32_t side) {
    // Go up until the side is inside a face or the base is reached, and record which half of the
    // side is followed at each level.
    uint32_t halves = 0;
    int level = index;
    uint32_t neighbour = openBorder;
    const bool triangleBase = hierarchy->Level(0)->meshType != 1;
    while (true) {
        if (level == 0) {
            const LevelMesh& base = *hierarchy->Level(0);
            neighbour = base.baseNeighbours.array[face * base.CornersPerFace() + side];
            break;
        }
        const bool ofTriangle = level == 1 && triangleBase;
        const uint32_t childCount = ofTriangle ? 3 : 4;
        // Written so that the divisors are compile-time constants.
        const uint32_t above = ofTriangle ? face / 3 : face / 4;
        const uint32_t child = face - above * childCount;
        const ChildSide childSide =
            ofTriangle ? TriangleChildSide(child, side) : QuadChildSide(child, side);
        if (childSide.inside) {
            neighbour = (above * childCount + childSide.sibling) * 4 + childSide.siblingSide;
            break;
        }
        halves = halves << 1 | (childSide.firstHalf ? 1u : 0u);
        face = above;
        side = childSide.parentSide;
        --level;
    }
    if (neighbour == openBorder) return openBorder;
    // Go down on the other side of the edge, where first and second halves are swapped.
    for (; level < index; ++level, halves >>= 1) {
        const uint32_t other = neighbour >> 2;
        const uint32_t otherSide = neighbour & 3u;
        const bool first = (halves & 1u) != 0;
        if (level == 0 && triangleBase) {
            neighbour =
                first ? (other * 3 + (otherSide + 1) % 3u) * 4 + 3 : (other * 3 + otherSide) * 4;
        } else {
            neighbour = (other * 4 + (first ? (otherSide + 1) & 3u : otherSide)) * 4 + otherSide;
        }
    }
    return neighbour;
}

int LevelMesh::CornerOf(uint32_t face, uint32_t vertex) const {
    const uint32_t corners = CornersPerFace();
    const uint32_t* first = faceVertexIndices.array + face * corners;
    for (uint32_t k = 0; k < corners; ++k)
        if (first[k] == vertex) return static_cast<int>(k);
    return -1;
}

uint32_t LevelMesh::LowestFaceOf(uint32_t vertex, uint32_t near) {
    // The first level that contains the vertex, and the lowest-numbered face of that level that
    // uses it.
    uint32_t level = 0;
    while (vertex >= hierarchy->Level(level)->vertexCount) ++level;
    const bool triangleBase = hierarchy->Level(0)->meshType != 1;
    uint32_t face = 0;
    if (level == 0) {
        face = hierarchy->Level(0)->baseVertexFace.array[vertex];
        if (face == openBorder) return openBorder;
    } else {
        // New vertices are numbered in the order of the faces of the level below; the last new
        // vertex of each face is its face point.
        const LevelMesh& born = *hierarchy->Level(level);
        const uint32_t childCount = level == 1 && triangleBase ? 3 : 4;
        const auto facePoint = [&born, childCount](uint32_t above) {
            return born.faceVertexIndices.array[above * childCount * 4 + 2];
        };
        uint32_t low = 0;
        uint32_t high = hierarchy->Level(level - 1)->faceCount - 1;
        if (near != openBorder) {
            // Brackets the vertex by exponential search from the ancestor of face `near`; see
            // Bentley, Yao: "An Almost Optimal Algorithm for Unbounded Searching" (1976).
            const uint32_t start =
                (near >> 2 * (static_cast<uint32_t>(index) - level)) / childCount;
            if (facePoint(start) < vertex) {
                low = start + 1;
                for (uint32_t step = 1; step < high - low; step *= 2) {
                    if (facePoint(low + step) < vertex)
                        low += step + 1;
                    else
                        high = low + step;
                }
            } else {
                high = start;
                for (uint32_t step = 1; step < high - low; step *= 2) {
                    if (facePoint(high - step) < vertex)
                        low = high - step + 1;
                    else
                        high -= step;
                }
            }
        }
        while (low < high) {
            const uint32_t middle = low + (high - low) / 2;
            if (facePoint(middle) < vertex)
                low = middle + 1;
            else
                high = middle;
        }
        face = low * childCount;
        while (born.CornerOf(face, vertex) < 0) ++face;
    }
    // On the next finer level, a corner of a face belongs to the child at that corner.
    for (; level < static_cast<uint32_t>(index); ++level) {
        const uint32_t childCount = level == 0 && triangleBase ? 3 : 4;
        face = face * childCount +
               static_cast<uint32_t>(hierarchy->Level(level)->CornerOf(face, vertex));
    }
    return face;
}

}  // namespace trovik
