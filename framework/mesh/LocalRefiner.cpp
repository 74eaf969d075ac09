// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/LocalRefiner.h"

#include "framework/mesh/VertexNeighbours.h"

namespace trovik {

Vector LocalRefiner::EdgePoint(uint32_t face, uint32_t side) const {
    const uint32_t* v = coarse.faceVertexIndices.array + face * corners;
    const Vector a = At(v[side]);
    const Vector b = At(v[(side + 1) % corners]);
    const uint32_t neighbour = coarse.QuadEdgeNeighbour(face, side);
    if (neighbour == openBorder) return BorderEdgePointRule(a, b);
    return EdgePointRule(a, b, FacePoint(face), FacePoint(neighbour >> 2));
}

Vector LocalRefiner::VertexPoint(uint32_t vertex) {
    const Vector p = At(vertex);
    FacesAt(coarse, vertex, facesAround);
    terms.clear();
    borderEnds.clear();
    for (const uint32_t face : facesAround) {
        const uint32_t* v = coarse.faceVertexIndices.array + face * corners;
        for (uint32_t side = 0; side < corners; ++side) {
            const uint32_t a = v[side];
            const uint32_t b = v[(side + 1) % corners];
            if (a == vertex) {
                terms.push_back(FacePoint(face));
                terms.push_back(At(b));
            }
            if ((a != vertex && b != vertex) || coarse.QuadEdgeNeighbour(face, side) != openBorder)
                continue;
            if (a == vertex) borderEnds.push_back(At(b));
            if (b == vertex) borderEnds.push_back(At(a));
        }
    }
    if (terms.empty()) return p;
    const auto faces = static_cast<uint32_t>(terms.size() / 2);
    if (!borderEnds.empty()) {
        const DoubleVector ends = ExactSum(borderEnds.data(), borderEnds.size());
        return BorderVertexPointRule(p, ends, faces);
    }
    return VertexPointRule(p, ExactSum(terms.data(), terms.size()), faces);
}

}  // namespace trovik
