// SPDX-License-Identifier: Apache-2.0
#include "framework/history/TopologyStep.h"
#include "framework/multires/Steps.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

/// Makes a mask step, which changes no topology.
std::unique_ptr<UndoStep> MaskStep(LevelGeometry& geometry, uint8_t amount) {
    LevelMesh& level = *geometry.Bound();
    const std::vector<uint8_t> before = FreezeAmounts(level);
    level.SetFreeze(0, amount);
    return MakeFreezeStep(level, before);
}

TEST(TopologyStep, IsFoundAmongTheNextSteps) {
    LevelGeometry geometry(Cube());
    UndoHistory& history = geometry.History();
    EXPECT_FALSE(ChangesTopology(history, 3, false));
    EXPECT_FALSE(ChangesTopology(history, 3, true));
    history.Push(MaskStep(geometry, 1));
    history.Push(SubdivideAsStep(geometry));
    history.Push(MaskStep(geometry, 2));
    history.Push(BindLevelAsStep(geometry, 0));
    EXPECT_TRUE(ChangesTopology(history, 1, false));
    EXPECT_FALSE(ChangesTopology(history, 0, false));
    history.Undo(geometry);
    EXPECT_FALSE(ChangesTopology(history, 1, false));
    EXPECT_TRUE(ChangesTopology(history, 2, false));
    EXPECT_TRUE(ChangesTopology(history, 1, true));
    history.Undo(geometry);
    history.Undo(geometry);
    EXPECT_FALSE(ChangesTopology(history, 9, false));
    EXPECT_TRUE(ChangesTopology(history, 1, true));
    history.Undo(geometry);
    EXPECT_FALSE(ChangesTopology(history, 1, true));
    EXPECT_TRUE(ChangesTopology(history, 2, true));
}

TEST(TopologyStep, GroupsAreUndoneAsAWhole) {
    LevelGeometry geometry(Cube());
    UndoHistory& history = geometry.History();
    history.Push(SubdivideAsStep(geometry));
    auto joined = MaskStep(geometry, 1);
    joined->joinPrevious = true;
    history.Push(std::move(joined));
    history.Push(MaskStep(geometry, 2));
    EXPECT_FALSE(ChangesTopology(history, 1, false));
    EXPECT_TRUE(ChangesTopology(history, 2, false));
    history.Undo(geometry);
    history.Undo(geometry);
    ASSERT_EQ(history.Position(), 0u);
    EXPECT_TRUE(ChangesTopology(history, 1, true));
}

}  // namespace
}  // namespace trovik::test
