// SPDX-License-Identifier: Apache-2.0
#include "tests/fixture/StrokeFixture.h"
#include "tests/meshes/ExpectNear.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace trovik::test {
namespace {

/// FlatGrid(n) with two subdivisions: cells of a quarter unit, 4 x 4 per base face.
class Sampling : public ::testing::Test {
protected:
    void Open(unsigned n, unsigned subdivisions = 2) {
        bench = std::make_unique<StrokeFixture>(FlatGrid(n), subdivisions);
        h = 1.0f / static_cast<float>(1u << subdivisions);
        side = n << subdivisions;
        bench->Begin();
    }
    ~Sampling() override {
        if (bench) bench->End();
    }
    SwiftStroke& Brush() { return *bench->brush; }
    LevelMesh& Mesh() { return bench->Mesh(); }

    uint32_t VertexAt(uint32_t column, uint32_t row) {
        const Vector wanted(static_cast<float>(column) * h, static_cast<float>(row) * h, 0.0f);
        for (uint32_t v = 0; v < Mesh().VertexCount(); ++v) {
            const Vector d = Mesh().Position(v) - wanted;
            if (std::abs(d.x) + std::abs(d.y) < 1e-4f) return v;
        }
        ADD_FAILURE() << "no vertex at " << column << ", " << row;
        return 0;
    }
    uint32_t FaceAt(uint32_t column, uint32_t row) {
        const uint32_t first = VertexAt(column, row);
        for (uint32_t f = 0; f < Mesh().faceCount; ++f)
            if (Mesh().faceVertexIndices[f * 4] == first &&
                Mesh().CornerOf(f, VertexAt(column + 1, row + 1)) == 2)
                return f;
        ADD_FAILURE() << "no face at " << column << ", " << row;
        return 0;
    }
    /// Returns a hit in a cell, and sets the brush state that a dab there would set.
    SurfacePoint HitCell(
        uint32_t column, uint32_t row, uint32_t patchLevel, float radius, const Vector& centre) {
        SurfacePoint hit = bench->HitFace(FaceAt(column, row));
        SwiftStroke& b = Brush();
        b.patchLevel = static_cast<int32_t>(patchLevel);
        b.patchMeshLevel = static_cast<uint32_t>(Mesh().Index()) - patchLevel;
        b.facesPerPatch = 1u << (2 * patchLevel);
        b.patchMesh = bench->geometry->Level(b.patchMeshLevel);
        b.localCenter = centre;
        b.brushSpace->center = HWVector(centre);
        b.setRadius(radius);
        return hit;
    }
    /// Returns the vertices that have records, as (column, row).
    std::set<std::pair<int, int>> Touched() {
        std::set<std::pair<int, int>> touched;
        const MeshChange& change = *Brush().CurrentChange();
        for (uint32_t i = 0; i < *change.recordCount; ++i) {
            const float* p = change.records->array[i].originalPosition;
            touched.insert(
                {static_cast<int>(std::lround(p[0] / h)), static_cast<int>(std::lround(p[1] / h))});
        }
        return touched;
    }
    /// The mean position of a cross sampling on a flat grid, computed independently.
    Vector CrossMean(int column, int row, unsigned steps, float radius, const Vector& centre) {
        const int starts[4][2] = {
            {column, row}, {column + 1, row}, {column + 1, row + 1}, {column, row + 1}};
        const int moves[4][2] = {{0, -1}, {1, 0}, {0, 1}, {-1, 0}};
        double x = 0, y = 0, weights = 0;
        for (int arm = 0; arm < 4; ++arm) {
            int cell[2] = {column, row};
            for (unsigned i = 0; i < steps; ++i) {
                const double px = Along(starts[arm][0] + cell[0] - column);
                const double py = Along(starts[arm][1] + cell[1] - row);
                const double w = 1.0 - std::hypot(px - static_cast<double>(centre.x),
                                                  py - static_cast<double>(centre.y)) /
                                           static_cast<double>(radius);
                if (w < 0) break;
                x += w * px;
                y += w * py;
                weights += w;
                for (int k = 0; k < 2; ++k) {
                    const int next = cell[k] + moves[arm][k];
                    // The cursor stops at the border.
                    if (next >= 0 && next < static_cast<int>(side)) cell[k] = next;
                }
            }
        }
        return {static_cast<float>(x / weights), static_cast<float>(y / weights), 0.0f};
    }

