// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/Steps.h"
#include "tests/edits/EditStroke.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

TEST(LevelStep, UndoAndRedoOverLevelsRestoreEveryBitOfEachState) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry geometry(zoo.mesh);
        UndoHistory& history = geometry.History();
        std::mt19937 random(5);
        std::vector<std::pair<uint32_t, std::vector<VertexState>>> states;
        const auto note = [&] {
            states.emplace_back(geometry.BoundIndex(), StateOf(*geometry.Bound()));
        };
        note();
        history.Push(SubdivideAsStep(geometry));
        note();
        history.Push(SubdivideAsStep(geometry));
        note();
        for (const uint32_t level : {2u, 0u, 2u, 1u, 0u, 1u, 2u, 0u}) {
            if (level != geometry.BoundIndex()) {
                history.Push(BindLevelAsStep(geometry, level));
                note();
            }
            RandomStroke(*geometry.Bound(), random, 6);
            note();
        }
        ASSERT_EQ(history.StepCount() + 1, states.size());

        // Undoes one more step in each round, and then redoes all undone steps.
        for (std::size_t depth = 1; depth < states.size(); ++depth) {
            for (std::size_t i = 1; i <= depth; ++i) {
                ASSERT_TRUE(history.Undo(geometry));
                const auto& expected = states[states.size() - 1 - i];
                ASSERT_EQ(geometry.BoundIndex(), expected.first) << depth << ' ' << i;
                ASSERT_EQ(StateOf(*geometry.Bound()), expected.second) << depth << ' ' << i;
            }
            for (std::size_t i = depth; i-- > 0;) {
                ASSERT_TRUE(history.Redo(geometry));
                const auto& expected = states[states.size() - 1 - i];
                ASSERT_EQ(geometry.BoundIndex(), expected.first) << depth << ' ' << i;
                ASSERT_EQ(StateOf(*geometry.Bound()), expected.second) << depth << ' ' << i;
            }
        }
    }
}

TEST(LevelStep, UndoOfACoarseStrokeIsCarriedToTheFineLevel) {
    LevelGeometry geometry(Cube());
    geometry.Subdivide();
    LevelMesh& fine = *geometry.Bound();
    const auto before = StateOf(fine);
    geometry.BindLevel(0);
    std::mt19937 random(6);
    RandomStroke(*geometry.Bound(), random, 4);
    geometry.History().Push(BindLevelAsStep(geometry, 1));
    ASSERT_NE(StateOf(fine), before);
    std::vector<Vector> original;
    for (const VertexState& state : before) {
        Vertex v;
        std::memcpy(&v, state.bytes, sizeof v);
        original.emplace_back(v.x, v.y, v.z);
    }
    geometry.History().Undo(geometry);
    geometry.History().Undo(geometry);
    geometry.BindLevel(1);
    for (uint32_t v = 0; v < fine.VertexCount(); ++v)
        EXPECT_LT((fine.Position(v) - original[v]).Length(), 1e-6f) << v;
}

TEST(LevelStep, LabelNamesTheLevel) {
    LevelGeometry geometry(Cube());
    EXPECT_EQ(SubdivideAsStep(geometry)->label, "Level 1");
    EXPECT_EQ(BindLevelAsStep(geometry, 0)->label, "Level 0");
}

TEST(FreezeStep, SwapsTheDifferingAmounts) {
    LevelGeometry geometry(GridMesh(5, 5));
    LevelMesh& mesh = *geometry.Bound();
    mesh.SetFreeze(3, 20);
    const std::vector<uint8_t> before = FreezeAmounts(mesh);
    EXPECT_EQ(before[3], 20);
    EXPECT_EQ(MakeFreezeStep(mesh, before), nullptr);
    mesh.SetFreeze(3, 0);
    mesh.SetFreeze(7, 127);
    mesh.SetFreeze(9, 1);
    const std::vector<uint8_t> after = FreezeAmounts(mesh);
    geometry.History().Push(MakeFreezeStep(mesh, before));
    EXPECT_LT(geometry.History().Bytes(), 200u) << "sparse";
    geometry.History().Undo(geometry);
    EXPECT_EQ(FreezeAmounts(mesh), before);
    EXPECT_EQ(mesh.FrozenVertexCount(), 1u);
    geometry.History().Redo(geometry);
    EXPECT_EQ(FreezeAmounts(mesh), after);
    EXPECT_EQ(mesh.FrozenVertexCount(), 2u);
}

}  // namespace
}  // namespace trovik::test
