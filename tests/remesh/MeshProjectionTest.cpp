// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/LayerSteps.h"
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/filters/PositionEdit.h"
#include "framework/remesh/MeshProjection.h"
#include "framework/script/JournalRecovery.h"
#include "framework/script/ScriptRunner.h"
#include "tests/jobs/TestJob.h"
#include "tests/journal/JournalWork.h"
#include "tests/remesh/EditedMeshes.h"
#include "tests/remesh/ReplacedSurface.h"

#include <nlohmann/json.hpp>

#include <filesystem>

namespace trovik::test {
namespace {

/// A finely tessellated sphere with bumps, 5 % larger than the unit sphere.
PolygonMesh BumpySphere() {
    PolygonMesh mesh = SphereQuads(6);
    for (auto& p : mesh.positions) {
        const float bump = 1.05f + 0.02f * std::sin(9.0f * p[0]) * std::sin(9.0f * p[1]);
        for (float& c : p) c *= bump;
    }
    return mesh;
}

class Projections : public testing::Test {
protected:
    Projections() { WriteMeshFile(path, BumpySphere()); }

    /// The distance of each vertex of the current level to the surface of the file.
    std::vector<float> Distances() {
        LevelGeometry geometry(file);
        SourceSurface surface(geometry);
        std::vector<float> distances;
        for (const NearestPoint& nearest : surface.Nearest(PositionsOf(Level())))
            distances.push_back(nearest.distance);
        return distances;
    }
    const LevelMesh& Level() { return *document.Geometry().Bound(); }

