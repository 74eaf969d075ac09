// SPDX-License-Identifier: Apache-2.0
#include "tests/fixture/StrokeFixture.h"
#include "tests/meshes/MeshZoo.h"
#include "topology/Grid.h"

#include <gtest/gtest.h>

#include <set>

namespace trovik::test {
namespace {

/// A grid of one patch and its neighbours: FlatGrid(3) with two subdivisions; patch 4 is the middle
/// one.
class FlatPatches : public ::testing::Test {
protected:
    StrokeFixture bench{FlatGrid(3), 2};
    LevelMesh* mesh = &bench.Mesh();
    static constexpr uint32_t middle = 4;
};

TEST_F(FlatPatches, ViewCoordinatesFollowTheRotation) {
    for (uint32_t column = 0; column < 4; ++column) {
        for (uint32_t row = 0; row < 4; ++row) {
            const uint32_t expected = GridFace(mesh, middle, 0, column, row, 0).Face();
            const GridFace quarter(mesh, middle, 0, column, row, 1);
            EXPECT_EQ(quarter.x, row);
            EXPECT_EQ(quarter.y, 3 - column);
            const GridFace half(mesh, middle, 0, column, row, 2);
            EXPECT_EQ(half.x, 3 - column);
            EXPECT_EQ(half.y, 3 - row);
            const GridFace threeQuarters(mesh, middle, 0, column, row, 3);
            EXPECT_EQ(threeQuarters.x, 3 - row);
            EXPECT_EQ(threeQuarters.y, column);
            // The cursor is on the same face in every rotated view of the grid.
            EXPECT_EQ(quarter.Face(), expected);
            EXPECT_EQ(half.Face(), expected);
            EXPECT_EQ(threeQuarters.Face(), expected);
        }
    }
}

TEST_F(FlatPatches, CornerZeroOfTheFourRotationsIsAnotherCornerOfTheCell) {
    std::set<uint32_t> corners;
    for (uint32_t rotation = 0; rotation < 4; ++rotation)
        corners.insert(GridFace(mesh, middle, 0, 1, 2, rotation).Corner(0));
    EXPECT_EQ(corners.size(), 4u);
}

TEST_F(FlatPatches, FourDirectionsWalkStraightAcrossTheSeam) {
    // Four steps from a cell of the middle patch cross the seam and end in a neighbouring patch.
    for (uint32_t rotation = 0; rotation < 4; ++rotation) {
        GridFace cursor(mesh, middle, 0, 1, 2, rotation);
        const Vector start = mesh->Position(cursor.Corner(0));
        for (int i = 0; i < 4; ++i) cursor.Step(0);
        const Vector end = mesh->Position(cursor.Corner(0));
        EXPECT_NE(cursor.patch, middle);
        const Vector way = end - start;
        // Cells are a quarter of a unit; the walk stays in its row or column.
        EXPECT_FLOAT_EQ(way.Length(), 1.0f) << "rotation " << rotation;
        EXPECT_TRUE(way.x == 0.0f || way.y == 0.0f);
    }
}

TEST_F(FlatPatches, OppositeStepsCancel) {
    GridFace cursor(mesh, middle, 0, 2, 1, 3);
    const uint32_t face = cursor.Face();
    for (int i = 0; i < 5; ++i) cursor.Step(1);
    EXPECT_NE(cursor.Face(), face);
    for (int i = 0; i < 5; ++i) cursor.Step(3);
    EXPECT_EQ(cursor.Face(), face);
    EXPECT_EQ(cursor.patch, middle);
    for (int i = 0; i < 3; ++i) cursor.Step(2);
    for (int i = 0; i < 3; ++i) cursor.Step(0);
    EXPECT_EQ(cursor.Face(), face);
}

TEST_F(FlatPatches, OpenBorderStepIsNoOp) {
    GridFace cursor(mesh, 0, 0, 2, 0, 0);
    const uint32_t face = cursor.Face();
    for (int i = 0; i < 3; ++i) {
        cursor.Step(0);
        EXPECT_EQ(cursor.Face(), face);
        EXPECT_EQ(cursor.rotation, 0u);
        EXPECT_EQ(cursor.patch, 0u);
    }
}

TEST(Grid, LevelZeroMakesEveryStepCrossAPatch) {
    StrokeFixture bench(FlatGrid(5));
    GridFace cursor(&bench.Mesh(), 12, 0, 0, 0, 0);
    EXPECT_EQ(cursor.size, 1u);
    cursor.Step(1);
    EXPECT_EQ(cursor.patch, 13u);
    cursor.Step(0);
    EXPECT_EQ(cursor.patch, 8u);
    cursor.Step(3);
    EXPECT_EQ(cursor.patch, 7u);
    cursor.Step(2);
    EXPECT_EQ(cursor.patch, 12u);
}

/// Returns a scripted neighbour for every query.
class ScriptedLevel : public SubdivisionLevel {
public:
    uint32_t answer = 0;

