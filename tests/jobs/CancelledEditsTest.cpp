// SPDX-License-Identifier: Apache-2.0

/// \file
/// Tests edits that are cancelled at random progress reports: the document is unchanged, and the
/// next run has the same result as a run that was never cancelled, both bit for bit.
#include "framework/baking/MapDisplacement.h"
#include "framework/images/ImageFile.h"
#include "framework/mesh/MeshSource.h"
#include "framework/multires/LevelSource.h"
#include "tests/baking/BakedMeshes.h"
#include "tests/jobs/CancelledDocument.h"
#include "tests/journal/JournalWork.h"

namespace trovik::test {
namespace {

void WholeStroke(Document& document, float strength) {
    document.Loop().Begin(BrushOperation::ModifierNone, 5);
    document.Loop().WholeMesh(strength, false);
    document.Loop().End();
}

void Mask(Document& document, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<uint8_t> amounts(document.Geometry().Bound()->VertexCount());
    for (uint8_t& amount : amounts) amount = static_cast<uint8_t>(random() % 100);
    document.Freeze(amounts, FreezeMode::Replace);
}

void HideFaces(Document& document) {
    FaceChoice chosen(document.Geometry().Bound()->faceCount);
    for (std::size_t face = 0; face < chosen.size(); ++face) chosen[face] = face % 7 < 3;
    document.ChangeVisibility(VisibilityChange::Hide, chosen);
}

/// Returns four levels with detail, a mask, hidden faces and layers on two of them. Changes on
/// level 1 have not been propagated to the other levels yet.
std::unique_ptr<Document> AtLevel1() {
    auto document = std::make_unique<Document>("cube", WithIslands(Cube(), 3, 0.05f));
    document->SetTopologicalMirror();
    document->SelectTool("Sculpt");
    for (int i = 0; i < 3; ++i) document->Subdivide();
    Roughen(*document->Geometry().Bound(), 0.02f, 1);
    document->RefreshSurface();
    document->AddLayer("fine");
    WholeStroke(*document, 0.1f);
    Mask(*document, 2);
    document->BindLevel(1);
    document->AddLayer("coarse");
    WholeStroke(*document, 0.2f);
    Mask(*document, 3);
    HideFaces(*document);
    return document;
}

/// Returns the same document with changes on the highest level that have not been propagated to the
/// coarser levels yet.
std::unique_ptr<Document> AtLevel3() {
    auto document = AtLevel1();
    document->BindLevel(3);
    WholeStroke(*document, 0.3f);
    Mask(*document, 4);
    return document;
}

TEST(CancelledEdits, LevelSwitchUpChangesNothing) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        AtLevel1,
        [](Document& document, JobControl* job) { document.BindLevel(3, job); },
        1000,
        11);
}

TEST(CancelledEdits, LevelSwitchDownChangesNothing) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        AtLevel3, [](Document& document, JobControl* job) { document.BindLevel(0, job); }, 800, 12);
}

TEST(CancelledEdits, SubdivideChangesNothing) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        AtLevel1,
        [](Document& document, JobControl* job) {
            document.Subdivide(LevelGeometry::unlimitedBytes, job);
        },
        3000,
        13);
}

TEST(CancelledEdits, ApplyToBaseChangesNothing) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        AtLevel3, [](Document& document, JobControl* job) { document.ApplyToBase(job); }, 500, 14);
}

TEST(CancelledEdits, DeleteLowerLevelsChangesNothing) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        AtLevel3,
        [](Document& document, JobControl* job) { document.DeleteLevels(true, job); },
        1000,
        15);
}

TEST(CancelledEdits, DeleteHigherLevelsChangesNothing) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        AtLevel1,
        [](Document& document, JobControl* job) { document.DeleteLevels(false, job); },
        10,
        16);
}

