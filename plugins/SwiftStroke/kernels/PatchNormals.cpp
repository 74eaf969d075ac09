// SPDX-License-Identifier: Apache-2.0

/// \file Computes the normals of a patch by central differences over its grid. Adjacent cells of a
/// row are transposed to registers of x, y and z values.
#include "kernels/PatchNormals.h"

#include "brush/SwiftStroke.h"
#include "kernels/batch/BatchStages.h"

#include <algorithm>
#include <cstring>

namespace trovik {

namespace {

/// The fourth word is reserved for the host and does not change. The normal is read and written as
/// one word, so that the load is issued long before its value is needed.
TROVIK_FORCE_INLINE void StoreNormal(PackedNormal& normal, uint64_t packed) {
    constexpr uint64_t hostWord = uint64_t{0xffff} << 48;
    uint64_t words;
    std::memcpy(&words, &normal, sizeof words);
    words = (words & hostWord) | packed;
    std::memcpy(&normal, &words, sizeof words);
}

}  // namespace

void PackFewNormals(
    const HWVector* cell, uint32_t stride, uint32_t count, const HWVector& scale, PackedRow& out) {
    constexpr uint32_t lanes = 4;
    if (count >= lanes) return batchStages4.packNormals(cell, stride, count, scale, out);
    // The cells are processed in a copy, because the grid may end after them.
    HWVector copy[3][lanes + 2];
    for (uint32_t i = 0; i < lanes + 2; ++i) {
        const uint32_t from = std::min(i, count + 1);
        for (uint32_t row = 0; row < 3; ++row)
            copy[row][i] = *(cell + from + row * stride - stride - 1);
    }
    batchStages4.packNormals(copy[1] + 1, lanes + 2, lanes, scale, out);
}

/// Computes the normals of a patch and stores them.
class SwiftStroke::NormalRefresh {
public:
    NormalRefresh(const SwiftStroke& brush, const uint32_t* patchSlice)
        : points((1u << brush.patchLevel) + 1),
          stride(brush.gridStride),
          grid(brush.positionGrid + stride + 1),
          slice(patchSlice),
          indexTable(SubdivisionLevel::QuadVertexIndexTable(static_cast<uint32_t>(brush.patchLevel))
                         .array),
          list(brush.IsListed(patchSlice) ? brush.patchVertexList : nullptr),
          fetchesLate(brush.PrefetchesLate()),
          normals(brush.mesh->vertexNormals.array),
          scaleSquared(brush.brushSpace->inverseScale * brush.brushSpace->inverseScale),
          pack(StagesOf(CurrentVectorWidth()).packNormals) {}

    /// Processes the rows as one sequence, including the ghost cells between them. This is cheaper
    /// than processing partial groups at the end of each row.
    void All() {
        const uint32_t cells = (points - 1) * stride + points;
        uint32_t index = 0;
        uint32_t column = 0;
        for (uint32_t first = 0; first < cells; first += PackedRow::capacity) {
            const uint32_t count = std::min(cells - first, PackedRow::capacity);
            pack(grid + first, stride, count, scaleSquared, packed);
            for (uint32_t i = 0; i < count;) {
                if (column < points) {
                    const uint32_t length = std::min(points - column, count - i);
                    Put(i, length, index);
                    index += length;
                    column += length;
                    i += length;
                } else {
                    column = column + 1 == stride ? 0 : column + 1;
                    ++i;
                }
            }
        }
    }

private:
    /// Stores `count` packed normals, starting at index `first`, for entries of the patch list.
    void Put(uint32_t first, uint32_t count, uint32_t index) {
        const uint64_t* from = packed.normals + first;
        // The members are copied to local variables, because the compiler must assume that storing
        // a normal may change them.
        PackedNormal* const to = normals;
        if (list == nullptr) {
            for (const uint32_t* at = indexTable + index; count > 0; --count)
                StoreNormal(to[slice[*at++]], *from++);
            return;
        }
        // With the list, vertices are accessed through fewer indirections.
        const PatchVertexEntry* entries = list + index;
        if (fetchesLate) {
            const PatchVertexEntry* const last = list + (points * points - 1);
            for (; count > 0; --count) {
                __builtin_prefetch(to + std::min(entries + PackedRow::capacity, last)->vertex);
                StoreNormal(to[entries++->vertex], *from++);
            }
            return;
        }
        for (; count > 3; count -= 4, entries += 4, from += 4) {
            StoreNormal(to[entries[0].vertex], from[0]);
            StoreNormal(to[entries[1].vertex], from[1]);
            StoreNormal(to[entries[2].vertex], from[2]);
            StoreNormal(to[entries[3].vertex], from[3]);
        }
        for (; count > 0; --count) StoreNormal(to[entries++->vertex], *from++);
    }

    uint32_t points;
    uint32_t stride;
    const HWVector* grid;
    const uint32_t* slice;
    const uint32_t* indexTable;
    const PatchVertexEntry* list;
    bool fetchesLate;
    PackedNormal* normals;
    HWVector scaleSquared;
    NormalPacker pack;
    PackedRow packed = {};
};

void SwiftStroke::RefreshPatchNormals(const uint32_t* slice) { NormalRefresh(*this, slice).All(); }

void SwiftStroke::RefreshNormal(uint32_t row, uint32_t column, uint32_t vertex) {
    PackedRow packed;
    PackFewNormals(positionGrid + (row + 1) * gridStride + column + 1,
                   gridStride,
                   1,
                   brushSpace->inverseScale * brushSpace->inverseScale,
                   packed);
    StoreNormal(mesh->vertexNormals[vertex], packed.normals[0]);
}

}  // namespace trovik
