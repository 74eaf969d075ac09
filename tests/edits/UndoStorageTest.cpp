// SPDX-License-Identifier: Apache-2.0

/// \file Tests how a history stores its steps: compressed, within the budget, and in a file.
#include "framework/errors/HostError.h"
#include "framework/history/UndoHistory.h"
#include "framework/multires/LevelGeometry.h"
#include "tests/edits/FullDisk.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/meshes/MeshZoo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <random>

namespace trovik::test {
namespace {

using testing::HasSubstr;

class UndoStorageTest : public ::testing::Test {
protected:
    /// Swaps its array with an external one that stands in for the mesh.
    class Step : public UndoStep {
    public:
        Step(std::vector<uint32_t>& ofMesh, std::vector<uint32_t> before)
            : mesh(ofMesh), other(std::move(before)) {
            other.shrink_to_fit();
        }
        void Apply(LevelGeometry&) override { mesh.swap(other); }
        uint64_t Bytes() const override { return 100 + other.capacity() * sizeof(uint32_t); }
        std::vector<StepArray> Arrays() override { return {StepArray(other)}; }
        const std::vector<uint32_t>& Other() const { return other; }

    private:
        std::vector<uint32_t>& mesh;
        std::vector<uint32_t> other;
    };

    /// Elements of 4 bytes; half of them compress well.
    std::vector<uint32_t> Draw(std::size_t count) {
        std::vector<uint32_t> content(count);
        for (std::size_t i = 0; i < count; ++i)
            content[i] = i % 2 == 0 ? static_cast<uint32_t>(random() & 0xffu) : 7u;
        return content;
    }

    /// Changes the mesh and pushes the step.
    void Edit(std::size_t count) {
        std::vector<uint32_t> before = Draw(count);
        before.swap(mesh);
        states.push_back(mesh);
        auto step = std::make_unique<Step>(mesh, std::move(before));
        step->label = "edit " + std::to_string(states.size() - 1);
        history.Push(std::move(step));
    }

    /// Undoes and redoes everything, and expects each state that is still in the history.
    void ExpectAllStates() {
        std::size_t now = states.size() - 1;
        while (history.Undo(geometry)) ASSERT_EQ(mesh, states[--now]) << now;
        EXPECT_EQ(states.size() - 1 - now, history.StepCount());
        while (history.Redo(geometry)) ASSERT_EQ(mesh, states[++now]) << now;
        EXPECT_EQ(now, states.size() - 1);
    }

