// SPDX-License-Identifier: Apache-2.0

/// \file Tests the displacement computed from a vertex's weight: the four tool families, the vector
/// stamp, and the conversion back from world space.
#include "tests/kernels/KernelFixture.h"
#include "tests/meshes/ExpectNear.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

// --- Planing ---

/// A flat patch at z = 0, and a plane z = planeDistance. A strength of 100 gives a weight of 1.
class Planing : public ::testing::Test {
protected:
    void Dab(Tool tool, float planeDistance) {
        bench.Start(tool);
        Aim(planeDistance);
        reached = bench.RunKernel(0);
    }
    void Aim(float planeDistance) {
        bench.Aim({0.5f, 0.5f, 0.0f}, 5.0f);
        bench.brush.dabStrength = 100.0f;
        bench.brush.planeDistance = planeDistance;
    }
    float Height() const { return bench.Height(bench.VertexNear({0.25f, 0.5f, 0.0f})); }
    KernelFixture bench{SingleQuad(), 2, 2};
    bool reached = false;
};

TEST_F(Planing, ScrapeLeavesVerticesBelowThePlane) {
    Dab(Tool::Scrape, 1.0f);
    EXPECT_TRUE(reached);
    EXPECT_EQ(Height(), 0.0f);
}
TEST_F(Planing, ScrapeLowersVerticesAboveThePlane) {
    Dab(Tool::Scrape, -1.0f);
    EXPECT_NEAR(Height(), -1.0f, 1e-6f);
}
TEST_F(Planing, FillLeavesVerticesAboveThePlane) {
    Dab(Tool::Fill, -1.0f);
    EXPECT_TRUE(reached);
    EXPECT_EQ(Height(), 0.0f);
}
TEST_F(Planing, FillRaisesVerticesBelowThePlane) {
    Dab(Tool::Fill, 1.0f);
    EXPECT_NEAR(Height(), 1.0f, 1e-6f);
}
TEST_F(Planing, AmplifyMovesAwayFromThePlane) {
    Dab(Tool::Amplify, -1.0f);
    EXPECT_NEAR(Height(), 1.0f, 1e-6f);
}

TEST_F(Planing, SignIsAppliedBeforeTheClamps) {
    bench.Start(Tool::Amplify);
    Aim(-1.0f);
    bench.brush.planeClampMin = -0.5f;
    bench.brush.planeClampMax = 0.25f;
    bench.RunKernel(0);
    EXPECT_NEAR(Height(), 0.25f, 1e-6f);
}

TEST_F(Planing, UpperLimitIsTestedFirst) {
    bench.Start(Tool::Flatten);
    Aim(3.0f);
    bench.brush.planeClampMax = -1.0f;
    bench.brush.planeClampMin = 0.5f;
    bench.RunKernel(0);
    EXPECT_NEAR(Height(), 0.5f, 1e-6f);
}

TEST_F(Planing, OffsetChangesSignWithTheStroke) {
    bench.Start(Tool::Flatten);
    Aim(1.0f);
    bench.brush.planeOffset = 0.25f;
    bench.RunKernel(0);
    EXPECT_NEAR(Height(), 1.25f, 1e-6f);
    bench.Restart(Tool::Flatten);
    Aim(1.0f);
    bench.brush.planeOffset = 0.25f;
    bench.brush.strokePlaneSign = -1.0f;
    bench.RunKernel(0);
    EXPECT_NEAR(Height(), 0.75f, 1e-6f);
}

TEST_F(Planing, PlaneIsApproachedFromTheCurrentPosition) {
    bench.Start(Tool::Flatten);
    bench.Aim({0.5f, 0.5f, 0.0f}, 0.75f);
    bench.brush.dabStrength = 50.0f;
    bench.brush.planeDistance = 1.0f;
    for (const float wanted : {0.5f, 0.75f, 0.875f}) {
        bench.RunKernel(0);
        EXPECT_NEAR(Height(), wanted, 1e-6f);
        bench.NextDab();
    }
}

