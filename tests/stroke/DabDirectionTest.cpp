// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/BrushSettings.h"
#include "tests/fixture/StrokeFixture.h"
#include "tests/meshes/ExpectNear.h"
#include "tests/meshes/MirrorAtX.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

class DabDirection : public ::testing::Test {
protected:
    DabDirection() {
        hit.mesh = &bench.Mesh();
        hit.face = 4;
        hit.position = Vector(1.5f, 1.25f, 0.5f);
        hit.normal = Vector(0.6f, 0.0f, 0.8f);
    }
    ~DabDirection() override {
        bench.End();
        HostKernel::Instance().Scene()->OwnCamera().Transform().SetMatrix(Matrix());
    }
    /// Prepares a dab with this direction mode, in a stroke with the active tool.
    bool Prepare(int mode, uint32_t pass = 0) {
        if (!brush.strokeActive) bench.Begin();
        brush.directionAttribute.SetValue(mode, true);
        brush.mirrorPass = pass;
        // The position is set after the start of the stroke, which clears the previous hits.
        brush.SetPreviousPatchPosition(previous);
        brush.Settings().directionVectorSet = false;
        return brush.PrepareDab(hit);
    }
    bool IsDirectionSet() const { return brush.Settings().directionVectorSet; }
    void ExpectPlaneAtHit(uint32_t pass) {
        EXPECT_EQ(brush.planePoints[pass], hit.position);
        EXPECT_EQ(brush.planeDistances[pass], (hit.position | brush.directions[pass]));
    }

    StrokeFixture bench{FlatGrid(3)};
    SwiftStroke& brush = *bench.brush;
    SurfacePoint hit;
    Vector previous{0.5f, 1.25f, 0.5f};
};

TEST_F(DabDirection, SurfaceNormalModeUsesTheNormalOfTheHit) {
    EXPECT_TRUE(Prepare(0));
    EXPECT_EQ(brush.directions[0], hit.normal);
    ExpectPlaneAtHit(0);
    EXPECT_FALSE(brush.followVertexNormal);
    EXPECT_TRUE(IsDirectionSet());
    EXPECT_EQ(brush.Settings().directionVector, hit.normal);
}

TEST_F(DabDirection, FixedModesUseTheirAxes) {
    const float d = 0.70710677f;
    const std::pair<int, Vector> table[] = {{5, {1.0f, 0.0f, 0.0f}},
                                            {6, {0.0f, 1.0f, 0.0f}},
                                            {7, {0.0f, 0.0f, 1.0f}},
                                            {10, {d, d, 0.0f}},
                                            {11, {d, 0.0f, d}},
                                            {12, {0.0f, d, d}}};
    for (const auto& [mode, expected] : table) {
        EXPECT_TRUE(Prepare(mode));
        EXPECT_EQ(brush.directions[0], expected) << mode;
        ExpectPlaneAtHit(0);
        EXPECT_TRUE(IsDirectionSet());
    }
}

TEST_F(DabDirection, VertexNormalNeedsNoDirection) {
    bench.Begin();
    brush.directions[0] = Vector(7.0f, 7.0f, 7.0f);
    EXPECT_TRUE(Prepare(2));
    EXPECT_TRUE(brush.followVertexNormal);
    EXPECT_FALSE(IsDirectionSet());
    EXPECT_EQ(brush.directions[0], Vector(7.0f, 7.0f, 7.0f));
    EXPECT_EQ(brush.planeDistances[0], 0.0f);
    // The next dab in another mode clears the flag.
    EXPECT_TRUE(Prepare(0));
    EXPECT_FALSE(brush.followVertexNormal);
}

TEST_F(DabDirection, ForwardIsTheMotionBetweenHits) {
    EXPECT_TRUE(Prepare(3));
    EXPECT_EQ(brush.directions[0], Vector(1.0f, 0.0f, 0.0f));
    ExpectPlaneAtHit(0);
    previous = Vector{1.5f, -1.75f, -3.5f};
    EXPECT_TRUE(Prepare(3));
    ExpectNear(brush.directions[0], {0.0f, 0.6f, 0.8f});
}