    TemporaryFolder folder;
    std::string path = folder.Path("bumpy.ply");
    PolygonMesh file = BumpySphere();
    Document document{"sphere", SphereQuads(4)};
};

TEST_F(Projections, MovesAllVerticesOntoTheSurfaceAsOneStep) {
    const std::string before = SceneOf(document);
    for (const auto direction :
         {MeshProjection::Direction::Nearest, MeshProjection::Direction::Normal}) {
        const ProjectionResult result = document.Project({path, 0.5f, direction});
        EXPECT_EQ(result.moved, Level().VertexCount());
        EXPECT_EQ(result.colored, 0u);
        for (const float distance : Distances()) EXPECT_LT(distance, 1e-6f);
        EXPECT_EQ(document.HistoryPosition(), 1u);
        const std::string after = SceneOf(document);
        document.Undo();
        EXPECT_EQ(SceneOf(document), before);
        document.Redo();
        EXPECT_EQ(SceneOf(document), after);
        document.Undo();
    }
    EXPECT_EQ(document.Project({path, 0.5f}).moved, Level().VertexCount());
    EXPECT_LT(document.Project({path, 0.5f}).moved, Level().VertexCount())
        << "the vertices are already on the surface";
}

TEST_F(Projections, RespectTheMask) {
    const std::vector<Vector> before = PositionsOf(Level());
    std::vector<uint8_t> amounts;
    amounts.reserve(before.size());
    for (const Vector& p : before) amounts.push_back(p.x > 0.0f ? 127 : p.x > -0.3f ? 64 : 0);
    document.Freeze(amounts, FreezeMode::Replace);
    document.Project({path, 0.5f});
    const std::vector<float> distances = Distances();
    for (uint32_t v = 0; v < before.size(); ++v) {
        const float moved = (Level().Position(v) - before[v]).Length();
        if (amounts[v] == 127) {
            EXPECT_EQ(Level().Position(v), before[v]);
        } else if (amounts[v] == 64) {
            EXPECT_NEAR(moved, distances[v] * 63.0f / 64.0f, 0.01f);
            EXPECT_GT(moved, 0.01f);
        } else {
            EXPECT_LT(distances[v], 1e-6f);
        }
    }
}

TEST_F(Projections, TheEffectDecreasesSmoothlyUpToTheDistance) {
    // The file is a plane below a part of the grid that rises slowly.
    PolygonMesh slope = GridMesh(60, 6);
    for (auto& p : slope.positions) p[2] = p[0] * 0.05f;
    PolygonMesh plane = GridMesh(60, 6);
    const std::string planeFile = folder.Path("plane.obj");
    WriteMeshFile(planeFile, plane);
    Document sloping("slope", slope);
    sloping.Project({planeFile, 2.0f});
    const LevelMesh& level = *sloping.Geometry().Bound();
    std::map<float, float> heights;
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const float height = slope.positions[v][2];
        const float z = level.Position(v).z;
        const bool isOnBorder = slope.positions[v][1] == 0.0f || slope.positions[v][1] == 6.0f ||
                                slope.positions[v][0] == 0.0f;
        if (height < 1.0f && !isOnBorder) {
            EXPECT_NEAR(z, 0.0f, 1e-6f);
        }
        if (height >= 2.0f) {
            EXPECT_EQ(z, height);
        }
        heights[slope.positions[v][0]] = z;
    }
    float previous = 0.0f;
    for (const auto& [x, z] : heights) {
        EXPECT_LT(std::fabs(z - previous), 0.25f) << "there is no step at x = " << x;
        previous = z;
    }
}

TEST_F(Projections, DoNotCrowdAtTheBorderOfTheFile) {
    PolygonMesh grid = GridMesh(20, 20);
    for (auto& p : grid.positions) p[2] = 0.4f;
    PolygonMesh patch = GridMesh(10, 10);
    for (auto& p : patch.positions)
        for (std::size_t axis : {0u, 1u}) p[axis] += 5.0f;
    const std::string patchFile = folder.Path("patch.obj");
    WriteMeshFile(patchFile, patch);
    for (const auto direction :
         {MeshProjection::Direction::Nearest, MeshProjection::Direction::Normal}) {
        Document larger("grid", grid);
        larger.Project({patchFile, 3.0f, direction});
        const LevelMesh& level = *larger.Geometry().Bound();
        for (uint32_t v = 0; v < level.VertexCount(); ++v) {
            const auto& p = grid.positions[v];
            const Vector to = level.Position(v);
            EXPECT_NEAR(to.x, p[0], 1e-5f);
            EXPECT_NEAR(to.y, p[1], 1e-5f);
            const bool isInside = p[0] >= 5.0f && p[0] <= 15.0f && p[1] >= 5.0f && p[1] <= 15.0f;
            if (isInside) {
                EXPECT_NEAR(to.z, 0.0f, 1e-6f);
            }
            if (p[0] < 1.0f) {
                EXPECT_EQ(to.z, 0.4f);
            }
        }
    }
}

TEST_F(Projections, KeepTheDetailOfHigherLevels) {
    document.Subdivide();
    document.Subdivide();
    // A bump on the highest level.
    std::vector<Vector> positions = PositionsOf(Level());
    uint32_t top = 0;
    for (uint32_t v = 0; v < positions.size(); ++v)
        if (positions[v].z > positions[top].z) top = v;
    positions[top] = positions[top] * 1.2f;
    document.EditPositions(GivenPositions(positions, "Bump"));
    document.BindLevel(0);
    document.Project({path, 0.5f});
    document.BindLevel(2);
    LevelGeometry geometry(file);
    SourceSurface surface(geometry);
    EXPECT_NEAR(surface.Nearest({Level().Position(top)})[0].distance, 0.2f, 0.05f);
}

TEST_F(Projections, AreRecordedInTheActiveLayer) {
    const std::vector<Vector> before = PositionsOf(Level());
    document.AddLayer("Scan");
    document.Project({path, 0.5f});
    for (const float distance : Distances()) EXPECT_LT(distance, 1e-6f);
    document.SetLayerStrength(0.0f);
    EXPECT_EQ(PositionsOf(Level()), before);
}

TEST_F(Projections, TakeColoursInTheSameStep) {
    PolygonMesh coloured = file;
    for (const auto& p : coloured.positions)
        coloured.attributes.colors.push_back({p[0] * 0.4f + 0.5f, 0.25f, 0.5f, 1.0f});
    WriteMeshFile(path, coloured);
    std::vector<uint8_t> amounts;
    for (const Vector& p : PositionsOf(Level())) amounts.push_back(p.z > 0.5f ? 127 : 0);
    document.Freeze(amounts, FreezeMode::Replace);
    document.Subdivide();
    const std::string before = SceneOf(document);
    const std::size_t steps = document.HistoryPosition();
    const MeshProjection settings{path, 0.5f, MeshProjection::Direction::Nearest, true};
    EXPECT_GT(document.Project(settings).colored, 1000u);
    const auto& colors = document.Geometry().Attributes().colors;
    ASSERT_EQ(colors.size(), document.Geometry().Level(0)->VertexCount());
    for (uint32_t v = 0; v < colors.size(); ++v) {
        const Vector p = Level().Position(v);
        if (amounts[v] == 127) {
            EXPECT_EQ(colors[v], (std::array<float, 4>{1.0f, 1.0f, 1.0f, 1.0f}));
        } else {
            EXPECT_NEAR(colors[v][0], p.x * 0.4f + 0.5f, 0.01f);
        }
    }
    const std::string after = SceneOf(document);
    document.Undo();
    EXPECT_EQ(document.HistoryPosition(), steps) << "positions and colours are one step";
    EXPECT_EQ(SceneOf(document), before);
    document.Redo();
    EXPECT_EQ(SceneOf(document), after);
    // Only the colours change if all vertices are on the surface already.
    for (auto& color : coloured.attributes.colors) color[1] = 0.75f;
    WriteMeshFile(path, coloured);
    EXPECT_GT(document.Project(settings).colored, 1000u);
    document.Undo();
    EXPECT_EQ(SceneOf(document), after);
}

TEST_F(Projections, ConvertUnitsAndWorldSpace) {
    MatrixTransform transform;
    transform.Set({10.0f, 10.0f, 10.0f}, {10.0f, 20.0f, 30.0f}, {1.0f, 2.0f, 3.0f});
    document.SetTransform(transform);
    PolygonMesh world = file;
    for (auto& p : world.positions) {
        const Vector to = transform.ToWorld().AffineTransform(Vector(p[0], p[1], p[2]), 1.0f);
        p = {to.x, to.y, to.z};
    }
    WriteMeshFile(path, world);
    // The distance is in world units.
    EXPECT_EQ(document.Project({.path = path, .distance = 0.1f, .isWorld = true}).moved, 0u);
    document.Project({.path = path, .distance = 5.0f, .isWorld = true});
    for (const float distance : Distances()) EXPECT_LT(distance, 1e-5f);
}

TEST_F(Projections, CanBeCancelledAtEveryReport) {
    PolygonMesh coloured = file;
    coloured.attributes.colors.assign(file.positions.size(), {0.5f, 0.5f, 0.5f, 1.0f});
    WriteMeshFile(path, coloured);
    const MeshProjection settings{path, 0.5f, MeshProjection::Direction::Normal, true};
    const std::string before = SceneOf(document);
    TestJob whole(TestJob::never, TestJob::WithoutClock());
    document.Project(settings, &whole);
    whole.ExpectFinished();
    document.Undo();
    document.DropUndone();
    ASSERT_GT(whole.reports, 4u);
    for (uint64_t at = 1; at <= whole.reports; ++at) {
        TestJob job(at, TestJob::WithoutClock());
        EXPECT_THROW(document.Project(settings, &job), Cancelled) << at;
        EXPECT_EQ(SceneOf(document), before);
        EXPECT_EQ(document.HistoryPosition(), 0u);
    }
}

/// Runs the steps with a journal, up to a simulated crash; steps may fail.
/// \return the document as a scene.
std::string RunWithJournal(const TemporaryFolder& folder, const nlohmann::json& steps) {
    const nlohmann::json setup = {{"mesh", "bumpy.ply"}, {"steps", nlohmann::json::array()}};
    ScriptRunner runner(
        folder.Fill("script.json", setup.dump()), folder.Path(""), ScriptProgress{});
    runner.SetJournal({folder.Path("work.journal"), false});
    runner.Open(setup);
    for (const nlohmann::json& step : steps) {
        try {
            runner.Do(step, 0);
        } catch (const HostError&) {
            EXPECT_TRUE(step.contains("project")) << step;
        }
    }
    return SceneOf(runner.GetDocument());
}

// The file may be written again by the same run, or changed or deleted afterwards.
TEST_F(Projections, AJournalRecoversThemWithoutTheFile) {
    QuickDisk disk;
    const nlohmann::json exported = {{"export", {{"file", "exported.obj"}}}};
    const nlohmann::json smooth = {{"filter", {{"kind", "smooth"}, {"iterations", 5}}}};
    const nlohmann::json project = {
        {"project", {{"file", "exported.obj"}, {"distance", 0.5}, {"direction", "normal"}}}};
    const nlohmann::json undo = {{"undo", 1}};
    const nlohmann::json redo = {{"redo", 1}};
    const std::vector<nlohmann::json> runs = {
        {exported, smooth, project},
        {exported, smooth, project, smooth, exported, smooth},
        {exported, smooth, project, smooth, exported, project, smooth, undo},
        {exported, smooth, project, undo},
        {exported, smooth, project, smooth, undo, undo, undo, redo, redo},
        {smooth, project, exported, smooth}};
    for (const nlohmann::json& steps : runs) {
        SCOPED_TRACE(steps.dump());
        const std::string expected = RunWithJournal(folder, steps);
        const auto recovered = [&] {
            const RecoveredWork work = RedoJournal(folder.Path("work.journal"), {});
            return SceneOf(work.runner->GetDocument());
        };
        EXPECT_EQ(recovered(), expected);
        WriteMeshFile(folder.Path("exported.obj"), SphereQuads(2));
        EXPECT_EQ(recovered(), expected) << "the file has changed";
        std::filesystem::remove(folder.Path("exported.obj"));
        EXPECT_EQ(recovered(), expected) << "the file is missing";
        std::filesystem::remove(folder.Path("work.journal"));
    }
}

TEST_F(Projections, ErrorsNameTheFile) {
    const std::string before = SceneOf(document);
    const auto errorOf = [&](const MeshProjection& settings) -> std::string {
        try {
            document.Project(settings);
        } catch (const HostError& error) {
            return error.what();
        }
        return "no error";
    };
    EXPECT_THAT(errorOf({folder.Path("missing.obj"), 0.5f}), testing::HasSubstr("missing.obj"));
    EXPECT_THAT(errorOf({folder.Fill("bad.obj", "v 1 2\n"), 0.5f}), testing::HasSubstr("bad.obj"));
    EXPECT_THAT(errorOf({path, 0.5f, MeshProjection::Direction::Nearest, true}),
                testing::HasSubstr("bumpy.ply: the mesh has no vertex colours"));
    document.AddLayer("Locked");
    SculptLayer::Properties locked;
    locked.name = "Locked";
    locked.writable = false;
    document.Push(SetLayerPropertiesAsStep(document.Geometry(), *document.ActiveLayer(), locked));
    EXPECT_THAT(errorOf({path, 0.5f}), testing::HasSubstr("\"Locked\" is hidden or locked"));
    document.JumpTo(0);
    EXPECT_EQ(SceneOf(document), before);
}

}  // namespace
}  // namespace trovik::test
