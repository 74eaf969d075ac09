// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/LayerSteps.h"
#include "framework/errors/HostError.h"
#include "tests/document/SculptedDocument.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace trovik::test {
namespace {

TEST(DocumentHistory, JumpToAnyPositionRestoresEveryBit) {
    const auto document = SphereDocument();
    std::vector<std::string> states = {BitsOf(*document)};
    const auto done = [&] { states.push_back(BitsOf(*document)); };
    Stroke(*document, {0, 0, 1});
    done();
    document->Subdivide();
    done();
    Stroke(*document, {1, 0, 0});
    done();
    document->AddLayer("layer");
    done();
    Stroke(*document, {0, 1, 0});
    done();
    document->BindLevel(0);
    done();
    ASSERT_EQ(document->HistoryPosition(), states.size() - 1);
    for (const std::size_t position : {0u, 6u, 3u, 5u, 1u, 1u, 4u, 2u, 6u}) {
        ASSERT_TRUE(document->JumpTo(position));
        EXPECT_EQ(document->HistoryPosition(), position);
        EXPECT_TRUE(BitsOf(*document) == states[position]) << position;
    }
    EXPECT_FALSE(document->JumpTo(states.size()));
    EXPECT_EQ(document->HistoryPosition(), states.size() - 1);
    // The pick tree and the stroke loop are also updated.
    document->JumpTo(0);
    Stroke(*document, {0, 0, 1});
    EXPECT_TRUE(BitsOf(*document) == states[1]);
    EXPECT_EQ(document->State()->history.size(), 1u);
}

TEST(DocumentHistory, JoinedStepsStayTogether) {
    const auto document = SphereDocument();
    Stroke(*document, {0, 0, 1});
    document->Push(AddLayerAsStep(document->Geometry(), "a"));
    document->Push(AddLayerAsStep(document->Geometry(), "b"), true);
    document->Push(AddLayerAsStep(document->Geometry(), "c"), true);
    Stroke(*document, {1, 0, 0});
    ASSERT_EQ(document->HistoryPosition(), 5u);
    for (const std::size_t within : {3u, 2u, 1u}) {
        ASSERT_TRUE(document->JumpTo(within));
        EXPECT_EQ(document->HistoryPosition(), 1u);
        EXPECT_EQ(document->State()->layers.size(), 0u);
        ASSERT_TRUE(document->JumpTo(4));
        EXPECT_EQ(document->HistoryPosition(), 4u);
        EXPECT_EQ(document->State()->layers.size(), 3u);
    }
    const auto& history = document->State()->history;
    EXPECT_FALSE(history[1].joinsPrevious);
    EXPECT_TRUE(history[2].joinsPrevious);
    EXPECT_TRUE(history[3].joinsPrevious);
}

TEST(DocumentHistory, StepsThatAreDroppedDirectlyAreNotListed) {
    const auto document = SphereDocument();
    Stroke(*document, {0, 0, 1});
    document->Geometry().History().Clear();
    document->NoteToolChanged();
    EXPECT_TRUE(document->State()->history.empty());
}

TEST(DocumentHistory, JumpsAreRefusedDuringAStroke) {
    const auto document = SphereDocument();
    Stroke(*document, {0, 0, 1});
    BeginStroke(*document, BrushOperation::ModifierNone, std::nullopt);
    EXPECT_THROW(document->JumpTo(0), HostError);
    EXPECT_THROW(document->JumpTo(1), HostError);
    document->Loop().End();
    EXPECT_TRUE(document->JumpTo(0));
}

TEST(DocumentHistory, EntriesHaveLabelToolTimeAndBytes) {
    const auto document = SphereDocument();
    const auto start = std::chrono::system_clock::now();
    Stroke(*document, {0, 0, 1});
    document->SelectTool("Wax");
    Stroke(*document, {1, 0, 0});
    document->Subdivide();
    const auto state = document->State();
    ASSERT_EQ(state->history.size(), 3u);
    EXPECT_EQ(state->history[0].label, "Sculpt");
    EXPECT_EQ(state->history[0].tool, "Sculpt");
    EXPECT_EQ(state->history[1].tool, "Wax");
    EXPECT_EQ(state->history[2].label, "Level 1");
    EXPECT_EQ(state->history[2].tool, "Wax");
    auto last = start;
    for (const HistoryEntry& entry : state->history) {
        EXPECT_GT(entry.bytes, 0u);
        EXPECT_GE(entry.time, last);
        last = entry.time;
    }
    EXPECT_LE(last, std::chrono::system_clock::now());
    // Undone steps keep their entries; a new step replaces them.
    document->JumpTo(1);
    document->SelectTool("Pinch");
    EXPECT_EQ(document->State()->history[1].tool, "Wax");
    EXPECT_EQ(document->State()->historyPosition, 1u);
    Stroke(*document, {0, 1, 0});
    ASSERT_EQ(document->State()->history.size(), 2u);
    EXPECT_EQ(document->State()->history[1].tool, "Pinch");
    EXPECT_EQ(document->State()->history[0].time, state->history[0].time);
}

// The budget drops the oldest steps. The remaining steps keep their entries, and the state before
// the oldest of them is not the saved one.
TEST(DocumentHistory, DroppedStepsLeaveTheOthersUnchanged) {
    const auto document = SphereDocument();
    document->Geometry().History().SetKeeping({uint64_t{1} << 30, 1000});
    const std::vector<std::string> tools = {"Sculpt", "Wax", "Pinch", "Bulge", "Flatten", "Fill"};
    for (const std::string& tool : tools) {
        document->SelectTool(tool);
        Stroke(*document, {0, 0, 1});
    }
    const uint64_t bytes = document->Geometry().History().Bytes();
    document->SetUndoBudget(bytes / 2);
    document->SelectTool("Sculpt");
    Stroke(*document, {0, 0, 1});
    const auto state = document->State();
    ASSERT_LT(state->history.size(), tools.size());
    ASSERT_GT(state->history.size(), 1u);
    for (std::size_t i = 0; i + 1 < state->history.size(); ++i)
        EXPECT_EQ(state->history[i].tool, tools[tools.size() + 1 - state->history.size() + i]);
    document->JumpTo(0);
    EXPECT_TRUE(document->IsModified()) << "the first strokes cannot be undone any more";
}

}  // namespace
}  // namespace trovik::test
