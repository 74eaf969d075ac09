// SPDX-License-Identifier: Apache-2.0

/// \file Tests tools that are applied to the whole mesh at once, without a position, radius or
/// falloff.
#include "framework/mesh/LevelPositions.h"
#include "framework/nodes/HostScene.h"
#include "tests/brush/ToolRows.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/stamps/StampFixture.h"
#include "tests/stroke/FakeMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace trovik::test {
namespace {

/// Moves the scene's camera during its lifetime.
class CameraAt {
public:
    explicit CameraAt(const Vector& eye) { Transform().Set({1.0f, 1.0f, 1.0f}, {}, eye); }
    ~CameraAt() { Transform().Set({1.0f, 1.0f, 1.0f}, {}, {}); }
    CameraAt(const CameraAt&) = delete;
    CameraAt& operator=(const CameraAt&) = delete;

private:
    static MatrixTransform& Transform() {
        auto* scene = dynamic_cast<HostScene*>(g_pKernel->Scene());
        scene->SetActiveCamera(nullptr);
        return scene->OwnCamera().Transform();
    }
};

struct Bench : StrokeFixture {
    using StrokeFixture::StrokeFixture;
    /// A stroke of one whole-mesh pass.
    void Apply(float strength,
               bool byFacing = false,
               BrushOperation::Modifier modifier = BrushOperation::ModifierNone) {
        Begin(modifier);
        brush->ApplyToWholeMesh(&Mesh(), strength, byFacing);
        End();
    }
    std::vector<Vector> Positions() { return PositionsOf(Mesh()); }
    Vector Normal(uint32_t vertex) {
        const PackedNormal& n = Mesh().vertexNormals.array[vertex];
        return Vector(static_cast<float>(n.x), static_cast<float>(n.y), static_cast<float>(n.z)) *
               (1.0f / 32767.0f);
    }
};

/// Expects that each vertex has moved along its normal by `distance(vertex)`.
template <class Distance>
void ExpectMovedAlongNormals(Bench& bench,
                             const std::vector<Vector>& before,
                             const std::vector<Vector>& normals,
                             Distance distance) {
    for (uint32_t v = 0; v < before.size(); ++v) {
        const Vector wanted = before[v] + normals[v] * distance(v);
        EXPECT_NEAR((bench.Mesh().Position(v) - wanted).Length(), 0.0f, 1e-5f) << v;
    }
}

TEST(WholeMesh, MovesEveryVertexByTheSameWeightAlongItsOwnNormal) {
    for (const auto& [polygons, subdivisions] :
         {std::pair{SphereQuads(2), 0u}, {Cube(), 3u}, {ValenceFan(5), 2u}, {Icosahedron(), 2u}}) {
        Bench bench(polygons, subdivisions);
        bench.Activate(Tool::Sculpt, 2);
        // Direction and build-up have no effect.
        bench.brush->directionAttribute.SetValue(5, true);
        bench.brush->buildUpRate.SetValue(0.1f, true);
        const auto before = bench.Positions();
        const auto bits = BitsOf(bench.Mesh());
        std::vector<Vector> normals;
        for (uint32_t v = 0; v < before.size(); ++v) normals.push_back(bench.Normal(v));
        bench.Apply(0.25f);
        ExpectMovedAlongNormals(bench, before, normals, [](uint32_t) { return 0.25f; });
        ASSERT_TRUE(bench.geometry->History().Undo(*bench.geometry));
        EXPECT_EQ(BitsOf(bench.Mesh()), bits);
    }
}

TEST(WholeMesh, SecondPassOfAStrokeMovesAsFarAsTheFirst) {
    Bench bench(FlatGrid(3), 1);
    bench.Begin();
    bench.brush->ApplyToWholeMesh(&bench.Mesh(), 0.5f, false);
    bench.brush->ApplyToWholeMesh(&bench.Mesh(), 0.5f, false);
    for (uint32_t i = 0; i < bench.Mesh().changeRecordCount; ++i)
        EXPECT_EQ(bench.Mesh().changeRecords[i].buildUp, 0.0f);
    bench.End();
    for (const Vector& p : bench.Positions()) EXPECT_NEAR(p.z, 1.0f, 1e-6f);
}

TEST(WholeMesh, EndsWhenTheCallReturns) {
    Bench bench(Cube(), 1);
    bench.Begin();
    EXPECT_FALSE(bench.brush->wholeMesh);
    bench.brush->ApplyToWholeMesh(&bench.Mesh(), 0.5f, true);
    EXPECT_FALSE(bench.brush->wholeMesh);
    EXPECT_TRUE(bench.brush->wholeMeshFacing);
    bench.brush->ApplyToWholeMesh(&bench.Mesh(), 0.5f, false);
    EXPECT_FALSE(bench.brush->wholeMeshFacing);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
    bench.End();
    // A later dab uses its radius again.
    const auto before = bench.Positions();
    bench.Stroke(bench.HitVertex(0), 0.01f, 1.0f);
    int moved = 0;
    for (uint32_t v = 0; v < before.size(); ++v) moved += bench.Mesh().Position(v) != before[v];
    EXPECT_EQ(moved, 1);
}

TEST(WholeMesh, RunsOverPatchesOfOneFaceWithoutARadius) {
    Bench bench(Cube(), 2);
    bench.Begin();
    bench.brush->ApplyToWholeMesh(&bench.Mesh(), 0.5f, false);
    EXPECT_EQ(bench.brush->patchLevel, 0);
    EXPECT_EQ(bench.brush->radius, 0.0f);
    EXPECT_EQ(bench.brush->dabPressure, 1.0f);
    EXPECT_EQ(bench.brush->mirrorPass, 0u);
    EXPECT_EQ(bench.Mesh().LastFaceWalk().size(), bench.Mesh().faceCount);
    EXPECT_EQ(bench.Mesh().LastFaceWalk().front().face, 0u);
    bench.End();
}

TEST(WholeMesh, GivesNoMessageForACoarseMesh) {
    Bench bench(SingleQuad());
    bench.Apply(0.5f);
    EXPECT_TRUE(HostKernel::Instance().HUDMessages().empty());
}

TEST(WholeMesh, NeedsNoFalloff) {
    Bench bench(FlatGrid(2));
    bench.Begin();
    bench.brush->falloffTable = nullptr;
    bench.brush->ApplyToWholeMesh(&bench.Mesh(), 0.5f, false);
    for (const Vector& p : bench.Positions()) EXPECT_NEAR(p.z, 0.5f, 1e-6f);
    // An ordinary dab needs a falloff and changes nothing.
    bench.Dab(bench.HitFace(0), 5.0f, 1.0f);
    for (const Vector& p : bench.Positions()) EXPECT_NEAR(p.z, 0.5f, 1e-6f);
    bench.End();
}

TEST(WholeMesh, BindsAMeshOutsideAStrokeAndTheNextEndClosesIt) {
    Bench bench(FlatGrid(2));
    Bench other(FlatGrid(2));
    bench.Begin();
    bench.End();
    SwiftStroke& brush = *bench.brush;
    ASSERT_EQ(brush.mesh, nullptr);
    const auto before = BitsOf(other.Mesh());
    brush.ApplyToWholeMesh(&other.Mesh(), 0.5f, false);
    EXPECT_EQ(brush.mesh, &other.Mesh());
    ASSERT_EQ(brush.meshChanges.fill, 1u);
    EXPECT_EQ(brush.meshChanges[0].mesh, &other.Mesh());
    EXPECT_EQ(other.Mesh().changeRecordCount, 9u);
    EXPECT_FALSE(brush.IsStrokeFree());
    EXPECT_EQ(other.geometry->History().Position(), 0u);
    const auto after = BitsOf(other.Mesh());
    const uint32_t version = other.Mesh().Version();
    brush.EndStroke();
    EXPECT_GT(other.Mesh().Version(), version);
    EXPECT_TRUE(brush.IsStrokeFree());
    EXPECT_EQ(other.Mesh().changeRecordCount, 0u);
    for (const Vector& p : other.Positions()) EXPECT_NEAR(p.z, 0.5f, 1e-6f);
    ASSERT_TRUE(other.geometry->History().Undo(*other.geometry));
    EXPECT_EQ(BitsOf(other.Mesh()), before);
    ASSERT_TRUE(other.geometry->History().Redo(*other.geometry));
    EXPECT_EQ(BitsOf(other.Mesh()), after);
}

TEST(WholeMesh, MeshThatRefusesTheLockIsSkippedWithoutAMessage) {
    Bench bench(FlatGrid(2));
    bench.Mesh().SetLockable(false);
    const auto before = BitsOf(bench.Mesh());
    bench.Apply(0.5f);
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
    EXPECT_FALSE(bench.brush->wholeMesh);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
    EXPECT_TRUE(HostKernel::Instance().HUDMessages().empty());
}

TEST(WholeMesh, FlagStaysSetAfterAnErrorUntilTheNextCall) {
    CallLog log;
    FakeGeometry geometry("A", log);
    FakePlainMesh plain("plain", log);
    plain.geometry = &geometry;
    Bench bench(FlatGrid(2));
    bench.Begin();
    try {
        bench.brush->ApplyToWholeMesh(&plain, 0.5f, false);
        ADD_FAILURE() << "no error was thrown";
    } catch (Error* error) {
        EXPECT_EQ(error->Message(), QStringLiteral("Invalid mesh specified"));
        Error::Dispose(error);
    }
    EXPECT_TRUE(bench.brush->wholeMesh);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
    bench.brush->ApplyToWholeMesh(&bench.Mesh(), 0.5f, false);
    EXPECT_FALSE(bench.brush->wholeMesh);
    for (const Vector& p : bench.Positions()) EXPECT_NEAR(p.z, 0.5f, 1e-6f);
    bench.End();
}

TEST(WholeMesh, WithoutAMeshOrFacesDoesNothing) {
    CallLog log;
    FakeGeometry empty("empty", log);
    empty.level.faceCount = 0;
    empty.level.faceVertexIndices.Clear();
    empty.level.vertices.Clear();
    Bench bench(FlatGrid(2));
    const auto before = bench.Positions();
    bench.Begin();
    for (Mesh* mesh : {static_cast<Mesh*>(nullptr), static_cast<Mesh*>(&empty.level)}) {
        for (const bool byFacing : {false, true}) {
            bench.brush->ApplyToWholeMesh(mesh, 0.5f, byFacing);
            EXPECT_FALSE(bench.brush->wholeMesh);
            EXPECT_FALSE(bench.brush->wholeMeshFacing);
        }
    }
    EXPECT_EQ(bench.brush->planeDabCount, 0xffffffffu);
    EXPECT_EQ(static_cast<Mesh*>(bench.brush->mesh), &bench.Mesh());
    bench.End();
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(bench.Positions(), before);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
}

TEST(WholeMesh, CountsAsADabOfTheMainPass) {
    Bench bench(FlatGrid(2));
    bench.Begin();
    EXPECT_EQ(bench.brush->planeDabCount, 0xffffffffu);
    bench.brush->ApplyToWholeMesh(&bench.Mesh(), 0.5f, false);
    EXPECT_EQ(bench.brush->planeDabCount, 0u);
    bench.brush->ApplyToWholeMesh(&bench.Mesh(), 0.5f, true);
    EXPECT_EQ(bench.brush->planeDabCount, 1u);
    bench.End();
}

TEST(WholeMesh, StrengthIsScaledLikeThatOfADab) {
    Bench bench(FlatGrid(2));
    SwiftStroke& brush = *bench.brush;
    const auto dabStrength = [&](Tool tool, float strength) {
        bench.Activate(tool);
        bench.Apply(strength);
        return brush.dabStrength;
    };
    EXPECT_EQ(dabStrength(Tool::Sculpt, 3.0f), 3.0f);
    EXPECT_EQ(dabStrength(Tool::Pinch, 3.0f), 3.0f * 0.01f);
    EXPECT_EQ(dabStrength(Tool::Amplify, 3.0f), 3.0f * 0.2f);
    EXPECT_EQ(dabStrength(Tool::Smooth, 50.0f), 50.0f * 0.01f);
    EXPECT_EQ(dabStrength(Tool::Smooth, 250.0f), 1.0f);
    EXPECT_EQ(dabStrength(Tool::Wax, 3.0f), 100.0f);
    EXPECT_EQ(brush.planeOffset, 3.0f * 0.5f * 0.1f);
    EXPECT_EQ(dabStrength(Tool::Flatten, 3.0f), 3.0f);
    EXPECT_EQ(brush.planeOffset, 0.0f);
    bench.Activate(Tool::Sculpt);
    bench.Apply(3.0f, false, BrushOperation::ModifierInvert);
    EXPECT_EQ(brush.dabStrength, -3.0f);
}

TEST(WholeMesh, ByFacingTheWeightIsTheCosineToACommonView) {
    Bench bench(SphereQuads(2));
    bench.geometry->Transform().Set({2.0f, 2.0f, 2.0f}, {0.0f, 0.0f, 90.0f}, {7.0f, 0.0f, 0.0f});
    const CameraAt camera({7.0f, 30.0f, 0.0f});
    const auto before = bench.Positions();
    std::vector<Vector> normals;
    for (uint32_t v = 0; v < before.size(); ++v) normals.push_back(bench.Normal(v));
    bench.Apply(1.0f, true);
    // A rotation by 90 degrees maps the mesh's x axis to the world's y axis, or vice versa.
    const Vector view = bench.brush->wholeMeshView;
    EXPECT_NEAR(std::fabs(view.x), 1.0f, 1e-6f);
    EXPECT_NEAR(view.y, 0.0f, 1e-6f);
    EXPECT_NEAR(view.z, 0.0f, 1e-6f);
    const Vector ahead = bench.WorldOf(view) - Vector(7.0f, 0.0f, 0.0f);
    EXPECT_NEAR((ahead - Vector(0.0f, 2.0f, 0.0f)).Length(), 0.0f, 1e-5f);
    int still = 0;
    ExpectMovedAlongNormals(bench, before, normals, [&](uint32_t v) {
        // The mesh is scaled by 2, which halves the steps in local space.
        const float weight = std::max(normals[v] | view, 0.0f) * 0.5f;
        still += weight == 0.0f;
        return weight;
    });
    EXPECT_GT(still, 10);
}

TEST(WholeMesh, WithoutFacingKeepsTheOldView) {
    Bench bench(FlatGrid(2));
    bench.brush->wholeMeshView = Vector(0.5f, 0.25f, -3.0f);
    const CameraAt camera({0.0f, 0.0f, 9.0f});
    bench.Apply(0.5f);
    EXPECT_EQ(bench.brush->wholeMeshView, Vector(0.5f, 0.25f, -3.0f));
    bench.Apply(0.5f, true);
    EXPECT_EQ(bench.brush->wholeMeshView, Vector(0.0f, 0.0f, 1.0f));
}

TEST(WholeMesh, CameraAtTheMeshOriginMovesNothing) {
    Bench bench(FlatGrid(2));
    bench.geometry->Transform().Set({1.0f, 1.0f, 1.0f}, {}, {1.0f, 2.0f, 3.0f});
    const CameraAt camera({1.0f, 2.0f, 3.0f});
    bench.brush->wholeMeshView = Vector(0.0f, 0.0f, 1.0f);
    const auto before = BitsOf(bench.Mesh());
    bench.Apply(0.5f, true);
    EXPECT_EQ(bench.brush->wholeMeshView, Vector());
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
}

TEST(WholeMesh, PlaneToolsUseThePlaneOfTheirPassAlongEachNormal) {
    // No plane is sampled; the initial plane of a new stroke passes through the origin.
    PolygonMesh raised = FlatGrid(2);
    for (auto& p : raised.positions) p[2] = 2.0f;
    Bench bench(raised);
    bench.Activate(Tool::Flatten);
    bench.Apply(50.0f);
    for (const Vector& p : bench.Positions()) EXPECT_NEAR(p.z, 1.0f, 1e-5f);
}

TEST(WholeMesh, SmoothUsesTheMeanOfEachRing) {
    PolygonMesh peak = FlatGrid(4);
    peak.positions[12][2] = 1.0f;
    Bench bench(peak);
    bench.Activate(Tool::Smooth);
    bench.Apply(100.0f);
    // Smoothing works in place: the left and upper neighbours of the peak were smoothed before it,
    // and had already risen by a fifth of its height.
    const auto positions = bench.Positions();
    EXPECT_LT(positions[12].z, 0.3f);
    EXPECT_GT(positions[12].z, 0.2f);
    EXPECT_NEAR(positions[7].z, 0.2f, 0.05f);
    EXPECT_NEAR(positions[0].z, 0.0f, 1e-6f);
}

TEST(WholeMesh, SmoothOfALayerSmoothsItsOffsetsOnly) {
    PolygonMesh peak = FlatGrid(4);
    peak.positions[12][2] = 1.0f;
    Bench bench(peak);
    SculptLayer& layer = bench.AddLayer();
    bench.Activate(Tool::Sculpt);
    bench.Stroke(bench.HitVertex(6), 0.1f, 2.0f);
    ASSERT_NEAR(layer.Offset(6).Length(), 2.0f, 1e-5f);
    bench.Activate(Tool::Smooth);
    bench.brush->affectAllLayers.SetValue(false, true);
    bench.Apply(100.0f);
    EXPECT_FALSE(bench.brush->followVertexNormal);
    EXPECT_LT(layer.Offset(6).Length(), 0.8f);
    EXPECT_EQ(layer.Rest(12), Vector(2.0f, 2.0f, 1.0f));
    EXPECT_EQ(layer.Rest(6), Vector(1.0f, 1.0f, 0.0f));
}

TEST(WholeMesh, SmearNeedsAHeading) {
    Bench bench(FlatGrid(2));
    bench.Activate(Tool::Smear);
    const auto before = BitsOf(bench.Mesh());
    bench.brush->SetPreviousPatchPosition({});
    bench.Apply(0.5f);
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
    // The previous position is behind the hit, which is at the first corner of the first face.
    bench.Begin();
    bench.brush->SetPreviousPatchPosition({-3.0f, 0.0f, 0.0f});
    bench.brush->ApplyToWholeMesh(&bench.Mesh(), 0.5f, false);
    bench.End();
    EXPECT_NEAR(bench.Mesh().Position(0).x, 0.5f, 1e-6f);
    EXPECT_NEAR(bench.Mesh().Position(8).x, 2.5f, 1e-6f);
    EXPECT_EQ(bench.Mesh().Position(8).z, 0.0f);
}

TEST(WholeMesh, MaskReducesTheMove) {
    Bench bench(FlatGrid(2));
    bench.Mesh().SetFreeze(4, 127);
    bench.Mesh().SetFreeze(5, 64);
    bench.Apply(1.0f);
    EXPECT_NEAR(bench.Mesh().Position(3).z, 1.0f, 1e-6f);
    EXPECT_NEAR(bench.Mesh().Position(4).z, 0.0f, 1e-6f);
    EXPECT_NEAR(bench.Mesh().Position(5).z, 63.0f / 127.0f, 1e-6f);
}

TEST(WholeMesh, ContinuesBeyondPartsOutsideTheStamp) {
    Bench bench(FlatGrid(8));
    SetTestStamp(*bench.brush, QStringLiteral("plain"), 9, 9, std::vector<float>(81, 0.5f));
    // One pixel of the stamp is at the corner farthest from the first face.
    bench.brush->Settings().stampMatrix.m[3][0] = -8.0f;
    bench.brush->Settings().stampMatrix.m[3][1] = -8.0f;
    bench.Apply(1.0f);
    for (uint32_t v = 0; v < 80; ++v) EXPECT_EQ(bench.Mesh().Position(v).z, 0.0f);
    EXPECT_NEAR(bench.Mesh().Position(80).z, 0.5f, 1e-6f);
}

TEST(WholeMesh, NotifiesRenderersOfTheChange) {
    Bench bench(FlatGrid(2));
    RecordingRenderer& renderer = bench.AddRenderer(0.0f);
    bench.Apply(1.0f);
    std::vector<uint32_t> told;
    for (const auto& notice : renderer.notices) told.push_back(notice.vertex);
    std::sort(told.begin(), told.end());
    EXPECT_EQ(told, (std::vector<uint32_t>{0, 1, 2, 3, 4, 5, 6, 7, 8}));
}

class WholeMeshOfEachTool : public ::testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Tools,
                         WholeMeshOfEachTool,
                         ::testing::Range(std::size_t{0}, std::size_t{15}),
                         [](const auto& tested) { return std::string(toolNames[tested.param]); });

