// SPDX-License-Identifier: Apache-2.0
#include "tests/fixture/StrokeFixture.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/stroke/FakeMesh.h"
#include "topology/PatchMap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace trovik::test {
namespace {

class FakeBinding : public ::testing::Test {
protected:
    bool NonUniform(const Vector& scale) {
        geometry.place.scale = scale;
        brush.SetMesh(&geometry.level);
        return brush.nonUniformScale;
    }
    ~FakeBinding() override { brush.EndStroke(); }

    CallLog log;
    FakeGeometry geometry{"A", log};
    StrokeFixture bench{FlatGrid(2)};
    SwiftStroke& brush = *bench.brush;
};

TEST_F(FakeBinding, UniformityDependsOnScaleRatiosOnly) {
    EXPECT_FALSE(NonUniform({2.0f, 2.0f, 2.0f}));
    EXPECT_FALSE(NonUniform({0.5f, 0.5f, 0.5f}));
    EXPECT_FALSE(NonUniform({-1.0f, -1.0f, -1.0f}));
    EXPECT_TRUE(NonUniform({1.0f, -1.0f, 1.0f}));
    EXPECT_TRUE(NonUniform({1.0f, 1.02f, 1.0f}));
    EXPECT_TRUE(NonUniform({100.0f, 102.0f, 100.0f}));
    EXPECT_TRUE(NonUniform({1.0f, 1.0f, 1.02f}));
    EXPECT_TRUE(NonUniform({1.0f, 0.98f, 1.0f}));
    EXPECT_TRUE(NonUniform({1.0f, 1.0f, 0.98f}));
}

TEST_F(FakeBinding, RatiosAtTheLimitsCountAsUniform) {
    EXPECT_FALSE(NonUniform({1.0f, 1.01f, 0.99f}));
    EXPECT_FALSE(NonUniform({1.0f, 0.99f, 1.01f}));
    EXPECT_TRUE(NonUniform({1.0f, std::nextafter(1.01f, 2.0f), 1.0f}));
    EXPECT_TRUE(NonUniform({1.0f, std::nextafter(0.99f, 0.0f), 1.0f}));
    EXPECT_TRUE(NonUniform({1.0f, 1.0f, std::nextafter(1.01f, 2.0f)}));
    EXPECT_TRUE(NonUniform({1.0f, 1.0f, std::nextafter(0.99f, 0.0f)}));
}

TEST_F(FakeBinding, ZeroScaleIsNonUniformUnlessAllAxesAreZero) {
    EXPECT_TRUE(NonUniform({0.0f, 1.0f, 1.0f}));
    EXPECT_FALSE(NonUniform({0.0f, 0.0f, 0.0f}));
}

TEST_F(FakeBinding, MatrixIsCopiedInLaneOrderForNonUniformScaleOnly) {
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            geometry.place.matrix.m[row][column] = static_cast<float>(10 * row + column);
    const HWVector untouched(7.0f, 7.0f, 7.0f, 7.0f);
    for (HWVector& row : brush.brushSpace->meshToWorld) row = untouched;
    EXPECT_FALSE(NonUniform({1.0f, 1.0f, 1.0f}));
    for (const HWVector& row : brush.brushSpace->meshToWorld) EXPECT_EQ(row.X(), 7.0f);
    EXPECT_TRUE(NonUniform({1.0f, 2.0f, 1.0f}));
    for (int row = 0; row < 4; ++row) {
        float lanes[4];
        std::memcpy(lanes, &brush.brushSpace->meshToWorld[row], sizeof lanes);
        for (int column = 0; column < 4; ++column)
            EXPECT_EQ(lanes[3 - column], static_cast<float>(10 * row + column));
    }
}

TEST_F(FakeBinding, CopiesTheValuesOfTheMesh) {
    brush.SetMesh(&geometry.level);
    EXPECT_EQ(static_cast<Mesh*>(brush.mesh), &geometry.level);
    EXPECT_FALSE(brush.meshHasFreeze);
    EXPECT_FALSE(brush.meshHasLayer);
    EXPECT_EQ(brush.layer, nullptr);
    FakeLayer layer;
    geometry.level.freeze = 3;
    geometry.level.layer = &layer;
    brush.SetMesh(&geometry.level);
    EXPECT_TRUE(brush.meshHasFreeze);
    EXPECT_TRUE(brush.meshHasLayer);
    EXPECT_EQ(brush.layer, &layer);
}

TEST_F(FakeBinding, RefusedLockLeavesTheBrushUnboundWithoutAMessage) {
    geometry.level.lockable = false;
    HostKernel::Instance().ClearHUDMessages();
    brush.SetMesh(&geometry.level);
    EXPECT_EQ(brush.mesh, nullptr);
    EXPECT_EQ(brush.meshChanges.fill, 0u);
    EXPECT_EQ(geometry.level.changesStarted, 0);
    EXPECT_EQ(log, CallLog{"lock A"});
    EXPECT_TRUE(HostKernel::Instance().HUDMessages().empty());
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);