/// Returns a document with two levels above level 0. Level 0 is a refinement that was imported with
/// shuffled numbering.
std::unique_ptr<Document> Refined() {
    LevelGeometry source(WithIslands(Cube(), 3, 0.05f));
    source.Subdivide();
    source.Subdivide();
    Roughen(*source.Bound(), 0.03f, 5);
    PolygonMesh polygons = GatherPolygons(LevelSource(source, {}));
    // Shuffles the order of faces and vertices.
    std::mt19937 random(6);
    std::vector<uint32_t> order(polygons.positions.size());
    for (uint32_t v = 0; v < order.size(); ++v) order[v] = v;
    std::shuffle(order.begin(), order.end(), random);
    const auto positions = polygons.positions;
    for (uint32_t v = 0; v < order.size(); ++v) polygons.positions[order[v]] = positions[v];
    for (uint32_t& v : polygons.faceVertices) v = order[v];
    polygons.normals.clear();
    auto document = std::make_unique<Document>("refined", std::move(polygons));
    document->SetTopologicalMirror();
    document->SelectTool("Sculpt");
    document->AddLayer("base");
    WholeStroke(*document, 0.1f);
    document->Subdivide();
    document->AddLayer("middle");
    WholeStroke(*document, 0.1f);
    document->Subdivide();
    Mask(*document, 7);
    document->BindLevel(1);
    WholeStroke(*document, 0.1f);
    HideFaces(*document);
    return document;
}

TEST(CancelledEdits, UnsubdivideChangesNothing) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        Refined, [](Document& document, JobControl* job) { document.Unsubdivide(job); }, 3000, 17);
}

TEST(CancelledEdits, UnsubdivideTwice) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        [] {
            auto document = Refined();
            // Renumbering discards the brush's patch table, which undo does not restore.
            document->Unsubdivide();
            document->Undo();
            return document;
        },
        [](Document& document, JobControl* job) { document.Unsubdivide(job, 2); },
        4000,
        18,
        2,
        Reports::Undone);
}

TEST(CancelledEdits, SubdivideTwice) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        AtLevel1,
        [](Document& document, JobControl* job) {
            document.Subdivide(LevelGeometry::unlimitedBytes, job, 2);
        },
        6000,
        19,
        2,
        Reports::Undone);
}

TEST(CancelledEdits, StepsThatCanBeRedoneSurviveACancelledSubdivision) {
    const QuickDisk disk;
    const auto document = AtLevel1();
    document->Undo();
    document->Undo();
    const std::size_t steps = document->Geometry().History().StepCount();
    TestJob whole;
    document->Subdivide(LevelGeometry::unlimitedBytes, &whole, 2);
    for (int i = 0; i < 2; ++i) document->Undo();
    const auto again = AtLevel1();
    again->Undo();
    again->Undo();
    TestJob job(whole.reports - 1);
    EXPECT_THROW(again->Subdivide(LevelGeometry::unlimitedBytes, &job, 2), Cancelled);
    EXPECT_EQ(again->Geometry().History().StepCount(), steps);
    EXPECT_TRUE(again->Redo());
    EXPECT_TRUE(again->Redo());
    EXPECT_TRUE(BytesOf(*again) == BytesOf(*AtLevel1()));
}

TEST(CancelledEdits, Reset) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        AtLevel3,
        [](Document& document, JobControl* job) {
            document.Reset(3, LevelGeometry::unlimitedBytes, job);
        },
        1500,
        20,
        0);
}

TEST(CancelledEdits, Displace) {
    const QuickDisk disk;
    const TemporaryFolder folder;
    FloatImage map;
    map.width = map.height = 2;
    map.channels = 1;
    map.pixels = {0.25f, 0.5f, 0.75f, 1.0f};
    DisplacementOptions options;
    options.path = folder.Path("map.exr");
    WriteFloatImageFile(options.path, map);
    ExpectCancelChangesNothing(
        AtLevel3,
        [&](Document& document, JobControl* job) { document.Displace(options, job); },
        1000,
        31);
}

TEST(CancelledEdits, TopologicalMirror) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        [] {
            auto document = AtLevel1();
            document->SetMirrors({});
            return document;
        },
        [](Document& document, JobControl* job) { document.SetTopologicalMirror(job); },
        30,
        32,
        0);
}

TEST(CancelledEdits, MakeSymmetric) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        [] {
            auto document = AtLevel3();
            document->AddLayer("rough");
            Roughen(*document->Geometry().Bound(), 0.02f, 8);
            document->RefreshSurface();
            return document;
        },
        [](Document& document, JobControl* job) {
            document.MakeSymmetric(0, SymmetrySide::Positive, job);
        },
        1500,
        33);
}

}  // namespace
}  // namespace trovik::test
