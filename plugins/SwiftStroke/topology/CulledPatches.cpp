// SPDX-License-Identifier: Apache-2.0

/// \file Applies the effects that a dab has on a patch out of its reach. The comment on PatchCache
/// explains why there are no other effects.
#include "brush/SwiftStroke.h"
#include "kernels/stages/DabConstants.h"
#include "topology/PatchReach.h"
#include "topology/PatchSides.h"

namespace trovik {

namespace {

/// Returns the position of a side's k-th RingEnds vertex along that side.
uint32_t RingEndAt(uint32_t k, uint32_t size) { return k < 2 ? k : size - 3 + k; }

/// Row and column of the patch vertex that is `x` steps along the row and `y` steps along the
/// column from corner `corner`.
struct NearCorner {
    NearCorner(uint32_t corner, uint32_t x, uint32_t y, uint32_t size)
        : row((corner & 2u) != 0 ? size - y : y), column((corner & 1u) != 0 ? size - x : x) {}
    uint32_t row;
    uint32_t column;
};

/// Steps from a corner: the first three lead to the vertices whose normals are recomputed, the
/// others to the vertices around them.
constexpr uint8_t stepsFromCorner[][2] = {{0, 0}, {1, 0}, {0, 1}, {2, 0}, {0, 2}, {1, 1}};
constexpr uint32_t refreshedAtCorner = 3;

}  // namespace

bool SwiftStroke::FindRingEnds(uint32_t patch, PatchCache::RingEnds& ends) const {
    const auto level = static_cast<uint32_t>(patchLevel);
    const uint32_t size = 1u << level;
    const uint32_t* vertexTable = SubdivisionLevel::QuadVertexIndexTable(level).array;
    for (uint32_t side = 0; side < 4; ++side) {
        const uint32_t neighbour = patchMesh->QuadEdgeNeighbour(patch, side);
        if (neighbour >= firstOpen) return false;
        const uint32_t* slice = PatchSlice(neighbour >> 2);
        const Walk walk = NeighbourWalk(neighbour & 3u, size);
        // The two patches traverse their shared edge in opposite directions.
        for (uint32_t k = 0; k < 4; ++k)
            ends[side * 4 + k] =
                slice[vertexTable[Along(walk.start, size - RingEndAt(k, size), walk.step)]];
    }
    return true;
}

void SwiftStroke::ReadCornerCells(const PatchCache::Patch& patch) {
    const uint32_t size = 1u << patchLevel;
    const uint32_t* listed = patch.vertices;
    const Vertex* vertices = mesh->vertices.array;
    for (uint32_t side = 0; side < 4; ++side) {
        const RingSide ring = RingSideOf(side, gridStride);
        for (uint32_t k = 0; k < 4; ++k)
            positionGrid[Along(ring.start, RingEndAt(k, size), ring.step)] =
                PositionOf(vertices[patch.ringEnds[side * 4 + k]]);
    }
    for (uint32_t corner = 0; corner < 4; ++corner) {
        for (const auto& [x, y] : stepsFromCorner) {
            const NearCorner at(corner, x, y, size);
            positionGrid[(at.row + 1) * gridStride + at.column + 1] =
                PositionOf(vertices[listed[at.row * (size + 1) + at.column]]);
        }
    }
}

bool SwiftStroke::SkipCulledPatch(uint32_t patch) {
    PatchCache::Patch* known = patchCache.Find(patch);
    if (known == nullptr || !IsOutOfReach(*this, *known)) return false;
    if (known->ring == PatchCache::Patch::Ring::NotSearched)
        known->ring = FindRingEnds(patch, known->ringEnds) ? PatchCache::Patch::Ring::Found
                                                           : PatchCache::Patch::Ring::Open;
    if (known->ring == PatchCache::Patch::Ring::Open) return false;

    StoredVertexInfo* records = CurrentChange()->records->array;
    for (const PatchCache::Run& run : patchCache.RunsOf(*known)) {
        StoredVertexInfo* record = records + run.first;
        for (uint32_t i = 0; i < run.count; ++i) record[i].visitStampWord = dabStamp;
    }
    const uint32_t size = 1u << patchLevel;
    const uint32_t points = size + 1;
    strokeVertexCount += points * points;

    ReadCornerCells(*known);
    for (uint32_t corner = 0; corner < 4; ++corner) {
        for (uint32_t i = 0; i < refreshedAtCorner; ++i) {
            const NearCorner at(corner, stepsFromCorner[i][0], stepsFromCorner[i][1], size);
            RefreshNormal(at.row, at.column, known->vertices[at.row * points + at.column]);
        }
    }
    patchCache.CountCulled();
    return true;
}

}  // namespace trovik
