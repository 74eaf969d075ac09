// SPDX-License-Identifier: Apache-2.0
#include "framework/history/UndoHistory.h"
#include "framework/multires/LevelGeometry.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace trovik::test {
namespace {

class UndoHistoryTest : public ::testing::Test {
protected:
    /// Records its number when applied.
    class Step : public UndoStep {
    public:
        Step(std::vector<int>& toLog, int ofNumber, uint64_t size)
            : log(toLog), number(ofNumber), bytes(size) {}
        void Apply(LevelGeometry&) override {
            if (number < 0) throw std::runtime_error("refused");
            log.push_back(number);
            bytes += growth;
        }
        uint64_t Bytes() const override { return bytes; }
        std::vector<int>& log;
        int number;
        uint64_t bytes;
        uint64_t growth = 0;
    };

    std::unique_ptr<Step> MakeStep(int number, bool join = false, uint64_t bytes = 10) {
        auto step = std::make_unique<Step>(log, number, bytes);
        step->joinPrevious = join;
        step->label = std::to_string(number);
        return step;
    }
    std::vector<int> Taken() { return std::exchange(log, {}); }

    LevelGeometry geometry{SingleQuad()};
    std::vector<int> log;
    UndoHistory history{100};
};

TEST_F(UndoHistoryTest, UndoesBackwardsAndRedoesForwards) {
    EXPECT_FALSE(history.CanUndo());
    EXPECT_FALSE(history.Undo(geometry));
    for (int i = 1; i <= 3; ++i) history.Push(MakeStep(i));
    EXPECT_TRUE(history.Undo(geometry));
    EXPECT_TRUE(history.Undo(geometry));
    EXPECT_EQ(Taken(), (std::vector<int>{3, 2}));
    EXPECT_EQ(history.Position(), 1u);
    EXPECT_EQ(history.StepCount(), 3u);
    EXPECT_TRUE(history.Redo(geometry));
    EXPECT_EQ(Taken(), (std::vector<int>{2}));
    EXPECT_EQ(history.Label(1), "2");
}

TEST_F(UndoHistoryTest, JoinedStepsAreUndoneTogether) {
    history.Push(MakeStep(1));
    history.Push(MakeStep(2));
    history.Push(MakeStep(3, true));
    history.Push(MakeStep(4, true));
    history.Push(MakeStep(5));
    history.Undo(geometry);
    history.Undo(geometry);
    EXPECT_EQ(Taken(), (std::vector<int>{5, 4, 3, 2}));
    EXPECT_EQ(history.Position(), 1u);
    history.Redo(geometry);
    EXPECT_EQ(Taken(), (std::vector<int>{2, 3, 4}));
    EXPECT_EQ(history.Position(), 4u);
}

TEST_F(UndoHistoryTest, NewStepDropsUndoneSteps) {
    history.Push(MakeStep(1));
    history.Push(MakeStep(2));
    history.Undo(geometry);
    history.Push(MakeStep(3));
    EXPECT_FALSE(history.CanRedo());
    EXPECT_EQ(history.StepCount(), 2u);
    EXPECT_EQ(history.Bytes(), 20u);
    EXPECT_EQ(history.Label(1), "3");
}

TEST_F(UndoHistoryTest, OldestStepsAreDroppedBeyondTheBudget) {
    for (int i = 1; i <= 12; ++i) history.Push(MakeStep(i));
    EXPECT_EQ(history.StepCount(), 10u);
    EXPECT_EQ(history.Bytes(), 100u);
    EXPECT_EQ(history.Label(0), "3");
    history.SetBudget(35);
    EXPECT_EQ(history.StepCount(), 3u);
    EXPECT_EQ(history.Label(0), "10");
    EXPECT_EQ(history.Position(), 3u);
}

TEST_F(UndoHistoryTest, NewestStepIsKeptWhateverItsSize) {
    history.Push(MakeStep(1));
    history.Push(MakeStep(2, false, 1000));
    EXPECT_EQ(history.StepCount(), 1u);
    EXPECT_EQ(history.Label(0), "2");
    EXPECT_TRUE(history.Undo(geometry));
}

TEST_F(UndoHistoryTest, GroupIsDroppedAsAWhole) {
    history.Push(MakeStep(1, false, 40));
    history.Push(MakeStep(2, true, 40));
    history.Push(MakeStep(3, false, 30));
    EXPECT_EQ(history.StepCount(), 1u) << "step 2 alone would undo half a stroke";
    EXPECT_EQ(history.Label(0), "3");
    history.Push(MakeStep(4, true, 90));
    EXPECT_EQ(history.StepCount(), 2u) << "the newest group stays whole";
}

TEST_F(UndoHistoryTest, WhenAllIsUndoneTheFarthestStepIsDropped) {
    for (int i = 1; i <= 4; ++i) history.Push(MakeStep(i));
    while (history.Undo(geometry)) {
    }
    Taken();
    history.SetBudget(20);
    EXPECT_EQ(history.StepCount(), 2u);
    history.Redo(geometry);
    EXPECT_EQ(Taken(), (std::vector<int>{1}));
}

TEST_F(UndoHistoryTest, SizesAreUpdatedWhenAStepIsApplied) {
    auto step = MakeStep(1);
    step->growth = 7;
    history.Push(std::move(step));
    history.Undo(geometry);
    EXPECT_EQ(history.Bytes(), 17u);
    history.Push(MakeStep(2));
    EXPECT_EQ(history.Bytes(), 10u);
}

TEST_F(UndoHistoryTest, ThrowingStepLeavesThePositionConsistentWithTheMesh) {
    history.Push(MakeStep(-1));
    history.Push(MakeStep(2, true));
    EXPECT_THROW(history.Undo(geometry), std::runtime_error);
    EXPECT_EQ(history.Position(), 1u);
    EXPECT_EQ(history.StepCount(), 2u);
}

TEST_F(UndoHistoryTest, StrokeStepsJoinTheirOwnStrokeOnly) {
    history.PushOfStroke(MakeStep(1, true), 1);
    history.PushOfStroke(MakeStep(2), 1);
    history.PushOfStroke(MakeStep(3, true), 2);
    history.Push(MakeStep(4));
    history.PushOfStroke(MakeStep(5, true), 2);
    history.Undo(geometry);
    EXPECT_EQ(Taken(), (std::vector<int>{5}));
    history.Undo(geometry);
    history.Undo(geometry);
    EXPECT_EQ(Taken(), (std::vector<int>{4, 3}));
    history.Undo(geometry);
    EXPECT_EQ(Taken(), (std::vector<int>{2, 1}));
}

}  // namespace
}  // namespace trovik::test
