// SPDX-License-Identifier: Apache-2.0
#include "tests/fixture/StrokeFixture.h"
#include "tests/meshes/MeshZoo.h"
#include "topology/PatchMap.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

class Dispatch : public ::testing::Test {
protected:
    unsigned IndexOf(Tool tool) {
        bench.Activate(tool);
        bench.Begin();
        const unsigned index = bench.brush->PatchSwitches().Index();
        bench.End();
        return index;
    }
    StrokeFixture bench{GridMesh(3, 3), 2};
};

TEST_F(Dispatch, PushingToolSetsNoBit) { EXPECT_EQ(IndexOf(Tool::Sculpt), 0u); }
TEST_F(Dispatch, PinchSetsThePullBit) { EXPECT_EQ(IndexOf(Tool::Pinch), 128u); }
TEST_F(Dispatch, PlaneToolSetsBothFamilyBits) {
    for (const Tool tool : {Tool::Amplify, Tool::Flatten, Tool::Scrape, Tool::Fill, Tool::Wax})
        EXPECT_EQ(IndexOf(tool), 128u + 32u);
}

TEST_F(Dispatch, SmoothWithoutLayerAveragesPositions) {
    bench.brush->followVertexNormal = false;
    EXPECT_EQ(IndexOf(Tool::Smooth), 32u + 4u);
}

TEST_F(Dispatch, TilingWithoutAStampHasNoBit) {
    bench.Begin();
    bench.brush->stampTiled = true;
    EXPECT_EQ(bench.brush->PatchSwitches().Index(), 0u);
    bench.brush->stampEnabled = true;
    EXPECT_EQ(bench.brush->PatchSwitches().Index(), 64u + 1u);
    bench.brush->stampEnabled = false;
    bench.End();
}

TEST_F(Dispatch, MaskIsQueriedForEveryPatch) {
    bench.Begin();
    EXPECT_EQ(bench.brush->PatchSwitches().Index(), 0u);
    bench.Mesh().SetFreeze(3, 10);
    EXPECT_EQ(bench.brush->PatchSwitches().Index(), 8u);
    EXPECT_FALSE(bench.brush->meshHasFreeze);
    bench.End();
}

TEST_F(Dispatch, RendererThatRequestsVerticesSetsItsBit) {
    bench.AddRenderer(0.0f);
    EXPECT_EQ(IndexOf(Tool::Sculpt), 256u);
}

TEST_F(Dispatch, PatchBeyondTheMeshIsRefused) {
    bench.Begin();
    SwiftStroke& brush = *bench.brush;
    brush.facesPerPatch = 16;
    EXPECT_FALSE(brush.Tester(bench.geometry->Level(0), bench.Mesh().faceCount / 16));
    bench.End();
}

TEST_F(Dispatch, PatchThatIsNotLiveIsSkipped) {
    bench.Mesh().faceFlags[4 * 16] = 0;
    const std::vector<VertexBits> before = BitsOf(bench.Mesh());
    bench.Stroke(bench.HitFace(4 * 16 + 3), 1.5f);
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
}

TEST_F(Dispatch, NormalsAreUpdatedEvenIfTheKernelReachedNothing) {
    LevelMesh& mesh = bench.Mesh();
    const uint32_t vertex = mesh.faceVertexIndices[4 * 16 * 4];
    mesh.vertexNormals.array[vertex] = {1, 2, 3, 4};
    RecordingRenderer& renderer = bench.AddRenderer(1.0f);
    SurfacePoint hit = bench.HitFace(4 * 16);
    bench.Begin();
    // The dab is far above the surface, so the patch under the hit is visited, but no vertex is in
    // reach.
    AxisAlignedBoundingBox box;
    bench.brush->ApplyDab(hit, {1.5f, 1.5f, 9.0f}, 1.2f, 1.0f, 1.0f, box);
    bench.End();
    EXPECT_EQ(mesh.vertexNormals.array[vertex].z, 32767);
    EXPECT_EQ(mesh.vertexNormals.array[vertex].reserved, 4);
    EXPECT_TRUE(renderer.notices.empty());
}

TEST_F(Dispatch, PatchAndItsNeighboursAreReportedOncePerPatch) {
    RecordingRenderer& renderer = bench.AddRenderer(1.0f);
    bench.Stroke(bench.HitFace(4 * 16 + 2), 0.4f);
    ASSERT_FALSE(renderer.notices.empty());
    // The patch at the hit is reported first, by the face that was hit and that face's first
    // vertex.
    EXPECT_EQ(renderer.notices[0].face, 4u * 16 + 2);
    for (const RecordingRenderer::Notice& notice : renderer.notices)
        EXPECT_EQ(notice.vertex, bench.Mesh().faceVertexIndices[notice.face * 4]);
}

TEST_F(Dispatch, WithoutANeighbourTableOnlyReachedPatchesAreReported) {
    RecordingRenderer& renderer = bench.AddRenderer(1.0f);
    bench.Begin();
    ASSERT_NE(bench.brush->patchMap, nullptr);
    // Simulates a patch map whose allocation failed.
    bench.brush->patchMap->neighbourFaces.Clear();
    bench.Dab(bench.HitFace(4 * 16 + 2), 0.4f);
    bench.End();
    ASSERT_EQ(bench.brush->facesPerPatch, 1u);
    std::vector<RecordingRenderer::Notice> wanted;
    for (const FaceVisit& visit : bench.Mesh().LastFaceWalk())
        if (visit.answer)
            wanted.push_back({bench.Mesh().faceVertexIndices[visit.face * 4], visit.face});
    EXPECT_GT(wanted.size(), 1u);
    EXPECT_EQ(renderer.notices, wanted);
}

TEST_F(Dispatch, RefusingLayerMovesNothingAndEndsTheWalk) {
    SculptLayer& layer = bench.AddLayer();
    layer.SetWritable(false);
    const std::vector<VertexBits> before = BitsOf(bench.Mesh());
    bench.Stroke(bench.HitFace(4 * 16), 3.0f);
    const std::vector<VertexBits> after = BitsOf(bench.Mesh());
    for (std::size_t v = 0; v < before.size(); ++v)
        for (int k = 0; k < 3; ++k) EXPECT_EQ(after[v].position[k], before[v].position[k]);
    std::size_t walked = 0;
    for (uint32_t level = 0; level < bench.geometry->LevelCount(); ++level)
        walked = std::max(walked, bench.geometry->Level(level)->LastFaceWalk().size());
    EXPECT_EQ(walked, 1u);
}

}  // namespace
}  // namespace trovik::test
