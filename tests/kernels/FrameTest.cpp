// SPDX-License-Identifier: Apache-2.0

/// \file Tests the parts of a kernel outside its stages: work list, records, marks, grid and return
/// value.
#include "framework/brushes/BrushSettings.h"
#include "tests/kernels/KernelFixture.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

/// Two adjacent patches of 2 x 2 faces with three common vertices at x = 1.
class SeamOfTwoPatches : public ::testing::Test {
protected:
    SeamOfTwoPatches() { bench.Start(Tool::Sculpt); }
    KernelFixture bench{GridMesh(2, 1), 1, 1};
    const uint32_t seam = bench.VertexNear({1.0f, 0.5f, 0.0f});
};

TEST_F(SeamOfTwoPatches, VertexIsMovedOnceByTheFirstPatchThatReachesIt) {
    bench.Aim({1.0f, 0.5f, 0.0f}, 0.6f);
    bench.brush.dabStrength = 0.25f;
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_EQ(bench.Height(seam), 0.25f);
    EXPECT_TRUE(bench.RunKernel(1));
    EXPECT_EQ(bench.Height(seam), 0.25f);
    // A vertex that belongs only to the second patch shows that this patch was processed as well.
    EXPECT_EQ(bench.Height(bench.VertexNear({1.5f, 0.5f, 0.0f})), 0.25f);
}

TEST_F(SeamOfTwoPatches, SecondPatchReadsTheMovedPositionIntoItsGrid) {
    bench.Aim({1.0f, 0.5f, 0.0f}, 0.6f);
    bench.brush.dabStrength = 0.25f;
    bench.RunKernel(0);
    bench.RunKernel(1);
    int found = 0;
    for (uint32_t row = 0; row < 3; ++row) {
        for (uint32_t column = 0; column < 3; ++column) {
            if (bench.VertexAt(1, row, column) != seam) continue;
            ++found;
            EXPECT_EQ(bench.GridAt(row, column), Vector(1.0f, 0.5f, 0.25f));
        }
    }
    EXPECT_EQ(found, 1);
}

TEST_F(SeamOfTwoPatches, MarkedVertexDoesNotMakeAQuadPatchReached) {
    // Only the seam vertex is in reach.
    bench.Aim({1.0f, 0.5f, 0.0f}, 0.25f);
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_FALSE(bench.RunKernel(1));
    bench.NextDab();
    EXPECT_TRUE(bench.RunKernel(1));
}

TEST_F(SeamOfTwoPatches, MarkedVertexOfATriangleMeshCountsWithinTheRadius) {
    bench.Aim({1.0f, 0.5f, 0.0f}, 0.25f);
    ASSERT_TRUE(bench.RunKernel(0));
    bench.mesh.meshType = 0;
    EXPECT_TRUE(bench.RunKernel(1));
    // A vertex whose distance equals the radius is in reach. The distance is measured from the
    // position at first touch, so the vertex's own displacement has no effect.
    bench.Aim({1.25f, 0.5f, 0.0f}, 0.25f);
    EXPECT_TRUE(bench.RunKernel(0));
    bench.Aim({1.375f, 0.5f, 0.0f}, 0.25f);
    EXPECT_FALSE(bench.RunKernel(0));
    bench.mesh.meshType = 1;
}

TEST_F(SeamOfTwoPatches, VertexOutOfReachHasARecordAMarkAndAGridCell) {
    bench.Aim({1.0f, 0.5f, 0.0f}, 0.25f);
    bench.RunKernel(0);
    EXPECT_EQ(bench.mesh.changeRecordCount, 9u);
    for (uint32_t row = 0; row < 3; ++row) {
        for (uint32_t column = 0; column < 3; ++column) {
            const uint32_t vertex = bench.VertexAt(0, row, column);
            const StoredVertexInfo* record = bench.Record(vertex);
            ASSERT_NE(record, nullptr);
            EXPECT_EQ(record->visitStampWord, bench.brush.dabStamp);
            EXPECT_EQ(record->buildUp, vertex == seam ? 1.0f : 0.0f);
            EXPECT_EQ(bench.GridAt(row, column), bench.mesh.Position(vertex));
            EXPECT_EQ(bench.Height(vertex), vertex == seam ? 1.0f : 0.0f);
        }
    }
}

