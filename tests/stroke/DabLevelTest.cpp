// SPDX-License-Identifier: Apache-2.0

/// \file Tests which level's faces a dab treats as patches, and the message for meshes that are too
/// coarse.
#include "brush/Registration.h"
#include "tests/brush/RecordingKernel.h"
#include "tests/fixture/StrokeFixture.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

class LevelFactor {
public:
    explicit LevelFactor(float value) { swiftStrokeLevelFactor.attribute->SetValue(value, true); }
    ~LevelFactor() { swiftStrokeLevelFactor.attribute->SetValue(1.0f, true); }
};

/// The size of a face as measured by the brush: the diagonal of a quad or one side of a triangle.
float Measure(LevelMesh& mesh, uint32_t face) {
    const uint32_t first = face * mesh.CornersPerFace();
    return (mesh.Position(mesh.faceVertexIndices[first]) -
            mesh.Position(mesh.faceVertexIndices[first + 2]))
        .Length();
}

struct Split {
    int32_t patchLevel;
    uint32_t patchMeshLevel;
    bool operator==(const Split&) const = default;
};

/// Applies one dab whose radius is `times` the size of the hit face.
Split SplitFor(StrokeFixture& bench, float times) {
    bench.Begin();
    bench.Dab(bench.HitFace(0), times * Measure(bench.Mesh(), 0), 0.0f);
    const Split split{bench.brush->patchLevel, bench.brush->patchMeshLevel};
    EXPECT_EQ(bench.brush->facesPerPatch, 1u << (2 * split.patchLevel));
    EXPECT_EQ(bench.brush->gridStride, (1u << split.patchLevel) + 3);
    EXPECT_EQ(bench.brush->patchMesh, bench.geometry->LevelByIndex(split.patchMeshLevel));
    bench.End();
    return split;
}

TEST(DabLevel, PatchFollowsTheBrushSize) {
    StrokeFixture bench(FlatGrid(1), 4);
    EXPECT_EQ(SplitFor(bench, 0.1f), (Split{0, 4}));
    EXPECT_EQ(SplitFor(bench, 2.0f), (Split{0, 4}));
    EXPECT_EQ(SplitFor(bench, 3.9f), (Split{0, 4}));
    EXPECT_EQ(SplitFor(bench, 4.0f), (Split{1, 3}));
    EXPECT_EQ(SplitFor(bench, 8.0f), (Split{2, 2}));
    EXPECT_EQ(SplitFor(bench, 16.0f), (Split{3, 1}));
}

TEST(DabLevel, NeverExceedsTheBoundLevel) {
    StrokeFixture bench(FlatGrid(1), 4);
    EXPECT_EQ(SplitFor(bench, 32.0f), (Split{4, 0}));
    EXPECT_EQ(SplitFor(bench, 1000.0f), (Split{4, 0}));
    StrokeFixture base(FlatGrid(1));
    EXPECT_EQ(SplitFor(base, 0.5f), (Split{0, 0}));
    EXPECT_EQ(SplitFor(base, 100.0f), (Split{0, 0}));
}

TEST(DabLevel, PreferenceMultipliesTheWantedDepth) {
    StrokeFixture bench(FlatGrid(1), 4);
    {
        const LevelFactor half(0.5f);
        EXPECT_EQ(SplitFor(bench, 8.0f), (Split{1, 3}));
    }
    {
        // The dab requests a patch depth of 8.
        const LevelFactor four(4.0f);
        EXPECT_EQ(SplitFor(bench, 8.0f), (Split{4, 0}));
        EXPECT_EQ(SplitFor(bench, 2.0f), (Split{0, 4}));
    }
    {
        // Only the range of the preference limits the result.
        const LevelFactor beyond(100.0f);
        EXPECT_EQ(static_cast<float>(swiftStrokeLevelFactor), 4.0f);
        const LevelFactor below(0.0f);
        EXPECT_EQ(static_cast<float>(swiftStrokeLevelFactor), 0.25f);
        EXPECT_EQ(SplitFor(bench, 8.0f), (Split{0, 4}));
        EXPECT_EQ(SplitFor(bench, 32.0f), (Split{1, 3}));
    }
}

TEST(DabLevel, OverTrianglesLevelOneIsTheCoarsestPatchLevel) {
    StrokeFixture bench(Icosahedron(), 3);
    EXPECT_EQ(SplitFor(bench, 1000.0f), (Split{2, 1}));
    EXPECT_EQ(SplitFor(bench, 8.0f), (Split{2, 1}));
    EXPECT_EQ(SplitFor(bench, 4.0f), (Split{1, 2}));
    EXPECT_EQ(SplitFor(bench, 1.0f), (Split{0, 3}));
    StrokeFixture first(Icosahedron(), 1);
    EXPECT_EQ(SplitFor(first, 1000.0f), (Split{0, 1}));
    StrokeFixture base(Icosahedron());
    EXPECT_EQ(SplitFor(base, 1000.0f), (Split{0, 0}));
}