TEST_F(DabDirection, SidewaysLiesAcrossTheStrokeInTheSurface) {
    bench.Begin();
    brush.planeDistances[0] = 77.0f;
    EXPECT_TRUE(Prepare(4));
    // (1, 0, 0) x (0.6, 0, 0.8) = (0, -0.8, 0).
    ExpectNear(brush.directions[0], {0.0f, -1.0f, 0.0f});
    EXPECT_EQ(brush.planePoints[0], hit.position);
    EXPECT_EQ(brush.planeDistances[0], 77.0f);
    EXPECT_TRUE(IsDirectionSet());
}

TEST_F(DabDirection, StrokeRelativeModesNeedAnEarlierHit) {
    previous = Vector{};
    for (const int mode : {3, 4}) {
        bench.Begin();
        brush.directions[0] = Vector(7.0f, 7.0f, 7.0f);
        EXPECT_FALSE(Prepare(mode));
        EXPECT_EQ(brush.directions[0], Vector(7.0f, 7.0f, 7.0f));
        EXPECT_FALSE(IsDirectionSet());
        bench.End();
    }
    previous = Vector{0.0f, 0.0f, 1e-20f};
    EXPECT_TRUE(Prepare(3));
}

TEST_F(DabDirection, CameraDirectionIsMeshLocal) {
    bench.geometry->Transform().Set({2.0f, 2.0f, 2.0f}, {}, {1.0f, 0.0f, 0.0f});
    HostKernel::Instance().Scene()->OwnCamera().Transform().Set(
        {1.0f, 1.0f, 1.0f}, {}, {10.0f, 2.5f, 9.0f});
    for (const int mode : {8, 9}) {
        EXPECT_TRUE(Prepare(mode));
        // The camera is at (4.5, 1.25, 4.5) in mesh space: (3, 0, 4) from the hit.
        ExpectNear(brush.directions[0], {0.6f, 0.0f, 0.8f});
        ExpectPlaneAtHit(0);
    }
}

TEST_F(DabDirection, CameraDirectionRotatesWithTheMesh) {
    bench.geometry->Transform().Set({1.0f, 1.0f, 1.0f}, {0.0f, 0.0f, 90.0f}, {});
    // A quarter turn about z maps the mesh's x to the world's y.
    ExpectNear(bench.WorldOf({1.0f, 0.0f, 0.0f}), {0.0f, 1.0f, 0.0f});
    const Vector eye = bench.WorldOf(hit.position + Vector(0.0f, 3.0f, 4.0f));
    HostKernel::Instance().Scene()->OwnCamera().Transform().Set({1.0f, 1.0f, 1.0f}, {}, eye);
    EXPECT_TRUE(Prepare(8));
    ExpectNear(brush.directions[0], {0.0f, 0.6f, 0.8f});
}

TEST_F(DabDirection, ModesBeyondTheTableWriteNothing) {
    bench.Begin();
    brush.directions[0] = Vector(0.0f, 0.0f, 7.0f);
    brush.planeDistances[0] = 5.0f;
    EXPECT_TRUE(Prepare(13));
    EXPECT_EQ(brush.directions[0], Vector(0.0f, 0.0f, 7.0f));
    EXPECT_EQ(brush.planeDistances[0], 5.0f);
    EXPECT_FALSE(brush.followVertexNormal);
    EXPECT_TRUE(IsDirectionSet());
    EXPECT_EQ(brush.Settings().directionVector, Vector(0.0f, 0.0f, 7.0f));
}

TEST_F(DabDirection, AverageSamplesTheSurface) {
    bench.Begin();
    brush.patchLevel = 0;
    brush.facesPerPatch = 1;
    brush.patchMeshLevel = 0;
    brush.patchMesh = bench.geometry->Level(0);
    brush.localCenter = Vector(1.5f, 1.5f, 0.0f);
    brush.setRadius(1.0f);
    EXPECT_TRUE(Prepare(1));
    ExpectNear(brush.directions[0], {0.0f, 0.0f, 1.0f});
    ExpectNear(brush.planePoints[0], {1.5f, 1.5f, 0.0f});
    EXPECT_TRUE(IsDirectionSet());
}