    LevelGeometry geometry{SingleQuad()};
    std::mt19937 random{11};
    std::vector<uint32_t> mesh = Draw(10000);
    std::vector<std::vector<uint32_t>> states{mesh};
    UndoHistory history{uint64_t{1} << 30};
};

TEST_F(UndoStorageTest, CompressedStepsAreRestoredExactly) {
    for (int i = 0; i < 40; ++i) Edit(10000);
    history.Settle();
    EXPECT_LT(history.Bytes(), 40 * 40100u / 2);
    EXPECT_LT(history.StepBytes(0), history.StepBytes(39))
        << "the old steps are compressed tightly";
    EXPECT_EQ(history.Label(3), "edit 4");
    uint64_t sum = 0;
    for (std::size_t i = 0; i < 40; ++i) sum += history.StepBytes(i);
    EXPECT_EQ(history.Bytes(), sum) << "everything is counted";
    EXPECT_LE(history.PeakBytes(), 41 * 40100u);
    ExpectAllStates();
}

TEST_F(UndoStorageTest, ContentOfAStepIsAvailableOnRequest) {
    for (int i = 0; i < 3; ++i) Edit(10000);
    history.Settle();
    EXPECT_TRUE(static_cast<const Step&>(history.Shell(1)).Other().empty());
    EXPECT_EQ(static_cast<const Step&>(history.Step(1)).Other(), states[1]);
    ExpectAllStates();
}

TEST_F(UndoStorageTest, SmallStepsAreNotCompressed) {
    Edit(100);
    Edit(100);
    history.Settle();
    EXPECT_EQ(history.StepBytes(1), 100u + 400u);
    history.SetKeeping({200, 16});
    Edit(100);
    history.Settle();
    EXPECT_LT(history.StepBytes(2), 500u);
    ExpectAllStates();
}

TEST_F(UndoStorageTest, BudgetIsRespectedByDroppingTheOldestSteps) {
    const uint64_t budget = 300000;
    history.SetBudget(budget);
    for (int i = 0; i < 100; ++i) {
        Edit(10000);
        ASSERT_LE(history.Bytes(), budget);
    }
    history.Settle();
    EXPECT_GT(history.StepCount(), budget / 40100) << "more than would fit uncompressed";
    EXPECT_LT(history.StepCount(), 100u);
    EXPECT_EQ(history.Label(history.StepCount() - 1), "edit 100");
    // The peak includes the new step, and one step that exists both packed and unpacked.
    EXPECT_LE(history.PeakBytes(), budget + 2 * 40100);
    ExpectAllStates();
    EXPECT_LE(history.PeakBytes(), budget + 2 * 40100);
}

TEST_F(UndoStorageTest, DroppedStepsDoNotDependOnTheProgressOfCompression) {
    std::vector<std::size_t> counts;
    for (const bool waits : {true, false}) {
        UndoHistory other(200000);
        random.seed(5);
        for (int i = 0; i < 60; ++i) {
            other.Push(std::make_unique<Step>(mesh, Draw(2000 + random() % 9000)));
            if (waits) other.Settle();
        }
        counts.push_back(other.StepCount());
    }
    EXPECT_EQ(counts[0], counts[1]);
    EXPECT_GT(counts[0], 5u);
}

TEST_F(UndoStorageTest, NewestStepIsKeptWhateverTheBudget) {
    history.SetBudget(1);
    for (int i = 0; i < 5; ++i) {
        Edit(10000);
        ASSERT_EQ(history.StepCount(), 1u);
    }
    ExpectAllStates();
}

TEST_F(UndoStorageTest, DroppingBeforeCompressionEndsFreesTheBytes) {
    for (int i = 0; i < 20; ++i) {
        Edit(10000);
        history.Undo(geometry);
        states.pop_back();
    }
    history.Clear();
    EXPECT_EQ(history.Bytes(), 0u);
    EXPECT_EQ(history.StepCount(), 0u);
}

TEST_F(UndoStorageTest, StepsBeyondTheBudgetGoToTheFile) {
    const TemporaryFolder folder;
    const uint64_t budget = 200000;
    history.SetBudget(budget);
    history.SetSpillFolder(folder.Path(""));
    for (int i = 0; i < 60; ++i) Edit(10000);
    EXPECT_EQ(history.StepCount(), 60u) << "none is dropped";
    EXPECT_GT(history.SpilledBytes(), 0u);
    EXPECT_LE(history.Bytes(), budget + 40100);
    EXPECT_LE(history.PeakBytes(), budget + 2 * 40100);
    EXPECT_EQ(folder.FileCount(), 0u);
    ExpectAllStates();
    EXPECT_EQ(history.StepCount(), 60u);
    EXPECT_LE(history.PeakBytes(), budget + 2 * 40100);
    history.Clear();
    EXPECT_EQ(history.SpilledBytes(), 0u);
    EXPECT_EQ(history.TakeProblem(), "");
}

TEST_F(UndoStorageTest, FileIsAtMostEightBudgetsLong) {
    const TemporaryFolder folder;
    history.SetBudget(50000);
    history.SetSpillFolder(folder.Path(""));
    for (int i = 0; i < 80; ++i) {
        Edit(10000);
        ASSERT_LE(history.SpilledBytes(), 8 * 50000u);
    }
    EXPECT_LT(history.StepCount(), 80u);
    EXPECT_GT(history.StepCount(), 20u);
    EXPECT_EQ(history.Label(history.StepCount() - 1), "edit 80");
    ExpectAllStates();
}

TEST_F(UndoStorageTest, FullDiskIsReportedOnceAndStepsStayInMemory) {
    const TemporaryFolder folder;
    history.SetBudget(200000);
    history.SetSpillFolder(folder.Path(""));
    {
        const FullDisk full(30000);
        for (int i = 0; i < 60; ++i) Edit(10000);
        history.Settle();
    }
    EXPECT_EQ(history.TakeProblem(),
              "undo file in " + folder.Path("") +
                  ": cannot be written: File too large; undo steps stay in memory");
    EXPECT_EQ(history.TakeProblem(), "");
    EXPECT_LE(history.Bytes(), 200000u) << "the budget applies again";
    EXPECT_GT(history.StepCount(), 200000u / 40100);
    EXPECT_LT(history.StepCount(), 60u);
    ExpectAllStates();
}

TEST_F(UndoStorageTest, StepOfADamagedFileIsRefusedAndOtherStepsStay) {
    const TemporaryFolder folder;
    history.SetBudget(150000);
    history.SetSpillFolder(folder.Path(""));
    for (int i = 0; i < 30; ++i) Edit(10000);
    history.Settle();
    {
        std::fstream open(history.SpillPath(), std::ios::binary | std::ios::in | std::ios::out);
        const std::vector<char> garbage(3000, '\x55');
        open.write(garbage.data(), static_cast<std::streamsize>(garbage.size()));
    }
    std::size_t now = states.size() - 1;
    const std::string message = MessageOf<HostError>([&] {
        while (history.Undo(geometry)) {
            --now;
            if (mesh != states[now]) FAIL() << now;
        }
    });
    EXPECT_THAT(message, HasSubstr("damaged"));
    EXPECT_EQ(mesh, states[now]) << "the mesh is unchanged by the refused step";
    EXPECT_EQ(history.Position(), now);
    EXPECT_EQ(history.StepCount(), 30u);
    while (history.Redo(geometry)) ASSERT_EQ(mesh, states[++now]);
    EXPECT_EQ(now, 30u);
}

TEST_F(UndoStorageTest, MissingFolderIsRefused) {
    EXPECT_THROW(history.SetSpillFolder("/no/such/folder"), HostError);
    Edit(10000);
    EXPECT_TRUE(history.Undo(geometry));
}

}  // namespace
}  // namespace trovik::test
