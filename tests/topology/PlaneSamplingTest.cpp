// SPDX-License-Identifier: Apache-2.0
#include "brush/Registration.h"
#include "tests/fixture/StrokeFixture.h"
#include "topology/NormalCalculator.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

/// Restores a preference at the end of a test.
class PreferenceGuard {
public:
    PreferenceGuard(const Preferences::Bool& changed, bool value)
        : preference(changed), before(changed) {
        preference.attribute->SetValue(value, true);
    }
    ~PreferenceGuard() { preference.attribute->SetValue(before, true); }

private:
    const Preferences::Bool& preference;
    bool before;
};

/// A bound brush whose centre and radius are set directly: FlatGrid(4), centre in the middle.
class Sampling : public ::testing::Test {
protected:
    Sampling() {
        bench.Begin();
        SwiftStroke& b = *bench.brush;
        b.brushSpace->center = HWVector(Vector(2.0f, 2.0f, 0.0f));
        b.setRadius(1.0f);
        b.planeSampleNormalSum = Vector();
        b.planeSamplePositionSum = Vector();
        b.planeSampleWeight = 0.0f;
    }
    ~Sampling() override { bench.End(); }

    /// Vertex (column, row) of the grid.
    static uint32_t At(uint32_t column, uint32_t row) { return row * 5 + column; }

    StrokeFixture bench{FlatGrid(4)};
    SwiftStroke& brush = *bench.brush;
    LevelMesh& mesh = bench.Mesh();
};

TEST_F(Sampling, VertexOnTheRimCountsWithWeightOne) {
    EXPECT_TRUE(brush.SamplePlaneVertex(At(3, 2)));
    EXPECT_EQ(brush.planeSampleWeight, 1.0f);
    EXPECT_EQ(brush.planeSamplePositionSum, Vector(3.0f, 2.0f, 0.0f));
}

TEST_F(Sampling, VertexOnTheRimHasWeightZeroAndStillCounts) {
    const PreferenceGuard guard(useVertexWeightsForFlatten, true);
    EXPECT_TRUE(brush.SamplePlaneVertex(At(3, 2)));
    EXPECT_EQ(brush.planeSampleWeight, 0.0f);
    EXPECT_TRUE(brush.SamplePlaneVertex(At(2, 2)));
    EXPECT_EQ(brush.planeSampleWeight, 1.0f);
}

TEST_F(Sampling, VertexAtTheCentreOfABrushOfRadiusZeroHasWeightOne) {
    const PreferenceGuard guard(useVertexWeightsForFlatten, true);
    brush.setRadius(0.0f);
    EXPECT_TRUE(brush.SamplePlaneVertex(At(2, 2)));
    EXPECT_EQ(brush.planeSampleWeight, 1.0f);
    EXPECT_EQ(brush.planeSamplePositionSum, Vector(2.0f, 2.0f, 0.0f));
    EXPECT_FALSE(brush.SamplePlaneVertex(At(3, 2)));
}

TEST_F(Sampling, VertexOutOfReachIsStillMarked) {
    EXPECT_FALSE(brush.SamplePlaneVertex(At(4, 4)));
    EXPECT_EQ(mesh.vertices.array[At(4, 4)].changeLink, mesh.visitStamp);
    EXPECT_EQ(brush.planeSampleWeight, 0.0f);
}

TEST_F(Sampling, VertexAlreadySampledInThisWalkReturnsFalse) {
    EXPECT_TRUE(brush.SamplePlaneVertex(At(2, 2)));
    EXPECT_FALSE(brush.SamplePlaneVertex(At(2, 2)));
    EXPECT_EQ(brush.planeSampleWeight, 1.0f);
    ++mesh.visitStamp;
    EXPECT_TRUE(brush.SamplePlaneVertex(At(2, 2)));
}

TEST_F(Sampling, SamplingMakesNoRecord) {
    brush.SamplePlaneVertex(At(2, 2));
    EXPECT_EQ(*brush.CurrentChange()->recordCount, 0u);
}

TEST_F(Sampling, DistanceUsesFirstTouchButCurrentPositionsAreSummed) {
    const uint32_t v = At(2, 2);
    brush.CurrentChange()->Add_uncached(v, 0, mesh.vertices.array[v], false);
    mesh.SetPosition(v, {2.0f, 2.0f, 5.0f});
    EXPECT_TRUE(brush.SamplePlaneVertex(v));
    EXPECT_EQ(brush.planeSamplePositionSum, Vector(2.0f, 2.0f, 5.0f));
}

