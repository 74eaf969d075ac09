// SPDX-License-Identifier: Apache-2.0

/// \file Tests how a document's pick trees are updated when the surface is changed by anything
/// other than dabs.
#include "framework/document/Document.h"
#include "framework/strokes/DabAtHit.h"
#include "tests/edits/ReportedCopy.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

namespace trovik::test {
namespace {

class DocumentTrees : public testing::Test {
protected:
    DocumentTrees() : document("grid", GridMesh(8, 8)) {
        for (int i = 0; i < 4; ++i) document.Subdivide();
        document.SelectTool("Wax");
    }

    void Stroke(const Vector& at, float radius) {
        StrokeDab dab = DabAt(document.Geometry(), document.Tree().Nearest(at).value());
        dab.size = radius;
        dab.strength = 0.1f;
        document.Loop().Begin(BrushOperation::ModifierNone);
        document.Loop().Dab(dab);
        document.Loop().End();
    }
    /// Returns the number of boxes that `work` recomputes in the pick tree of the bound level.
    template <typename Work>
    uint64_t Refitted(Work work) {
        const uint64_t before = document.Tree().BoxesRefitted();
        work();
        return document.Tree().BoxesRefitted() - before;
    }

    Document document;
    /// The number of leaves, with 16 faces each, in the pick tree of level 4.
    static constexpr uint64_t allBoxes = 8 * 8 * 16;
};

TEST_F(DocumentTrees, UndoAndRedoRefitOnlyTheChangeOfTheStroke) {
    Stroke({1.0f, 1.0f, 0.0f}, 0.3f);
    const PatchTree* tree = &document.Tree();
    const StrokeLoop* loop = &document.Loop();
    for (int i = 0; i < 2; ++i) {
        const uint64_t undone = Refitted([&] { ASSERT_TRUE(document.Undo()); });
        EXPECT_GT(undone, 0u);
        EXPECT_LT(undone, allBoxes / 8);
        EXPECT_EQ(Refitted([&] { ASSERT_TRUE(document.Redo()); }), undone);
    }
    EXPECT_EQ(&document.Tree(), tree);
    EXPECT_EQ(&document.Loop(), loop);
}

TEST_F(DocumentTrees, FreezingRefitsNothing) {
    std::vector<uint8_t> amounts(document.Geometry().Bound()->VertexCount(), 100);
    EXPECT_EQ(Refitted([&] {
                  document.Freeze(amounts, FreezeMode::Replace);
                  document.SelectTool("Freeze");
                  document.Loop().Begin(BrushOperation::ModifierInvert);
                  document.Loop().WholeMesh(50.0f, false);
                  document.Loop().End();
                  document.Undo();
                  document.Undo();
                  document.Redo();
              }),
              0u);
}

/// Records the patches of one kind of change.
class PatchLog final : public GeometryObserver {
public:
    explicit PatchLog(uint8_t ofWhat) : what(ofWhat) {}
    void SurfaceChanged(const SurfaceChange& change) override {
        ASSERT_FALSE(change.all);
        if ((change.what & what) == 0) return;
        patchLevel = change.patchLevel;
        patches.insert(change.patches.begin(), change.patches.end());
    }