TEST_P(WholeMeshOfEachTool, StaysFiniteAndIsUndoneBitExactly) {
    const Tool tool = allTools[GetParam()];
    for (const ZooMesh& zoo : AllMeshes()) {
        for (const bool byFacing : {false, true}) {
            SCOPED_TRACE(zoo.name);
            Bench bench(zoo.mesh, 1);
            const CameraAt camera({3.0f, 4.0f, 5.0f});
            bench.Activate(tool);
            EXPECT_TRUE(bench.brush->AlwaysTrueQuery());
            const auto before = BitsOf(bench.Mesh());
            bench.Begin();
            bench.brush->SetPreviousPatchPosition({0.3f, 0.2f, 0.1f});
            bench.brush->ApplyToWholeMesh(&bench.Mesh(), 20.0f, byFacing);
            bench.End();
            EXPECT_TRUE(bench.brush->AlwaysTrueQuery());
            for (const Vector& p : bench.Positions())
                EXPECT_TRUE(std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z));
            const auto after = BitsOf(bench.Mesh());
            // A pass without changes leaves no undo step.
            if (bench.geometry->History().Undo(*bench.geometry)) {
                EXPECT_EQ(BitsOf(bench.Mesh()), before);
                ASSERT_TRUE(bench.geometry->History().Redo(*bench.geometry));
            } else {
                EXPECT_EQ(after, before);
            }
            EXPECT_EQ(BitsOf(bench.Mesh()), after);
        }
    }
}

}  // namespace
}  // namespace trovik::test