TEST_F(DabDirection, BulgeFollowsVertexNormalsWhateverTheSetting) {
    bench.Activate(Tool::Bulge);
    for (const int mode : {0, 1, 3, 5, 13}) {
        EXPECT_TRUE(Prepare(mode));
        EXPECT_TRUE(brush.followVertexNormal);
        EXPECT_FALSE(IsDirectionSet());
    }
}

TEST_F(DabDirection, SmearMovesForwardWhateverTheSetting) {
    bench.Activate(Tool::Smear);
    for (const int mode : {0, 1, 2, 5, 13}) {
        EXPECT_TRUE(Prepare(mode));
        EXPECT_EQ(brush.directions[0], Vector(1.0f, 0.0f, 0.0f));
        EXPECT_FALSE(brush.followVertexNormal);
    }
}

TEST_F(DabDirection, WholeMeshFollowsVertexNormals) {
    bench.Begin();
    brush.wholeMesh = true;
    EXPECT_TRUE(Prepare(5));
    EXPECT_TRUE(brush.followVertexNormal);
    EXPECT_FALSE(IsDirectionSet());
    brush.wholeMesh = false;
}

TEST_F(DabDirection, WholeMeshSmearMovesForward) {
    bench.Activate(Tool::Smear);
    bench.Begin();
    brush.wholeMesh = true;
    EXPECT_TRUE(Prepare(5));
    EXPECT_FALSE(brush.followVertexNormal);
    EXPECT_EQ(brush.directions[0], Vector(1.0f, 0.0f, 0.0f));
    previous = Vector{};
    EXPECT_FALSE(Prepare(5));
    brush.wholeMesh = false;
}

TEST_F(DabDirection, WholeMeshSmoothOfTheLayerUsesTheHitNormal) {
    bench.AddLayer();
    bench.Activate(Tool::Smooth);
    bench.Begin();
    brush.wholeMesh = true;
    brush.affectAllLayers.SetValue(false, true);
    EXPECT_TRUE(Prepare(5));
    EXPECT_FALSE(brush.followVertexNormal);
    EXPECT_EQ(brush.directions[0], hit.normal);
    brush.affectAllLayers.SetValue(true, true);
    EXPECT_TRUE(Prepare(5));
    EXPECT_TRUE(brush.followVertexNormal);
    brush.affectAllLayers.SetValue(false, true);
    brush.layer = nullptr;
    EXPECT_TRUE(Prepare(5));
    EXPECT_TRUE(brush.followVertexNormal);
    brush.wholeMesh = false;
}

/// Mirrored about the plane x = 0.
class MirroredDirection : public DabDirection {
protected:
    MirroredDirection() {
        brush.SetMirrorConfig(MirroredAtX());
        hit.position.x = -hit.position.x;
        hit.normal.x = -hit.normal.x;
        hit.mirror = true;
    }
};

TEST_F(MirroredDirection, AxisIsTheMirrorImageOfTheMainPass) {
    const float d = 0.70710677f;
    for (const auto& [mode, main, image] : {std::tuple{5, Vector(1, 0, 0), Vector(-1, 0, 0)},
                                            {6, Vector(0, 1, 0), Vector(0, 1, 0)},
                                            {7, Vector(0, 0, 1), Vector(0, 0, 1)},
                                            {10, Vector(d, d, 0), Vector(-d, d, 0)},
                                            {11, Vector(d, 0, d), Vector(-d, 0, d)},
                                            {12, Vector(0, d, d), Vector(0, d, d)}}) {
        bench.Begin();
        brush.directions[0] = main;
        brush.planePoints[0] = Vector(1.5f, 1.25f, 0.5f);
        EXPECT_TRUE(Prepare(mode, 1));
        ExpectNear(brush.directions[1], image);
        EXPECT_EQ(brush.planePoints[1], hit.position);
        EXPECT_EQ(brush.planeDistances[1], (hit.position | brush.directions[1]));
        EXPECT_TRUE(IsDirectionSet());
        EXPECT_EQ(brush.Settings().directionVector, brush.directions[1]);
        bench.End();
    }
}