    // During a stroke, dabs do nothing and show no message.
    brush.BeginStroke(&geometry.level, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    EXPECT_TRUE(brush.strokeActive);
    const AxisAlignedBoundingBox box = bench.Dab(geometry.Hit(), 1.0f);
    EXPECT_TRUE(box.IsEmpty());
    EXPECT_EQ(geometry.level.walks, 0);
    EXPECT_TRUE(HostKernel::Instance().HUDMessages().empty());
}

TEST_F(FakeBinding, MeshThatIsNotALevelIsAnErrorAndStaysLocked) {
    FakePlainMesh plain("plain", log);
    plain.geometry = &geometry;
    brush.SetMesh(&geometry.level);
    log.clear();
    Error* caught = nullptr;
    try {
        brush.SetMesh(&plain);
    } catch (Error* error) {
        caught = error;
    }
    ASSERT_NE(caught, nullptr);
    EXPECT_EQ(caught->ErrorCode(), 4);
    EXPECT_STREQ(caught->Function(), "SwiftStroke::SetMesh");
    EXPECT_EQ(caught->Message(), QStringLiteral("Invalid mesh specified"));
    EXPECT_NE(std::string(caught->File()).find("MeshBinding.cpp"), std::string::npos);
    EXPECT_GT(caught->Line(), 0);
    Error::Dispose(caught);
    EXPECT_EQ(brush.mesh, nullptr);
    // The previous mesh is no longer bound, and the invalid mesh is locked.
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0].substr(0, 8), "unlock A");
    EXPECT_EQ(log[1], "lock plain");
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
}

