// SPDX-License-Identifier: Apache-2.0

/// \file Tests each factor of a vertex's weight separately.
#include "framework/brushes/BrushSettings.h"
#include "tests/kernels/KernelFixture.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

/// One flat patch of 4 x 4 faces around (0.5, 0.5) with vertices 0.25 apart. The brush pushes along
/// +z with strength 1, so that the height of a vertex is its weight.
class Weight : public ::testing::Test {
protected:
    Weight() {
        renderer = &bench.stroke.AddRenderer(0.0f);
        bench.Start(Tool::Sculpt);
        bench.Aim({0.5f, 0.5f, 0.0f}, 0.5f);
    }
    /// Makes the brush use these falloff samples.
    void UseFalloff(const std::vector<float>& samples) {
        falloff = samples;
        brush.falloffTable = falloff.data();
        brush.falloffLast = static_cast<int32_t>(falloff.size()) - 1;
        brush.setFalloffLast(static_cast<float>(falloff.size() - 1));
    }
    bool WasNotified(uint32_t vertex) const {
        for (const auto& notice : renderer->notices)
            if (notice.vertex == vertex) return true;
        return false;
    }

    KernelFixture bench{SingleQuad(), 2, 2};
    SwiftStroke& brush = bench.brush;
    RecordingRenderer* renderer = nullptr;
    std::vector<float> falloff;
    const uint32_t middle = bench.VertexNear({0.5f, 0.5f, 0.0f});
    const uint32_t quarter = bench.VertexNear({0.75f, 0.5f, 0.0f});
    const uint32_t rim = bench.VertexNear({1.0f, 0.5f, 0.0f});
    const uint32_t corner = bench.VertexNear({1.0f, 1.0f, 0.0f});
};

TEST_F(Weight, VertexOnTheRimIsInsideAndUsesTheLastSample) {
    UseFalloff({1.0f, 0.8f, 0.6f, 0.4f, 0.2f});
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_EQ(bench.Height(middle), 1.0f);
    EXPECT_EQ(bench.Height(quarter), 0.6f);
    EXPECT_EQ(bench.Height(rim), 0.2f);
    EXPECT_EQ(bench.Height(corner), 0.0f);
    EXPECT_TRUE(WasNotified(rim));
    EXPECT_FALSE(WasNotified(corner));
}

TEST_F(Weight, VertexJustBeyondTheRimIsOut) {
    bench.Aim({0.5f, 0.5f, 0.0f}, std::nextafter(0.5f, 0.0f));
    bench.RunKernel(0);
    EXPECT_EQ(bench.Height(rim), 0.0f);
    EXPECT_FALSE(WasNotified(rim));
    EXPECT_EQ(bench.Height(quarter), 1.0f);
}

TEST_F(Weight, FalloffIsReadWithoutInterpolation) {
    UseFalloff({1.0f, 0.5f});
    bench.RunKernel(0);
    EXPECT_EQ(bench.Height(quarter), 1.0f);
    EXPECT_EQ(bench.Height(rim), 0.5f);
}

TEST_F(Weight, SampleBeyondTheTableHasWeightZeroAndCountsAsReached) {
    UseFalloff({1.0f, 0.8f, 0.6f, 0.4f, 0.2f});
    // Four vertices are an eighth of the diagonal away, and no other vertex is in reach.
    bench.Aim({0.625f, 0.625f, 0.0f}, 0.2f);
    brush.falloffScale = 40.0f;
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_EQ(bench.Height(middle), 0.0f);
    EXPECT_TRUE(WasNotified(middle));
    EXPECT_EQ(renderer->notices.size(), 4u);
    EXPECT_EQ(bench.Record(middle)->buildUp, 0.0f);
}

TEST_F(Weight, NaNDistanceHasWeightZero) {
    // With a radius of zero around a vertex, the relative distance is 0 / 0.
    UseFalloff({1.0f, 0.8f});
    bench.Aim({0.5f, 0.5f, 0.0f}, 0.0f);
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_EQ(bench.Height(middle), 0.0f);
    EXPECT_EQ(renderer->notices.size(), 1u);
}

TEST_F(Weight, FullBuildUpMovesInTheFirstDabOfAStrokeOnly) {
    bench.RunKernel(0);
    EXPECT_EQ(bench.Height(middle), 1.0f);
    EXPECT_EQ(bench.Record(middle)->buildUp, 1.0f);
    for (int dab = 0; dab < 3; ++dab) {
        bench.NextDab();
        EXPECT_TRUE(bench.RunKernel(0));
        EXPECT_EQ(bench.Height(middle), 1.0f);
        EXPECT_EQ(bench.Record(middle)->buildUp, 1.0f);
    }
    bench.Restart(Tool::Sculpt);
    bench.Aim({0.5f, 0.5f, 0.0f}, 1.0f);
    bench.RunKernel(0);
    EXPECT_EQ(bench.Height(middle), 2.0f) << "build-up ends with the stroke";
}