    uint32_t patchLevel = 0;
    std::set<uint32_t> patches;

private:
    uint8_t what;
};

TEST_F(DocumentTrees, DabDoesNotRefitPatchesWithOnlyChangedNormals) {
    PatchLog moved(SurfaceChange::Positions);
    PatchLog shaded(SurfaceChange::Normals);
    LevelGeometry& geometry = document.Geometry();
    geometry.AddObserver(moved);
    geometry.AddObserver(shaded);
    const uint64_t boxes = Refitted([&] { Stroke({1.1f, 1.1f, 0.0f}, 0.1f); });
    geometry.RemoveObserver(moved);
    geometry.RemoveObserver(shaded);
    ASSERT_FALSE(moved.patches.empty());
    EXPECT_LT(moved.patches.size(), shaded.patches.size());
    EXPECT_TRUE(std::includes(
        shaded.patches.begin(), shaded.patches.end(), moved.patches.begin(), moved.patches.end()));
    const auto refittedBy = [&](const PatchLog& log) {
        const std::vector<uint32_t> patches(log.patches.begin(), log.patches.end());
        return Refitted(
            [&] { geometry.ReportPatches(4, SurfaceChange::Positions, log.patchLevel, patches); });
    };
    EXPECT_EQ(boxes, refittedBy(moved));
    EXPECT_LT(boxes, refittedBy(shaded));
}

TEST_F(DocumentTrees, SwitchingToANeighbouringLevelAndBackKeepsBothTrees) {
    const PatchTree* high = &document.Tree();
    document.BindLevel(3);
    const PatchTree* low = &document.Tree();
    EXPECT_NE(low, high);
    EXPECT_EQ(low->Level(), document.Geometry().Level(3));
    const uint64_t before = high->BoxesRefitted();
    Stroke({1.0f, 1.0f, 0.0f}, 0.5f);
    document.BindLevel(4);
    EXPECT_EQ(&document.Tree(), high);
    EXPECT_GT(high->BoxesRefitted(), before) << "the propagated change";
    EXPECT_LT(high->BoxesRefitted() - before, allBoxes / 4);
    document.BindLevel(3);
    EXPECT_EQ(&document.Tree(), low);
    EXPECT_EQ(document.Tree().Bounds().maxZ, PatchTree(document.Geometry().Bound()).Bounds().maxZ);
}

TEST_F(DocumentTrees, ExistForTheExistingLevels) {
    document.BindLevel(2);
    document.DeleteLevels(true);
    EXPECT_EQ(document.Tree().Level(), document.Geometry().Level(0));
    EXPECT_TRUE(document.Tree().IsCurrent());
    document.Undo();
    EXPECT_EQ(document.Tree().Level(), document.Geometry().Level(2));
    EXPECT_TRUE(document.Tree().IsCurrent());
    const auto hit = document.Tree().Pick({{1.1f, 1.2f, 5.0f}, {0.0f, 0.0f, -1.0f}});
    ASSERT_TRUE(hit.has_value());
    EXPECT_EQ(hit->face,
              PatchTree(document.Geometry().Bound())
                  .Pick({{1.1f, 1.2f, 5.0f}, {0.0f, 0.0f, -1.0f}})
                  ->face);
}

TEST_F(DocumentTrees, EveryObserverReceivesTheReportsUntilItIsRemoved) {
    const auto now = [this]() -> LevelGeometry& { return document.Geometry(); };
    ReportedCopy first(now);
    {
        ReportedCopy second(now);
        Stroke({1.0f, 1.0f, 0.0f}, 0.3f);
        EXPECT_GT(first.reports, 0u);
        EXPECT_EQ(second.reports, first.reports);
        EXPECT_EQ(first.reportsOfAll, 0u);
    }
    const unsigned before = first.reports;
    document.Undo();
    EXPECT_EQ(first.reports, before + 1);
    EXPECT_EQ(first.Difference(), "");
    document.Reset();
    EXPECT_EQ(first.reportsOfAll, 1u);
    EXPECT_EQ(first.Difference(), "");
}

/// Compares the pick tree's box with the vertices whenever a change of the tree's level is
/// reported.
class BoxChecker final : public DocumentObserver {
public:
    explicit BoxChecker(Document& observed) : document(observed) {}

    void SurfaceChanged(const SurfaceChange& change) override {
        const LevelMesh* level = document.Geometry().Level(change.level);
        if ((change.what & SurfaceChange::Positions) == 0 || document.Tree().Level() != level)
            return;
        ++checks;
        float top = -1e30f;
        for (uint32_t v = 0; v < level->VertexCount(); ++v)
            top = std::max(top, level->Position(v).z);
        EXPECT_EQ(document.Tree().Bounds().maxZ, top) << "after " << checks << " checks";
    }

    int checks = 0;

private:
    Document& document;
};

TEST_F(DocumentTrees, ATreeThatIsBuiltLaterFollowsBeforeTheObserversOfTheDocument) {
    BoxChecker checker(document);
    document.AddObserver(checker);
    // Binding level 2 builds its pick tree, after the document has begun to observe the geometry.
    document.BindLevel(2);
    for (int i = 0; i < 3; ++i) Stroke({1.0f + static_cast<float>(i), 4.0f, 0.0f}, 1.5f);
    const int ofStrokes = checker.checks;
    EXPECT_GE(ofStrokes, 3);
    EXPECT_GT(document.Tree().Bounds().maxZ, 0.0f);
    for (int i = 0; i < 3; ++i) document.Undo();
    EXPECT_GE(checker.checks, ofStrokes + 3);
    EXPECT_EQ(document.Tree().Bounds().maxZ, 0.0f);
    document.RemoveObserver(checker);
}

}  // namespace
}  // namespace trovik::test