// --- Pulling ---

TEST(Pulling, VertexAtTheCentreNeverMoves) {
    KernelFixture bench(SingleQuad(), 2, 2);
    bench.Start(Tool::Pinch);
    bench.Aim({0.5f, 0.5f, 0.0f}, 0.3f);
    bench.brush.dabStrength = 1e6f;
    const uint32_t middle = bench.VertexNear({0.5f, 0.5f, 0.0f});
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_EQ(bench.mesh.Position(middle), Vector(0.5f, 0.5f, 0.0f));
}

TEST(Pulling, MovesATenthOfTheDistanceForAWeightOfOne) {
    KernelFixture bench(SingleQuad(), 2, 2);
    bench.Start(Tool::Pinch);
    bench.Aim({0.5f, 0.5f, 1.0f}, 2.0f);
    const uint32_t vertex = bench.VertexNear({0.25f, 0.5f, 0.0f});
    bench.RunKernel(0);
    ExpectNear(bench.mesh.Position(vertex), {0.275f, 0.5f, 0.1f}, 1e-6f);
    // The second dab moves the vertex a tenth of the way from its current position.
    bench.NextDab();
    bench.RunKernel(0);
    ExpectNear(bench.mesh.Position(vertex), {0.2975f, 0.5f, 0.19f}, 1e-6f);
}

// --- Averaging ---

/// The centre patch of a 3 x 3 grid. It has 2 x 2 faces and is flat except for a spike at its
/// centre.
class Averaging : public ::testing::Test {
protected:
    Averaging() { renderer = &bench.stroke.AddRenderer(0.0f); }
    void Start(bool allLayers) {
        bench.Start(Tool::Smooth);
        bench.brush.affectAllLayers.SetValue(allLayers, true);
        bench.Aim({1.5f, 1.5f, 0.0f}, 5.0f);
    }
    KernelFixture bench{GridMesh(3, 3), 1, 1};
    RecordingRenderer* renderer = nullptr;
    const uint32_t patch = 4;
    const uint32_t middle = bench.VertexAt(patch, 1, 1);
};

TEST_F(Averaging, FlatSurfaceIsWrittenUnchanged) {
    Start(true);
    const std::vector<VertexBits> before = BitsOf(bench.mesh);
    EXPECT_TRUE(bench.RunTester(patch));
    EXPECT_EQ(renderer->notices.size(), 9u);
    EXPECT_EQ(BitsOf(bench.mesh), before);
}

TEST_F(Averaging, PositionsAreSmoothedInPlaceInRowOrder) {
    bench.mesh.SetPosition(middle, {1.5f, 1.5f, 1.0f});
    Start(true);
    bench.RunTester(patch);
    // When a vertex is processed, the vertices before it are already smoothed, and those after it
    // are not.
    const float heights[3][3] = {
        {0.0f, 0.2f, 0.04f}, {0.2f, 0.28f, 0.064f}, {0.04f, 0.064f, 0.0256f}};
    for (uint32_t row = 0; row < 3; ++row)
        for (uint32_t column = 0; column < 3; ++column)
            EXPECT_NEAR(
                bench.Height(bench.VertexAt(patch, row, column)), heights[row][column], 1e-6f)
                << row << ", " << column;
}

TEST_F(Averaging, WeightScalesTheMoveToTheMean) {
    bench.mesh.SetPosition(middle, {1.5f, 1.5f, 1.0f});
    Start(true);
    bench.Aim({1.5f, 1.5f, 0.9f}, 0.2f);
    bench.brush.dabStrength = 0.5f;
    bench.RunTester(patch);
    EXPECT_NEAR(bench.Height(middle), 0.6f, 1e-6f);
}