TEST_F(SeamOfTwoPatches, LaterDabOutOfReachWritesTheCurrentPositionToTheGrid) {
    bench.Aim({1.0f, 0.5f, 0.0f}, 0.25f);
    bench.RunKernel(0);
    bench.NextDab();
    bench.Aim({50.0f, 0.0f, 0.0f}, 0.25f);
    EXPECT_FALSE(bench.RunKernel(0));
    int found = 0;
    for (uint32_t row = 0; row < 3; ++row) {
        for (uint32_t column = 0; column < 3; ++column) {
            if (bench.VertexAt(0, row, column) != seam) continue;
            ++found;
            EXPECT_EQ(bench.GridAt(row, column), Vector(1.0f, 0.5f, 1.0f));
        }
    }
    EXPECT_EQ(found, 1);
    EXPECT_EQ(bench.Record(seam)->originalPosition[2], 0.0f);
}

TEST_F(SeamOfTwoPatches, ReachIsMeasuredAtFirstTouch) {
    bench.brush.buildUpRateCubed = 0.5f;
    bench.Aim({1.0f, 0.5f, 0.0f}, 0.25f);
    bench.brush.dabStrength = 8.0f;
    bench.RunKernel(0);
    EXPECT_EQ(bench.Height(seam), 4.0f);
    // Its current position is far outside the radius.
    bench.NextDab();
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_EQ(bench.Height(seam), 6.0f);
}

TEST_F(SeamOfTwoPatches, GridHasOnlyThePatchAndWZero) {
    bench.Aim({1.0f, 0.5f, 0.0f}, 0.6f);
    bench.RunKernel(0);
    for (uint32_t row = 0; row < 5; ++row) {
        for (uint32_t column = 0; column < 5; ++column) {
            const HWVector& cell = bench.positionCells[row * 5 + column];
            const bool inside = row >= 1 && row <= 3 && column >= 1 && column <= 3;
            EXPECT_EQ(std::isnan(cell.X()), !inside) << row << ", " << column;
            if (inside) {
                EXPECT_EQ(cell.W(), 0.0f);
            }
        }
    }
}

TEST_F(SeamOfTwoPatches, EachRunCountsAllVerticesOfThePatch) {
    EXPECT_EQ(strokeVertexCount, 0u);
    bench.RunKernel(0);
    EXPECT_EQ(strokeVertexCount, 9u);
    bench.Aim({50.0f, 0.0f, 0.0f}, 0.25f);
    EXPECT_FALSE(bench.RunKernel(1));
    EXPECT_EQ(strokeVertexCount, 18u);
}

TEST(RefusingLayer, EndsTheKernelBeforeAnyVertex) {
    KernelFixture bench(GridMesh(2, 1), 1, 1);
    bench.stroke.AddLayer().SetWritable(false);
    bench.Start(Tool::Sculpt);
    bench.mesh.SetPosition(bench.VertexAt(0, 1, 1), {0.5f, 0.5f, 0.75f});
    bench.Aim({1.0f, 0.5f, 0.0f}, 5.0f);
    EXPECT_FALSE(bench.RunKernel(0));
    EXPECT_EQ(bench.mesh.changeRecordCount, 0u);
    EXPECT_EQ(strokeVertexCount, 0u);
    EXPECT_EQ(bench.brush.patchVertexList, nullptr);
    EXPECT_EQ(bench.BoxMin(), Vector(1.0f, 0.5f, 0.0f));
    EXPECT_EQ(bench.BoxMax(), Vector(1.0f, 0.5f, 0.0f));
    // The patch's normals are computed from the grid, so the grid contains the current positions.
    EXPECT_EQ(bench.GridAt(1, 1), Vector(0.5f, 0.5f, 0.75f));

    const uint32_t raised = bench.VertexAt(0, 1, 0);
    bench.mesh.vertexNormals.array[raised] = {7, 7, 7, 7};
    EXPECT_FALSE(bench.RunTester(0));
    const PackedNormal& normal = bench.mesh.vertexNormals.array[raised];
    EXPECT_NE(normal.z, 7);
    EXPECT_LT(normal.x, 0) << "the middle of the patch is raised";
}

TEST(RefusingLayer, IsQueriedOnlyByKernelsThatUseALayer) {
    KernelFixture bench(GridMesh(2, 1), 1, 1);
    bench.stroke.AddLayer().SetWritable(false);
    bench.Start(Tool::Sculpt);
    bench.brush.meshHasLayer = false;
    bench.Aim({1.0f, 0.5f, 0.0f}, 0.6f);
    const uint32_t aimedAt = bench.VertexNear({1.0f, 0.5f, 0.0f});
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_EQ(bench.Height(aimedAt), 1.0f);
}

