// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/LayerSteps.h"
#include "framework/errors/Cancelled.h"
#include "tests/filters/FilteredDocument.h"
#include "tests/jobs/TestJob.h"

#include <cmath>
#include <random>

namespace trovik::test {
namespace {

using Kind = SurfaceFilter::Kind;

constexpr Kind allKinds[] = {Kind::Inflate, Kind::Smooth, Kind::Relax, Kind::Sharpen};

SurfaceFilter FilterOf(Kind kind, uint32_t iterations = 1) {
    return {.kind = kind, .amount = kind == Kind::Inflate ? 0.1f : 0.0f, .iterations = iterations};
}

/// A sphere of 6 x 8 x 8 quads with noise along the normals.
PolygonMesh RoughSphere() {
    PolygonMesh mesh = SphereQuads(3);
    std::mt19937 random(3);
    std::uniform_real_distribution<float> noise(0.98f, 1.02f);
    MoveVertices(mesh, [&](const Vector& p) { return p * noise(random); });
    return mesh;
}

/// The largest difference between a vertex's distance from the origin and 1.
float Roughness(const std::vector<Vector>& positions) {
    float largest = 0.0f;
    for (const Vector& p : positions) largest = std::max(largest, std::fabs(p.Length() - 1.0f));
    return largest;
}

TEST(SurfaceFilter, InflateMovesByTheAmountInWorldUnits) {
    FilteredDocument sphere(SphereQuads(4));
    MatrixTransform doubled;
    doubled.Set({2.0f, 2.0f, 2.0f}, {0.0f, 30.0f, 0.0f}, {5.0f, 0.0f, 0.0f});
    sphere->SetTransform(doubled);
    const std::vector<Vector> before = sphere.Positions();
    EXPECT_EQ(sphere.Filter({.kind = Kind::Inflate, .amount = 0.25f}), before.size());
    const std::vector<Vector> after = sphere.Positions();
    for (std::size_t v = 0; v < before.size(); ++v) {
        EXPECT_NEAR((after[v] - before[v]).Length(), 0.125f, 1e-6f) << v;
        EXPECT_NEAR(after[v].Length(), 1.125f, 1e-3f) << v;
    }
}

TEST(SurfaceFilter, SmoothRemovesNoiseAndSharpenAmplifiesIt) {
    PolygonMesh mesh = GridMesh(12, 12);
    std::mt19937 random(3);
    std::uniform_real_distribution<float> noise(-0.1f, 0.1f);
    MoveVertices(mesh, [&](const Vector& p) { return p + Vector(0.0f, 0.0f, noise(random)); });
    FilteredDocument plane(mesh);
    const auto sumOfSquares = [&] {
        float sum = 0.0f;
        for (const Vector& p : plane.Positions()) sum += p.z * p.z;
        return sum;
    };
    const float before = sumOfSquares();
    plane.Filter(FilterOf(Kind::Sharpen));
    EXPECT_GT(sumOfSquares(), before * 1.3f);
    plane->Undo();
    plane.Filter(FilterOf(Kind::Smooth));
    EXPECT_LT(sumOfSquares(), before * 0.5f);
}

TEST(SurfaceFilter, SmoothKeepsAPlaneWithItsBorderBitForBit) {
    FilteredDocument plane(GridMesh(6, 4));
    const std::vector<VertexState> before = plane.State();
    EXPECT_EQ(plane.Filter(FilterOf(Kind::Smooth, 3)), 0u);
    EXPECT_EQ(plane.State(), before);
    EXPECT_EQ(plane->HistoryPosition(), 0u);
}

TEST(SurfaceFilter, SmoothMovesAVertexToTheMeanOfItsNeighbours) {
    PolygonMesh mesh = GridMesh(2, 2);
    constexpr uint32_t middle = 4;
    ASSERT_EQ(mesh.positions[middle], (std::array<float, 3>{1.0f, 1.0f, 0.0f}));
    mesh.positions[middle] = {1.25f, 1.0f, 2.0f};
    FilteredDocument plane(mesh);
    EXPECT_EQ(plane.Filter({.kind = Kind::Smooth, .strength = 0.5f}), 1u);
    EXPECT_EQ(plane.Positions()[middle], Vector(1.125f, 1.0f, 1.0f));
}

TEST(SurfaceFilter, RelaxEvensOutTheSpacingAndKeepsTheShape) {
    PolygonMesh mesh = SphereQuads(4);
    std::mt19937 random(7);
    std::uniform_real_distribution<float> noise(-0.03f, 0.03f);
    MoveVertices(mesh, [&](const Vector& p) {
        return (p + Vector(noise(random), noise(random), noise(random))).Normalized();
    });
    FilteredDocument sphere(mesh);
    const auto spread = [&] {
        float shortest = 1.0f;
        float longest = 0.0f;
        const LevelMesh& level = sphere.Mesh();
        for (uint32_t face = 0; face < level.faceCount; ++face) {
            const uint32_t* v = level.faceVertexIndices.array + std::size_t{face} * 4;
            const float length = (level.Position(v[0]) - level.Position(v[1])).Length();
            shortest = std::min(shortest, length);
            longest = std::max(longest, length);
        }
        return longest / shortest;
    };
    const float before = spread();
    sphere.Filter(FilterOf(Kind::Relax, 20));
    EXPECT_LT(spread(), before * 0.6f);
    EXPECT_LT(Roughness(sphere.Positions()), 0.01f);
    sphere->Undo();
    sphere.Filter(FilterOf(Kind::Smooth, 20));
    EXPECT_GT(Roughness(sphere.Positions()), 0.02f) << "smoothing shrinks, relaxing does not";
}

TEST(SurfaceFilter, TheMaskReducesEveryFilter) {
    for (const Kind kind : allKinds) {
        SCOPED_TRACE(static_cast<int>(kind));
        FilteredDocument sphere(RoughSphere());
        const std::vector<Vector> before = sphere.Positions();
        sphere.Filter(FilterOf(kind));
        const std::vector<Vector> whole = sphere.Positions();
        sphere->Undo();
        sphere.Mask([](const Vector& p) { return p.x > 0.5f ? 127 : p.x > 0.0f ? 64 : 0; });
        EXPECT_GT(sphere.Filter(FilterOf(kind)), 0u);
        const std::vector<Vector> masked = sphere.Positions();
        for (std::size_t v = 0; v < before.size(); ++v) {
            if (before[v].x > 0.5f) {
                EXPECT_EQ(masked[v], before[v]) << v;
            } else if (before[v].x > 0.0f) {
                const Vector expected = (whole[v] - before[v]) * (63.0f / 127.0f);
                EXPECT_LT((masked[v] - before[v] - expected).Length(), 1e-6f) << v;
            } else {
                EXPECT_EQ(masked[v], whole[v]) << v;
            }
        }
    }
}

TEST(SurfaceFilter, IsOneUndoStepThatRestoresEveryBit) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        FilteredDocument document(zoo.mesh);
        document->Subdivide();
        for (const Kind kind : allKinds) {
            const std::vector<VertexState> before = document.State();
            const std::size_t steps = document->HistoryPosition();
            if (document.Filter(FilterOf(kind, 2)) == 0) continue;
            const std::vector<VertexState> after = document.State();
            EXPECT_EQ(document->HistoryPosition(), steps + 1);
            document->Undo();
            EXPECT_EQ(document.State(), before);
            document->Redo();
            EXPECT_EQ(document.State(), after);
        }
    }
}

