// SPDX-License-Identifier: Apache-2.0
#include "brush/SwiftStroke.h"
#include "kernels/stages/DabConstants.h"
#include "kernels/stages/RecordLookup.h"
#include "topology/PatchSides.h"

#include <algorithm>

namespace trovik {

namespace {

/// A corner of the patch: its index in the index tables, its cell, and the steps from there into
/// the patch.
struct Corner {
    uint32_t vertexIndex;
    uint32_t faceCell;
    uint32_t cell;
    int32_t dx;
    int32_t dy;

    uint32_t Outward(int32_t way) const { return cell - static_cast<uint32_t>(way); }
    uint32_t Inward(int32_t way) const { return cell + static_cast<uint32_t>(way); }
};

/// Corners in the order top left, top right, bottom left, bottom right.
Corner CornerOf(uint32_t i, uint32_t size, uint32_t stride) {
    const auto row = static_cast<int32_t>(stride);
    switch (i) {
        case 0:
            return {0, 0, size + 4, 1, row};
        case 1:
            return {size, size - 1, 2 * stride - 2, -1, row};
        case 2:
            return {(size + 1) * size, (size - 1) * size, (stride - 2) * stride + 1, 1, -row};
        default:
            return {
                (size + 1) * (size + 1) - 1, size * size - 1, (stride - 1) * stride - 2, -1, -row};
    }
}

}  // namespace

void SwiftStroke::ReadLayerValue(Vector& out, uint32_t vertex, uint32_t face) {
    const StoredVertexInfo& record =
        TouchRecord(*CurrentChange(), vertex, face, mesh->vertices.array[vertex], true);
    layer->get(&out, record.layerSlot);
}

void SwiftStroke::ReadPatchPositions(const uint32_t* slice) {
    const auto level = static_cast<uint32_t>(patchLevel);
    const uint32_t points = (1u << level) + 1;
    const uint32_t* vertexTable = SubdivisionLevel::QuadVertexIndexTable(level).array;
    const Vertex* const vertices = mesh->vertices.array;
    HWVector* row = positionGrid + gridStride + 1;
    if (IsListed(slice)) {
        const PatchVertexEntry* entries = patchVertexList;
        for (uint32_t left = points; left > 0; --left, row += gridStride) {
            HWVector* cell = row;
            HWVector* const end = row + points;
            for (; cell + 3 < end; cell += 4, entries += 4) {
                cell[0] = PositionOf(vertices[entries[0].vertex]);
                cell[1] = PositionOf(vertices[entries[1].vertex]);
                cell[2] = PositionOf(vertices[entries[2].vertex]);
                cell[3] = PositionOf(vertices[entries[3].vertex]);
            }
            while (cell < end) *cell++ = PositionOf(vertices[entries++->vertex]);
        }
        return;
    }
    for (uint32_t left = points; left > 0; --left, row += gridStride, vertexTable += points) {
        for (uint32_t column = 0; column < points; ++column)
            row[column] = PositionOf(vertices[slice[vertexTable[column]]]);
    }
}

void SwiftStroke::FillPatchHalo(Mesh* walked, uint32_t patch) {
    const TVCrashReporterFlag flag(4, 0x1000);
    const uint32_t* slice = PatchSlice(patch);
    if (isSmooth) {
        const bool readsLayer = SmoothsLayer();
        if (readsLayer) ReadPatchLayerValues(slice, patch);
        // Smoothing along vertex normals averages positions, even if averaging of layer values is
        // requested.
        if (!readsLayer || followVertexNormal) ReadPatchPositions(slice);
    }
    const bool layerGridToo = isSmooth && !affectAllLayers.Value();
    for (uint32_t side = 0; side < 4; ++side) {
        const uint32_t neighbour = walked->QuadEdgeNeighbour(patch, side);
        if (neighbour < firstOpen)
            ReadRingSide(
                PatchSlice(neighbour >> 2), side, neighbour & 3u, layerGridToo && layer != nullptr);
        else
            RepeatOpenSide(side, layerGridToo);
    }
}

void SwiftStroke::ReadPatchLayerValues(const uint32_t* slice, uint32_t patch) {
    const auto level = static_cast<uint32_t>(patchLevel);
    const uint32_t size = 1u << level;
    const uint32_t* vertexTable = SubdivisionLevel::QuadVertexIndexTable(level).array;
    const uint32_t* faceTable = SubdivisionLevel::QuadIndexTable(level).array;
    for (uint32_t row = 0; row <= size; ++row) {
        HWVector* cell = layerGrid + (row + 1) * gridStride + 1;
        for (uint32_t column = 0; column <= size; ++column) {
            const uint32_t face =
                facesPerPatch * patch +
                faceTable[std::min(column, size - 1) + std::min(row, size - 1) * size];
            Vector value;
            ReadLayerValue(value, slice[*vertexTable++], face);
            *cell++ = HWVector(value);
        }
    }
}

/// Reads the neighbour's vertices that are one step away from the shared edge. The two patches
/// traverse the edge in opposite directions, so the vertices are stored in reverse order.
void SwiftStroke::ReadRingSide(const uint32_t* slice,
                               uint32_t side,
                               uint32_t neighbourSide,
                               bool readsLayer) {
    const auto level = static_cast<uint32_t>(patchLevel);
    const uint32_t size = 1u << level;
    const Vertex* vertices = mesh->vertices.array;
    const Walk walk = NeighbourWalk(neighbourSide, size);
    const RingSide ring = RingSideOf(side, gridStride);
    const uint32_t* vertexTable = SubdivisionLevel::QuadVertexIndexTable(level).array;
    uint32_t tableIndex = walk.start;
    uint32_t cell = Along(ring.start, size, ring.step);
    HWVector* const positions = positionGrid;

    // The vertices of a side are scattered in memory, so they are all prefetched before the first
    // one is used.
    constexpr uint32_t together = 128;
    uint32_t found[together];
    for (uint32_t left = size + 1; left > 0;) {
        const uint32_t count = std::min(left, together);
        for (uint32_t i = 0; i < count; ++i, tableIndex += static_cast<uint32_t>(walk.step)) {
            found[i] = slice[vertexTable[tableIndex]];
            __builtin_prefetch(vertices + found[i]);
        }
        const uint32_t firstCell = cell;
        for (uint32_t i = 0; i < count; ++i, cell -= static_cast<uint32_t>(ring.step))
            positions[cell] = PositionOf(vertices[found[i]]);
        if (readsLayer) ReadRingLayer(found, count, firstCell, ring.step);
        left -= count;
    }
}

void SwiftStroke::ReadRingLayer(const uint32_t* ringVertices,
                                uint32_t count,
                                uint32_t cell,
                                int32_t step) {
    for (uint32_t i = 0; i < count; ++i, cell -= static_cast<uint32_t>(step)) {
        Vector value;
        ReadLayerValue(value, ringVertices[i], 0);
        layerGrid[cell] = HWVector(value);
    }
}

void SwiftStroke::RepeatOpenSide(uint32_t side, bool layerToo) {
    const uint32_t size = 1u << patchLevel;
    const RingSide ring = RingSideOf(side, gridStride);
    for (uint32_t i = 0; i <= size; ++i) {
        const uint32_t cell = Along(ring.start, i, ring.step);
        const uint32_t edge = cell + static_cast<uint32_t>(ring.inward);
        positionGrid[cell] = positionGrid[edge];
        if (layerToo) layerGrid[cell] = layerGrid[edge];
    }
}

void SwiftStroke::RingAverage(Vector& out, uint32_t vertex, uint32_t face) {
    ringSum = Vector();
    ringCount = 0;
    // Adds the vertex's own value, then those of its neighbours.
    Operator(vertex, face);
    mesh->EnumerateAdjacentVertices(this, vertex, face);
    out = ringSum * (1.0f / static_cast<float>(ringCount));
}

void SwiftStroke::Operator(uint32_t vertex, uint32_t face) {
    Vector value;
    if (!affectAllLayers.Value() && layer != nullptr) {
        ReadLayerValue(value, vertex, face);
    } else {
        const Vertex& v = mesh->vertices.array[vertex];
        value = Vector(v.x, v.y, v.z);
    }
    ++ringCount;
    // The sum starts with the first value instead of 0, so that the sign of a zero is preserved.
    ringSum = ringCount == 1 ? value : ringSum + value;
}

void SwiftStroke::CorrectCorners(uint32_t patch, Vector (&saved)[8]) {
    const auto level = static_cast<uint32_t>(patchLevel);
    const uint32_t size = 1u << level;
    const uint32_t* vertexTable = SubdivisionLevel::QuadVertexIndexTable(level).array;
    const uint32_t* faceTable = SubdivisionLevel::QuadIndexTable(level).array;
    const uint32_t* slice = PatchSlice(patch);
    HWVector* grid = affectAllLayers.Value() ? positionGrid : layerGrid;
    for (uint32_t i = 0; i < 4; ++i) {
        const Corner corner = CornerOf(i, size, gridStride);
        Vector mean;
        RingAverage(mean,
                    slice[vertexTable[corner.vertexIndex]],
                    facesPerPatch * patch + faceTable[corner.faceCell]);
        const HWVector kept =
            (grid[corner.Inward(corner.dy)] + grid[corner.Inward(corner.dx)]) + grid[corner.cell];
        HWVector& outwardY = grid[corner.Outward(corner.dy)];
        HWVector& outwardX = grid[corner.Outward(corner.dx)];
        saved[2 * i] = static_cast<Vector>(outwardY);
        saved[2 * i + 1] = static_cast<Vector>(outwardX);
        // The sum of the five cells around the corner is now five times the true mean.
        outwardY = HWVector::Zero();
        outwardX = HWVector(mean * 5.0f - static_cast<Vector>(kept));
    }
}

void SwiftStroke::RestoreCorners(const Vector (&saved)[8]) {
    for (uint32_t i = 0; i < 4; ++i) {
        const Corner corner = CornerOf(i, 1u << patchLevel, gridStride);
        positionGrid[corner.Outward(corner.dy)] = HWVector(saved[2 * i]);
        positionGrid[corner.Outward(corner.dx)] = HWVector(saved[2 * i + 1]);
    }
}

}  // namespace trovik