TEST(WorkList, PatchOfOneFaceHasItsFourCorners) {
    KernelFixture bench(GridMesh(2, 2), 1, 0);
    bench.Start(Tool::Sculpt);
    const uint32_t patch = 7;
    ASSERT_EQ(bench.brush.BuildWorkList(patch), 4u);
    const uint32_t cells[] = {5, 6, 9, 10};
    for (uint32_t i = 0; i < 4; ++i) {
        const PatchVertexEntry& entry = bench.brush.patchVertexList[i];
        EXPECT_EQ(entry.vertex, bench.VertexAt(patch, i / 2, i % 2));
        EXPECT_EQ(entry.face, patch);
        EXPECT_EQ(entry.cell, cells[i]);
        EXPECT_GE(bench.mesh.CornerOf(patch, entry.vertex), 0);
    }
}

TEST(WorkList, ListsTheFacesInAFixedOrder) {
    KernelFixture bench(GridMesh(2, 2), 1, 1);
    bench.Start(Tool::Sculpt);
    const uint32_t patch = 3;
    ASSERT_EQ(bench.brush.BuildWorkList(patch), 9u);
    // The grid cell of the face of each vertex, row by row. The first vertex of a row has the same
    // face as the next vertex, and the last row of vertices uses the faces of the last row of
    // cells.
    const uint32_t faceCells[] = {0, 0, 1, 2, 2, 3, 2, 2, 3};
    const Store<uint32_t>& faces = SubdivisionLevel::QuadIndexTable(1);
    for (uint32_t i = 0; i < 9; ++i)
        EXPECT_EQ(bench.brush.patchVertexList[i].face, patch * 4 + faces[faceCells[i]]) << i;
}

TEST(WorkList, EachEntryIsAVertexOfItsFaceAtItsCell) {
    for (const int32_t level : {0, 1, 2, 3}) {
        SCOPED_TRACE(level);
        KernelFixture bench(RotatedCornerGrid(2), 3, level);
        bench.Start(Tool::Sculpt);
        const uint32_t points = bench.Points();
        const uint32_t facesPerPatch = (points - 1) * (points - 1);
        for (uint32_t patch = 0; patch < bench.mesh.faceCount / facesPerPatch; ++patch) {
            ASSERT_EQ(bench.brush.BuildWorkList(patch), points * points);
            for (uint32_t i = 0; i < points * points; ++i) {
                const PatchVertexEntry& entry = bench.brush.patchVertexList[i];
                EXPECT_EQ(entry.vertex, bench.VertexAt(patch, i / points, i % points));
                EXPECT_EQ(entry.cell, (i / points + 1) * (points + 2) + i % points + 1);
                EXPECT_EQ(entry.face / facesPerPatch, patch);
                EXPECT_GE(bench.mesh.CornerOf(entry.face, entry.vertex), 0);
            }
        }
    }
}

TEST(WorkList, BufferNeverShrinksDuringAStroke) {
    KernelFixture bench(GridMesh(2, 2), 2, 2);
    bench.Start(Tool::Sculpt);
    bench.brush.BuildWorkList(0);
    EXPECT_EQ(bench.brush.patchVertexListCapacity, 25);
    const PatchVertexEntry* buffer = bench.brush.patchVertexList;
    bench.brush.patchLevel = 1;
    bench.brush.facesPerPatch = 4;
    EXPECT_EQ(bench.brush.BuildWorkList(0), 9u);
    EXPECT_EQ(bench.brush.patchVertexListCapacity, 25);
    EXPECT_EQ(bench.brush.patchVertexList, buffer);
}

TEST(MirroredStampRead, IsUsedOnlyInTheMirroredPassOfTheTopologicalMode) {
    KernelFixture bench(GridMesh(2, 1), 1, 1);
    bench.Start(Tool::Sculpt);
    SwiftStroke& brush = bench.brush;
    for (const bool mask : {false, true}) {
        for (const uint32_t pass : {0u, 1u}) {
            for (const int mode : {0, 1, 2, 3, 7}) {
                brush.Settings().mirroredStampRead = mask;
                brush.mirrorPass = pass;
                brush.MirrorConfig().SetMirrorMode(mode);
                EXPECT_EQ(brush.WantsMirroredStampRead(), mask && pass == 1 && mode == 7);
            }
        }
    }
}

}  // namespace
}  // namespace trovik::test