TEST(SurfaceFilter, ALayerRecordsTheDisplacement) {
    FilteredDocument sphere(RoughSphere());
    const std::vector<Vector> before = sphere.Positions();
    sphere->AddLayer("Inflated");
    sphere->SetLayerStrength(0.5f);
    sphere.Filter(FilterOf(Kind::Inflate));
    const std::vector<Vector> inflated = sphere.Positions();
    EXPECT_NE(inflated, before);
    sphere->SetLayerStrength(0.0f);
    EXPECT_EQ(sphere.Positions(), before);
    SculptLayer::Properties locked = sphere->ActiveLayer()->UserProperties();
    locked.writable = false;
    sphere->Push(SetLayerPropertiesAsStep(sphere->Geometry(), *sphere->ActiveLayer(), locked));
    EXPECT_THROW(sphere.Filter(FilterOf(Kind::Inflate)), HostError);
    EXPECT_EQ(sphere.Positions(), before);
}

TEST(SurfaceFilter, CanBeCancelledAtEveryReport) {
    for (const Kind kind : allKinds) {
        SCOPED_TRACE(static_cast<int>(kind));
        FilteredDocument sphere(RoughSphere());
        const std::vector<VertexState> before = sphere.State();
        TestJob whole(TestJob::never, TestJob::WithoutClock());
        sphere->EditPositions(FilterSurface(FilterOf(kind, 3)), &whole);
        whole.ExpectFinished();
        sphere->Undo();
        ASSERT_GT(whole.reports, 1u);
        for (uint64_t at = 1; at <= whole.reports; ++at) {
            TestJob job(at, TestJob::WithoutClock());
            EXPECT_THROW(sphere->EditPositions(FilterSurface(FilterOf(kind, 3)), &job), Cancelled);
            EXPECT_EQ(sphere.State(), before) << at;
        }
    }
}

TEST(SurfaceFilter, NonFinitePositionsAreRefused) {
    FilteredDocument sphere(SphereQuads(2));
    const std::vector<VertexState> before = sphere.State();
    MatrixTransform small;
    small.Set({1e-3f, 1e-3f, 1e-3f}, {}, {});
    sphere->SetTransform(small);
    const std::size_t steps = sphere->HistoryPosition();
    EXPECT_THROW(sphere.Filter({.kind = Kind::Inflate, .amount = 3e38f}), HostError);
    EXPECT_EQ(sphere.State(), before);
    EXPECT_EQ(sphere->HistoryPosition(), steps);
}

TEST(SurfaceFilter, IsRefusedDuringAStroke) {
    FilteredDocument sphere(SphereQuads(2));
    sphere->Loop().Begin(BrushOperation::ModifierNone);
    EXPECT_THROW(sphere.Filter(FilterOf(Kind::Smooth)), HostError);
    sphere->Loop().End();
}

}  // namespace
}  // namespace trovik::test
