// SPDX-License-Identifier: Apache-2.0

/// \file
/// Operations on levels, cancelled at reports that are drawn: every bit of the document is as it
/// was, and the operation gives the same bits when it is run again.
#include "framework/mesh/MeshSource.h"
#include "framework/multires/LevelSource.h"
#include "tests/baking/BakedMeshes.h"
#include "tests/jobs/CancelledSession.h"
#include "tests/journal/JournalWork.h"

namespace trovik::test {
namespace {

void WholeStroke(SculptSession& session, float strength) {
    session.Loop().Begin(BrushOperation::ModifierNone, 5);
    session.Loop().WholeMesh(strength, false);
    session.Loop().End();
}

void Mask(SculptSession& session, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<uint8_t> amounts(session.Geometry().Bound()->VertexCount());
    for (uint8_t& amount : amounts) amount = static_cast<uint8_t>(random() % 100);
    session.Freeze(amounts, FreezeMode::Replace);
}

/// Four levels with detail, mask, and layers on two of them, that wait to be carried from level 1.
std::unique_ptr<SculptSession> AtLevel1() {
    auto session = std::make_unique<SculptSession>("cube", WithIslands(Cube(), 3, 0.05f));
    session->SetTopologicalMirror();
    session->SelectTool("Sculpt");
    for (int i = 0; i < 3; ++i) session->Subdivide();
    Roughen(*session->Geometry().Bound(), 0.02f, 1);
    session->RefreshSurface();
    session->AddLayer("fine");
    WholeStroke(*session, 0.1f);
    Mask(*session, 2);
    session->BindLevel(1);
    session->AddLayer("coarse");
    WholeStroke(*session, 0.2f);
    Mask(*session, 3);
    return session;
}

/// The same, with changes on the highest level that wait to be carried down.
std::unique_ptr<SculptSession> AtLevel3() {
    auto session = AtLevel1();
    session->BindLevel(3);
    WholeStroke(*session, 0.3f);
    Mask(*session, 4);
    return session;
}

TEST(CancelledEdits, LevelSwitchUp) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        AtLevel1,
        [](SculptSession& session, JobControl* job) { session.BindLevel(3, job); },
        1000,
        11);
}

TEST(CancelledEdits, LevelSwitchDown) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        AtLevel3,
        [](SculptSession& session, JobControl* job) { session.BindLevel(0, job); },
        1000,
        12);
}

TEST(CancelledEdits, Subdivide) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        AtLevel1,
        [](SculptSession& session, JobControl* job) {
            session.Subdivide(LevelGeometry::unlimitedBytes, job);
        },
        3000,
        13);
}

TEST(CancelledEdits, ApplyToBase) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        AtLevel3,
        [](SculptSession& session, JobControl* job) { session.ApplyToBase(job); },
        500,
        14);
}

TEST(CancelledEdits, DeleteLowerLevels) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        AtLevel3,
        [](SculptSession& session, JobControl* job) { session.DeleteLevels(true, job); },
        1000,
        15);
}

TEST(CancelledEdits, DeleteHigherLevels) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        AtLevel1,
        [](SculptSession& session, JobControl* job) { session.DeleteLevels(false, job); },
        10,
        16);
}

/// A session whose level 0 is a refinement, with its numbers shuffled by an import, and two levels
/// above it.
std::unique_ptr<SculptSession> Refined() {
    LevelGeometry source(WithIslands(Cube(), 3, 0.05f));
    source.Subdivide();
    source.Subdivide();
    Roughen(*source.Bound(), 0.03f, 5);
    PolygonMesh polygons = GatherPolygons(LevelSource(source, {}));
    // Another order of faces and vertices.
    std::mt19937 random(6);
    std::vector<uint32_t> order(polygons.positions.size());
    for (uint32_t v = 0; v < order.size(); ++v) order[v] = v;
    std::shuffle(order.begin(), order.end(), random);
    const auto positions = polygons.positions;
    for (uint32_t v = 0; v < order.size(); ++v) polygons.positions[order[v]] = positions[v];
    for (uint32_t& v : polygons.faceVertices) v = order[v];
    polygons.normals.clear();
    auto session = std::make_unique<SculptSession>("refined", std::move(polygons));
    session->SetTopologicalMirror();
    session->SelectTool("Sculpt");
    session->AddLayer("base");
    WholeStroke(*session, 0.1f);
    session->Subdivide();
    session->AddLayer("middle");
    WholeStroke(*session, 0.1f);
    session->Subdivide();
    Mask(*session, 7);
    session->BindLevel(1);
    WholeStroke(*session, 0.1f);
    return session;
}

TEST(CancelledEdits, Unsubdivide) {
    const QuickDisk disk;
    ExpectCancelChangesNothing(
        Refined,
        [](SculptSession& session, JobControl* job) { session.Unsubdivide(job); },
        3000,
        17);
}

}  // namespace
}  // namespace trovik::test
