// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/remesh/voxels/VoxelRemesh.h"
#include "framework/threads/WorkerThreads.h"
#include "tests/jobs/TestJob.h"
#include "tests/remesh/EditedMeshes.h"
#include "tests/remesh/ReplacedSurface.h"

#include <tbb/task_arena.h>

namespace trovik::test {
namespace {

/// Remeshes a mesh, and expects a closed manifold of quads.
std::unique_ptr<Document> Remeshed(const PolygonMesh& mesh, const VoxelRemesh& settings) {
    auto document = std::make_unique<Document>("mesh", mesh);
    EXPECT_THAT(document->ReplaceSurface(RemeshWithVoxels(settings)).warnings, testing::IsEmpty());
    const LevelMesh& level = *document->Geometry().Bound();
    EXPECT_EQ(level.CornersPerFace(), 4u);
    EXPECT_EQ(BorderEdgesOf(level), 0u);
    ExpectManifold(MeshOf(*document));
    EXPECT_GT(VolumeOf(level), 0.0);
    return document;
}

const LevelMesh& LevelOf(const std::unique_ptr<Document>& document) {
    return *document->Geometry().Bound();
}

std::string ErrorOf(const PolygonMesh& mesh, const VoxelRemesh& settings) {
    Document document("mesh", mesh);
    const std::string before = SceneOf(document);
    try {
        document.ReplaceSurface(RemeshWithVoxels(settings));
        ADD_FAILURE() << "not refused";
    } catch (const HostError& error) {
        EXPECT_EQ(SceneOf(document), before);
        EXPECT_EQ(document.HistoryPosition(), 0u);
        return error.what();
    }
    return {};
}

uint32_t ComponentsOf(const LevelMesh& level) {
    std::vector<uint32_t> parent(level.VertexCount());
    for (uint32_t v = 0; v < parent.size(); ++v) parent[v] = v;
    const auto root = [&](uint32_t v) {
        while (parent[v] != v) v = parent[v] = parent[parent[v]];
        return v;
    };
    for (uint32_t face = 0; face < level.faceCount; ++face)
        for (uint32_t k = 1; k < 4; ++k)
            parent[root(level.faceVertexIndices.array[face * 4 + k])] =
                root(level.faceVertexIndices.array[face * 4]);
    uint32_t count = 0;
    for (uint32_t v = 0; v < parent.size(); ++v) count += root(v) == v ? 1u : 0u;
    return count;
}

TEST(VoxelRemesh, StaysWithinHalfAVoxelOfSmoothSurfaces) {
    for (const ZooMesh& zoo :
         {ZooMesh{"sphere", SphereQuads(6)}, ZooMesh{"torus", Torus(160, 80)}}) {
        SCOPED_TRACE(zoo.name);
        Document old("mesh", zoo.mesh);
        const double volume = VolumeOf(*old.Geometry().Bound());
        const float radius = std::cbrt(static_cast<float>(volume));
        for (const float voxel : {radius / 15.0f, radius / 40.0f}) {
            const auto document = Remeshed(zoo.mesh, {.voxelSize = voxel});
            EXPECT_LE(HausdorffDistance(*document, zoo.mesh), voxel * 0.5f);
            EXPECT_NEAR(VolumeOf(LevelOf(document)) / volume, 1.0, 0.02);
        }
    }
}

TEST(VoxelRemesh, ReachesTheNumberOfFaces) {
    for (const ZooMesh& zoo : {ZooMesh{"sphere", SphereQuads(4)},
                               ZooMesh{"torus", Torus(40, 20)},
                               ZooMesh{"bust", ExampleMesh("bust.obj")}}) {
        SCOPED_TRACE(zoo.name);
        for (const uint32_t faces : {600u, 5000u, 90000u}) {
            const auto document = Remeshed(zoo.mesh, {.faces = faces});
            EXPECT_NEAR(LevelOf(document).faceCount, faces, faces * 0.05);
        }
    }
}

/// Expects the warning that names the actual number of faces.
void ExpectOtherNumber(const PolygonMesh& mesh, uint32_t faces) {
    Document document("mesh", mesh);
    const ReplacementReport report = document.ReplaceSurface(RemeshWithVoxels({.faces = faces}));
    const std::string count = std::to_string(document.Geometry().Bound()->faceCount);
    EXPECT_THAT(report.warnings,
                testing::ElementsAre("the mesh has " + count +
                                     " faces; no voxel size gives a number within 5 % of " +
                                     std::to_string(faces)));
}

TEST(VoxelRemesh, WarnsIfTheNumberOfFacesCannotBeReached) {
    // Voxels that are large enough for 100 faces do not contain the plate.
    PolygonMesh plate = Cube();
    float low = plate.positions[0][0];
    float high = low;
    for (const auto& p : plate.positions) {
        low = std::min(low, p[0]);
        high = std::max(high, p[0]);
    }
    for (auto& p : plate.positions)
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const float t = (p[axis] - low) / (high - low);
            p[axis] = axis == 2 ? 0.3f + 0.1f * t : 10.0f * t;
        }
    ExpectOtherNumber(plate, 100);
    // The number is that without the small pieces, which are nearly all faces of this mesh.
    PolygonMesh dust = SphereQuads(4);
    for (int i = 0; i < 60; ++i)
        Append(dust, SphereQuads(1), 0.12f, {2.0f + 0.7f * static_cast<float>(i), 0.0f, 0.0f});
    ExpectOtherNumber(dust, 500);
}

TEST(VoxelRemesh, JoinsIntersectingComponents) {
    PolygonMesh mesh = SphereQuads(5);
    Append(mesh, SphereQuads(5), 1.0f, {1.2f, 0.1f, 0.2f});
    const auto document = Remeshed(mesh, {.voxelSize = 0.04f, .projects = true, .levels = 1});
    EXPECT_EQ(ComponentsOf(LevelOf(document)), 1u);
    // Two balls without the lens that they share.
    const double distance = std::sqrt(1.2 * 1.2 + 0.1 * 0.1 + 0.2 * 0.2);
    const double cap = 1.0 - distance / 2.0;
    const double lens = 2.0 * 3.14159265 * cap * cap * (3.0 - cap) / 3.0;
    EXPECT_NEAR(VolumeOf(LevelOf(document)), 2.0 * 4.18879 - lens, 0.06);
    // No vertex is projected onto a part that is inside the other sphere.
    for (const Vector& p : PositionsOf(LevelOf(document))) {
        EXPECT_GT(p.Length(), 0.995f);
        EXPECT_GT((p - Vector(1.2f, 0.1f, 0.2f)).Length(), 0.995f);
    }
}

TEST(VoxelRemesh, KeepsSeparateComponentsAndFillsCavities) {
    PolygonMesh mesh = SphereQuads(4);
    Append(mesh, SphereQuads(4), 0.5f, {});
    for (std::size_t face = mesh.faceSizes.size() / 2; face < mesh.faceSizes.size(); ++face)
        Flip(mesh, face);
    Append(mesh, SphereQuads(4), 0.5f, {3.0f, 0.0f, 0.0f});
    const auto document = Remeshed(mesh, {.voxelSize = 0.06f});
    EXPECT_EQ(ComponentsOf(LevelOf(document)), 2u);
    EXPECT_NEAR(VolumeOf(LevelOf(document)), 4.18879 * (1.0 + 0.125), 0.08);
}

TEST(VoxelRemesh, OrientsComponentsOutwards) {
    PolygonMesh mesh = SphereQuads(4);
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face) Flip(mesh, face);
    Append(mesh, SphereQuads(4), 1.0f, {3.0f, 0.0f, 0.0f});
    const auto document = Remeshed(mesh, {.voxelSize = 0.06f});
    EXPECT_NEAR(VolumeOf(LevelOf(document)), 4.18879 * 2.0, 0.12);
}