TEST_F(Sampling, OriginalDataModeSumsFirstTouchPositions) {
    const PreferenceGuard guard(useOriginalDataForFlatten, true);
    const uint32_t v = At(2, 2);
    StoredVertexInfo& record =
        brush.CurrentChange()->Add_uncached(v, 0, mesh.vertices.array[v], false);
    record.originalNormal.x = 32767;
    record.originalNormal.z = 0;
    mesh.SetPosition(v, {2.0f, 2.0f, 5.0f});
    EXPECT_TRUE(brush.SamplePlaneVertex(v));
    EXPECT_EQ(brush.planeSamplePositionSum, Vector(2.0f, 2.0f, 0.0f));
    EXPECT_FLOAT_EQ(brush.planeSampleNormalSum.x, 1.0f);
    // Without a record, the original and the current position are the same.
    EXPECT_TRUE(brush.SamplePlaneVertex(At(2, 3)));
    EXPECT_FLOAT_EQ(brush.planeSampleNormalSum.z, 1.0f);
}

TEST_F(Sampling, DistancesAreInWorldSpaceAndSumsInMeshSpace) {
    brush.nonUniformScale = true;
    for (int row = 0; row < 4; ++row)
        brush.brushSpace->meshToWorld[row] = HWVector(row == 0 ? 10.0f : 0.0f,
                                                      row == 1 ? 1.0f : 0.0f,
                                                      row == 2 ? 1.0f : 0.0f,
                                                      row == 3 ? 1.0f : 0.0f);
    brush.brushSpace->center = HWVector(Vector(20.0f, 2.0f, 0.0f));
    EXPECT_TRUE(brush.SamplePlaneVertex(At(2, 3)));
    EXPECT_FALSE(brush.SamplePlaneVertex(At(3, 2)));
    EXPECT_EQ(brush.planeSamplePositionSum, Vector(2.0f, 3.0f, 0.0f));
    brush.nonUniformScale = false;
}

TEST_F(Sampling, PatchAlreadySampledReturnsFalse) {
    brush.patchLevel = 0;
    brush.facesPerPatch = 1;
    EXPECT_TRUE(brush.SamplePlanePatch(5));
    EXPECT_FALSE(brush.SamplePlanePatch(5));
}

TEST(NormalCalculator, GivesTheUnnormalisedMeanOfUnitFaceNormals) {
    // Two quads folded at a right angle along the edge of vertices 1 and 2.
    PolygonMesh folded;
    folded.positions = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {1, 0, 1}, {1, 1, 1}};
    folded.faceSizes = {4, 4};
    folded.faceVertices = {0, 1, 2, 3, 1, 4, 5, 2};
    StrokeFixture bench(folded);
    NormalCalculator calculator(&bench.Mesh());
    Vector normal;
    calculator.Calculate(normal, 0, 0);
    EXPECT_EQ(normal, Vector(0.0f, 0.0f, 1.0f));
    // Vertex 1 has three neighbours, which are reported in both faces, and the mean is shorter than
    // 1.
    calculator.Calculate(normal, 1, 0);
    EXPECT_EQ(calculator.count, 3u);
    EXPECT_LT(normal.Length(), 1.0f);
    EXPECT_GT(normal.Length(), 0.7f);
}

TEST(DeferredNormals, VertexListedTwiceIsComputedTwiceWithTheSameResult) {
    StrokeFixture bench(FlatGrid(2));
    SwiftStroke& brush = *bench.brush;
    bench.Begin();
    brush.patchMesh = &bench.Mesh();
    bench.Mesh().vertexNormals.array[4] = {1, 2, 3, 44};
    brush.deferredNormals.Append({0, 4});
    brush.deferredNormals.Append({3, 4});
    brush.FlushDeferredNormals();
    const PackedNormal& n = bench.Mesh().vertexNormals.array[4];
    EXPECT_EQ(n.x, 0);
    EXPECT_EQ(n.y, 0);
    EXPECT_EQ(n.z, 32767);
    EXPECT_EQ(n.reserved, 44);
    EXPECT_EQ(brush.deferredNormals.fill, 0u);
    bench.End();
}

}  // namespace
}  // namespace trovik::test
