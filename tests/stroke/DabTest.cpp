// SPDX-License-Identifier: Apache-2.0
#include "brush/Registration.h"
#include "framework/brushes/BrushSettings.h"
#include "framework/mesh/LevelPositions.h"
#include "tests/fixture/StrokeFixture.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/stroke/FakeMesh.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

TEST(Dab, WithoutAStrokeDoesNothing) {
    StrokeFixture bench(FlatGrid(3));
    const auto before = BitsOf(bench.Mesh());
    const uint32_t count = bench.brush->planeDabCount;
    EXPECT_TRUE(bench.Dab(bench.HitFace(4), 1.0f).IsEmpty());
    EXPECT_EQ(bench.brush->planeDabCount, count);
    EXPECT_EQ(bench.brush->mesh, nullptr);
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
}

TEST(Dab, HitWithoutAMeshOrOnAMeshWithoutFacesDoesNothing) {
    StrokeFixture bench(FlatGrid(3));
    CallLog log;
    FakeGeometry empty("empty", log);
    empty.level.faceCount = 0;
    empty.level.faceVertexIndices.Clear();
    empty.level.vertices.Clear();
    const auto before = BitsOf(bench.Mesh());
    bench.Begin();
    EXPECT_TRUE(bench.Dab(SurfacePoint(), 1.0f).IsEmpty());
    EXPECT_TRUE(bench.Dab(empty.Hit(), 1.0f).IsEmpty());
    EXPECT_EQ(bench.brush->planeDabCount, 0xffffffffu);
    EXPECT_TRUE(bench.brush->strokeActive);
    EXPECT_EQ(static_cast<Mesh*>(bench.brush->mesh), &bench.Mesh());
    EXPECT_EQ(bench.brush->meshChanges.fill, 1u);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
    bench.Dab(bench.HitFace(4), 1.0f);
    EXPECT_NE(BitsOf(bench.Mesh()), before);
    bench.End();
}

TEST(Dab, MirroredPairCountsOnce) {
    StrokeFixture bench(FlatGrid(3));
    bench.Begin();
    SurfacePoint hit = bench.HitFace(4);
    bench.Dab(hit, 0.8f);
    EXPECT_EQ(bench.brush->planeDabCount, 0u);
    EXPECT_EQ(bench.brush->mirrorPass, 0u);
    hit.mirror = true;
    bench.Dab(hit, 0.8f);
    EXPECT_EQ(bench.brush->planeDabCount, 0u);
    EXPECT_EQ(bench.brush->mirrorPass, 1u);
    hit.mirror = false;
    bench.Dab(hit, 0.8f);
    EXPECT_EQ(bench.brush->planeDabCount, 1u);
    bench.End();
}

TEST(Dab, StrengthIsScaledByToolAndMesh) {
    StrokeFixture bench(FlatGrid(3));
    bench.Activate(Tool::Pinch);
    bench.geometry->Transform().Set({2.0f, 2.0f, 2.0f}, {}, {});
    bench.Begin();
    bench.Dab(bench.HitFace(4), 0.8f, 50.0f, 0.25f);
    EXPECT_FLOAT_EQ(bench.brush->dabStrength, 50.0f * 0.5f * 0.01f);
    EXPECT_EQ(bench.brush->dabPressure, 0.25f);
    bench.End();
    bench.Begin(BrushOperation::ModifierInvert);
    bench.Dab(bench.HitFace(4), 0.8f, 50.0f);
    EXPECT_FLOAT_EQ(bench.brush->dabStrength, -50.0f * 0.5f * 0.01f);
    bench.End();
}

TEST(Dab, SmoothConvertsPercentAndIsLimitedToOne) {
    StrokeFixture bench(FlatGrid(3));
    bench.Activate(Tool::Smooth);
    bench.Begin();
    bench.Dab(bench.HitFace(4), 0.8f, 100.0f);
    EXPECT_EQ(bench.brush->dabStrength, 1.0f);
    bench.Dab(bench.HitFace(4), 0.8f, 150.0f);
    EXPECT_EQ(bench.brush->dabStrength, 1.0f);
    bench.Dab(bench.HitFace(4), 0.8f, 50.0f);
    EXPECT_EQ(bench.brush->dabStrength, 0.5f);
    bench.End();
}