TEST(VoxelRemesh, FillsHoles) {
    PolygonMesh mesh = SphereQuads(4);
    Cut(mesh, [](const Vector& p) { return p.z > 0.8f || p.x > 0.97f; });
    Document document("mesh", mesh);
    const ReplacementReport report =
        document.ReplaceSurface(RemeshWithVoxels({.voxelSize = 0.05f, .levels = 1}));
    EXPECT_THAT(report.notes, testing::ElementsAre("2 holes were filled"));
    const LevelMesh& level = *document.Geometry().Bound();
    EXPECT_EQ(BorderEdgesOf(level), 0u);
    EXPECT_NEAR(VolumeOf(level), 4.18879 - 3.14159 * 0.04 * 2.8 / 3.0, 0.08);
    for (const Vector& p : PositionsOf(level)) EXPECT_LT(p.z, 0.85f);
}

TEST(VoxelRemesh, RemovesPiecesAsSmallAsAVoxel) {
    PolygonMesh mesh = SphereQuads(4);
    Append(mesh, SphereQuads(2), 0.05f, {2.0f, 0.0f, 0.0f});
    const auto document = Remeshed(mesh, {.voxelSize = 0.1f});
    EXPECT_EQ(ComponentsOf(LevelOf(document)), 1u);
    EXPECT_EQ(ComponentsOf(LevelOf(Remeshed(mesh, {.voxelSize = 0.02f}))), 2u);
    PolygonMesh alone;
    Append(alone, SphereQuads(2), 0.05f, {2.0f, 0.0f, 0.0f});
    EXPECT_GT(LevelOf(Remeshed(alone, {.voxelSize = 0.1f})).faceCount, 0u);
}

