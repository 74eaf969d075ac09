// SPDX-License-Identifier: Apache-2.0

/// \file
/// Scenes whose levels were edited at several resolutions, deleted, or rebuilt.
#include "tests/meshes/MeshZoo.h"
#include "tests/scene/SampleScene.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

class SceneLevels : public ::testing::Test {
protected:
    std::unique_ptr<SculptSession> Reopen(SculptSession& session) {
        session.Save(folder.Path("scene.trovik"));
        return SculptSession::OpenScene(folder.Path("scene.trovik"));
    }
    /// Saves now, goes on with both, and compares.
    template <typename GoOn>
    void ExpectSameBits(SculptSession& session, GoOn goOn) {
        auto read = Reopen(session);
        EXPECT_TRUE(StateOf(*read, folder) == StateOf(session, folder)) << "as read";
        goOn(session);
        goOn(*read);
        EXPECT_TRUE(StateOf(*read, folder) == StateOf(session, folder)) << "went on";
    }
    TemporaryFolder folder;
};

void UpAndDown(SculptSession& session) {
    for (const uint32_t level : {0u, 1u, 2u, 0u, 2u}) {
        session.BindLevel(level);
        StrokeOver(session, {level + 1, 5}, 0.9f);
    }
}

TEST_F(SceneLevels, WhatWaitsInBothDirectionsIsCarriedToTheSameBits) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        auto session = RefinedSession(folder, zoo.mesh);
        StrokeOver(*session, {0, 9}, 0.8f);
        session->BindLevel(1);
        StrokeOver(*session, {2}, 0.8f);
        ExpectSameBits(*session, UpAndDown);
    }
}

TEST_F(SceneLevels, DeletedAndRebuiltLevelsGoOnToTheSameBitsAndResetGoesBackToTheImport) {
    for (const ZooMesh& zoo : {ZooMesh{"stepped box", SteppedBox()},
                               ZooMesh{"icosahedron", Icosahedron()},
                               ZooMesh{"n-gons", NgonMix()}}) {
        SCOPED_TRACE(zoo.name);
        auto session = RefinedSession(folder, zoo.mesh);
        StrokeOver(*session, {0, 9}, 0.8f);
        session->AddLayer("top");
        StrokeOver(*session, {3}, 0.8f);
        session->BindLevel(1);
        ASSERT_TRUE(session->DeleteLevels(true));
        session->Subdivide();
        ExpectSameBits(*session, UpAndDown);
        ASSERT_EQ(session->Geometry().LevelCount(), 3u);
        session->Unsubdivide();
        ExpectSameBits(*session, UpAndDown);

        auto read = Reopen(*session);
        session->Reset();
        read->Reset();
        EXPECT_TRUE(StateOf(*read, folder) == StateOf(*session, folder)) << "reset";
        EXPECT_EQ(read->Geometry().Level(0)->VertexCount(),
                  LevelGeometry(zoo.mesh).Level(0)->VertexCount());
    }
}

TEST_F(SceneLevels, LayersOfDeletedLevelsAreNotSavedAndComeBackByUndo) {
    auto session = SessionOn(folder, Cube());
    session->Subdivide();
    session->SelectTool("Sculpt");
    session->AddLayer("fine");
    StrokeOver(*session, {3}, 0.8f);
    session->BindLevel(0);
    const std::string before = StateOf(*session, folder);
    ASSERT_TRUE(session->DeleteLevels(false));
    auto read = Reopen(*session);
    EXPECT_EQ(read->Geometry().LevelCount(), 1u);
    EXPECT_FALSE(read->DeleteLevels(false));
    ASSERT_TRUE(session->Undo());
    EXPECT_TRUE(StateOf(*session, folder) == before);
    ASSERT_TRUE(session->Undo());
    EXPECT_EQ(session->ActiveLayer()->Name(), "fine");
    // When the step is dropped, the level goes with its layer.
    session->BindLevel(0);
    ASSERT_TRUE(session->DeleteLevels(false));
    session->Geometry().History().Clear();
    session->Subdivide();
    EXPECT_FALSE(session->SelectLayer("fine"));
    EXPECT_EQ(Reopen(*session)->Geometry().LevelCount(), 2u);
}

TEST_F(SceneLevels, StrokesAfterDeletingAndRebuildingAreThoseOfAFreshMesh) {
    auto session = SessionOn(folder, Icosahedron());
    session->Subdivide();
    session->SelectTool("Sculpt");
    StrokeOver(*session, {0}, 0.5f);
    ASSERT_TRUE(session->DeleteLevels(true));
    StrokeOver(*session, {4}, 0.5f);
    // A triangle base again: the patches' table on level 1 was made for other numbers.
    session->Unsubdivide();
    EXPECT_EQ(session->Geometry().Level(0)->CornersPerFace(), 3u);
    StrokeOver(*session, {7}, 0.5f);
    ASSERT_TRUE(session->Undo());
    ASSERT_TRUE(session->Undo());
    ASSERT_TRUE(session->Redo());
    StrokeOver(*session, {7}, 0.5f);
    const std::string once = StateOf(*session, folder);
    ASSERT_TRUE(session->Undo());
    ASSERT_TRUE(session->Redo());
    EXPECT_TRUE(StateOf(*session, folder) == once);
}

}  // namespace
}  // namespace trovik::test
