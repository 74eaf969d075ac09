// SPDX-License-Identifier: Apache-2.0
#include "framework/display/DirtyPatches.h"
#include "tests/display/PackedLevel.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

using Patches = std::vector<uint32_t>;

Patches Sorted(const DirtyPatches& dirty) {
    Patches patches(dirty.Patches().begin(), dirty.Patches().end());
    std::sort(patches.begin(), patches.end());
    return patches;
}

/// Level 7 of a quad; its patches are the 16 faces of level 2.
class DirtyGrid : public testing::Test {
protected:
    DirtyGrid() : geometry(SingleQuad()) {
        for (int i = 0; i < 7; ++i) geometry.Subdivide();
        layout = std::make_unique<PatchLayout>(*geometry.Bound());
        dirty = std::make_unique<DirtyPatches>(*layout);
    }

    void Add(uint32_t patchLevel, const Patches& patches, uint8_t what, uint32_t level = 7) {
        dirty->Add({level, what, patchLevel, patches, false});
    }

    LevelGeometry geometry;
    std::unique_ptr<PatchLayout> layout;
    std::unique_ptr<DirtyPatches> dirty;
};

TEST_F(DirtyGrid, MapsChangesOfEachPatchLevel) {
    ASSERT_EQ(layout->PatchLevel(), 2u);
    EXPECT_TRUE(dirty->IsEmpty());
    Add(2, {3, 9}, SurfaceChange::Positions);
    EXPECT_EQ(Sorted(*dirty), (Patches{3, 9}));
    dirty->Clear();
    Add(4, {16 * 3 + 5, 16 * 3 + 15, 16 * 4}, SurfaceChange::Positions);
    EXPECT_EQ(Sorted(*dirty), (Patches{3, 4}));
    dirty->Clear();
    Add(7, {1024 * 11 + 1023}, SurfaceChange::Positions);
    EXPECT_EQ(Sorted(*dirty), (Patches{11}));
    dirty->Clear();
    Add(1, {2}, SurfaceChange::Positions);
    EXPECT_EQ(Sorted(*dirty), (Patches{8, 9, 10, 11}));
    dirty->Clear();
    Add(0, {0}, SurfaceChange::Positions);
    EXPECT_EQ(dirty->Patches().size(), 16u);
    dirty->Clear();
    EXPECT_TRUE(dirty->IsEmpty());
    EXPECT_EQ(dirty->WhatChanged(3), 0);
}

TEST_F(DirtyGrid, MergesChangesAndKeepsTheirKinds) {
    Add(2, {3, 9}, SurfaceChange::Positions | SurfaceChange::Normals);
    Add(2, {9, 1}, SurfaceChange::Mask);
    Add(3, {4 * 9}, SurfaceChange::Positions);
    const Patches inOrder(dirty->Patches().begin(), dirty->Patches().end());
    EXPECT_EQ(inOrder, (Patches{3, 9, 1})) << "each once, in order of their first change";
    EXPECT_EQ(dirty->WhatChanged(3), SurfaceChange::Positions | SurfaceChange::Normals);
    EXPECT_EQ(dirty->WhatChanged(9),
              SurfaceChange::Positions | SurfaceChange::Normals | SurfaceChange::Mask);
    EXPECT_EQ(dirty->WhatChanged(1), SurfaceChange::Mask);
    EXPECT_EQ(dirty->WhatChanged(2), 0);
}

TEST_F(DirtyGrid, RemovesPackedPatches) {
    Add(2, {3, 9, 1, 12}, SurfaceChange::Positions);
    dirty->Remove(Patches{9, 3, 7});
    EXPECT_EQ(Sorted(*dirty), (Patches{1, 12}));
    EXPECT_EQ(dirty->WhatChanged(9), 0);
    Add(2, {9}, SurfaceChange::Mask);
    EXPECT_EQ(Sorted(*dirty), (Patches{1, 9, 12}));
    EXPECT_EQ(dirty->WhatChanged(9), SurfaceChange::Mask);
}

TEST_F(DirtyGrid, AcceptsWholeLevels) {
    dirty->Add({7, SurfaceChange::Mask, 0, {}, true});
    EXPECT_EQ(dirty->Patches().size(), 16u);
    EXPECT_EQ(dirty->WhatChanged(15), SurfaceChange::Mask);
    EXPECT_FALSE(dirty->LayoutChanged());
}

TEST_F(DirtyGrid, IgnoresOtherLevelsAndEmptyChanges) {
    Add(2, {3}, SurfaceChange::Positions, 6);
    dirty->Add({3, SurfaceChange::Positions, 0, {}, true});
    Add(2, {3}, 0);
    EXPECT_TRUE(dirty->IsEmpty());
}

TEST_F(DirtyGrid, ReportsThatTheLayoutChanged) {
    dirty->Add({6, SurfaceChange::Topology, 0, {}, true});
    EXPECT_TRUE(dirty->LayoutChanged());
    // The indices of later changes refer to the new level.
    Add(2, {3}, SurfaceChange::Positions);
    EXPECT_TRUE(dirty->IsEmpty());
    EXPECT_TRUE(dirty->LayoutChanged());
}

TEST(DirtyPatches, OfTrianglesHaveThreeChildren) {
    LevelGeometry geometry(Icosahedron());
    for (int i = 0; i < 3; ++i) geometry.Subdivide();
    const PatchLayout layout(*geometry.Bound());
    ASSERT_EQ(layout.PatchLevel(), 1u);
    DirtyPatches dirty(layout);
    const uint32_t face[] = {7};
    dirty.Add({3, SurfaceChange::Positions, 0, face, false});
    EXPECT_EQ(Sorted(dirty), (Patches{21, 22, 23}));
    dirty.Clear();
    const uint32_t fine[] = {21 * 16 + 15};
    dirty.Add({3, SurfaceChange::Positions, 3, fine, false});
    EXPECT_EQ(Sorted(dirty), (Patches{21}));
}

TEST(DirtyPatches, OfBucketsAreThoseOfTheFaces) {
    LevelGeometry geometry(GridMesh(80, 80));
    geometry.Subdivide();
    const PatchLayout layout(*geometry.Bound());
    ASSERT_FALSE(layout.IsGrid());
    ASSERT_GT(layout.PatchCount(), 6u);
    DirtyPatches dirty(layout);
    const uint32_t faces[] = {4 * 17 + 1, 4 * 6399};
    dirty.Add({1, SurfaceChange::Visibility, 1, faces, false});
    Patches expected = {layout.Buckets()->BucketOf(faces[0]), layout.Buckets()->BucketOf(faces[1])};
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(Sorted(dirty), expected);
    dirty.Clear();
    const uint32_t coarse[] = {17, 6399};
    dirty.Add({1, SurfaceChange::Visibility, 0, coarse, false});
    EXPECT_EQ(Sorted(dirty), expected) << "children of a face are contiguous here";
}

}  // namespace
}  // namespace trovik::test