TEST(VoxelRemesh, ProjectionRestoresEdges) {
    PolygonMesh box = Cube();
    for (auto& p : box.positions)
        for (float& c : p) c = c * 1.37f + 0.011f;
    const float voxel = 0.1f;
    const float smooth = HausdorffDistance(*Remeshed(box, {.voxelSize = voxel}), box);
    const auto sharp = Remeshed(box, {.voxelSize = voxel, .projects = true});
    EXPECT_LT(HausdorffDistance(*sharp, box), smooth);
}

TEST(VoxelRemesh, LevelsRestoreTheDetail) {
    PolygonMesh bumpy = SphereQuads(6);
    for (auto& p : bumpy.positions) {
        const float bump =
            1.0f + 0.03f * std::sin(14.0f * p[0]) * std::sin(14.0f * p[1]) * std::sin(14.0f * p[2]);
        for (float& c : p) c *= bump;
    }
    float previous = 1.0f;
    for (const uint32_t levels : {0u, 1u, 2u}) {
        const auto document = Remeshed(bumpy, {.voxelSize = 0.12f, .levels = levels});
        const LevelGeometry& geometry = document->Geometry();
        EXPECT_EQ(geometry.LevelCount(), levels + 1);
        EXPECT_EQ(geometry.BoundIndex(), levels);
        EXPECT_EQ(geometry.Bound()->faceCount, geometry.Level(0)->faceCount << (2 * levels));
        const float distance = HausdorffDistance(*document, bumpy);
        EXPECT_LT(distance, previous * 0.8f) << levels;
        previous = distance;
        // The detail survives switching to level 0 and back.
        const std::vector<Vector> before = PositionsOf(LevelOf(document));
        document->BindLevel(0);
        document->BindLevel(levels);
        float moved = 0.0f;
        for (uint32_t v = 0; v < before.size(); ++v)
            moved = std::max(moved, (before[v] - LevelOf(document).Position(v)).Length());
        EXPECT_LT(moved, 0.002f);
    }
    EXPECT_LT(previous, 0.012f);
}

