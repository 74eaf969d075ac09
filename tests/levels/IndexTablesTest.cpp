// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/LevelGeometry.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

TEST(IndexTables, CellsOfAPatchAreInRecursiveOrder) {
    const uint32_t expected[16] = {0, 1, 4, 5, 3, 2, 7, 6, 12, 13, 8, 9, 15, 14, 11, 10};
    const Store<uint32_t>& table = SubdivisionLevel::QuadIndexTable(2);
    for (uint32_t cell = 0; cell < 16; ++cell) EXPECT_EQ(table[cell], expected[cell]) << cell;
}

TEST(IndexTables, InverseRestoresTheIndex) {
    for (uint32_t level = 0; level <= 5; ++level) {
        const Store<uint32_t>& face = SubdivisionLevel::QuadIndexTable(level);
        const Store<uint32_t>& cell = SubdivisionLevel::InvertedQuadIndexTable(level);
        for (uint32_t i = 0; i < 1u << (2 * level); ++i) EXPECT_EQ(cell[face[i]], i);
    }
}

TEST(IndexTables, GridPointsAreTheVerticesAtTheirPositions) {
    // For a refined single quad, grid point (row, column) is at (column, row) divided by the number
    // of cells per side.
    LevelGeometry geometry(SingleQuad());
    for (uint32_t level = 1; level <= 4; ++level) {
        geometry.Subdivide();
        const LevelMesh& mesh = *geometry.Bound();
        const uint32_t side = 1u << level;
        const Store<uint32_t>& table = SubdivisionLevel::QuadVertexIndexTable(level);
        for (uint32_t row = 0; row <= side; ++row) {
            for (uint32_t column = 0; column <= side; ++column) {
                const uint32_t vertex = mesh.faceVertexIndices[table[row * (side + 1) + column]];
                const Vector p = mesh.Position(vertex);
                // The curve of the open border is not uniform, but rows and columns still increase.
                const bool top = row == 0, bottom = row == side;
                const bool left = column == 0, right = column == side;
                if (top && left) {
                    EXPECT_EQ(p, Vector(0, 0, 0));
                }
                if (top && right) {
                    EXPECT_EQ(p, Vector(1, 0, 0));
                }
                if (bottom && right) {
                    EXPECT_EQ(p, Vector(1, 1, 0));
                }
                if (bottom && left) {
                    EXPECT_EQ(p, Vector(0, 1, 0));
                }
                if (left) continue;
                const uint32_t before =
                    mesh.faceVertexIndices[table[row * (side + 1) + column - 1]];
                EXPECT_GT(p.x, mesh.Position(before).x);
            }
        }
    }
}

}  // namespace
}  // namespace trovik::test
