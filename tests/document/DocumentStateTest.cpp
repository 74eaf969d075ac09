// SPDX-License-Identifier: Apache-2.0
#include "tests/document/SculptedDocument.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace trovik::test {
namespace {

TEST(DocumentState, HasTheValuesThatPanelsShow) {
    const TemporaryFolder folder;
    const auto document = SphereDocument();
    document->Subdivide();
    document->AddLayer("a");
    document->AddLayer("b");
    document->SetLayerStrength(0.25f);
    document->SelectTool("Wax");
    document->Brush().SetBrushStrength(37.0f);
    document->Settings().radius = 0.125f;
    document->NoteToolChanged();
    document->SetMirrors({{0, 1}});
    const auto state = document->State();
    ASSERT_EQ(state->levels.size(), 2u);
    EXPECT_EQ(state->levels[0].faces, 384u);
    EXPECT_EQ(state->levels[1].faces, 1536u);
    EXPECT_EQ(state->levels[1].vertices, 1538u);
    EXPECT_EQ(state->currentLevel, 1u);
    ASSERT_EQ(state->layers.size(), 2u);
    EXPECT_EQ(state->layers[0].name, "a");
    EXPECT_EQ(state->layers[0].strength, 1.0f);
    EXPECT_FALSE(state->layers[0].active);
    EXPECT_EQ(state->layers[1].name, "b");
    EXPECT_EQ(state->layers[1].strength, 0.25f);
    EXPECT_TRUE(state->layers[1].active);
    EXPECT_EQ(state->tool.name, "Wax");
    EXPECT_EQ(state->tool.strength, 37.0f);
    EXPECT_EQ(state->tool.radius, 0.125f);
    EXPECT_EQ(state->tool.falloff, "smooth");
    EXPECT_THAT(state->tools, testing::Contains("Freeze"));
    EXPECT_EQ(state->symmetry.copies, 3u);
    EXPECT_EQ(state->history.size(), 4u);
    EXPECT_EQ(state->historyPosition, 4u);
    EXPECT_GT(state->historyBytes, 0u);
    EXPECT_GT(state->memoryBytes, 0);
    EXPECT_TRUE(state->isModified);
    EXPECT_EQ(state->sourcePath, "sphere");
    EXPECT_EQ(state->scenePath, "");
    document->Save(folder.Path("a.trovik"));
    EXPECT_EQ(document->State()->scenePath, folder.Path("a.trovik"));
    EXPECT_FALSE(document->State()->isModified);
    EXPECT_TRUE(state->isModified) << "a published state does not change";
}

TEST(DocumentState, IsBuiltOncePerChange) {
    const auto document = SphereDocument();
    const auto state = document->State();
    EXPECT_EQ(document->State(), state);
    BeginStroke(*document, BrushOperation::ModifierNone, std::nullopt);
    EXPECT_TRUE(document->State()->isStrokeOpen);
    document->Loop().End();
    EXPECT_FALSE(document->State()->isStrokeOpen);
}

// Another thread sees complete states, in order, and never builds one itself.
TEST(DocumentState, CanBeReadByAnotherThreadWhileTheDocumentChanges) {
    const auto document = SphereDocument();
    std::atomic<bool> done = false;
    std::atomic<uint64_t> reads = 0;
    std::size_t newest = 0;
    bool inOrder = true, complete = true;
    std::thread reader([&] {
        do {
            const auto state = document->State();
            inOrder = inOrder && state->history.size() >= newest;
            newest = state->history.size();
            complete = complete && state->historyPosition == newest &&
                       state->layers.size() == newest && state->levels.size() == 1;
            ++reads;
        } while (!done);
    });
    for (int i = 0; i < 200; ++i) {
        document->AddLayer("layer " + std::to_string(i));
        document->State();
    }
    // The state after this change is not published, since no code on this thread has requested it.
    document->AddLayer("last");
    while (reads < 200) std::this_thread::yield();
    const auto published = [&] {
        std::shared_ptr<const DocumentState> seen;
        std::thread([&] { seen = document->State(); }).join();
        return seen->layers.size();
    };
    EXPECT_EQ(published(), 200u);
    done = true;
    reader.join();
    EXPECT_TRUE(inOrder);
    EXPECT_TRUE(complete);
    document->State();
    EXPECT_EQ(published(), 201u);
    // The new owner sees its own changes immediately.
    std::thread([&] {
        document->SetOwnerThread();
        document->Undo();
        EXPECT_EQ(document->State()->layers.size(), 200u);
    }).join();
    document->SetOwnerThread();
}

}  // namespace
}  // namespace trovik::test
