// SPDX-License-Identifier: Apache-2.0

/// \file Properties of all steps that replace the mesh.
#include "framework/edits/LayerSteps.h"
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/script/JournalRecovery.h"
#include "framework/script/ScriptRunner.h"
#include "tests/jobs/TestJob.h"
#include "tests/journal/JournalWork.h"
#include "tests/remesh/ReplacedSurface.h"

#include <nlohmann/json.hpp>

namespace trovik::test {
namespace {

using nlohmann::json;

/// A sphere with colours, UVs, two groups and a hole at the back.
PolygonMesh ColouredSphere() {
    PolygonMesh mesh = SphereQuads(3);
    std::size_t back = 0;
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face)
        if (mesh.positions[mesh.faceVertices[face * 4]][2] <
            mesh.positions[mesh.faceVertices[back * 4]][2])
            back = face;
    const auto first = mesh.faceVertices.begin() + static_cast<std::ptrdiff_t>(back * 4);
    mesh.faceVertices.erase(first, first + 4);
    mesh.faceSizes.pop_back();
    SurfaceAttributes& attributes = mesh.attributes;
    for (const auto& p : mesh.positions) {
        attributes.colors.push_back({p[0] * 0.5f + 0.5f, p[1] * 0.5f + 0.5f, 0.25f, 1.0f});
        attributes.uvs.push_back({p[0], p[1]});
    }
    attributes.cornerUvs = mesh.faceVertices;
    attributes.groupNames = {"left", "right"};
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face) {
        float x = 0.0f;
        for (std::size_t k = 0; k < 4; ++k) x += mesh.positions[mesh.faceVertices[face * 4 + k]][0];
        attributes.faceGroups.push_back(x < 0.0f ? 0 : 1);
    }
    return mesh;
}

class ReplacingSteps : public testing::TestWithParam<const char*> {
protected:
    /// A script that prepares a sculpture with two levels, two layers and a mask.
    json Script() const {
        WriteMeshFile(folder.Path("mesh.obj"), ColouredSphere());
        return json::parse(
            R"({"mesh": "mesh.obj", "levels": 1, "camera": {"from": [0, 0, 1]}, "steps": [
            {"layer": {"add": "Bumps"}},
            {"tool": "Sculpt", "set": {"radius": 0.5}}, {"stroke": {"surface": [[0.3, 0, 1], [0, 0.4, 1]]}},
            {"layer": {"add": "Dents"}},
            {"stroke": {"surface": [[0, 0.4, 1]], "modifier": "invert"}},
            {"layer": {"select": "Bumps", "strength": 0.7}},
            {"mask": {"center": [-1, 0, 0], "radius": 0.8, "softness": 0.5}}]})");
    }
    std::unique_ptr<ScriptRunner> Open(bool journal = false) const {
        const json script = Script();
        const std::string path = folder.Fill("script.json", script.dump());
        auto runner = std::make_unique<ScriptRunner>(path, folder.Path(""), ScriptProgress{});
        if (journal) runner->SetJournal({folder.Path("work.journal"), false});
        json setup = script;
        setup["steps"] = json::array();
        runner->Open(setup);
        for (const json& step : script.at("steps")) runner->Do(step, 0);
        return runner;
    }
    static json Step() { return json::parse(GetParam()); }

    QuickDisk disk;
    TemporaryFolder folder;
};

TEST_P(ReplacingSteps, UndoAndRedoRestoreEveryByte) {
    const auto runner = Open();
    Document& document = runner->GetDocument();
    const std::string before = SceneOf(document);
    const std::size_t steps = document.HistoryPosition();
    runner->Do(Step(), 0);
    ASSERT_EQ(document.HistoryPosition(), steps + 1);
    ExpectManifold(MeshOf(document));
    const std::string after = SceneOf(document);
    EXPECT_NE(after, before);
    for (int i = 0; i < 2; ++i) {
        document.Undo();
        EXPECT_EQ(SceneOf(document), before);
        document.Redo();
        EXPECT_EQ(SceneOf(document), after);
    }
    // Strokes before and after the step remain undoable. Undoing a stroke does not revert settings,
    // such as the number of strokes, so only the surface is compared.
    const std::string bits = BitsOf(document);
    Stroke(document, {0.0f, 0.0f, 1.0f});
    EXPECT_NE(BitsOf(document), bits);
    document.JumpTo(steps - 1);
    document.JumpTo(steps + 1);
    EXPECT_EQ(BitsOf(document), bits);
    while (document.Undo()) continue;
    EXPECT_EQ(document.Geometry().LevelCount(), 2u);
}

