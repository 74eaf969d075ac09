// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LocalRefiner.h"

#include <unordered_map>

namespace trovik {

template <typename Place>
void LevelRefiner::RefinePositions(const LevelMesh& fine, Place place, const Vector* positions) {
    LocalRefiner points(coarse, positions);
    JobPhase phase(
        job, "Refining positions", uint64_t{coarse.faceCount} * 2 + coarse.VertexCount());
    std::vector<Vector> facePoints(coarse.faceCount);
    for (uint32_t face = 0; face < coarse.faceCount; ++face) {
        phase.Add();
        facePoints[face] = points.FacePoint(face);
    }
    // The sums of the face points and next corners around each vertex. Border vertices depend only
    // on the border.
    std::vector<RunningSum> around(coarse.VertexCount());
    std::unordered_map<uint32_t, RunningSum> borderEnds;
    for (uint32_t face = 0; face < coarse.faceCount; ++face) {
        phase.Add();
        const uint32_t* v = coarse.faceVertexIndices.array + face * corners;
        const Vector centre = facePoints[face];
        const uint32_t* children = fine.faceVertexIndices.array + face * corners * 4;
        place(children[2], centre);
        for (uint32_t side = 0; side < corners; ++side) {
            const uint32_t a = v[side];
            const uint32_t b = v[(side + 1) % corners];
            const Vector pa = points.At(a);
            const Vector pb = points.At(b);
            around[a].Add(centre);
            around[a].Add(pb);

            const uint32_t neighbour = coarse.QuadEdgeNeighbour(face, side);
            if (!OwnsEdge(face, side, neighbour)) continue;
            const uint32_t edgePoint = children[side * 4 + (corners == 4 ? (side + 1) & 3u : 1u)];
            if (neighbour == openBorder) {
                borderEnds[a].Add(pb);
                borderEnds[b].Add(pa);
                place(edgePoint, BorderEdgePointRule(pa, pb));
            } else {
                place(edgePoint,
                      EdgePointRule(pa, pb, centre, facePoints[neighbour >> 2]));
            }
        }
    }
    for (uint32_t vertex = 0; vertex < coarse.VertexCount(); ++vertex) {
        phase.Add();
        const Vector p = points.At(vertex);
        const RunningSum& sum = around[vertex];
        const uint32_t faces = sum.Count() / 2;
        const auto border = borderEnds.empty() ? borderEnds.end() : borderEnds.find(vertex);
        if (faces == 0) {
            place(vertex, p);
        } else if (border != borderEnds.end()) {
            const RunningSum& ends = border->second;
            place(vertex,
                  ends.IsExact() ? BorderVertexPointRule(p, ends.Value(), faces)
                                 : points.VertexPoint(vertex));
        } else {
            place(vertex,
                  sum.IsExact() ? VertexPointRule(p, sum.Value(), faces)
                                : points.VertexPoint(vertex));
        }
    }
    phase.Finish();
}

}  // namespace trovik