TEST_F(MirroredDirection, CameraDirectionIsMirrored) {
    HostKernel::Instance().Scene()->OwnCamera().Transform().Set(
        {1.0f, 1.0f, 1.0f}, {}, {50.0f, 0.0f, 0.0f});
    bench.Begin();
    brush.directions[0] = Vector(0.6f, 0.0f, 0.8f);
    EXPECT_TRUE(Prepare(8, 1));
    ExpectNear(brush.directions[1], {-0.6f, 0.0f, 0.8f});
}

TEST_F(MirroredDirection, SurfaceNormalAndForwardAreThoseOfTheMirroredDab) {
    EXPECT_TRUE(Prepare(0, 1));
    EXPECT_EQ(brush.directions[1], hit.normal);
    ExpectPlaneAtHit(1);
    previous = Vector{-0.5f, 1.25f, 0.5f};
    EXPECT_TRUE(Prepare(3, 1));
    EXPECT_EQ(brush.directions[1], Vector(-1.0f, 0.0f, 0.0f));
    ExpectPlaneAtHit(1);
}

TEST_F(MirroredDirection, SidewaysIsReversed) {
    previous = Vector{-0.5f, 1.25f, 0.5f};
    EXPECT_TRUE(Prepare(4, 1));
    // (-1, 0, 0) x (-0.6, 0, 0.8) = (0, 0.8, 0), converted back to the main pass's side.
    ExpectNear(brush.directions[1], {0.0f, -1.0f, 0.0f});
    EXPECT_EQ(brush.planePoints[1], hit.position);
}

class PlaneReuse : public DabDirection {
protected:
    PlaneReuse() {
        bench.Activate(Tool::Flatten);
        bench.Begin();
        brush.updatePlane.SetValue(false, true);
        brush.directions[0] = Vector(0.0f, 1.0f, 0.0f);
        brush.planePoints[0] = Vector(1.0f, 2.0f, 3.0f);
        brush.planeDistances[0] = 2.0f;
    }
};

TEST_F(PlaneReuse, KeepsThePlaneFoundEarlier) {
    brush.followVertexNormal = true;
    EXPECT_TRUE(Prepare(0));
    EXPECT_EQ(brush.directions[0], Vector(0.0f, 1.0f, 0.0f));
    EXPECT_EQ(brush.planePoints[0], Vector(1.0f, 2.0f, 3.0f));
    EXPECT_EQ(brush.planeDistances[0], 2.0f);
    EXPECT_FALSE(IsDirectionSet());
    EXPECT_TRUE(brush.followVertexNormal);
    // Such a dab is applied even without a direction of travel.
    previous = Vector{};
    EXPECT_TRUE(Prepare(3));
}

TEST_F(PlaneReuse, PlaneThroughTheOriginCountsAsUnset) {
    brush.planeDistances[0] = 0.0f;
    EXPECT_TRUE(Prepare(0));
    EXPECT_EQ(brush.directions[0], hit.normal);
}

TEST_F(PlaneReuse, EachPassHasItsOwnPlane) {
    EXPECT_TRUE(Prepare(0, 1));
    EXPECT_EQ(brush.directions[1], hit.normal);
    EXPECT_EQ(brush.directions[0], Vector(0.0f, 1.0f, 0.0f));
}

TEST_F(PlaneReuse, DoesNotApplyWhileThePlaneIsUpdated) {
    brush.updatePlane.SetValue(true, true);
    EXPECT_TRUE(Prepare(0));
    EXPECT_EQ(brush.directions[0], hit.normal);
}

TEST_F(PlaneReuse, DoesNotApplyToToolsWithoutAPlane) {
    brush.setIsPlaneTool(false);
    EXPECT_TRUE(Prepare(0));
    EXPECT_EQ(brush.directions[0], hit.normal);
}

}  // namespace
}  // namespace trovik::test
