// SPDX-License-Identifier: Apache-2.0
#include "render/UploadQueue.h"
#include "tests/display/PackedLevel.h"

#include <gtest/gtest.h>

namespace trovik::studio {
namespace {

constexpr uint64_t everything = ~uint64_t{0};
/// The size of a patch of the layout below.
constexpr uint64_t patchBytes = 81 * sizeof(DisplayVertex);

class UploadQueueTest : public testing::Test {
protected:
    UploadQueueTest() {
        geometry.Subdivide();
        geometry.Subdivide();
        geometry.Subdivide();
        layout = std::make_shared<const PatchLayout>(*geometry.Bound());
        queue.Reset(layout);
    }

    /// An update whose vertices have `mark` as their x coordinate.
    std::shared_ptr<SurfaceUpdate> Update(std::vector<uint32_t> patches, float mark) {
        auto update = std::make_shared<SurfaceUpdate>();
        update->layout = layout;
        update->vertices.resize(layout->VertexCount(patches));
        for (DisplayVertex& vertex : update->vertices) vertex.x = mark;
        for (const uint32_t patch : patches) {
            AxisAlignedBoundingBox box;
            box.Extend({static_cast<float>(patch), mark, 0.0f});
            update->boxes.push_back(box);
        }
        update->patches = std::move(patches);
        return update;
    }

    /// Patches that a frame uploads, with their marks.
    std::vector<std::pair<uint32_t, float>> Take(uint64_t budget, float preferredX = -1.0f) {
        std::vector<std::pair<uint32_t, float>> taken;
        queue.Take(
            budget,
            [&](const AxisAlignedBoundingBox& box) { return box.minX == preferredX; },
            [&](const UploadQueue::Patch& patch) {
                EXPECT_EQ(patch.vertices.size(), 81u);
                EXPECT_EQ(patch.vertices.front().x, patch.vertices.back().x);
                EXPECT_EQ(patch.box.minX, static_cast<float>(patch.patch));
                EXPECT_EQ(patch.box.minY, patch.vertices.front().x);
                taken.emplace_back(patch.patch, patch.vertices.front().x);
            });
        return taken;
    }

    using Taken = std::vector<std::pair<uint32_t, float>>;
    LevelGeometry geometry{test::SphereQuads(1)};
    std::shared_ptr<const PatchLayout> layout;
    UploadQueue queue;
};

TEST_F(UploadQueueTest, UploadsAPatchThatIsSentAgainOnce) {
    ASSERT_EQ(layout->VertexCount(0), 81u);
    queue.Add(Update({3, 5, 7}, 1.0f));
    queue.Add(Update({5, 9}, 2.0f));
    EXPECT_EQ(queue.Bytes(), 4 * patchBytes);
    EXPECT_EQ(Take(everything), (Taken{{3, 1.0f}, {5, 2.0f}, {7, 1.0f}, {9, 2.0f}}));
    EXPECT_TRUE(queue.IsEmpty());
    EXPECT_EQ(queue.Bytes(), 0u);
    queue.Add(Update({5}, 3.0f));
    EXPECT_EQ(Take(everything), (Taken{{5, 3.0f}}));
}

TEST_F(UploadQueueTest, KeepsTheBudgetOfAFrame) {
    queue.Add(Update({0, 1, 2, 3, 4}, 1.0f));
    EXPECT_EQ(Take(2 * patchBytes), (Taken{{0, 1.0f}, {1, 1.0f}}));
    EXPECT_EQ(queue.Bytes(), 3 * patchBytes);
    // A small budget must not stop the queue.
    EXPECT_EQ(Take(1), (Taken{{2, 1.0f}}));
    EXPECT_EQ(Take(everything), (Taken{{3, 1.0f}, {4, 1.0f}}));
    EXPECT_EQ(Take(everything), Taken{});
}

TEST_F(UploadQueueTest, UploadsVisiblePatchesFirst) {
    queue.Add(Update({0, 1, 2, 3}, 1.0f));
    EXPECT_EQ(Take(2 * patchBytes, 2.0f), (Taken{{2, 1.0f}, {0, 1.0f}}));
    EXPECT_EQ(Take(everything), (Taken{{1, 1.0f}, {3, 1.0f}}));
}

TEST_F(UploadQueueTest, FreesUpdatesWithoutWaitingPatches) {
    auto update = Update({0, 1}, 1.0f);
    const std::weak_ptr<SurfaceUpdate> watch = update;
    queue.Add(update);
    update.reset();
    queue.Add(Update({0}, 2.0f));
    EXPECT_FALSE(watch.expired());
    queue.Add(Update({1}, 2.0f));
    EXPECT_TRUE(watch.expired());
    queue.Reset(nullptr);
    EXPECT_TRUE(queue.IsEmpty());
    EXPECT_EQ(queue.Bytes(), 0u);
}

}  // namespace
}  // namespace trovik::studio