TEST_F(Averaging, LayerIsSmoothedFromItsOldOffsetsOnly) {
    SculptLayer& layer = bench.stroke.AddLayer();
    const Vector spike(0.0f, 0.0f, 1.0f);
    layer.set(nullptr, layer.SlotOf(middle), middle, &spike, true);
    Start(false);
    EXPECT_TRUE(bench.RunTester(patch));
    const float offsets[3][3] = {{0.0f, 0.2f, 0.0f}, {0.2f, 0.2f, 0.2f}, {0.0f, 0.2f, 0.0f}};
    for (uint32_t row = 0; row < 3; ++row) {
        for (uint32_t column = 0; column < 3; ++column) {
            const uint32_t vertex = bench.VertexAt(patch, row, column);
            EXPECT_NEAR(layer.Offset(vertex).z, offsets[row][column], 1e-6f);
            EXPECT_NEAR(bench.Height(vertex), offsets[row][column], 1e-6f);
        }
    }
}

TEST_F(Averaging, LayerWithoutOffsetsDoesNotSmoothTheBase) {
    bench.mesh.SetPosition(middle, {1.5f, 1.5f, 1.0f});
    SculptLayer& layer = bench.stroke.AddLayer();
    Start(false);
    EXPECT_TRUE(bench.RunTester(patch));
    EXPECT_EQ(bench.mesh.Position(middle), Vector(1.5f, 1.5f, 1.0f));
    EXPECT_EQ(layer.Offset(middle), Vector());
}

TEST_F(Averaging, AffectingAllLayersSmoothsTheShapeIntoTheLayer) {
    bench.mesh.SetPosition(middle, {1.5f, 1.5f, 1.0f});
    SculptLayer& layer = bench.stroke.AddLayer();
    Start(true);
    bench.Aim({1.5f, 1.5f, 0.9f}, 0.2f);
    EXPECT_TRUE(bench.RunTester(patch));
    EXPECT_NEAR(bench.Height(middle), 0.2f, 1e-6f);
    EXPECT_NEAR(layer.Offset(middle).z, -0.8f, 1e-6f);
}

TEST_F(Averaging, VertexNormalDirectionOnALayerAveragesPositions) {
    bench.mesh.SetPosition(middle, {1.5f, 1.5f, 1.0f});
    SculptLayer& layer = bench.stroke.AddLayer();
    Start(false);
    bench.brush.followVertexNormal = true;
    bench.Aim({1.5f, 1.5f, 0.9f}, 0.2f);
    EXPECT_TRUE(bench.RunTester(patch));
    EXPECT_NEAR(bench.Height(middle), 0.2f, 1e-6f);
    EXPECT_NEAR(layer.Offset(middle).z, -0.8f, 1e-6f);
}

TEST(AveragingAtABorder, MeanIsShiftedInwardNotAlongTheNormal) {
    KernelFixture bench(SingleQuad(), 2, 2);
    bench.Start(Tool::Smooth);
    bench.brush.affectAllLayers.SetValue(true, true);
    // The only vertex in reach, at the midpoint of an edge.
    bench.Aim({0.5f, 0.0f, 0.0f}, 0.1f);
    const uint32_t vertex = bench.VertexNear({0.5f, 0.0f, 0.0f});
    EXPECT_TRUE(bench.RunTester(0));
    ExpectNear(bench.mesh.Position(vertex), {0.5f, 0.05f, 0.0f}, 1e-6f);
    EXPECT_EQ(bench.Height(vertex), 0.0f);
}

// --- Pushing and directions ---

TEST(Pushing, MovesAlongTheDirectionOfTheDab) {
    KernelFixture bench(SingleQuad(), 2, 2);
    bench.Start(Tool::Sculpt);
    bench.Aim({0.5f, 0.5f, 0.0f}, 0.1f);
    bench.brush.brushSpace->direction = HWVector(Vector(0.5f, 0.0f, -0.25f));
    bench.brush.dabStrength = 2.0f;
    const uint32_t middle = bench.VertexNear({0.5f, 0.5f, 0.0f});
    bench.RunKernel(0);
    EXPECT_EQ(bench.mesh.Position(middle), Vector(1.5f, 0.5f, -0.5f));
}

