// SPDX-License-Identifier: Apache-2.0
#include "framework/levels/LocalRefiner.h"

#include "framework/levels/VertexNeighbours.h"

#include <utility>

namespace trovik {

Vector LocalRefiner::FacePoint(uint32_t face) const {
    const uint32_t* v = coarse.faceVertexIndices.array + face * corners;
    Vector centre = At(v[0]);
    for (uint32_t k = 1; k < corners; ++k) centre += At(v[k]);
    return centre * (1.0f / static_cast<float>(corners));
}

Vector LocalRefiner::EdgePoint(uint32_t face, uint32_t side) const {
    const uint32_t neighbour = coarse.QuadEdgeNeighbour(face, side);
    uint32_t other = face;
    if (neighbour != openBorder) {
        // The lower face comes first, as the level's own refinement meets it.
        other = neighbour >> 2;
        const uint32_t otherSide = neighbour & 3u;
        if (other < face || (other == face && otherSide < side)) {
            std::swap(face, other);
            side = otherSide;
        }
    }
    const uint32_t* v = coarse.faceVertexIndices.array + face * corners;
    const Vector pa = At(v[side]);
    const Vector pb = At(v[(side + 1) % corners]);
    if (neighbour == openBorder) return (pa + pb) * 0.5f;
    return ((pa + pb) + (FacePoint(face) + FacePoint(other))) * 0.25f;
}

Vector LocalRefiner::VertexPoint(uint32_t vertex) {
    const Vector p = At(vertex);
    FacesAt(coarse, vertex, around);
    if (around.empty()) return p;
    Vector sum;
    Vector ends;
    uint32_t faces = 0;
    bool onBorder = false;
    for (const uint32_t face : around) {
        const uint32_t* v = coarse.faceVertexIndices.array + face * corners;
        const Vector centre = FacePoint(face);
        for (uint32_t side = 0; side < corners; ++side) {
            const uint32_t a = v[side];
            const uint32_t b = v[(side + 1) % corners];
            if (a == vertex) {
                const Vector pb = At(b);
                sum.x += centre.x + pb.x;
                sum.y += centre.y + pb.y;
                sum.z += centre.z + pb.z;
                ++faces;
            }
            if ((a != vertex && b != vertex) || coarse.QuadEdgeNeighbour(face, side) != openBorder)
                continue;
            onBorder = true;
            if (a == vertex) ends += At(b);
            if (b == vertex) ends += At(a);
        }
    }
    if (onBorder) return faces == 1 ? p : p * 0.75f + ends * 0.125f;
    const auto n = static_cast<float>(faces);
    return p * ((n - 2.0f) / n) + sum * (1.0f / (n * n));
}

}  // namespace trovik