TEST_F(Weight, BuildUpUsesRateAndPressureButNotStrength) {
    brush.buildUpRateCubed = 0.5f;
    brush.dabPressure = 0.25f;
    brush.dabStrength = 8.0f;
    bench.RunKernel(0);
    EXPECT_EQ(bench.Height(middle), 4.0f);
    EXPECT_EQ(bench.Record(middle)->buildUp, 0.125f);
    bench.NextDab();
    bench.RunKernel(0);
    EXPECT_EQ(bench.Height(middle), 4.0f + 8.0f * 0.5f * 0.875f);
}

TEST_F(Weight, BuildUpAboveOneChangesTheSignOfTheWeight) {
    brush.dabPressure = 2.0f;
    bench.RunKernel(0);
    EXPECT_EQ(bench.Record(middle)->buildUp, 2.0f);
    bench.NextDab();
    bench.RunKernel(0);
    EXPECT_EQ(bench.Height(middle), 0.0f);
    EXPECT_EQ(bench.Record(middle)->buildUp, 0.0f);
}

TEST_F(Weight, OtherFamiliesDoNotWriteBuildUp) {
    for (const Tool tool : {Tool::Pinch, Tool::Smooth, Tool::Flatten, Tool::Wax}) {
        SCOPED_TRACE(static_cast<int>(tool));
        bench.Restart(tool);
        bench.brush.affectAllLayers.SetValue(true, true);
        bench.Aim({0.5f, 0.5f, 0.0f}, 0.5f);
        EXPECT_TRUE(bench.RunTester(0));
        EXPECT_EQ(bench.Record(middle)->buildUp, 0.0f);
    }
    // These tools do not read the build-up either.
    bench.Restart(Tool::Flatten);
    brush.planeDistance = 1.0f;
    brush.dabStrength = 50.0f;
    bench.Aim({0.5f, 0.5f, 0.0f}, 0.5f);
    bench.RunKernel(0);
    const_cast<StoredVertexInfo*>(bench.Record(middle))->buildUp = 1.0f;
    const float height = bench.Height(middle);
    bench.NextDab();
    bench.RunKernel(0);
    EXPECT_NEAR(bench.Height(middle), height + (1.0f - height) * 0.5f, 1e-6f);
}

TEST_F(Weight, SurfaceBeyondTheFacingAnglesHasWeightZeroAndCountsAsReached) {
    // The surface is seen from below, at an angle of 180 degrees.
    const FacingAngle facing(brush, {0.5f, 0.5f, -100.0f}, 10.0f, 20.0f);
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_EQ(bench.Height(middle), 0.0f);
    EXPECT_TRUE(WasNotified(middle));
    EXPECT_EQ(bench.Record(middle)->buildUp, 0.0f);
}

TEST_F(Weight, FacingAngleFadesBetweenStartAndEnd) {
    const Vector eye(0.5f + 100.0f, 0.5f, 100.0f);  // 45 degrees at the centre
    {
        const FacingAngle facing(brush, eye, 30.0f, 60.0f);
        bench.RunKernel(0);
        EXPECT_NEAR(bench.Height(middle), 0.75f, 1e-5f);
        EXPECT_NEAR(bench.Record(middle)->buildUp, 0.75f, 1e-5f);
    }
    bench.Restart(Tool::Sculpt);
    bench.Aim({0.5f, 0.5f, 0.0f}, 2.0f);
    {
        const float before = bench.Height(middle);
        const FacingAngle facing(brush, eye, 60.0f, 10.0f);
        bench.RunKernel(0);
        EXPECT_NEAR(bench.Height(middle), before + 1.0f, 1e-6f);
    }
}

TEST_F(Weight, FacingAngleUsesTheNormalAtFirstTouch) {
    bench.RunKernel(0);
    bench.NextDab();
    const_cast<StoredVertexInfo*>(bench.Record(middle))->buildUp = 0.0f;
    bench.mesh.vertexNormals.array[middle] = {0, 0, -32767, 0};
    const FacingAngle facing(brush, {0.5f, 0.5f, 100.0f}, 10.0f, 20.0f);
    bench.RunKernel(0);
    EXPECT_EQ(bench.Height(middle), 2.0f);
}