TEST(Pushing, AlongVertexNormalsUsesTheNormalAtFirstTouch) {
    KernelFixture bench(SingleQuad(), 2, 2);
    const uint32_t middle = bench.VertexNear({0.5f, 0.5f, 0.0f});
    bench.mesh.vertexNormals.array[middle] = {-32767, 0, 16384, 0};
    bench.Start(Tool::Sculpt);
    bench.brush.followVertexNormal = true;
    bench.brush.buildUpRateCubed = 0.5f;
    bench.Aim({0.5f, 0.5f, 0.0f}, 0.1f);
    bench.RunKernel(0);
    // The direction is not normalised.
    ExpectNear(bench.mesh.Position(middle), {0.0f, 0.5f, 0.25f}, 1e-4f);
    bench.mesh.vertexNormals.array[middle] = {0, 32767, 0, 0};
    bench.NextDab();
    bench.RunKernel(0);
    ExpectNear(bench.mesh.Position(middle), {-0.25f, 0.5f, 0.375f}, 1e-4f);
}

// --- Vector stamp ---

/// A one-pixel stamp that covers everything: tangent U, height, tangent V.
class VectorStamp : public ::testing::Test {
protected:
    void Start(Tool tool) {
        bench.Start(tool);
        bench.Aim({0.5f, 0.5f, 0.0f}, 0.1f);
        bench.SetStamp(1, 1, {3.0f, 5.0f, 7.0f}, true, 0.1f);
        bench.brush.brushSpace->stampAxisU = HWVector(Vector(2.0f, 0.0f, 9.0f));
        bench.brush.brushSpace->stampAxisV = HWVector(Vector(0.0f, -4.0f, 9.0f));
        bench.brush.stampScaleU = 0.5f;
        bench.brush.stampScaleV = 0.125f;
        bench.brush.stampScaleHeight = 0.25f;
    }
    Vector Step() const { return bench.mesh.Position(middle) - Vector(0.5f, 0.5f, 0.0f); }
    KernelFixture bench{SingleQuad(), 2, 2};
    const uint32_t middle = bench.VertexNear({0.5f, 0.5f, 0.0f});
};

TEST_F(VectorStamp, ChannelsAreTangentHeightTangentAcrossTheDirection) {
    Start(Tool::Sculpt);
    EXPECT_TRUE(bench.RunKernel(0));
    ExpectNear(Step(), {3.0f * 0.5f, -7.0f * 0.125f, 5.0f * 0.25f}, 1e-5f);
}

TEST_F(VectorStamp, PlaneToolsScaleTheMoveByAHundredthAndNotTheTangents) {
    Start(Tool::Flatten);
    bench.brush.planeDistance = 2.0f;
    EXPECT_TRUE(bench.RunKernel(0));
    ExpectNear(Step(), {3.0f * 0.5f, -7.0f * 0.125f, 2.0f * 5.0f * 0.01f * 0.25f}, 1e-5f);
}

TEST_F(VectorStamp, PinchUsesTheStampFrame) {
    Start(Tool::Pinch);
    bench.Aim({0.5f, 0.5f, 1.0f}, 1.5f);
    EXPECT_TRUE(bench.RunKernel(0));
    ExpectNear(Step(), {3.0f * 0.5f, -7.0f * 0.125f, 0.1f * 5.0f * 0.25f}, 1e-5f);
}

TEST_F(VectorStamp, SmoothUsesTheStampFrame) {
    bench.mesh.SetPosition(middle, {0.5f, 0.5f, 0.5f});
    Start(Tool::Smooth);
    bench.brush.affectAllLayers.SetValue(true, true);
    bench.mesh.vertexNormals.array[middle] = {0, 0, 32767, 0};
    bench.Aim({0.5f, 0.5f, 0.5f}, 0.1f);
    EXPECT_TRUE(bench.RunTester(0));
    ExpectNear(bench.mesh.Position(middle) - Vector(0.5f, 0.5f, 0.5f),
               {3.0f * 0.5f, -7.0f * 0.125f, -0.4f * 5.0f * 0.25f},
               1e-4f);
}

