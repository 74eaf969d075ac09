// SPDX-License-Identifier: Apache-2.0

/// \file Tests strokes that continue from one mesh to another.
#include "tests/fixture/StrokeFixture.h"
#include "tests/stroke/FakeMesh.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

TEST(MeshChangeover, ToAnotherMeshAndBackMakesThreePairs) {
    StrokeFixture a(FlatGrid(3));
    StrokeFixture b(FlatGrid(3));
    SwiftStroke& brush = *a.brush;
    const auto bitsOfA = BitsOf(a.Mesh());
    const auto bitsOfB = BitsOf(b.Mesh());
    const uint32_t versionOfA = a.Mesh().Version();
    a.Begin();
    a.Dab(a.HitFace(0), 0.8f);
    a.Dab(b.HitFace(4), 0.8f);
    EXPECT_EQ(static_cast<Mesh*>(brush.mesh), &b.Mesh());
    EXPECT_EQ(a.Mesh().Version(), versionOfA + 1);
    a.Dab(a.HitFace(8), 0.8f);
    ASSERT_EQ(brush.meshChanges.fill, 3u);
    EXPECT_EQ(brush.meshChanges[0].mesh, &a.Mesh());
    EXPECT_EQ(brush.meshChanges[1].mesh, &b.Mesh());
    EXPECT_EQ(brush.meshChanges[2].mesh, &a.Mesh());
    EXPECT_NE(brush.meshChanges[0].change, brush.meshChanges[2].change);
    EXPECT_EQ(brush.CurrentChange(), brush.meshChanges[2].change);
    EXPECT_EQ(a.Mesh().changeRecordCount, *brush.CurrentChange()->recordCount);
    a.End();
    EXPECT_NE(BitsOf(a.Mesh()), bitsOfA);
    EXPECT_NE(BitsOf(b.Mesh()), bitsOfB);
    while (a.geometry->History().CanUndo()) a.geometry->History().Undo(*a.geometry);
    while (b.geometry->History().CanUndo()) b.geometry->History().Undo(*b.geometry);
    EXPECT_EQ(BitsOf(a.Mesh()), bitsOfA);
    EXPECT_EQ(BitsOf(b.Mesh()), bitsOfB);
}

TEST(MeshChangeover, VertexTouchedInBothVisitsIsRestored) {
    StrokeFixture a(FlatGrid(3));
    StrokeFixture b(FlatGrid(3));
    const auto before = BitsOf(a.Mesh());
    a.Begin();
    a.Dab(a.HitFace(4), 1.0f);
    a.Dab(b.HitFace(4), 1.0f);
    a.Dab(a.HitFace(4), 1.0f);
    a.End();
    const auto after = BitsOf(a.Mesh());
    EXPECT_NE(after, before);
    while (a.geometry->History().CanUndo()) a.geometry->History().Undo(*a.geometry);
    EXPECT_EQ(BitsOf(a.Mesh()), before);
    while (a.geometry->History().CanRedo()) a.geometry->History().Redo(*a.geometry);
    EXPECT_EQ(BitsOf(a.Mesh()), after);
}

TEST(MeshChangeover, PerStrokeValuesStayThoseOfTheFirstMesh) {
    StrokeFixture a(FlatGrid(3));
    StrokeFixture b(FlatGrid(3));
    b.geometry->Transform().Set({1.0f, 2.0f, 4.0f}, {}, {});
    SwiftStroke& brush = *a.brush;
    a.Begin();
    a.Dab(a.HitFace(4), 0.8f);
    EXPECT_FALSE(brush.nonUniformScale);
    const float* const table = brush.falloffTable;
    AxisAlignedBoundingBox box;
    const SurfacePoint hit = b.HitFace(4);
    brush.ApplyDab(hit, b.WorldOf(hit.position), 0.8f, 1.0f, 10.0f, box);
    EXPECT_TRUE(brush.nonUniformScale);
    EXPECT_EQ(brush.brushSpace->meshToWorld[1].Y(), 2.0f);
    EXPECT_EQ(brush.brushSpace->meshToWorld[2].Z(), 4.0f);
    EXPECT_EQ(brush.strokeStrengthScale, 1.0f);
    EXPECT_EQ(static_cast<Vector>(brush.brushSpace->inverseScale), Vector(1.0f, 1.0f, 1.0f));
    EXPECT_EQ(brush.falloffTable, table);
    EXPECT_EQ(brush.planeDabCount, 1u);
    a.End();
}

TEST(MeshChangeover, LockedStrokeStaysOnItsMesh) {
    StrokeFixture a(FlatGrid(3));
    StrokeFixture b(FlatGrid(3));
    a.brush->strokeMeshLocked = 1;
    const auto bitsOfB = BitsOf(b.Mesh());
    a.Begin();
    const AxisAlignedBoundingBox box = a.Dab(b.HitFace(4), 0.8f);
    EXPECT_TRUE(box.IsEmpty());
    EXPECT_EQ(static_cast<Mesh*>(a.brush->mesh), &a.Mesh());
    EXPECT_EQ(a.brush->meshChanges.fill, 1u);
    // The dab counter has advanced even though the dab had no effect.
    EXPECT_EQ(a.brush->planeDabCount, 0u);
    a.End();
    EXPECT_EQ(BitsOf(b.Mesh()), bitsOfB);
}

TEST(MeshChangeover, RefusingMeshEndsTheDabAndTheNextDabMayBindAgain) {
    StrokeFixture a(FlatGrid(3));
    StrokeFixture b(FlatGrid(3));
    b.Mesh().SetLockable(false);
    const auto bitsOfA = BitsOf(a.Mesh());
    a.Begin();
    a.Dab(b.HitFace(4), 0.8f);
    EXPECT_EQ(a.brush->mesh, nullptr);
    EXPECT_TRUE(a.brush->strokeActive);
    a.Dab(a.HitFace(4), 0.8f);
    EXPECT_EQ(static_cast<Mesh*>(a.brush->mesh), &a.Mesh());
    EXPECT_EQ(a.brush->meshChanges.fill, 2u);
    a.End();
    EXPECT_NE(BitsOf(a.Mesh()), bitsOfA);
}

}  // namespace
}  // namespace trovik::test
