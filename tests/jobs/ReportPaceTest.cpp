// SPDX-License-Identifier: Apache-2.0

/// \file
/// Tests that every phase of a long operation reads the clock after a bounded number of elements,
/// so that cancellation is not delayed, however large the mesh is. The test counts elements;
/// bench/jobs measures the time.
#include "framework/baking/MapDisplacement.h"
#include "framework/baking/MapFile.h"
#include "framework/files/MeshFiles.h"
#include "framework/images/ImageFile.h"
#include "framework/multires/LevelSource.h"
#include "framework/render/RenderImage.h"
#include "tests/baking/BakedMeshes.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/jobs/CancelledDocument.h"
#include "tests/journal/JournalWork.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace trovik::test {
namespace {

/// Counts reports by phase. Operations report to this job each time they would normally read the
/// clock.
class PaceJob final : public JobControl {
public:
    PaceJob() : JobControl({JobPace().elements, {}}) {}

    bool Report(uint64_t done, uint64_t, const char* phase) override {
        if (phase != current || done < last) {
            current = phase;
            reports = 0;
        }
        last = done;
        // The report at the start of a phase counts as the report for its first elements.
        ++reports;
        uint64_t& most = elements[current];
        most = std::max(most, done / reports);
        return true;
    }

    /// Expects that each phase has reported often enough, and that these phases occurred.
    /// \param phases  phases that the operation must report; it may report others.
    void Expect(const std::set<std::string>& phases) const {
        // The largest batch of elements that is processed without a clock check, plus the interval
        // between checks.
        const uint64_t maxElements = 4096 + JobPace().elements;
        const uint64_t mostBytes = uint64_t{2} << 20;
        for (const auto& [phase, most] : elements) {
            const bool ofBytes = phase.ends_with("the file") || phase.ends_with("the scene");
            EXPECT_LE(most, ofBytes ? mostBytes : maxElements) << phase;
        }
        for (const std::string& phase : phases) EXPECT_TRUE(elements.contains(phase)) << phase;
    }

private:
    std::string current;
    uint64_t last = 0;
    uint64_t reports = 0;
    std::map<std::string, uint64_t> elements;
};

void Stroke(Document& document) {
    document.Loop().Begin(BrushOperation::ModifierNone, 5);
    document.Loop().WholeMesh(0.1f, false);
    document.Loop().End();
}

/// Returns a document with 98,304 quads on the highest level.
std::unique_ptr<Document> Large() {
    auto document = std::make_unique<Document>("cube", WithIslands(Cube(), 3, 0.05f));
    document->SelectTool("Sculpt");
    document->Subdivide(LevelGeometry::unlimitedBytes, nullptr, 7);
    Stroke(*document);
    return document;
}

void Expect(Document& document,
            const std::function<void(Document&, JobControl*)>& operation,
            const std::set<std::string>& phases) {
    PaceJob job;
    operation(document, &job);
    job.Expect(phases);
}

TEST(ReportPace, Levels) {
    const auto document = Large();
    Expect(*document,
           [](Document& d, JobControl* job) { d.BindLevel(0, job); },
           {"Propagating changes down", "Updating normals"});
    Stroke(*document);
    Expect(*document,
           [](Document& d, JobControl* job) { d.BindLevel(7, job); },
           {"Propagating details up"});
    Stroke(*document);
    Expect(
        *document, [](Document& d, JobControl* job) { d.ApplyToBase(job); }, {"Moving vertices"});
    Expect(*document,
           [](Document& d, JobControl* job) { d.DeleteLevels(true, job); },
           {"Finding neighbours"});
    Expect(*document,
           [](Document& d, JobControl* job) { d.Unsubdivide(job); },
           {"Finding coarse faces", "Renumbering vertices"});
    Expect(*document,
           [](Document& d, JobControl* job) { d.Reset(7, LevelGeometry::unlimitedBytes, job); },
           {"Refining faces", "Computing normals", "Building the pick tree"});
}

TEST(ReportPace, Edits) {
    const TemporaryFolder folder;
    FloatImage map;
    map.width = map.height = 2;
    map.channels = 1;
    map.pixels = {0.25f, 0.5f, 0.75f, 1.0f};
    DisplacementOptions options;
    options.path = folder.Path("map.exr");
    WriteFloatImageFile(options.path, map);
    const auto document = Large();
    Expect(*document,
           [&](Document& d, JobControl* job) { d.Displace(options, job); },
           {"Reading the map"});
    Expect(*document,
           [](Document& d, JobControl* job) { d.MakeSymmetric(0, SymmetrySide::Positive, job); },
           {"Pairing vertices"});
    document->DeleteLevels(true);
    Expect(*document,
           [](Document& d, JobControl* job) { d.SetTopologicalMirror(job); },
           {"Finding the mirror"});
}

TEST(ReportPace, Files) {
    const QuickDisk disk;
    const TemporaryFolder folder;
    const auto document = Large();
    const LevelSource source(document->Geometry(), {});
    for (const char* name :
         {"mesh.obj", "mesh.ply", "mesh.stl", "mesh.gltf", "mesh.glb", "mesh.usda"}) {
        SCOPED_TRACE(name);
        PaceJob exported;
        WriteMeshFile(folder.Path(name), source, &exported);
        exported.Expect({});
        if (std::string(name) == "mesh.usda") continue;
        PaceJob imported;
        const Document read(folder.Path(name), MeshSpace(), &imported);
        imported.Expect({"Reading the file", "Checking the mesh", "Building the pick tree"});
    }
    PaceJob saved;
    document->Save(folder.Path("work.trovik"), &saved);
    saved.Expect({"Writing the scene"});
    PaceJob opened;
    Document::OpenScene(folder.Path("work.trovik"), &opened);
    opened.Expect({"Reading the scene"});
}

TEST(ReportPace, MapsAndRenders) {
    const TemporaryFolder folder;
    const auto document = Large();
    BakeOptions options;
    options.width = options.height = 512;
    MapFileOptions file;
    file.path = folder.Path("map.exr");
    PaceJob baked;
    BakeToFile(document->Geometry(), options, file, &baked);
    baked.Expect(
        {"Computing values", "Rasterising the map", "Averaging texels", "Encoding the image"});

    RenderOptions picture;
    picture.width = picture.height = 64;
    const std::vector<RenderMesh> meshes{document->ShownMesh()};
    PaceJob rendered;
    RenderOnce(
        meshes, FrameMeshes(meshes, Vector(0.0f, 0.0f, -1.0f), 35.0f, 1.0f), picture, &rendered);
    rendered.Expect({"Building the ray tree", "Rendering"});
}

}  // namespace
}  // namespace trovik::test