TEST_F(VectorStamp, AxisAlongTheDirectionGivesNoTangent) {
    Start(Tool::Sculpt);
    bench.brush.brushSpace->stampAxisU = HWVector(Vector(0.0f, 0.0f, 2.0f));
    EXPECT_TRUE(bench.RunKernel(0));
    ExpectNear(Step(), {0.0f, -7.0f * 0.125f, 5.0f * 0.25f}, 1e-5f);
}

// --- World space ---

/// In world space, the patch is scaled by two along x and translated.
class InWorldSpace : public ::testing::Test {
protected:
    InWorldSpace() {
        bench.stroke.geometry->Transform().Set({2.0f, 1.0f, 1.0f}, {}, {10.0f, 20.0f, 30.0f});
    }
    void Start(Tool tool) {
        bench.Start(tool);
        ASSERT_TRUE(bench.brush.nonUniformScale);
    }
    KernelFixture bench{SingleQuad(), 2, 2};
    const uint32_t middle = bench.VertexNear({0.5f, 0.5f, 0.0f});
    const uint32_t right = bench.VertexNear({0.75f, 0.5f, 0.0f});
    const uint32_t above = bench.VertexNear({0.5f, 0.75f, 0.0f});
};

TEST_F(InWorldSpace, DistanceIsMeasuredInWorldSpace) {
    Start(Tool::Sculpt);
    // Vertices are half a unit apart along x and a quarter along y.
    bench.Aim({11.0f, 20.5f, 30.0f}, 0.3f);
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_EQ(bench.Height(middle), 1.0f);
    EXPECT_EQ(bench.Height(above), 1.0f);
    EXPECT_EQ(bench.Height(right), 0.0f);
}

TEST_F(InWorldSpace, DisplacementIsConvertedByTheInverseScale) {
    Start(Tool::Sculpt);
    bench.Aim({11.0f, 20.5f, 30.0f}, 0.1f);
    bench.brush.brushSpace->direction = HWVector(Vector(1.0f, 0.5f, 0.0f));
    bench.RunKernel(0);
    EXPECT_EQ(bench.mesh.Position(middle), Vector(1.0f, 1.0f, 0.0f));
}

TEST_F(InWorldSpace, PinchCombinesItsWorldCentreWithTheLocalPosition) {
    Start(Tool::Pinch);
    bench.Aim({11.0f, 20.5f, 30.0f}, 0.1f);
    bench.RunKernel(0);
    ExpectNear(bench.mesh.Position(middle), {0.5f + 10.5f * 0.05f, 0.5f + 2.0f, 3.0f}, 1e-5f);
}

TEST_F(InWorldSpace, VectorStampIsConvertedByTheInverseScale) {
    Start(Tool::Sculpt);
    bench.Aim({11.0f, 20.5f, 30.0f}, 0.1f);
    bench.SetStamp(1, 1, {1.0f, 1.0f, 0.0f}, true, 0.1f);
    bench.brush.brushSpace->stampAxisU = HWVector(Vector(1.0f, 0.0f, 0.0f));
    bench.brush.brushSpace->stampAxisV = HWVector(Vector(0.0f, 1.0f, 0.0f));
    bench.brush.stampScaleU = 1.0f;
    bench.brush.stampScaleV = 1.0f;
    bench.brush.stampScaleHeight = 1.0f;
    bench.RunKernel(0);
    ExpectNear(bench.mesh.Position(middle), {1.0f, 0.5f, 1.0f}, 1e-6f);
}

}  // namespace
}  // namespace trovik::test