TEST(VoxelRemesh, VoxelsAreMeasuredInWorldUnits) {
    Document document("mesh", SphereQuads(4));
    MatrixTransform transform;
    transform.Set({10.0f, 10.0f, 10.0f}, {10.0f, 20.0f, 30.0f}, {1.0f, 2.0f, 3.0f});
    document.SetTransform(transform);
    document.ReplaceSurface(RemeshWithVoxels({.voxelSize = 1.0f}));
    const auto local = Remeshed(SphereQuads(4), {.voxelSize = 0.1f});
    EXPECT_EQ(PositionsOf(*document.Geometry().Bound()), PositionsOf(LevelOf(local)));
}

// At the pace of interactive jobs, too, so that they can be cancelled soon.
TEST(VoxelRemesh, ReportsTheMeasuringOfDistancesThroughout) {
    class Job : public TestJob {
    public:
        using TestJob::TestJob;
        bool Report(uint64_t done, uint64_t total, const char* phase) override {
            if (std::string(phase) == "Measuring distances") ++ofDistances;
            return TestJob::Report(done, total, phase);
        }
        uint64_t ofDistances = 0;
    };
    Job job(TestJob::never, JobPace{1024, {}});
    Document document("mesh", SphereQuads(3));
    document.ReplaceSurface(RemeshWithVoxels({.voxelSize = 0.03f}), &job);
    EXPECT_GT(job.ofDistances, 20u);
}

TEST(VoxelRemesh, GivesTheSameBitsForAnyNumberOfThreads) {
    const PolygonMesh mesh = ExampleMesh("bust.obj");
    const VoxelRemesh settings{.faces = 20000, .projects = true, .levels = 1};
    const auto run = [&](int threads) {
        std::string scene;
        tbb::task_arena arena(threads);
        arena.execute([&] { scene = SceneOf(*Remeshed(mesh, settings)); });
        return scene;
    };
    const std::string expected = run(1);
    for (const int threads : {2, 7, 2}) EXPECT_EQ(run(threads), expected) << threads;
}

TEST(VoxelRemesh, RefusesWhatCannotBeRemeshed) {
    EXPECT_THAT(ErrorOf(GridMesh(8, 8), {.voxelSize = 0.1f}),
                testing::HasSubstr("the mesh encloses no volume"));
    EXPECT_THAT(ErrorOf(SingleQuad(), {.faces = 100}),
                testing::HasSubstr("the mesh encloses no volume"));
    PolygonMesh betweenVoxels;
    Append(betweenVoxels, SphereQuads(3), 1.0f, {25.0f, 25.0f, 25.0f});
    EXPECT_THAT(ErrorOf(betweenVoxels, {.voxelSize = 50.0f}),
                testing::HasSubstr("thinner than voxels of size 50"));
    EXPECT_THAT(ErrorOf(SphereQuads(3), {.voxelSize = 1e-5f}),
                testing::AllOf(testing::HasSubstr("voxels of size 1e-05, which gives about"),
                               testing::HasSubstr("bytes of memory are free")));
    EXPECT_THAT(ErrorOf(SphereQuads(3), {.voxelSize = 1e-20f}),
                testing::HasSubstr("needs a finer grid than is possible"));
    EXPECT_THAT(ErrorOf(SphereQuads(3), {.faces = 1000000000}),
                testing::HasSubstr("bytes of memory are free"));
    Document document("mesh", SphereQuads(3));
    document.Geometry().Level(0)->SetPosition(
        7, {std::numeric_limits<float>::quiet_NaN(), 0.0f, 0.0f});
    EXPECT_THAT(
        MessageOf<HostError>([&] { document.ReplaceSurface(RemeshWithVoxels({.faces = 100})); }),
        testing::HasSubstr("the position of vertex 7 is not finite"));
    EXPECT_THAT(ErrorOf(SphereQuads(3), {.voxelSize = 0.1f, .levels = 12}),
                testing::HasSubstr("a level holds at most"));
}

}  // namespace
}  // namespace trovik::test