    MeshChange* StartChange() override { return nullptr; }
    uint32_t EnumerateAdjacentVertices(AdjacentVertexEnumerator*, uint32_t, uint32_t) override {
        return 0;
    }
    void EnumerateFaces(uint32_t, FaceEnumerator*, int) override {}
    void EnumerateVertices(uint32_t, VertexEnumerator*) override {}
    int32_t MirrorVertex(uint32_t, uint32_t, uint32_t*, uint32_t*) override { return -1; }
    uint32_t QuadEdgeNeighbour(uint32_t, uint32_t) override { return answer; }
    void FaceNormal(Vector*, uint32_t) override {}
    trovik::Geometry* Geometry() override { return nullptr; }
    bool Lock(MeshUnlocker*) override { return true; }
    int FreezeQuery() override { return 0; }
    trovik::Layer* Layer() override { return nullptr; }
    void Unlock() override {}
    int Index() const override { return 0; }
};

TEST_F(FlatPatches, PatchJoinedToItselfRotatesButKeepsTheCoordinate) {
    ScriptedLevel patches;
    GridFace cursor(mesh, middle, 0, 1, 0, 0);
    cursor.patchMesh = &patches;
    patches.answer = middle * 4 + 1;
    cursor.Step(0);
    EXPECT_EQ(cursor.patch, middle);
    EXPECT_EQ(cursor.rotation, 3u);
    EXPECT_EQ(cursor.y, 0u);
}

TEST_F(FlatPatches, ValueOnTheBorderlineCountsAsANeighbour) {
    ScriptedLevel patches;
    GridFace cursor(mesh, middle, 0, 1, 0, 0);
    cursor.patchMesh = &patches;
    patches.answer = 0x80000000u;
    cursor.Step(0);
    EXPECT_EQ(cursor.patch, 0x20000000u);
    EXPECT_EQ(cursor.y, 3u);

    GridFace stopped(mesh, middle, 0, 1, 0, 0);
    stopped.patchMesh = &patches;
    patches.answer = 0x80000001u;
    stopped.Step(0);
    EXPECT_EQ(stopped.patch, middle);
    EXPECT_EQ(stopped.y, 0u);
}

TEST_F(FlatPatches, InvalidDirectionOrRotationIsAnError) {
    GridFace cursor(mesh, middle, 0, 1, 1, 0);
    try {
        cursor.Step(4);
        FAIL() << "a direction of 4 was accepted";
    } catch (Error* error) {
        EXPECT_EQ(error->ErrorCode(), 4);
        EXPECT_STREQ(error->Function(), "GridFace::Step");
        EXPECT_EQ(error->Message(), QStringLiteral("wrong parameter"));
        Error::Dispose(error);
    }
    cursor.rotation = 4;
    try {
        cursor.Face();
        FAIL() << "a rotation of 4 was accepted";
    } catch (Error* error) {
        EXPECT_EQ(error->ErrorCode(), 4);
        EXPECT_STREQ(error->Function(), "Grid::Face");
        EXPECT_EQ(error->Message(), QStringLiteral("wrong parameter"));
        Error::Dispose(error);
    }
}

TEST(Grid, WalksAroundEveryMeshReturnOrStopAtABorder) {
    for (const ZooMesh& entry : QuadMeshes()) {
        SCOPED_TRACE(entry.name);
        StrokeFixture bench(entry.mesh, 2);
        LevelMesh& mesh = bench.Mesh();
        for (uint32_t patch = 0; patch < bench.geometry->Level(1)->faceCount; ++patch) {
            for (uint32_t rotation = 0; rotation < 4; ++rotation) {
                GridFace cursor(&mesh, patch, 1, 0, 1, rotation);
                // A step across a seam and back ends on the same face.
                for (uint32_t direction = 0; direction < 4; ++direction) {
                    GridFace walker = cursor;
                    for (int i = 0; i < 2; ++i) walker.Step(direction);
                    ASSERT_LT(walker.Face(), mesh.faceCount);
                    if (walker.patch == cursor.patch) continue;
                    for (int i = 0; i < 2; ++i) walker.Step((direction + 2) % 4);
                    EXPECT_EQ(walker.Face(), cursor.Face());
                }
            }
        }
    }
}

}  // namespace
}  // namespace trovik::test