TEST(Dab, WaxOffsetsThePlaneByItsStrength) {
    StrokeFixture bench(FlatGrid(3));
    bench.Activate(Tool::Wax);
    for (const float radius : {0.8f, 1.6f}) {
        bench.Begin();
        bench.Dab(bench.HitFace(4), radius, 15.0f);
        EXPECT_EQ(bench.brush->dabStrength, 100.0f);
        EXPECT_FLOAT_EQ(bench.brush->planeOffset, 1.5f * 0.5f);
        bench.End();
    }
    bench.geometry->Transform().Set({2.0f, 2.0f, 2.0f}, {}, {});
    bench.Begin();
    bench.Dab(bench.HitFace(4), 0.8f, 15.0f);
    EXPECT_EQ(bench.brush->dabStrength, 100.0f);
    EXPECT_FLOAT_EQ(bench.brush->planeOffset, 1.5f * 0.5f * 0.5f);
    bench.End();
}

TEST(Dab, OtherPlaneOffsetsAreProportionalToTheRadius) {
    StrokeFixture bench(FlatGrid(3));
    bench.Activate(Tool::Flatten);
    bench.Begin();
    bench.Dab(bench.HitFace(4), 0.8f, 15.0f);
    EXPECT_EQ(bench.brush->planeOffset, 0.0f);
    bench.brush->setPlaneOffsetFactor(0.25f);
    bench.Dab(bench.HitFace(4), 0.8f, 15.0f);
    EXPECT_FLOAT_EQ(bench.brush->planeOffset, 0.2f);
    bench.End();
}

TEST(Dab, UniformScaleMeasuresInMeshSpace) {
    StrokeFixture bench(FlatGrid(3));
    bench.geometry->Transform().Set({2.0f, 2.0f, 2.0f}, {}, {5.0f, 0.0f, 0.0f});
    bench.Begin();
    const SurfacePoint hit = bench.HitFace(4);
    bench.Dab(hit, 1.0f, 0.0f);
    const SwiftStroke& brush = *bench.brush;
    EXPECT_FALSE(brush.nonUniformScale);
    EXPECT_FLOAT_EQ(brush.radius, 0.5f);
    EXPECT_FLOAT_EQ(brush.radiusSquared, 0.25f);
    EXPECT_FLOAT_EQ(brush.inverseRadius, 2.0f);
    EXPECT_FLOAT_EQ(brush.falloffScale, 2.0f * brush.falloffLastFloat);
    const auto center = static_cast<Vector>(brush.brushSpace->center);
    EXPECT_NEAR((center - hit.position).Length(), 0.0f, 1e-6f);
    EXPECT_EQ(brush.localCenter, center);
    EXPECT_EQ(brush.brushSpace->center.W(), 0.0f);
    bench.End();
}

TEST(Dab, NonUniformScaleMeasuresInWorldSpace) {
    StrokeFixture bench(FlatGrid(3));
    bench.geometry->Transform().Set({2.0f, 1.0f, 1.0f}, {}, {5.0f, 0.0f, 0.0f});
    bench.Begin();
    const SurfacePoint hit = bench.HitFace(4);
    bench.Dab(hit, 1.0f, 0.0f);
    const SwiftStroke& brush = *bench.brush;
    EXPECT_TRUE(brush.nonUniformScale);
    EXPECT_EQ(brush.radius, 1.0f);
    EXPECT_EQ(static_cast<Vector>(brush.brushSpace->center), bench.WorldOf(hit.position));
    EXPECT_NEAR((brush.localCenter - hit.position).Length(), 0.0f, 1e-6f);
    bench.End();
}

TEST(Dab, NonUniformScaleReachesAnEllipseAndMovesByWorldLengths) {
    StrokeFixture bench(FlatGrid(8));
    bench.geometry->Transform().Set({2.0f, 1.0f, 4.0f}, {}, {});
    LevelMesh& mesh = bench.Mesh();
    bench.Begin();
    const SurfacePoint hit = bench.HitVertex(4 * 9 + 4);
    bench.Dab(hit, 2.1f, 1.0f);
    const float weight = bench.brush->dabStrength;
    bench.End();
    for (uint32_t row = 0; row <= 8; ++row) {
        for (uint32_t column = 0; column <= 8; ++column) {
            const float dx = 2.0f * (static_cast<float>(column) - 4.0f);
            const float dy = static_cast<float>(row) - 4.0f;
            const bool reached = dx * dx + dy * dy <= 2.1f * 2.1f;
            const float expected = reached ? weight * 0.25f : 0.0f;
            EXPECT_FLOAT_EQ(mesh.Position(row * 9 + column).z, expected);
        }
    }
    EXPECT_FLOAT_EQ(weight, 0.5f);
}

