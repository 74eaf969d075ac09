// SPDX-License-Identifier: Apache-2.0

/// \file
/// What a session does to its pick trees when the surface changes otherwise than by dabs.
#include "framework/script/SculptSession.h"
#include "framework/strokes/DabAtHit.h"
#include "tests/edits/ReportedCopy.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

class SessionTrees : public testing::Test {
protected:
    SessionTrees() : session("grid", GridMesh(8, 8)) {
        for (int i = 0; i < 4; ++i) session.Subdivide();
        session.SelectTool("Wax");
    }

    void Stroke(const Vector& at, float radius) {
        StrokeDab dab = DabAt(session.Geometry(), session.Tree().Nearest(at).value());
        dab.size = radius;
        dab.strength = 0.1f;
        session.Loop().Begin(BrushOperation::ModifierNone);
        session.Loop().Dab(dab);
        session.Loop().End();
    }
    /// Boxes that the work has recomputed in the tree of the bound level.
    template <typename Work>
    uint64_t Refitted(Work work) {
        const uint64_t before = session.Tree().BoxesRefitted();
        work();
        return session.Tree().BoxesRefitted() - before;
    }

    SculptSession session;
    /// Leaves of 16 faces on level 4.
    static constexpr uint64_t allBoxes = 8 * 8 * 16;
};

TEST_F(SessionTrees, UndoAndRedoRefitWhatTheStrokeChanged) {
    Stroke({1.0f, 1.0f, 0.0f}, 0.3f);
    const PatchTree* tree = &session.Tree();
    const StrokeLoop* loop = &session.Loop();
    for (int i = 0; i < 2; ++i) {
        const uint64_t undone = Refitted([&] { ASSERT_TRUE(session.Undo()); });
        EXPECT_GT(undone, 0u);
        EXPECT_LT(undone, allBoxes / 8);
        EXPECT_EQ(Refitted([&] { ASSERT_TRUE(session.Redo()); }), undone);
    }
    EXPECT_EQ(&session.Tree(), tree);
    EXPECT_EQ(&session.Loop(), loop);
}

TEST_F(SessionTrees, FreezingRefitsNothing) {
    std::vector<uint8_t> amounts(session.Geometry().Bound()->VertexCount(), 100);
    EXPECT_EQ(Refitted([&] {
                  session.Freeze(amounts, FreezeMode::Replace);
                  session.SelectTool("Freeze");
                  session.Loop().Begin(BrushOperation::ModifierInvert);
                  session.Loop().WholeMesh(50.0f, false);
                  session.Loop().End();
                  session.Undo();
                  session.Undo();
                  session.Redo();
              }),
              0u);
}

TEST_F(SessionTrees, GoingToANeighbouringLevelAndBackKeepsBothTrees) {
    const PatchTree* high = &session.Tree();
    session.BindLevel(3);
    const PatchTree* low = &session.Tree();
    EXPECT_NE(low, high);
    EXPECT_EQ(low->Level(), session.Geometry().Level(3));
    const uint64_t before = high->BoxesRefitted();
    Stroke({1.0f, 1.0f, 0.0f}, 0.5f);
    session.BindLevel(4);
    EXPECT_EQ(&session.Tree(), high);
    EXPECT_GT(high->BoxesRefitted(), before) << "the carried change";
    EXPECT_LT(high->BoxesRefitted() - before, allBoxes / 4);
    session.BindLevel(3);
    EXPECT_EQ(&session.Tree(), low);
    EXPECT_EQ(session.Tree().Bounds().maxZ, PatchTree(session.Geometry().Bound()).Bounds().maxZ);
}

TEST_F(SessionTrees, AreThoseOfTheLevelsThatThereAre) {
    session.BindLevel(2);
    session.DeleteLevels(true);
    EXPECT_EQ(session.Tree().Level(), session.Geometry().Level(0));
    EXPECT_TRUE(session.Tree().IsCurrent());
    session.Undo();
    EXPECT_EQ(session.Tree().Level(), session.Geometry().Level(2));
    EXPECT_TRUE(session.Tree().IsCurrent());
    const auto hit = session.Tree().Pick({{1.1f, 1.2f, 5.0f}, {0.0f, 0.0f, -1.0f}});
    ASSERT_TRUE(hit.has_value());
    EXPECT_EQ(hit->face,
              PatchTree(session.Geometry().Bound())
                  .Pick({{1.1f, 1.2f, 5.0f}, {0.0f, 0.0f, -1.0f}})
                  ->face);
}

TEST_F(SessionTrees, EveryObserverReceivesTheReportsUntilItIsRemoved) {
    const auto now = [this]() -> LevelGeometry& { return session.Geometry(); };
    ReportedCopy first(now);
    {
        ReportedCopy second(now);
        Stroke({1.0f, 1.0f, 0.0f}, 0.3f);
        EXPECT_GT(first.reports, 0u);
        EXPECT_EQ(second.reports, first.reports);
        EXPECT_EQ(first.reportsOfAll, 0u);
    }
    const unsigned before = first.reports;
    session.Undo();
    EXPECT_EQ(first.reports, before + 1);
    EXPECT_EQ(first.Difference(), "");
    session.Reset();
    EXPECT_EQ(first.reportsOfAll, 1u);
    EXPECT_EQ(first.Difference(), "");
}

}  // namespace
}  // namespace trovik::test
