// SPDX-License-Identifier: Apache-2.0

/// \file Tests a dab's dirty box and its renderer notifications.
#include "brush/Registration.h"
#include "tests/fixture/StrokeFixture.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

class RenderingOff {
public:
    RenderingOff() { renderSwiftStroke.attribute->SetValue(false, true); }
    ~RenderingOff() { renderSwiftStroke.attribute->SetValue(true, true); }
};

void ExpectBox(const AxisAlignedBoundingBox& box, const Vector& low, const Vector& high) {
    EXPECT_FLOAT_EQ(box.minX, low.x);
    EXPECT_FLOAT_EQ(box.minY, low.y);
    EXPECT_FLOAT_EQ(box.minZ, low.z);
    EXPECT_FLOAT_EQ(box.maxX, high.x);
    EXPECT_FLOAT_EQ(box.maxY, high.y);
    EXPECT_FLOAT_EQ(box.maxZ, high.z);
}

/// Raises vertex (2, 2) of a flat grid and its four neighbours by 0.5.
class DirtyBox : public ::testing::Test {
protected:
    AxisAlignedBoundingBox Lift(AxisAlignedBoundingBox box = {}) {
        const SurfacePoint hit = bench.HitVertex(2 * 5 + 2);
        bench.Begin();
        bench.brush->ApplyDab(hit, bench.WorldOf(hit.position), 1.0f, 1.0f, 0.5f, box);
        bench.End();
        return box;
    }
    StrokeFixture bench{FlatGrid(4)};
    /// Twice the diagonal of the hit face.
    const float margin = std::sqrt(2.0f) * 2.0f;
};

TEST_F(DirtyBox, EnclosesOldAndNewPositionsAndAMargin) {
    ExpectBox(Lift(),
              {1.0f - margin, 1.0f - margin, -margin},
              {3.0f + margin, 3.0f + margin, 0.5f + margin});
    for (const uint32_t v : {12u, 11u, 13u, 7u, 17u}) EXPECT_EQ(bench.Mesh().Position(v).z, 0.5f);
    EXPECT_EQ(bench.Mesh().Position(6).z, 0.0f);
}

TEST_F(DirtyBox, ExtendsTheBoxOfTheHost) {
    ExpectBox(Lift({-9.0f, 2.0f, 0.0f, -8.0f, 2.5f, 7.0f}),
              {-9.0f - margin, 1.0f - margin, -margin},
              {3.0f + margin, 3.0f + margin, 7.0f + margin});
}

TEST_F(DirtyBox, HasOnlyTheMarginWhileRenderingIsOff) {
    const RenderingOff off;
    ExpectBox(Lift(),
              {1.0f - margin, 1.0f - margin, 1.0f - margin},
              {-1.0f + margin, -1.0f + margin, -1.0f + margin});
    ASSERT_TRUE(bench.geometry->History().Undo(*bench.geometry));
    ExpectBox(Lift({0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f}),
              {-margin, -margin, -margin},
              {margin, margin, margin});
}

TEST_F(DirtyBox, IsInWorldSpaceWithAMarginInMeshSpace) {
    bench.geometry->Transform().Set({2.0f, 2.0f, 2.0f}, {}, {10.0f, 20.0f, 30.0f});
    const SurfacePoint hit = bench.HitVertex(12);
    bench.Begin();
    AxisAlignedBoundingBox box;
    bench.brush->ApplyDab(hit, bench.WorldOf(hit.position), 2.0f, 1.0f, 1.0f, box);
    bench.End();
    EXPECT_NEAR(bench.Mesh().Position(12).z, 0.5f, 1e-6f);
    EXPECT_NEAR(box.minX, 12.0f - margin, 1e-4f);
    EXPECT_NEAR(box.maxX, 16.0f + margin, 1e-4f);
    EXPECT_NEAR(box.minY, 22.0f - margin, 1e-4f);
    EXPECT_NEAR(box.minZ, 30.0f - margin, 1e-4f);
    EXPECT_NEAR(box.maxZ, 31.0f + margin, 1e-4f);
}

TEST_F(DirtyBox, ContainsTheHitEvenIfNothingIsInReach) {
    const SurfacePoint hit = bench.HitFace(5);
    bench.Begin();
    AxisAlignedBoundingBox box;
    bench.brush->ApplyDab(hit, hit.position, 0.01f, 1.0f, 0.5f, box);
    bench.End();
    ExpectBox(box, {1.5f - margin, 1.5f - margin, -margin}, {1.5f + margin, 1.5f + margin, margin});
}

TEST_F(DirtyBox, WholeMeshPassAddsNoMargin) {
    SurfacePoint hit = bench.HitFace(0);
    bench.Begin();
    bench.brush->wholeMesh = true;
    AxisAlignedBoundingBox box;
    bench.brush->ApplyDab(hit, Vector(), 0.0f, 1.0f, 0.5f, box);
    bench.brush->wholeMesh = false;
    bench.End();
    EXPECT_NEAR(box.minX, 0.0f, 1e-6f);
    EXPECT_NEAR(box.maxY, 4.0f, 1e-6f);
    EXPECT_NEAR(box.minZ, 0.0f, 1e-6f);
    EXPECT_NEAR(box.maxZ, 0.5f, 1e-4f);
}

TEST_F(DirtyBox, RefusedDabDoesNotChangeIt) {
    bench.Mesh().SetLockable(false);
    EXPECT_TRUE(Lift().IsEmpty());
}

TEST(Notices, ReportEachChangedPatchAndTheBaseFacesAround) {
    StrokeFixture bench(FlatGrid(3));
    RecordingRenderer& renderer = bench.AddRenderer(1.0f);
    const SurfacePoint hit = bench.HitVertex(5);  // the common vertex of faces 0, 1, 3 and 4
    bench.Stroke(hit, 0.5f);
    ASSERT_FALSE(renderer.notices.empty());
    // The traversal starts in face 0; only that patch moves the vertex, and Tester returns false
    // for the others.
    EXPECT_EQ(renderer.notices[0], (RecordingRenderer::Notice{0, 0}));
    for (const auto& notice : renderer.notices)
        EXPECT_EQ(notice.vertex, bench.Mesh().faceVertexIndices[notice.face * 4]);
    for (const uint32_t around : {1u, 3u, 4u}) {
        const RecordingRenderer::Notice wanted{bench.Mesh().faceVertexIndices[around * 4], around};
        EXPECT_NE(std::find(renderer.notices.begin(), renderer.notices.end(), wanted),
                  renderer.notices.end());
    }
}

TEST(Notices, ReportEachVertexIfARendererRequestsIt) {
    StrokeFixture bench(FlatGrid(3));
    RecordingRenderer& coarse = bench.AddRenderer(1.0f);
    RecordingRenderer& exact = bench.AddRenderer(0.0f);
    bench.Stroke(bench.HitVertex(5), 0.5f);
    EXPECT_EQ(exact.notices, (std::vector<RecordingRenderer::Notice>{{5, 0}}));
    EXPECT_EQ(coarse.notices, exact.notices);
}

TEST(Notices, AreNotSentByFaceWhileRenderingIsOff) {
    const RenderingOff off;
    StrokeFixture bench(FlatGrid(3));
    RecordingRenderer& renderer = bench.AddRenderer(1.0f);
    bench.Stroke(bench.HitVertex(5), 0.5f);
    EXPECT_TRUE(renderer.notices.empty());
    EXPECT_NE(bench.Mesh().Position(5).z, 0.0f);
}

}  // namespace
}  // namespace trovik::test