TEST(Dab, VisitStampAdvancesOncePerWalk) {
    StrokeFixture bench(FlatGrid(3));
    bench.Begin();
    const uint32_t start = bench.Mesh().visitStamp;
    bench.Dab(bench.HitFace(4), 0.8f);
    EXPECT_EQ(bench.brush->dabStamp, start);
    EXPECT_EQ(bench.Mesh().visitStamp, start + 1);
    bench.End();

    bench.Activate(Tool::Flatten);
    bench.brush->directionAttribute.SetValue(1, true);
    bench.Begin();
    bench.Dab(bench.HitFace(4), 0.8f);
    // The dry run that samples the plane is a separate traversal.
    EXPECT_EQ(bench.brush->dabStamp, start + 2);
    EXPECT_EQ(bench.Mesh().visitStamp, start + 3);
    bench.End();

    StrokeFixture triangles(Icosahedron());
    triangles.Begin();
    const uint32_t first = triangles.Mesh().visitStamp;
    triangles.Dab(triangles.HitFace(4), 0.8f);
    // The mesh itself counts its vertex traversals.
    EXPECT_EQ(triangles.brush->dabStamp, first);
    EXPECT_EQ(triangles.Mesh().visitStamp, first + 1);
    triangles.End();
}

TEST(Dab, FreesItsGrids) {
    StrokeFixture bench(FlatGrid(2), 2);
    bench.Activate(Tool::Smooth);
    for (const bool allLayers : {true, false}) {
        bench.brush->affectAllLayers.SetValue(allLayers, true);
        bench.brush->layerGrid = nullptr;
        bench.Begin();
        bench.Dab(bench.HitFace(4), 2.0f);
        EXPECT_EQ(bench.brush->layerGridAllocation, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(bench.brush->positionGrid) % 16, 0u);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(bench.brush->layerGrid) % 16, 0u);
        // The dangling pointer is kept on purpose: it shows that there was a grid.
        EXPECT_EQ(bench.brush->layerGrid != nullptr, !allLayers);
        bench.End();
    }
}

TEST(Dab, FirstOfASmearStrokeEndsBeforeAnythingIsAllocated) {
    StrokeFixture bench(FlatGrid(3));
    bench.Activate(Tool::Smear);
    bench.brush->SetPreviousPatchPosition({});
    const auto before = BitsOf(bench.Mesh());
    bench.Begin();
    bench.brush->positionGrid = nullptr;
    const uint32_t stamp = bench.Mesh().visitStamp;
    AxisAlignedBoundingBox box{-1.0f, -2.0f, -3.0f, 1.0f, 2.0f, 3.0f};
    const SurfacePoint hit = bench.HitFace(4);
    bench.brush->ApplyDab(hit, hit.position, 0.8f, 1.0f, 100.0f, box);
    EXPECT_EQ(bench.brush->positionGrid, nullptr);
    EXPECT_EQ(bench.Mesh().visitStamp, stamp);
    EXPECT_EQ(box.minX, -1.0f);
    EXPECT_EQ(box.minZ, -3.0f);
    EXPECT_EQ(box.maxY, 2.0f);
    EXPECT_EQ(bench.brush->planeDabCount, 0u);
    bench.End();
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
}

TEST(Dab, DirectionAndPlaneAreThoseOfThePass) {
    StrokeFixture bench(FlatGrid(3));
    bench.Begin();
    SurfacePoint hit = bench.HitFace(4);
    hit.normal = Vector(0.0f, 1.0f, 0.0f);
    bench.Dab(hit, 0.8f, 0.0f);
    EXPECT_EQ(static_cast<Vector>(bench.brush->brushSpace->direction), hit.normal);
    EXPECT_EQ(bench.brush->planeDistance, hit.position.y);
    hit.mirror = true;
    hit.normal = Vector(1.0f, 0.0f, 0.0f);
    bench.Dab(hit, 0.8f, 0.0f);
    EXPECT_EQ(static_cast<Vector>(bench.brush->brushSpace->direction), hit.normal);
    EXPECT_EQ(bench.brush->directions[0], Vector(0.0f, 1.0f, 0.0f));
    EXPECT_EQ(bench.brush->directions[1], hit.normal);
    EXPECT_EQ(bench.brush->planeDistances[1], hit.position.x);
    bench.End();
}

