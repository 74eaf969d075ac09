// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/LevelRefiner.h"

namespace trovik {

LevelRefiner::LevelRefiner(LevelMesh& coarseLevel, JobControl* jobControl)
    : coarse(coarseLevel), job(jobControl), corners(coarseLevel.CornersPerFace()) {}

// An edge belongs to the lower-numbered of its two faces, which is visited first. If a face is its
// own neighbour, the edge belongs to the lower-numbered side.
bool LevelRefiner::OwnsEdge(uint32_t face, uint32_t side, uint32_t neighbour) const {
    if (neighbour == openBorder) return true;
    const uint32_t other = neighbour >> 2;
    return other > face || (other == face && (neighbour & 3u) > side);
}

uint64_t LevelRefiner::CountFineVertices() {
    uint64_t count = static_cast<uint64_t>(coarse.VertexCount()) + coarse.faceCount;
    for (uint32_t face = 0; face < coarse.faceCount; ++face)
        for (uint32_t side = 0; side < corners; ++side)
            if (OwnsEdge(face, side, coarse.QuadEdgeNeighbour(face, side))) ++count;
    return count;
}

void LevelRefiner::RefineTopology(LevelMesh& fine) {
    uint32_t next = coarse.VertexCount();
    fine.coarserVertexCount = next;
    uint32_t* all = fine.faceVertexIndices.array;
    const auto edgeCorner = [this](uint32_t side) {
        return side * 4 + (corners == 4 ? (side + 1) & 3u : 1u);
    };
    JobPhase phase(job, "Refining faces", coarse.faceCount);
    for (uint32_t face = 0; face < coarse.faceCount; ++face) {
        phase.Add();
        uint32_t edge[4];
        for (uint32_t side = 0; side < corners; ++side) {
            const uint32_t neighbour = coarse.QuadEdgeNeighbour(face, side);
            if (OwnsEdge(face, side, neighbour))
                edge[side] = next++;
            else if ((neighbour >> 2) == face)
                edge[side] = edge[neighbour & 3u];
            else
                edge[side] = all[(neighbour >> 2) * corners * 4 + edgeCorner(neighbour & 3u)];
        }
        const uint32_t centre = next++;
        const uint32_t* v = coarse.faceVertexIndices.array + face * corners;
        for (uint32_t child = 0; child < corners; ++child) {
            uint32_t* corner = all + (face * corners + child) * 4;
            const uint32_t turned = corners == 4 ? child : 0;
            corner[turned] = v[child];
            corner[(turned + 1) & 3u] = edge[child];
            corner[(turned + 2) & 3u] = centre;
            corner[(turned + 3) & 3u] = edge[(child + corners - 1) % corners];
        }
    }
    phase.Finish();
}

}  // namespace trovik