TEST_P(ReplacingSteps, AJournalReplaysThemBitForBit) {
    std::string expected;
    {
        const auto runner = Open(true);
        runner->Do(Step(), 0);
        runner->Do(json::parse(R"({"stroke": {"surface": [[0, 0.1, 1], [0.2, 0.1, 1]]}})"), 0);
        runner->Do(json::parse(R"({"undo": 2})"), 0);
        runner->Do(json::parse(R"({"redo": 2})"), 0);
        expected = SceneOf(runner->GetDocument());
    }
    const RecoveredWork work = RedoJournal(folder.Path("work.journal"), {});
    EXPECT_EQ(SceneOf(work.runner->GetDocument()), expected);
}

TEST_P(ReplacingSteps, CanBeCancelledAtEveryReport) {
    const auto runner = Open();
    Document& document = runner->GetDocument();
    const std::string before = SceneOf(document);
    const std::size_t steps = document.HistoryPosition();
    const auto run = [&](TestJob& job) {
        CommandOptions options;
        options.name = folder.Path("script.json");
        options.outputFolder = folder.Path("");
        options.progress.job = &job;
        CommandRunner(document, options).Do(Step());
    };
    TestJob whole(TestJob::never, TestJob::WithoutClock());
    run(whole);
    whole.ExpectFinished();
    document.Undo();
    document.DropUndone();
    ASSERT_GT(whole.reports, 1u);
    for (uint64_t at = 1; at <= whole.reports; ++at) {
        TestJob job(at, TestJob::WithoutClock());
        EXPECT_THROW(run(job), Cancelled) << at;
        EXPECT_EQ(SceneOf(document), before) << at;
        EXPECT_EQ(document.HistoryPosition(), steps);
    }
}

TEST_P(ReplacingSteps, TransferMaskColoursGroupsAndLayers) {
    const auto runner = Open();
    Document& document = runner->GetDocument();
    const uint32_t oldVertices = document.Geometry().Bound()->VertexCount();
    runner->Do(Step(), 0);
    const LevelGeometry& geometry = document.Geometry();
    const LevelMesh& level = *geometry.Bound();
    const SurfaceAttributes& attributes = geometry.Attributes();
    EXPECT_THAT(attributes.groupNames, testing::ElementsAre("left", "right"));
    const LevelMesh& base = *geometry.Level(0);
    ASSERT_EQ(attributes.faceGroups.size(), base.faceCount);
    ASSERT_EQ(attributes.colors.size(), base.VertexCount());
    for (uint32_t face = 0; face < base.faceCount; ++face) {
        float x = 0.0f;
        for (uint32_t k = 0; k < base.CornersPerFace(); ++k)
            x += base.Position(base.faceVertexIndices.array[face * base.CornersPerFace() + k]).x;
        if (std::fabs(x) > 0.5f) {
            EXPECT_EQ(attributes.faceGroups[face], x < 0.0f ? 0u : 1u);
        }
    }
    for (uint32_t v = 0; v < base.VertexCount(); ++v) {
        const Vector p = base.Position(v).Normalized();
        if (p.z > 0.0f || p.z < -0.9f) continue;
        EXPECT_NEAR(attributes.colors[v][0], p.x * 0.5f + 0.5f, 0.03f);
        EXPECT_NEAR(attributes.colors[v][1], p.y * 0.5f + 0.5f, 0.03f);
    }
    // The vertices of a voxel remesh are not exactly on the old surface.
    const int fullyMasked = Step().contains("voxelRemesh") ? 125 : 127;
    const bool hasNewPart = Step().contains("extract");
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        // The extracted part is added after the old vertices, and is not masked.
        if (hasNewPart && v >= oldVertices) break;
        const float distance = (level.Position(v) - Vector(-1.0f, 0.0f, 0.0f)).Length();
        if (distance < 0.35f) {
            EXPECT_GE(level.Freeze(v), fullyMasked) << v;
        }
        if (distance > 0.9f) {
            EXPECT_EQ(level.Freeze(v), 0) << v;
        }
    }
    const LayerStack::Layers layers = geometry.Layers().OfLevel(level);
    ASSERT_EQ(layers.size(), 2u);
    EXPECT_EQ(layers[0]->Name(), "Bumps");
    EXPECT_EQ(layers[0]->Strength(), 0.7f);
    EXPECT_EQ(layers[1]->Name(), "Dents");
    EXPECT_EQ(level.ActiveLayer(), layers[0].get());
    // The layers can still be turned off and on.
    const std::vector<Vector> sculpted = PositionsOf(level);
    for (const char* name : {"Bumps", "Dents"}) {
        document.SelectLayer(name);
        document.SetLayerStrength(0.0f);
    }
    float largest = 0.0f;
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        const float moved = (level.Position(v) - sculpted[v]).Length();
        largest = std::max(largest, moved);
        if (sculpted[v].z < 0.0f) {
            EXPECT_EQ(moved, 0.0f) << v;
        }
    }
    EXPECT_GT(largest, 0.003f);
    document.SelectLayer("Bumps");
    document.SetLayerStrength(0.7f);
    document.SelectLayer("Dents");
    document.SetLayerStrength(1.0f);
    EXPECT_EQ(PositionsOf(level), sculpted);
}

