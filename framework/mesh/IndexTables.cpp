// SPDX-License-Identifier: Apache-2.0

/// \file
/// Index tables of a patch: they map grid points and cells to its faces. The number of a face
/// within the patch has one base-4 digit per level, most significant first. Digit k is the child at
/// corner k: 0 top left, 1 top right, 2 bottom right, 3 bottom left. The children have the same
/// orientation as the parent.
#include "framework/memory/FilledStore.h"
#include "host/Mesh.h"

#include <array>
#include <cassert>
#include <memory>

namespace trovik {

namespace {

constexpr uint32_t levelCount = 16;

struct PatchTables {
    Store<uint32_t> vertexIndex{"patch tables"};
    Store<uint32_t> faceOfCell{"patch tables"};
    Store<uint32_t> cellOfFace{"patch tables"};
};

uint32_t FaceAt(uint32_t row, uint32_t column, uint32_t level) {
    uint32_t face = 0;
    for (uint32_t bit = level; bit-- > 0;) {
        const uint32_t below = (row >> bit) & 1u;
        const uint32_t right = (column >> bit) & 1u;
        const uint32_t digit = below == 0 ? right : 3u - right;
        face = face * 4 + digit;
    }
    return face;
}

void Fill(PatchTables& tables, uint32_t level) {
    const uint32_t side = 1u << level;
    ResizeStore(tables.faceOfCell, side * side);
    ResizeStore(tables.cellOfFace, side * side);
    for (uint32_t row = 0; row < side; ++row) {
        for (uint32_t column = 0; column < side; ++column) {
            const uint32_t cell = row * side + column;
            const uint32_t face = FaceAt(row, column, level);
            tables.faceOfCell.array[cell] = face;
            tables.cellOfFace.array[face] = cell;
        }
    }
    // A grid point is the top left corner of its cell. A point in the last row or column is a
    // different corner of the previous cell.
    ResizeStore(tables.vertexIndex, (side + 1) * (side + 1));
    uint32_t point = 0;
    for (uint32_t row = 0; row <= side; ++row) {
        for (uint32_t column = 0; column <= side; ++column, ++point) {
            const bool lastRow = row == side;
            const bool lastColumn = column == side;
            const uint32_t corner = lastRow ? (lastColumn ? 2u : 3u) : (lastColumn ? 1u : 0u);
            const uint32_t cell =
                (lastRow ? side - 1 : row) * side + (lastColumn ? side - 1 : column);
            tables.vertexIndex.array[point] = tables.faceOfCell.array[cell] * 4 + corner;
        }
    }
}

const PatchTables& TablesOf(uint32_t level) {
    assert(level < levelCount);
    // Never destroyed, because brushes in static objects may still use the tables during program
    // exit.
    static auto* all = new std::array<std::unique_ptr<PatchTables>, levelCount>;
    std::unique_ptr<PatchTables>& tables = (*all)[level];
    if (tables == nullptr) {
        auto made = std::make_unique<PatchTables>();
        Fill(*made, level);
        tables = std::move(made);
    }
    return *tables;
}

}  // namespace

const Store<uint32_t>& SubdivisionLevel::QuadVertexIndexTable(uint32_t level) {
    return TablesOf(level).vertexIndex;
}
const Store<uint32_t>& SubdivisionLevel::QuadIndexTable(uint32_t level) {
    return TablesOf(level).faceOfCell;
}
const Store<uint32_t>& SubdivisionLevel::InvertedQuadIndexTable(uint32_t level) {
    return TablesOf(level).cellOfFace;
}

}  // namespace trovik