TEST_F(Weight, SurfaceFacingTheEyeHasFullWeight) {
    // The packed normal is slightly longer than 1, which gives an invalid cosine.
    const FacingAngle facing(brush, {0.5f, 0.5f, 100.0f}, 0.0f, 90.0f);
    bench.RunKernel(0);
    EXPECT_EQ(bench.Height(middle), 1.0f);
}

TEST_F(Weight, NaNAngleCountsAsFacing) {
    // A cosine that exceeds one by more than a rounding error.
    bench.mesh.vertexNormals.array[middle] = {0, 32767, 32767, 0};
    const FacingAngle facing(brush, {0.5f, 100.5f, 100.0f}, 10.0f, 20.0f);
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_EQ(bench.Height(middle), 1.0f);
}

TEST_F(Weight, RangeOfZeroGivesASharpEdge) {
    {
        const FacingAngle facing(brush, {0.5f, 0.5f, 100.0f}, 45.0f, 0.0f);
        bench.RunKernel(0);
        EXPECT_EQ(bench.Height(middle), 1.0f);
    }
    bench.Restart(Tool::Sculpt);
    bench.Aim({0.5f, 0.5f, 0.0f}, 2.0f);
    {
        const FacingAngle facing(brush, {200.5f, 0.5f, 100.0f}, 45.0f, 0.0f);
        bench.RunKernel(0);
        EXPECT_EQ(bench.Height(middle), 1.0f);
    }
    // If the angle equals the start of the falloff, the resulting 0 / 0 must not discard the
    // vertex.
    bench.Restart(Tool::Sculpt);
    bench.mesh.vertexNormals.array[middle] = {0, 0, 0, 0};
    bench.Aim({0.5f, 0.5f, 0.0f}, 2.0f);
    {
        const FacingAngle facing(brush, {0.5f, 0.5f, 100.0f}, acosf(0.0f) * 57.29578f, 0.0f);
        bench.RunKernel(0);
        EXPECT_EQ(bench.Height(middle), 2.0f);
    }
}

TEST_F(Weight, WholeMeshPassHasWeightOneAndNoBuildUp) {
    brush.wholeMesh = true;
    brush.setRadius(0.0f);
    brush.buildUpRateCubed = 0.25f;
    const FacingAngle facing(brush, {0.5f, 0.5f, -100.0f}, 10.0f, 20.0f);
    for (int dab = 1; dab <= 2; ++dab) {
        EXPECT_TRUE(bench.RunKernel(0));
        EXPECT_EQ(bench.Height(middle), static_cast<float>(dab));
        EXPECT_EQ(bench.Height(corner), static_cast<float>(dab));
        EXPECT_EQ(bench.Record(middle)->buildUp, 0.0f);
        bench.NextDab();
    }
}

TEST_F(Weight, WholeMeshPassByFacingUsesTheCurrentNormal) {
    brush.wholeMesh = true;
    brush.wholeMeshFacing = true;
    brush.wholeMeshView = Vector(0.6f, 0.0f, 0.8f);
    bench.RunKernel(0);
    EXPECT_NEAR(bench.Height(middle), 0.8f, 1e-6f);
    bench.NextDab();
    bench.mesh.vertexNormals.array[middle] = {32767, 0, 0, 0};
    bench.RunKernel(0);
    EXPECT_NEAR(bench.Height(middle), 0.8f + 0.6f, 1e-6f);
}

TEST_F(Weight, WholeMeshPassByFacingRewritesBackFacingVerticesUnchanged) {
    brush.wholeMesh = true;
    brush.wholeMeshFacing = true;
    brush.wholeMeshView = Vector(0.0f, 0.0f, -1.0f);
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_EQ(bench.Height(middle), 0.0f);
    EXPECT_EQ(renderer->notices.size(), 25u);
}

TEST_F(Weight, StrengthBiasOfWaxDoesNotDependOnPressure) {
    bench.Restart(Tool::Wax);
    bench.Aim({0.5f, 0.5f, 0.0f}, 0.5f);
    UseFalloff({1.0f, 1.0f, 0.5f, 0.5f, 0.5f});
    brush.Settings().strengthBias = 20.0f;
    brush.dabPressure = 0.25f;
    brush.dabStrength = 100.0f;
    brush.planeDistance = 2.0f;
    bench.RunKernel(0);
    EXPECT_NEAR(bench.Height(middle), 2.0f * (0.8f * 0.25f + 0.2f), 1e-6f);
    EXPECT_NEAR(bench.Height(quarter), 1.0f * (0.8f * 0.25f + 0.2f), 1e-6f);

    // Flatten, a tool of the same family, ignores pressure.
    const float height = bench.Height(middle);
    bench.Restart(Tool::Flatten);
    bench.Aim({0.5f, 0.5f, 0.0f}, 2.0f);
    brush.Settings().strengthBias = 20.0f;
    brush.dabPressure = 0.25f;
    brush.dabStrength = 50.0f;
    brush.planeDistance = 2.0f;
    bench.RunKernel(0);
    EXPECT_NEAR(bench.Height(middle), (height + 2.0f) / 2.0f, 1e-6f);
}