TEST_F(FakeBinding, ErrorInBeginLeavesNoStroke) {
    FakePlainMesh plain("plain", log);
    plain.geometry = &geometry;
    bool thrown = false;
    try {
        brush.BeginStroke(&plain, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    } catch (Error* error) {
        thrown = true;
        Error::Dispose(error);
    }
    EXPECT_TRUE(thrown);
    EXPECT_FALSE(brush.strokeActive);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
}

TEST_F(FakeBinding, ErrorInADabLeavesTheStrokeInactive) {
    FakePlainMesh plain("plain", log);
    plain.geometry = &geometry;
    SurfacePoint hit = geometry.Hit();
    hit.mesh = &plain;
    bench.Begin();
    bool thrown = false;
    AxisAlignedBoundingBox box;
    try {
        brush.ApplyDab(hit, Vector(), 1.0f, 1.0f, 1.0f, box);
    } catch (Error* error) {
        thrown = true;
        Error::Dispose(error);
    }
    EXPECT_TRUE(thrown);
    EXPECT_FALSE(brush.strokeActive);
    EXPECT_EQ(brush.mesh, nullptr);
    EXPECT_TRUE(box.IsEmpty());
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
    bench.Begin();
    bench.End();
}

TEST_F(FakeBinding, TriangleMeshKeepsThePatchMapOfThePreviousBinding) {
    bench.Begin();
    PatchMap* const map = brush.patchMap;
    SubdivisionLevel* const owner = brush.patchMapMesh;
    ASSERT_NE(map, nullptr);
    brush.SetMesh(&geometry.level);
    EXPECT_EQ(brush.patchMap, map);
    EXPECT_EQ(brush.patchMapMesh, owner);
}

TEST(MeshBinding, PatchMapIsAChildOfTheLowestQuadLevel) {
    StrokeFixture quads(Cube(), 2);
    quads.Begin();
    EXPECT_EQ(quads.brush->patchMapMesh, quads.geometry->LevelByIndex(0));
    ASSERT_NE(quads.brush->patchMap, nullptr);
    EXPECT_EQ(quads.brush->patchMap->Parent(), quads.geometry->Level(0));
    EXPECT_EQ(quads.brush->patchMap->neighbourFaces.fill, 60u);
    quads.End();

    StrokeFixture triangles(Icosahedron(), 2);
    triangles.Begin();
    EXPECT_EQ(triangles.brush->patchMapMesh, triangles.geometry->LevelByIndex(1));
    ASSERT_NE(triangles.brush->patchMap, nullptr);
    EXPECT_EQ(triangles.brush->patchMap->Parent(), triangles.geometry->Level(1));
    EXPECT_EQ(triangles.brush->patchMap->neighbourFaces.fill, 600u);
    triangles.End();

    StrokeFixture base(Icosahedron());
    base.Begin();
    EXPECT_EQ(base.brush->patchMapMesh, nullptr);
    EXPECT_EQ(base.brush->patchMap, nullptr);
    base.End();
}

TEST(MeshBinding, PatchMapIsMadeOnce) {
    StrokeFixture bench(Cube(), 1);
    bench.Begin();
    PatchMap* const map = bench.brush->patchMap;
    bench.End();
    bench.Begin();
    EXPECT_EQ(bench.brush->patchMap, map);
    bench.End();
    LevelMesh* lowest = bench.geometry->Level(0);
    EXPECT_EQ(lowest->ChildByClass(PatchMap::StaticClass(), 1u), nullptr);
}

TEST(MeshBinding, PatchMapWithoutATableIsReplaced) {
    StrokeFixture bench(Cube(), 1);
    LevelMesh* lowest = bench.geometry->Level(0);
    auto* fromScene = new PatchMap;
    lowest->AddChild(fromScene);
    fromScene->neighbourFaces.Clear();
    fromScene->SetName(QStringLiteral("from a scene"));
    bench.Begin();
    ASSERT_NE(bench.brush->patchMap, nullptr);
    EXPECT_EQ(bench.brush->patchMap->neighbourFaces.fill, 60u);
    EXPECT_NE(bench.brush->patchMap->Name(), QStringLiteral("from a scene"));
    EXPECT_EQ(lowest->ChildByClass(PatchMap::StaticClass(), 0u), bench.brush->patchMap);
    EXPECT_EQ(lowest->ChildByClass(PatchMap::StaticClass(), 1u), nullptr);
    bench.End();
}

TEST(MeshBinding, RenderersAreThoseOfTheBoundMesh) {
    StrokeFixture bench(FlatGrid(2));
    bench.Begin();
    EXPECT_EQ(bench.brush->renderers.fill, 0u);
    EXPECT_TRUE(bench.brush->rendererTakesFaces);
    bench.End();
    RecordingRenderer& first = bench.AddRenderer(1.0f);
    bench.Begin();
    ASSERT_EQ(bench.brush->renderers.fill, 1u);
    EXPECT_TRUE(bench.brush->rendererTakesFaces);
    bench.End();
    RecordingRenderer& second = bench.AddRenderer(0.0f);
    bench.Begin();
    ASSERT_EQ(bench.brush->renderers.fill, 2u);
    EXPECT_EQ(bench.brush->renderers[0], &first);
    EXPECT_EQ(bench.brush->renderers[1], &second);
    EXPECT_FALSE(bench.brush->rendererTakesFaces);
    StrokeFixture other(FlatGrid(2));
    bench.brush->SetMesh(&other.Mesh());
    EXPECT_EQ(bench.brush->renderers.fill, 0u);
    EXPECT_TRUE(bench.brush->rendererTakesFaces);
    bench.End();
}

TEST(MeshBinding, ZeroFactorOfAnyRendererRequestsEachVertex) {
    for (const auto& [a, b] : {std::pair{0.0f, 1.0f}, {1.0f, -0.0f}}) {
        StrokeFixture bench(FlatGrid(2));
        bench.AddRenderer(a);
        bench.AddRenderer(b);
        bench.Begin();
        EXPECT_FALSE(bench.brush->rendererTakesFaces);
        bench.End();
    }
    StrokeFixture bench(FlatGrid(2));
    bench.AddRenderer(-1.0f);
    bench.AddRenderer(std::numeric_limits<float>::quiet_NaN());
    bench.Begin();
    EXPECT_TRUE(bench.brush->rendererTakesFaces);
    bench.End();
}

TEST(MeshBinding, OpensOneChangePerBinding) {
    StrokeFixture bench(FlatGrid(2));
    bench.Begin();
    ASSERT_EQ(bench.brush->meshChanges.fill, 1u);
    EXPECT_EQ(bench.brush->meshChanges[0].mesh, &bench.Mesh());
    EXPECT_EQ(bench.brush->CurrentChange()->mesh, &bench.Mesh());
    bench.End();
}

}  // namespace
}  // namespace trovik::test