TEST(DabLevel, SizeZeroMakesEachFaceAPatch) {
    StrokeFixture bench(FlatGrid(1), 3);
    bench.Begin();
    bench.Dab(bench.HitFace(0), 0.0f, 0.0f);
    EXPECT_EQ(bench.brush->patchLevel, 0);
    EXPECT_EQ(bench.brush->patchMeshLevel, 3u);
    EXPECT_EQ(bench.brush->facesPerPatch, 1u);
    EXPECT_EQ(bench.brush->radius, 0.0f);
    EXPECT_TRUE(std::isinf(bench.brush->inverseRadius));
    bench.End();
}

TEST(DabLevel, UnrepresentableNumbersCountAsZero) {
    StrokeFixture bench(FlatGrid(1), 3);
    // A degenerate face: the quotient is infinite, or NaN with a brush of size 0.
    LevelMesh& mesh = bench.Mesh();
    const uint32_t* face = mesh.faceVertexIndices.array;
    mesh.SetPosition(face[2], mesh.Position(face[0]));
    bench.Begin();
    for (const float size : {1.0f, 0.0f}) {
        bench.Dab(bench.HitFace(0), size, 0.0f);
        EXPECT_EQ(bench.brush->patchLevel, 0);
        EXPECT_EQ(bench.brush->patchMeshLevel, 3u);
    }
    bench.End();
}

/// A single quad whose diagonal is exactly 4.
PolygonMesh WideQuad() {
    PolygonMesh quad;
    quad.positions = {{0, 0, 0}, {2, -2, 0}, {4, 0, 0}, {2, 2, 0}};
    quad.faceSizes = {4};
    quad.faceVertices = {0, 1, 2, 3};
    return quad;
}

class CoarseMesh : public ::testing::Test {
protected:
    std::size_t Messages() const { return HostKernel::Instance().HUDMessages().size(); }
    StrokeFixture bench{WideQuad()};
};

TEST_F(CoarseMesh, IsReportedOncePerStroke) {
    bench.Begin();
    bench.Dab(bench.HitFace(0), 0.5f);
    ASSERT_EQ(Messages(), 1u);
    EXPECT_TRUE(bench.brush->coarseMeshWarned);
    bench.Dab(bench.HitFace(0), 0.5f);
    bench.Dab(bench.HitFace(0), 0.25f);
    EXPECT_EQ(Messages(), 1u);
    bench.End();
    EXPECT_FALSE(bench.brush->coarseMeshWarned);
    bench.Stroke(bench.HitFace(0), 0.5f);
    EXPECT_EQ(Messages(), 2u);
    EXPECT_EQ(
        HostKernel::Instance().HUDMessages()[0],
        "The mesh you are trying to sculpt is too coarse<br>\t\t\t\t\tfor the size of your "
        "brush.<p>\t\t\t\t\tPress <b>%%Subdivide faces%%</b> to subdivide the mesh into finer "
        "polygons.<p>\t\t\t\t\tPress <b>%%Toggle wireframe%%</b> to show/hide the wireframe.");
}

TEST_F(CoarseMesh, IsDetectedByFacesLargerThanFourRadii) {
    bench.Begin();
    bench.Dab(bench.HitFace(0), 1.0f);
    EXPECT_EQ(Messages(), 0u);
    EXPECT_FALSE(bench.brush->coarseMeshWarned);
    bench.Dab(bench.HitFace(0), 0.0f);
    EXPECT_EQ(Messages(), 0u);
    bench.Dab(bench.HitFace(0), std::nextafter(1.0f, 0.0f));
    EXPECT_EQ(Messages(), 1u);
    bench.End();
}

TEST_F(CoarseMesh, HasNoHigherLevel) {
    StrokeFixture fine(WideQuad(), 1);
    HostKernel::Instance().ClearHUDMessages();
    fine.Begin();
    fine.Dab(fine.HitFace(0), 0.001f);
    EXPECT_EQ(Messages(), 0u);
    EXPECT_FALSE(fine.brush->coarseMeshWarned);
    fine.End();
    fine.geometry->BindLevel(0);
    fine.Begin();
    fine.Dab(fine.HitFace(0), 0.001f);
    EXPECT_EQ(Messages(), 0u);
    fine.End();
}

TEST_F(CoarseMesh, MessageIsAWarning) {
    const SurfacePoint hit = bench.HitFace(0);
    RecordingKernel kernel;
    bench.Begin();
    bench.Dab(hit, 0.5f);
    bench.End();
    ASSERT_EQ(kernel.messages.size(), 1u);
    EXPECT_EQ(kernel.messages[0].type, 1);
}

}  // namespace
}  // namespace trovik::test
