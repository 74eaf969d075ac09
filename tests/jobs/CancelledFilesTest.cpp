// SPDX-License-Identifier: Apache-2.0

/// \file Tests import, export, and operations on scenes and maps that are cancelled at random
/// progress reports: files are complete or unchanged, no temporary file is left, and the result of
/// the next run is bit-identical to that of a run that was never cancelled.
#include "framework/baking/MapFile.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/mesh/BaseLevel.h"
#include "framework/multires/LevelSource.h"
#include "tests/baking/BakedMeshes.h"
#include "tests/jobs/CancelledDocument.h"
#include "tests/journal/JournalWork.h"

#include <fstream>

namespace trovik::test {
namespace {

constexpr int draws = 25;

/// Runs `operation` to completion, and then cancels it at random progress reports. \param
/// check  called after each cancellation.
void Cancel(const std::function<void(JobControl*)>& operation,
            const std::function<void()>& check,
            uint64_t leastReports,
            unsigned seed) {
    TestJob whole;
    operation(&whole);
    whole.ExpectFinished();
    EXPECT_GE(whole.reports, leastReports);
    std::mt19937_64 random(seed);
    for (int i = 0; i < draws; ++i) {
        const uint64_t at = i == 0 ? 1 : i == 1 ? whole.reports : 1 + random() % whole.reports;
        SCOPED_TRACE("cancelled at " + std::to_string(at) + " of " + std::to_string(whole.reports));
        TestJob job(at);
        ASSERT_THROW(operation(&job), Cancelled);
        ASSERT_EQ(job.reports, at);
        check();
    }
}

PolygonMesh ImportedMesh() {
    LevelGeometry cube(Cube());
    cube.Subdivide();
    cube.Subdivide();
    PolygonMesh mesh = WithIslands(cube.ToPolygons(false), 10, 0.05f);
    mesh.normals.clear();
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face)
        mesh.attributes.faceGroups.push_back(face < 40 ? 0 : 1);
    mesh.attributes.groupNames = {"front", "back"};
    return mesh;
}

std::string StateOfMesh(const PolygonMesh& mesh) { return StateOfAll(LevelGeometry(mesh)); }

TEST(CancelledFiles, ImportCanBeRepeatedBitExactly) {
    const QuickDisk disk;
    const TemporaryFolder folder;
    for (const char* name : {"mesh.obj", "mesh.ply", "mesh.stl", "mesh.gltf", "mesh.glb"}) {
        SCOPED_TRACE(name);
        WriteMeshFile(folder.Path(name), ImportedMesh());
        const std::string expected = StateOfMesh(ReadMeshFile(folder.Path(name)));
        const auto read = [&](JobControl* job) {
            PolygonMesh mesh = ReadMeshFile(folder.Path(name), job);
            MakeOrientedManifold(mesh, job);
            const LevelGeometry geometry(mesh, job);
            EXPECT_TRUE(StateOfAll(geometry) == expected);
        };
        Cancel(
            read, [] {}, 1000, 21);
        EXPECT_TRUE(StateOfMesh(ReadMeshFile(folder.Path(name))) == expected);
    }
}

TEST(CancelledFiles, ImportLeavesNoGeometryInTheScene) {
    const QuickDisk disk;
    const TemporaryFolder folder;
    WriteMeshFile(folder.Path("mesh.ply"), ImportedMesh());
    std::string expected;
    Cancel(
        [&](JobControl* job) {
            Document document(folder.Path("mesh.ply"), MeshSpace(), job);
            expected = BytesOf(document);
        },
        [] {},
        500,
        22);
    Document document(folder.Path("mesh.ply"));
    EXPECT_TRUE(BytesOf(document) == expected);
}

TEST(CancelledFiles, ImportOfPolygonsWithManyCornersCanBeRepeatedBitExactly) {
    const PolygonMesh mesh = NgonMix();
    const std::string expected = StateOfMesh(mesh);
    Cancel([&](JobControl* job) { EXPECT_TRUE(StateOfAll(LevelGeometry(mesh, job)) == expected); },
           [] {},
           30,
           23);
}

TEST(CancelledFiles, ExportLeavesTheOldFile) {
    const QuickDisk disk;
    LevelGeometry geometry(ImportedMesh());
    geometry.Subdivide();
    const LevelSource source(geometry, {});
    for (const char* name :
         {"mesh.obj", "mesh.ply", "mesh.stl", "mesh.gltf", "mesh.glb", "mesh.usda"}) {
        SCOPED_TRACE(name);
        const TemporaryFolder folder;
        const std::string file = folder.Path(name);
        // Runs once with an existing file and once without one.
        for (const bool isThere : {false, true}) {
            std::string before;
            Cancel(
                [&](JobControl* job) {
                    if (isThere)
                        std::ofstream(file) << "old";
                    else
                        std::filesystem::remove(file);
                    before = isThere ? "old" : "";
                    WriteMeshFile(file, source, job);
                },
                [&] {
                    const std::set<std::string> expected =
                        isThere ? std::set<std::string>{name} : std::set<std::string>{};
                    ASSERT_EQ(FilesIn(folder), expected);
                    if (isThere) {
                        ASSERT_EQ(TemporaryFolder::Content(file), before);
                    }
                },
                5,
                24);
        }
        WriteMeshFile(file, source);
        const std::string content = TemporaryFolder::Content(file);
        TestJob job;
        WriteMeshFile(file, source, &job);
        EXPECT_TRUE(TemporaryFolder::Content(file) == content);
    }
}

std::unique_ptr<Document> SceneDocument() {
    auto document = std::make_unique<Document>("sphere", ImportedMesh());
    document->SelectTool("Sculpt");
    document->Subdivide();
    document->AddLayer("layer");
    document->Loop().Begin(BrushOperation::ModifierNone, 5);
    document->Loop().WholeMesh(0.1f, false);
    document->Loop().End();
    document->Subdivide();
    document->BindLevel(1);
    return document;
}

TEST(CancelledFiles, SaveSceneLeavesTheOldFile) {
    const QuickDisk disk;
    const auto document = SceneDocument();
    const TemporaryFolder folder;
    const std::string file = folder.Path("work.trovik");
    document->Save(file);
    const std::string old = TemporaryFolder::Content(file);
    const std::string before = BytesOf(*document);
    // Saves another scene over the old one.
    document->BindLevel(2);
    const std::string changed = BytesOf(*document);
    Cancel(
        [&](JobControl* job) {
            document->Save(file, job);
            // Overwrites the output of the complete run.
            std::ofstream(file, std::ios::binary) << old;
        },
        [&] {
            ASSERT_TRUE(TemporaryFolder::Content(file) == old);
            ASSERT_EQ(FilesIn(folder), std::set<std::string>{"work.trovik"});
            ASSERT_TRUE(BytesOf(*document) == changed);
        },
        1000,
        25);
    document->Save(file);
    const std::string plain = TemporaryFolder::Content(file);
    TestJob job;
    document->Save(file, &job);
    EXPECT_TRUE(TemporaryFolder::Content(file) == plain);
    EXPECT_TRUE(before != changed);
}

TEST(CancelledFiles, OpenSceneCanBeRepeatedBitExactly) {
    const QuickDisk disk;
    const TemporaryFolder folder;
    const std::string file = folder.Path("work.trovik");
    SceneDocument()->Save(file);
    const std::string expected = BytesOf(*Document::OpenScene(file));
    const std::string content = TemporaryFolder::Content(file);
    Cancel(
        [&](JobControl* job) {
            const auto document = Document::OpenScene(file, job);
            EXPECT_TRUE(BytesOf(*document) == expected);
        },
        [&] { ASSERT_TRUE(TemporaryFolder::Content(file) == content); },
        1000,
        26);
    EXPECT_TRUE(BytesOf(*Document::OpenScene(file)) == expected);
}

TEST(CancelledFiles, BakeLeavesNoFile) {
    const QuickDisk disk;
    const auto document = SceneDocument();
    const std::string before = BytesOf(*document);
    const TemporaryFolder folder;
    BakeOptions options;
    options.width = options.height = 64;
    for (const MapKind kind : {MapKind::Displacement, MapKind::Normal}) {
        options.kind = kind;
        MapFileOptions file;
        file.path = folder.Path("map.exr");
        std::string content;
        Cancel(
            [&](JobControl* job) {
                BakeToFile(document->Geometry(), options, file, job);
                content = TemporaryFolder::Content(file.path);
                std::filesystem::remove(file.path);
            },
            [&] {
                ASSERT_TRUE(FilesIn(folder).empty());
                ASSERT_TRUE(BytesOf(*document) == before);
            },
            1000,
            27);
        BakeToFile(document->Geometry(), options, file);
        EXPECT_TRUE(TemporaryFolder::Content(file.path) == content);
    }
}

}  // namespace
}  // namespace trovik::test