TEST_F(Weight, MaskReducesTheWeightAndItsTopBitIsIgnored) {
    bench.mesh.SetFreeze(middle, 127);
    bench.mesh.SetFreeze(quarter, 64);
    bench.mesh.vertices.array[rim].freeze = 0x80 | 32;
    bench.RunKernel(0);
    EXPECT_NEAR(bench.Height(middle), 0.0f, 1e-7f);
    EXPECT_NEAR(bench.Height(quarter), 1.0f - 64.0f / 127.0f, 1e-6f);
    EXPECT_NEAR(bench.Height(rim), 1.0f - 32.0f / 127.0f, 1e-6f);
    EXPECT_EQ(bench.Record(middle)->buildUp, 1.0f) << "the mask is applied after the build-up";
}

/// A stamp of one pixel over the quadrant below (0.5, 0.5); everything else is outside the stamp.
class StampedWeight : public Weight {
protected:
    const uint32_t inside = bench.VertexNear({0.25f, 0.5f, 0.0f});
    const uint32_t outside = quarter;
};

TEST_F(StampedWeight, PlainStampMultipliesTheWeight) {
    bench.SetStamp(1, 1, {0.25f}, false);
    brush.stampFactor = 2.0f;
    EXPECT_TRUE(bench.RunKernel(0));
    EXPECT_EQ(bench.Height(inside), 0.5f);
    EXPECT_EQ(bench.Height(outside), 0.0f);
    EXPECT_TRUE(WasNotified(inside));
    EXPECT_FALSE(WasNotified(outside));
}

TEST_F(StampedWeight, BuildUpBeforeTheStampAlsoGrowsOutsideIt) {
    bench.SetStamp(1, 1, {0.25f}, false);
    brush.stampBuildUp = false;
    brush.buildUpRateCubed = 0.5f;
    bench.RunKernel(0);
    EXPECT_EQ(bench.Record(inside)->buildUp, 0.5f);
    EXPECT_EQ(bench.Record(outside)->buildUp, 0.5f);
    EXPECT_EQ(bench.Height(outside), 0.0f);
}

TEST_F(StampedWeight, BuildUpAfterTheStampIncludesItsValue) {
    bench.SetStamp(1, 1, {0.25f}, false);
    brush.stampBuildUp = true;
    brush.dabPressure = 0.5f;
    bench.RunKernel(0);
    EXPECT_EQ(bench.Record(inside)->buildUp, 0.125f);
    EXPECT_EQ(bench.Record(outside)->buildUp, 0.0f);
}

TEST_F(StampedWeight, BuildUpOfAStampGrowsInAllFamilies) {
    bench.Restart(Tool::Pinch);
    bench.Aim({0.5f, 0.5f, 0.0f}, 0.5f);
    bench.SetStamp(1, 1, {0.25f}, false);
    brush.stampBuildUp = false;
    bench.RunKernel(0);
    bench.NextDab();
    bench.RunKernel(0);
    EXPECT_EQ(bench.Record(inside)->buildUp, 2.0f) << "not damped, since Pinch does not read it";
}

TEST_F(StampedWeight, BuildUpAfterAVectorStampNeverGrows) {
    bench.SetStamp(1, 1, {5.0f, 6.0f, 7.0f}, true);
    brush.stampBuildUp = true;
    brush.stampScaleHeight = 1.0f;
    for (int dab = 0; dab < 2; ++dab) {
        bench.RunKernel(0);
        EXPECT_EQ(bench.Record(inside)->buildUp, 0.0f);
        EXPECT_EQ(bench.Record(outside)->buildUp, 0.0f);
        bench.NextDab();
    }
    EXPECT_EQ(bench.Height(inside), 12.0f);
}

TEST_F(StampedWeight, StrengthAndMaskScaleTheVector) {
    bench.SetStamp(1, 1, {0.0f, 4.0f, 0.0f}, true);
    brush.stampScaleHeight = 0.5f;
    brush.dabStrength = 0.25f;
    bench.mesh.SetFreeze(inside, 64);
    bench.RunKernel(0);
    EXPECT_NEAR(bench.Height(inside), 0.5f * (1.0f - 64.0f / 127.0f), 1e-6f);
    EXPECT_NEAR(bench.Height(middle), 0.5f, 1e-6f);
}

}  // namespace
}  // namespace trovik::test
