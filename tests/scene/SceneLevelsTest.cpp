// SPDX-License-Identifier: Apache-2.0

/// \file Tests scenes whose levels were edited at several resolutions, deleted or rebuilt.
#include "tests/meshes/MeshZoo.h"
#include "tests/scene/SampleScene.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

class SceneLevels : public ::testing::Test {
protected:
    std::unique_ptr<Document> Reopen(Document& document) {
        document.Save(folder.Path("scene.trovik"));
        return Document::OpenScene(folder.Path("scene.trovik"));
    }
    /// Saves and reopens a document, continues with both documents, and compares them.
    template <typename Continue>
    void ExpectSameBits(Document& document, Continue goOn) {
        auto read = Reopen(document);
        EXPECT_TRUE(StateOf(*read, folder) == StateOf(document, folder)) << "after reading";
        goOn(document);
        goOn(*read);
        EXPECT_TRUE(StateOf(*read, folder) == StateOf(document, folder)) << "after continuing";
    }
    TemporaryFolder folder;
};

void UpAndDown(Document& document) {
    for (const uint32_t level : {0u, 1u, 2u, 0u, 2u}) {
        document.BindLevel(level);
        StrokeOver(document, {level + 1, 5}, 0.9f);
    }
}

TEST_F(SceneLevels, PendingChangesInBothDirectionsAreCarriedToTheSameBits) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        auto document = RefinedDocument(folder, zoo.mesh);
        StrokeOver(*document, {0, 9}, 0.8f);
        document->BindLevel(1);
        StrokeOver(*document, {2}, 0.8f);
        ExpectSameBits(*document, UpAndDown);
    }
}

TEST_F(SceneLevels, DeletedAndRebuiltLevelsContinueToTheSameBitsAndResetRestoresTheImport) {
    for (const ZooMesh& zoo : {ZooMesh{"stepped box", SteppedBox()},
                               ZooMesh{"icosahedron", Icosahedron()},
                               ZooMesh{"n-gons", NgonMix()}}) {
        SCOPED_TRACE(zoo.name);
        auto document = RefinedDocument(folder, zoo.mesh);
        StrokeOver(*document, {0, 9}, 0.8f);
        document->AddLayer("top");
        StrokeOver(*document, {3}, 0.8f);
        document->BindLevel(1);
        ASSERT_TRUE(document->DeleteLevels(true));
        document->Subdivide();
        ExpectSameBits(*document, UpAndDown);
        ASSERT_EQ(document->Geometry().LevelCount(), 3u);
        document->Unsubdivide();
        ExpectSameBits(*document, UpAndDown);

        auto read = Reopen(*document);
        document->Reset();
        read->Reset();
        EXPECT_TRUE(StateOf(*read, folder) == StateOf(*document, folder)) << "reset";
        EXPECT_EQ(read->Geometry().Level(0)->VertexCount(),
                  LevelGeometry(zoo.mesh).Level(0)->VertexCount());
    }
}

TEST_F(SceneLevels, LayersOfDeletedLevelsAreNotSavedAndAreRestoredByUndo) {
    auto document = DocumentOn(folder, Cube());
    document->Subdivide();
    document->SelectTool("Sculpt");
    document->AddLayer("fine");
    StrokeOver(*document, {3}, 0.8f);
    document->BindLevel(0);
    const std::string before = StateOf(*document, folder);
    ASSERT_TRUE(document->DeleteLevels(false));
    auto read = Reopen(*document);
    EXPECT_EQ(read->Geometry().LevelCount(), 1u);
    EXPECT_FALSE(read->DeleteLevels(false));
    ASSERT_TRUE(document->Undo());
    EXPECT_TRUE(StateOf(*document, folder) == before);
    ASSERT_TRUE(document->Undo());
    EXPECT_EQ(document->ActiveLayer()->Name(), "fine");
    // When the undo step is discarded, the level and its layer are freed.
    document->BindLevel(0);
    ASSERT_TRUE(document->DeleteLevels(false));
    document->Geometry().History().Clear();
    document->Subdivide();
    EXPECT_FALSE(document->SelectLayer("fine"));
    EXPECT_EQ(Reopen(*document)->Geometry().LevelCount(), 2u);
}

TEST_F(SceneLevels, StrokesAfterDeletingAndRebuildingEqualThoseOfANewMesh) {
    auto document = DocumentOn(folder, Icosahedron());
    document->Subdivide();
    document->SelectTool("Sculpt");
    StrokeOver(*document, {0}, 0.5f);
    ASSERT_TRUE(document->DeleteLevels(true));
    StrokeOver(*document, {4}, 0.5f);
    // Level 0 has triangles again, and the patch table on level 1 was built for a different
    // numbering.
    document->Unsubdivide();
    EXPECT_EQ(document->Geometry().Level(0)->CornersPerFace(), 3u);
    StrokeOver(*document, {7}, 0.5f);
    ASSERT_TRUE(document->Undo());
    ASSERT_TRUE(document->Undo());
    ASSERT_TRUE(document->Redo());
    StrokeOver(*document, {7}, 0.5f);
    const std::string once = StateOf(*document, folder);
    ASSERT_TRUE(document->Undo());
    ASSERT_TRUE(document->Redo());
    EXPECT_TRUE(StateOf(*document, folder) == once);
}

}  // namespace
}  // namespace trovik::test