TEST_P(ReplacingSteps, AreRefusedDuringAStrokeAndWithHiddenFaces) {
    const auto runner = Open();
    Document& document = runner->GetDocument();
    document.Loop().Begin(BrushOperation::ModifierNone);
    EXPECT_THROW(runner->Do(Step(), 0), HostError);
    document.Loop().End();
    runner->Do(json::parse(R"({"hide": {"group": "left"}})"), 0);
    const std::string before = SceneOf(document);
    try {
        runner->Do(Step(), 0);
        ADD_FAILURE() << "not refused";
    } catch (const HostError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("show all faces first"));
    }
    EXPECT_EQ(SceneOf(document), before);
}

INSTANTIATE_TEST_SUITE_P(
    All,
    ReplacingSteps,
    testing::Values(R"({"voxelRemesh": {"voxelSize": 0.1}})",
                    R"({"voxelRemesh": {"voxelSize": 0.15, "project": true, "levels": 1}})",
                    R"({"decimate": {"ratio": 0.6}})",
                    R"({"decimate": {"error": 0.01}})",
                    R"({"remesh": {"edgeLength": 0.12}})",
                    R"({"remesh": {"faces": 700, "creaseAngle": 80}})",
                    R"({"repair": {"fillHoles": "smooth"}})",
                    R"({"append": {"file": "mesh.obj", "translate": [0, 0, 5]}})",
                    R"({"extract": {"thickness": 0.02, "smoothBorder": 2, "group": "left"}})"),
    [](const auto& test) { return "Step" + std::to_string(test.index); });

TEST(SurfaceReplacement, ReportsWhatIsLost) {
    Document document("sphere", ColouredSphere());
    document.AddLayer("Coarse");
    document.Subdivide();
    document.Subdivide();
    document.BindLevel(1);
    EXPECT_THAT(LossesOfReplacement(document.Geometry(), false),
                testing::ElementsAre("the texture coordinates are not kept",
                                     testing::HasSubstr("\"Coarse\""),
                                     testing::HasSubstr("1 level above")));
    EXPECT_THAT(LossesOfReplacement(document.Geometry(), true), testing::SizeIs(2));
}

TEST(SurfaceReplacement, FindsTheTopologicalMirrorOfTheNewMesh) {
    Document document("sphere", SphereQuads(3));
    document.SetTopologicalMirror();
    const std::string before = SceneOf(document);
    const SurfaceOperation same{"Same", [](SourceSurface& source, JobControl*) {
                                    NewSurface made;
                                    made.mesh = source.Polygons();
                                    return made;
                                }};
    EXPECT_THAT(document.ReplaceSurface(same).warnings, testing::IsEmpty());
    EXPECT_NE(document.Geometry().Mirror(), nullptr);
    EXPECT_EQ(document.Geometry().Bound()->Name(), "sphere");
    document.Undo();
    EXPECT_EQ(SceneOf(document), before);
}

}  // namespace
}  // namespace trovik::test