    double Along(int cells) const { return static_cast<double>(h) * cells; }

    std::unique_ptr<StrokeFixture> bench;
    float h = 1.0f;
    uint32_t side = 0;
};

TEST_F(Sampling, SmallBrushReadsTheFourCornersOfTheCell) {
    Open(3);
    const Vector centre(1.6f, 1.4f, 0.0f);
    const SurfacePoint hit = HitCell(6, 5, 0, 0.3f, centre);
    Brush().SamplePlane(hit);
    EXPECT_EQ(Touched(), (std::set<std::pair<int, int>>{{6, 5}, {7, 5}, {7, 6}, {6, 6}}));
    ExpectNear(Brush().directions[0], {0.0f, 0.0f, 1.0f}, 1e-6f);
    ExpectNear(Brush().planePoints[0], CrossMean(6, 5, 1, 0.3f, centre), 1e-5f);
    EXPECT_NEAR(Brush().planeDistances[0], 0.0f, 1e-6f);
    EXPECT_EQ(Brush().planeDabCount, 0u);
}

TEST_F(Sampling, NormalsAreWeightedByDistance) {
    Open(3);
    // The centre coincides with corner (6, 5), which therefore has a weight of 1. The other weights
    // follow from the distances.
    const Vector centre(1.5f, 1.25f, 0.0f);
    const SurfacePoint hit = HitCell(6, 5, 0, 1.0f, centre);
    Mesh().vertexNormals.array[VertexAt(6, 5)] = {32767, 0, 0, 0};
    Brush().SamplePlane(hit);
    const double diagonal = 1.0 - 0.25 * std::sqrt(2.0);
    const double z = 0.75 + 0.75 + diagonal;
    const double length = std::hypot(1.0, z);
    ExpectNear(Brush().directions[0],
               {static_cast<float>(1.0 / length), 0.0f, static_cast<float>(z / length)},
               1e-6f);
    const double weights = 1.0 + z;
    const auto x = static_cast<float>((1.5 + 0.75 * 1.75 + diagonal * 1.75 + 0.75 * 1.5) / weights);
    ExpectNear(Brush().planePoints[0], {x, x - 0.25f, 0.0f}, 1e-6f);
    EXPECT_FLOAT_EQ(Brush().planeDistances[0], Brush().planePoints[0].x * Brush().directions[0].x);
}

TEST_F(Sampling, ArmsReachAboutOneRadius) {
    Open(3);
    // Patches of 4 x 4 cells with a diagonal of sqrt 2: a radius of 0.9 gives 2 steps.
    const Vector centre(1.6f, 1.4f, 0.0f);
    const SurfacePoint hit = HitCell(6, 5, 2, 0.9f, centre);
    Brush().SamplePlane(hit);
    EXPECT_EQ(Touched(),
              (std::set<std::pair<int, int>>{
                  {6, 5}, {6, 4}, {7, 5}, {8, 5}, {7, 6}, {7, 7}, {6, 6}, {5, 6}}));
    ExpectNear(Brush().planePoints[0], CrossMean(6, 5, 2, 0.9f, centre), 1e-5f);
}

TEST_F(Sampling, ArmsNeverExceedOnePatchSide) {
    Open(5);
    const Vector centre(2.6f, 2.4f, 0.0f);
    const SurfacePoint hit = HitCell(10, 9, 2, 50.0f, centre);
    Brush().SamplePlane(hit);
    std::set<std::pair<int, int>> expected;
    for (int i = 0; i < 4; ++i) {
        expected.insert({10, 9 - i});
        expected.insert({11 + i, 9});
        expected.insert({11, 10 + i});
        expected.insert({10 - i, 10});
    }
    EXPECT_EQ(Touched(), expected);
    ExpectNear(Brush().planePoints[0], CrossMean(10, 9, 4, 50.0f, centre), 1e-4f);
}

TEST_F(Sampling, ArmEndsWhereItLeavesTheBrush) {
    Open(5);
    // The radius allows three steps, but the centre is off to the left, so the arm to the right
    // ends early. Its last vertex still has a record.
    const Vector centre(1.75f, 2.4f, 0.0f);
    const SurfacePoint hit = HitCell(10, 9, 2, 1.1f, centre);
    Brush().SamplePlane(hit);
    const auto touched = Touched();
    EXPECT_TRUE(touched.count({11, 9}));
    EXPECT_TRUE(touched.count({12, 9}));
    EXPECT_FALSE(touched.count({13, 9}));
    EXPECT_TRUE(touched.count({8, 10}));
    ExpectNear(Brush().planePoints[0], CrossMean(10, 9, 3, 1.1f, centre), 1e-5f);
}

TEST_F(Sampling, OpenBorderIsSampledRepeatedly) {
    Open(2);
    const Vector centre(0.1f, 0.1f, 0.0f);
    const SurfacePoint hit = HitCell(0, 0, 2, 1.3f, centre);
    Brush().SamplePlane(hit);
    // Each arm takes three steps, but the arms towards the border cannot leave (0, 0) and (0, 1).
    EXPECT_EQ(Touched(),
              (std::set<std::pair<int, int>>{
                  {0, 0}, {1, 0}, {2, 0}, {3, 0}, {1, 1}, {1, 2}, {1, 3}, {0, 1}}));
    ExpectNear(Brush().planePoints[0], CrossMean(0, 0, 3, 1.3f, centre), 1e-5f);
}

TEST_F(Sampling, NothingInReachGivesTheHitNormalAndTheOrigin) {
    Open(3);
    SurfacePoint hit = HitCell(6, 5, 0, 0.1f, {100.0f, 0.0f, 0.0f});
    hit.normal = Vector(0.6f, 0.0f, 0.8f);
    Brush().planePoints[0] = Vector(7.0f, 7.0f, 7.0f);
    Brush().SamplePlane(hit);
    ExpectNear(Brush().directions[0], hit.normal, 1e-6f);
    EXPECT_EQ(Brush().planePoints[0], Vector());
    EXPECT_EQ(Brush().planeDistances[0], 0.0f);
}

TEST_F(Sampling, WeightsOfExactlyZeroAreNotGuarded) {
    Open(3, 0);
    const SurfacePoint hit = HitCell(1, 1, 0, 1.0f, {});
    const uint32_t* corners = Mesh().faceVertexIndices.array + hit.face * 4;
    Mesh().SetPosition(corners[0], {1.0f, 0.0f, 0.0f});
    Mesh().SetPosition(corners[1], {0.0f, 1.0f, 0.0f});
    Mesh().SetPosition(corners[2], {-1.0f, 0.0f, 0.0f});
    Mesh().SetPosition(corners[3], {0.0f, -1.0f, 0.0f});
    Brush().SamplePlane(hit);
    EXPECT_EQ(Touched().size(), 4u);
    EXPECT_TRUE(std::isnan(Brush().planePoints[0].x));
    EXPECT_EQ(Brush().directions[0], Vector());
}

TEST_F(Sampling, BrushOfRadiusZeroTakesOneStep) {
    Open(3);
    SurfacePoint hit = HitCell(6, 5, 2, 0.0f, {1.5f, 1.25f, 0.0f});
    Brush().SamplePlane(hit);
    EXPECT_EQ(Touched(), (std::set<std::pair<int, int>>{{6, 5}, {7, 5}, {7, 6}, {6, 6}}));
    // The result is the same on a degenerate patch, where the length of an arm is NaN.
    LevelMesh& patches = *bench->geometry->Level(0);
    const uint32_t* patch = patches.faceVertexIndices.array + (hit.face / 16) * 4;
    patches.SetPosition(patch[2], patches.Position(patch[0]));
    Brush().SamplePlane(hit);
    EXPECT_EQ(Touched().size(), 4u);
    // With a non-zero radius, the arms on such a patch are infinite and end after one patch side.
    Brush().localCenter = Vector(1.6f, 1.4f, 0.0f);
    Brush().setRadius(50.0f);
    Brush().SamplePlane(hit);
    EXPECT_EQ(Touched().size(), 16u);
}

TEST_F(Sampling, VertexAtTheCentreOfABrushOfRadiusZeroIsNotSampled) {
    Open(3, 0);
    SurfacePoint hit = HitCell(1, 1, 0, 0.0f, {1.0f, 1.0f, 0.0f});
    hit.normal = Vector(0.6f, 0.0f, 0.8f);
    Brush().SamplePlane(hit);
    ExpectNear(Brush().directions[0], hit.normal, 1e-6f);
    EXPECT_EQ(Brush().planePoints[0], Vector());
    EXPECT_EQ(Brush().planeDistances[0], 0.0f);
}

TEST_F(Sampling, CrossReadsFirstTouchPositions) {
    Open(3);
    const Vector centre(1.6f, 1.4f, 0.0f);
    const SurfacePoint hit = HitCell(6, 5, 0, 0.3f, centre);
    Brush().SamplePlane(hit);
    const Vector first = Brush().planePoints[0];
    for (const auto& [column, row] : Touched()) {
        const uint32_t v = VertexAt(static_cast<uint32_t>(column), static_cast<uint32_t>(row));
        Vector p = Mesh().Position(v);
        p.z = 9.0f;
        Mesh().SetPosition(v, p);
        Mesh().vertexNormals.array[v] = {32767, 0, 0, 0};
    }
    Brush().SamplePlane(hit);
    EXPECT_EQ(Brush().planePoints[0], first);
    ExpectNear(Brush().directions[0], {0.0f, 0.0f, 1.0f}, 1e-6f);
}

TEST_F(Sampling, CrossReservesSlotsOfTheActiveLayer) {
    Open(3);
    bench->End();
    SculptLayer& layer = bench->AddLayer();
    bench->Begin();
    const SurfacePoint hit = HitCell(6, 5, 0, 0.3f, {1.6f, 1.4f, 0.0f});
    Brush().SamplePlane(hit);
    EXPECT_EQ(layer.SlotCount(), 4u);
}

TEST_F(Sampling, AreaIsTheMeanOfAllVerticesInReach) {
    Open(4);
    Brush().setUsePatchNormal(false);
    const Vector centre(1.7f, 1.4f, 0.0f);
    const uint32_t stamp = Mesh().visitStamp;
    for (const uint32_t patchLevel : {0u, 1u, 2u}) {
        const SurfacePoint hit = HitCell(6, 5, patchLevel, 0.6f, centre);
        Brush().SamplePlane(hit);
        double x = 0, y = 0, count = 0;
        for (uint32_t v = 0; v < Mesh().VertexCount(); ++v) {
            const Vector p = Mesh().Position(v);
            if ((p - centre).Length() > 0.6f) continue;
            x += static_cast<double>(p.x);
            y += static_cast<double>(p.y);
            ++count;
        }
        EXPECT_EQ(Brush().planeSampleWeight, static_cast<float>(count));
        ExpectNear(Brush().planePoints[0],
                   {static_cast<float>(x / count), static_cast<float>(y / count), 0.0f},
                   1e-5f);
        ExpectNear(Brush().directions[0], {0.0f, 0.0f, 1.0f}, 1e-6f);
        EXPECT_FALSE(Brush().planeSampling);
    }
    EXPECT_EQ(Mesh().visitStamp, stamp + 3);
    // Sampling creates no undo records.
    EXPECT_EQ(*Brush().CurrentChange()->recordCount, 0u);
}

TEST_F(Sampling, AreaWithoutAnyVertexKeepsTheOldPoint) {
    Open(3);
    Brush().setUsePatchNormal(false);
    const SurfacePoint hit = HitCell(6, 5, 0, 0.1f, {100.0f, 0.0f, 0.0f});
    Brush().planePoints[0] = Vector(7.0f, 8.0f, 9.0f);
    Brush().directions[0] = Vector(0.0f, 1.0f, 0.0f);
    Brush().SamplePlane(hit);
    EXPECT_EQ(Brush().planeSampleWeight, 0.0f);
    EXPECT_EQ(Brush().planePoints[0], Vector(7.0f, 8.0f, 9.0f));
    EXPECT_EQ(Brush().directions[0], Vector());
    EXPECT_EQ(Brush().planeDistances[0], 0.0f);
}

TEST_F(Sampling, TiltedPlaneIsFoundByBothMethods) {
    PolygonMesh tilted = FlatGrid(4);
    for (auto& p : tilted.positions) p[2] = 0.5f * p[0] + 0.25f * p[1] + 2.0f;
    const Vector normal = Vector(-0.5f, -0.25f, 1.0f).Normalized();
    const float distance = normal.z * 2.0f;
    for (const bool cross : {true, false}) {
        StrokeFixture slope(tilted, 2);
        slope.brush->directionAttribute.SetValue(1, true);
        slope.Begin();
        slope.brush->setUsePatchNormal(cross);
        slope.Dab(slope.HitFace(100), 1.0f, 0.0f);
        ExpectNear(slope.brush->directions[0], normal, 1e-4f);
        EXPECT_NEAR(slope.brush->planeDistances[0], distance, 1e-3f);
        EXPECT_NEAR((slope.brush->planePoints[0] | normal), distance, 1e-3f);
        slope.End();
    }
}

TEST_F(Sampling, TrianglesAreSampledByTheVertexWalk) {
    StrokeFixture bottom(TriangleStrip(6));
    bottom.Begin();
    SwiftStroke& b = *bottom.brush;
    b.directionAttribute.SetValue(1, true);
    const uint32_t stamp = bottom.Mesh().visitStamp;
    const SurfacePoint hit = bottom.HitFace(4);
    bottom.Dab(hit, 2.0f, 0.0f);
    EXPECT_TRUE(b.usePatchNormal);
    double count = 0;
    Vector sum;
    for (uint32_t v = 0; v < bottom.Mesh().VertexCount(); ++v) {
        if ((bottom.Mesh().Position(v) - hit.position).Length() > 2.0f) continue;
        sum += bottom.Mesh().Position(v);
        ++count;
    }
    EXPECT_GT(count, 2);
    ExpectNear(b.planePoints[0], sum * static_cast<float>(1.0 / count), 1e-5f);
    // The visit stamp advances once for the sampling traversal, once for the sampling itself and
    // once for the dab's own traversal.
    EXPECT_EQ(bottom.Mesh().visitStamp, stamp + 3);
    bottom.End();
}

class RunningMean : public Sampling {
protected:
    RunningMean() {
        Open(3);
        bench->End();
        bench->Activate(Tool::Flatten);
        bench->Begin();
        Brush().globalPlane.SetValue(true, true);
        Brush().directions[0] = Vector(1.0f, 0.0f, 0.0f);
        Brush().planePoints[0] = Vector(5.0f, 6.0f, 8.0f);
        hit = HitCell(6, 5, 0, 0.2f, {1.625f, 1.375f, 0.0f});
    }
    SurfacePoint hit;
};

TEST_F(RunningMean, FourthSampleHasAWeightOfAQuarter) {
    Brush().planeDabCount = 3;
    Brush().SamplePlane(hit);
    EXPECT_EQ(Brush().planeDabCount, 3u);
    const float length = std::sqrt(10.0f);
    ExpectNear(Brush().directions[0], {3.0f / length, 0.0f, 1.0f / length}, 1e-6f);
    ExpectNear(
        Brush().planePoints[0], {(1.625f + 15.0f) / 4.0f, (1.375f + 18.0f) / 4.0f, 6.0f}, 1e-5f);
    EXPECT_NEAR(
        Brush().planeDistances[0], (Brush().planePoints[0].x * 3.0f + 6.0f) / length, 1e-4f);
}

TEST_F(RunningMean, FirstSampleIsUsedAlone) {
    Brush().planeDabCount = 0;
    Brush().SamplePlane(hit);
    ExpectNear(Brush().directions[0], {0.0f, 0.0f, 1.0f}, 1e-6f);
    ExpectNear(Brush().planePoints[0], {1.625f, 1.375f, 0.0f}, 1e-6f);
}

TEST_F(RunningMean, WithoutAGlobalPlaneEachSampleIsUsedAlone) {
    Brush().globalPlane.SetValue(false, true);
    Brush().planeDabCount = 3;
    Brush().SamplePlane(hit);
    EXPECT_EQ(Brush().planeDabCount, 0u);
    ExpectNear(Brush().planePoints[0], {1.625f, 1.375f, 0.0f}, 1e-6f);
}

TEST_F(RunningMean, AppliesToPlaneToolsOnly) {
    Brush().setIsPlaneTool(false);
    Brush().planeDabCount = 3;
    Brush().SamplePlane(hit);
    EXPECT_EQ(Brush().planeDabCount, 0u);
    ExpectNear(Brush().planePoints[0], {1.625f, 1.375f, 0.0f}, 1e-6f);
}

TEST_F(RunningMean, MirroredPassHasItsOwnSum) {
    Brush().mirrorPass = 1;
    Brush().planeDabCount = 0;
    Brush().SamplePlane(hit);
    ExpectNear(Brush().planePoints[1], {1.625f, 1.375f, 0.0f}, 1e-6f);
    EXPECT_EQ(Brush().planePoints[0], Vector(5.0f, 6.0f, 8.0f));
}

/// Flatten strokes over two parts of a surface, at z = 1 and z = 2.
class PlaneOverAStroke : public ::testing::Test {
protected:
    PlaneOverAStroke() : bench(Terrace()) {
        bench.Activate(Tool::Flatten);
        bench.brush->directionAttribute.SetValue(1, true);
    }
    static PolygonMesh Terrace() {
        PolygonMesh mesh = FlatGrid(8);
        for (auto& p : mesh.positions) p[2] = p[0] < 4.5f ? 1.0f : 2.0f;
        return mesh;
    }
    /// The plane distances of two dabs: one on the low step, one on the high step.
    std::pair<float, float> Distances(bool update, bool global) {
        bench.brush->updatePlane.SetValue(update, true);
        bench.brush->globalPlane.SetValue(global, true);
        bench.Begin();
        bench.Dab(bench.HitFace(8 * 3 + 1), 1.0f, 0.0f);
        const float first = bench.brush->planeDistances[0];
        bench.Dab(bench.HitFace(8 * 3 + 6), 1.0f, 0.0f);
        const float second = bench.brush->planeDistances[0];
        bench.End();
        return {first, second};
    }
    StrokeFixture bench;
};

TEST_F(PlaneOverAStroke, UpdatedLocalPlaneIsNewAtEachDab) {
    const auto [first, second] = Distances(true, false);
    EXPECT_NEAR(first, 1.0f, 1e-5f);
    EXPECT_NEAR(second, 2.0f, 1e-5f);
}

TEST_F(PlaneOverAStroke, UpdatedGlobalPlaneIsTheMeanSoFar) {
    const auto [first, second] = Distances(true, true);
    EXPECT_NEAR(first, 1.0f, 1e-5f);
    EXPECT_NEAR(second, 1.5f, 1e-5f);
}

TEST_F(PlaneOverAStroke, PlaneThatIsNotUpdatedStaysThatOfTheFirstDab) {
    for (const bool global : {false, true}) {
        const auto [first, second] = Distances(false, global);
        EXPECT_NEAR(first, 1.0f, 1e-5f);
        EXPECT_EQ(second, first);
    }
}

TEST_F(PlaneOverAStroke, PlaneThroughTheOriginIsSampledAgain) {
    LevelMesh& mesh = bench.Mesh();
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        Vector p = mesh.Position(v);
        p.z -= 1.0f;
        mesh.SetPosition(v, p);
    }
    const auto [first, second] = Distances(false, false);
    EXPECT_EQ(first, 0.0f);
    EXPECT_NEAR(second, 1.0f, 1e-5f);
}

}  // namespace
}  // namespace trovik::test