TEST(Dab, TessellatingStrokeReportsThatTheMeshCannotBeRefined) {
    StrokeFixture bench(FlatGrid(3));
    bench.brush->useTessellator = true;
    bench.Begin();
    bench.Dab(bench.HitFace(4), 1.0f);
    EXPECT_EQ(HostKernel::Instance().HUDMessages().size(), 1u);
    EXPECT_EQ(bench.brush->refineDabCount, 0u);
    bench.End();
    EXPECT_EQ(bench.Mesh().faceCount, 9u);
}

/// Wax on a rough surface that is partly above and partly below the plane.
class WaxLimits : public ::testing::Test {
protected:
    WaxLimits() {
        LevelMesh& mesh = bench.Mesh();
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
            Vector p = mesh.Position(v);
            p.z = (v % 2 == 0) ? 0.3f : -0.3f;
            mesh.SetPosition(v, p);
        }
        mesh.ComputeNormals();
        bench.Activate(Tool::Wax);
        bench.brush->directionAttribute.SetValue(1, true);
    }
    ~WaxLimits() override {
        HostKernel::Instance().SetTestMode(false);
        waxFillsOnly.attribute->SetValue(false, true);
        waxScrapesOnly.attribute->SetValue(false, true);
    }
    struct Moves {
        int up = 0;
        int down = 0;
    };
    Moves Run() {
        LevelMesh& mesh = bench.Mesh();
        const std::vector<Vector> before = PositionsOf(mesh);
        bench.Stroke(bench.HitFace(12), 2.0f, 1.0f);
        Moves moves;
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
            const float rise = mesh.Position(v).z - before[v].z;
            moves.up += rise > 0.0f;
            moves.down += rise < 0.0f;
        }
        return moves;
    }
    StrokeFixture bench{FlatGrid(5)};
};

TEST_F(WaxLimits, PreferencesApplyInTestModeOnly) {
    waxFillsOnly.attribute->SetValue(true, true);
    waxScrapesOnly.attribute->SetValue(true, true);
    const Moves moves = Run();
    EXPECT_GT(moves.up, 0);
    EXPECT_GT(moves.down, 0);
    EXPECT_EQ(bench.brush->planeClampMin, -100000000.0f);
    EXPECT_EQ(bench.brush->planeClampMax, 100000000.0f);
}

TEST_F(WaxLimits, BothTogetherMoveNothing) {
    HostKernel::Instance().SetTestMode(true);
    waxFillsOnly.attribute->SetValue(true, true);
    waxScrapesOnly.attribute->SetValue(true, true);
    const Moves moves = Run();
    EXPECT_EQ(moves.up, 0);
    EXPECT_EQ(moves.down, 0);
    EXPECT_EQ(bench.brush->planeClampMin, 0.0f);
    EXPECT_EQ(bench.brush->planeClampMax, 0.0f);
    // The clamps keep these values until the next activation.
    HostKernel::Instance().SetTestMode(false);
    Run();
    EXPECT_EQ(bench.brush->planeClampMin, 0.0f);
    bench.Activate(Tool::Wax);
    EXPECT_EQ(bench.brush->planeClampMin, -100000000.0f);
    EXPECT_EQ(bench.brush->planeClampMax, 100000000.0f);
}

TEST_F(WaxLimits, FillsOnlyRaisesAndScrapesOnlyLowers) {
    HostKernel::Instance().SetTestMode(true);
    waxFillsOnly.attribute->SetValue(true, true);
    const Moves filling = Run();
    EXPECT_GT(filling.up, 0);
    EXPECT_EQ(filling.down, 0);
    waxFillsOnly.attribute->SetValue(false, true);
    waxScrapesOnly.attribute->SetValue(true, true);
    const Moves scraping = Run();
    EXPECT_EQ(scraping.up, 0);
    EXPECT_GT(scraping.down, 0);
}

TEST_F(WaxLimits, OtherPlaneToolsKeepTheirClampsInTestMode) {
    HostKernel::Instance().SetTestMode(true);
    bench.Activate(Tool::Fill);
    Run();
    EXPECT_EQ(bench.brush->planeClampMin, 0.0f);
    EXPECT_EQ(bench.brush->planeClampMax, 100000000.0f);
}

}  // namespace
}  // namespace trovik::test
