// SPDX-License-Identifier: Apache-2.0
#include "framework/memory/MemoryAccount.h"
#include "framework/multires/LevelChange.h"
#include "tests/edits/EditStroke.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <sys/mman.h>
#include <vector>

namespace trovik::test {
namespace {

class LevelChangeTest : public ::testing::Test {
protected:
    LevelChangeTest() : geometry(GridMesh(4, 3)), mesh(*geometry.Bound()) {}
    LevelGeometry geometry;
    LevelMesh& mesh;
    std::mt19937 random{20};
};

TEST_F(LevelChangeTest, RecordStoresTheVertex) {
    Vertex& vertex = mesh.vertices.array[7];
    vertex.changeLink = 4711;
    mesh.vertexNormals.array[7] = {1, -2, 3, 44};
    const std::unique_ptr<MeshChange> change(mesh.StartChange());
    EXPECT_EQ(mesh.changeRecordCount, 0u);
    TouchRecord(*change, 3);
    const StoredVertexInfo& record = change->Add_uncached(7, 2, vertex, true);
    EXPECT_EQ(record.originalPosition[0], vertex.x);
    EXPECT_EQ(record.originalPosition[1], vertex.y);
    EXPECT_EQ(record.originalPosition[2], vertex.z);
    EXPECT_EQ(record.visitStampWord, 4711u);
    EXPECT_EQ(record.originalNormal.x, 1);
    EXPECT_EQ(record.originalNormal.y, -2);
    EXPECT_EQ(record.originalNormal.z, 3);
    EXPECT_EQ(record.buildUp, 0.0f);
    EXPECT_EQ(record.vertexIndex, 7u);
    EXPECT_EQ(record.reserved, 0u);
    EXPECT_EQ(record.layerSlot, 0xffffffffu) << "no layer is active";
    EXPECT_EQ(vertex.changeLink, 1u);
    EXPECT_EQ(mesh.changeRecordCount, 2u);
    EXPECT_EQ(*change->recordCount, 2u);
    EXPECT_EQ(mesh.changeRecords, change->records->array);
    EXPECT_EQ(change->mesh, static_cast<Mesh*>(&mesh));
}

TEST_F(LevelChangeTest, RecordsReuseTheMemoryOfThePreviousChange) {
    LevelChange::DropSpareMemory();
    const StoredVertexInfo* array = nullptr;
    {
        const std::unique_ptr<MeshChange> change(mesh.StartChange());
        EXPECT_FALSE(change->HasRoom());
        for (uint32_t v = 0; v < 8; ++v) TouchRecord(*change, v);
        array = change->records->array;
    }
    const std::unique_ptr<MeshChange> change(mesh.StartChange());
    EXPECT_TRUE(change->HasRoom());
    EXPECT_EQ(mesh.changeRecords, array);
    EXPECT_EQ(mesh.changeRecordCount, 0u);
    EXPECT_EQ(FindRecord(*change, 3), nullptr);
    EXPECT_EQ(TouchRecord(*change, 3).vertexIndex, 3u);
    EXPECT_EQ(change->records->array, array);
}

/// The number of resident bytes in the block.
std::size_t PresentBytes(void* memory, std::size_t bytes) {
    constexpr uintptr_t page = 4096;
    const uintptr_t first = reinterpret_cast<uintptr_t>(memory) / page * page;
    const std::size_t pages = (reinterpret_cast<uintptr_t>(memory) + bytes - first) / page;
    std::vector<unsigned char> present(pages);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the page that the block begins in.
    EXPECT_EQ(mincore(reinterpret_cast<void*>(first), pages * page, present.data()), 0);
    return page * static_cast<std::size_t>(std::ranges::count_if(
                      present, [](unsigned char state) { return (state & 1u) != 0; }));
}

TEST(LevelChangeOfALargeMesh, RetainsOnlyASmallFractionOfTheMeshMemory) {
    LevelGeometry large(GridMesh(255, 255));
    LevelMesh& mesh = *large.Bound();
    ASSERT_EQ(mesh.VertexCount(), 65536u);
    LevelChange::DropSpareMemory();
    {
        const std::unique_ptr<MeshChange> change(mesh.StartChange());
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
            change->Add_uncached(v, 0, mesh.vertices.array[v], false);
        EXPECT_GE(change->records->capacity, 65536u);
    }
    const std::unique_ptr<MeshChange> change(mesh.StartChange());
    ASSERT_GE(change->records->capacity, 65536u);
    EXPECT_LE(PresentBytes(change->records->array, 65536 * sizeof(StoredVertexInfo)),
              (std::size_t{1} << 20) + 4096);
    EXPECT_EQ(mesh.changeRecords, change->records->array);
    EXPECT_EQ(mesh.changeRecordCount, 0u);
}

TEST_F(LevelChangeTest, NoMemoryIsRetainedOrReusedUnderALimit) {
    { TouchRecord(*std::unique_ptr<MeshChange>(mesh.StartChange()), 0); }
    const int64_t before = MemoryAccount::Total();
    MemoryAccount::SetLimit(before + (int64_t{1} << 20));
    {
        const std::unique_ptr<MeshChange> change(mesh.StartChange());
        EXPECT_FALSE(change->HasRoom());
        EXPECT_LT(MemoryAccount::Total(), before);
        TouchRecord(*change, 0);
    }
    EXPECT_LT(MemoryAccount::Total(), before);
    MemoryAccount::SetLimit(std::numeric_limits<int64_t>::max());
}

TEST_F(LevelChangeTest, RefusedMemoryLeavesTheVertexUnchanged) {
    LevelChange::DropSpareMemory();
    const std::unique_ptr<MeshChange> change(mesh.StartChange());
    TouchRecord(*change, 0);
    const Vertex before = mesh.vertices.array[1];
    const int64_t limit = MemoryAccount::Limit();
    MemoryAccount::SetLimit(MemoryAccount::Total());
    EXPECT_THROW(TouchRecord(*change, 1), Error*);
    MemoryAccount::SetLimit(limit);
    EXPECT_EQ(mesh.vertices.array[1].changeLink, before.changeLink);
    EXPECT_EQ(mesh.changeRecordCount, 1u);
    EXPECT_EQ(TouchRecord(*change, 1).vertexIndex, 1u);
    EXPECT_EQ(mesh.changeRecordCount, 2u);
}

TEST_F(LevelChangeTest, StampEqualToARecordOfAnotherVertexIsAMiss) {
    mesh.vertices.array[5].changeLink = 0;
    const std::unique_ptr<MeshChange> change(mesh.StartChange());
    EXPECT_EQ(FindRecord(*change, 5), nullptr);
    TouchRecord(*change, 9);
    EXPECT_EQ(FindRecord(*change, 5), nullptr) << "record 0 belongs to vertex 9";
    EXPECT_EQ(TouchRecord(*change, 5).visitStampWord, 0u);
    EXPECT_EQ(FindRecord(*change, 5), &change->records->array[1]);
    change->Finish(true, false);
    EXPECT_EQ(mesh.vertices.array[5].changeLink, 0u);
}

TEST_F(LevelChangeTest, FinishRestoresTheStampOfTheRecord) {
    mesh.vertices.array[2].changeLink = 77;
    const std::unique_ptr<MeshChange> change(mesh.StartChange());
    TouchRecord(*change, 2).visitStampWord = 78;
    TouchRecord(*change, 6);
    mesh.vertices.array[6].changeLink = 1234;
    change->Finish(true, false);
    EXPECT_EQ(mesh.vertices.array[2].changeLink, 78u) << "the dab's stamp is stored in the record";
    EXPECT_EQ(mesh.vertices.array[6].changeLink, 1234u) << "that link does not identify a record";
    EXPECT_EQ(mesh.changeRecords, nullptr);
    EXPECT_EQ(mesh.changeRecordCount, 0u);
    EXPECT_EQ(mesh.OpenChange(), nullptr);
}

TEST_F(LevelChangeTest, UndoAndRedoRestoreEveryBitOfEachState) {
    std::vector<std::vector<VertexState>> states{StateOf(mesh)};
    for (unsigned i = 0; i < 20; ++i) {
        RandomStroke(mesh, random, 1 + i * 3);
        states.push_back(StateOf(mesh));
    }
    ASSERT_EQ(geometry.History().StepCount(), 20u);
    for (unsigned round = 0; round < 2; ++round) {
        for (std::size_t i = 20; i-- > 0;) {
            ASSERT_TRUE(geometry.History().Undo(geometry));
            EXPECT_EQ(StateOf(mesh), states[i]) << i;
        }
        EXPECT_FALSE(geometry.History().Undo(geometry));
        for (std::size_t i = 1; i <= 20; ++i) {
            ASSERT_TRUE(geometry.History().Redo(geometry));
            EXPECT_EQ(StateOf(mesh), states[i]) << i;
        }
        EXPECT_FALSE(geometry.History().Redo(geometry));
    }
}

TEST_F(LevelChangeTest, NormalAloneIsAChangeButItsFourthWordBelongsToTheHost) {
    const auto before = StateOf(mesh);
    std::unique_ptr<MeshChange> change(mesh.StartChange());
    TouchRecord(*change, 1);
    mesh.vertexNormals.array[1].z = 17;
    change->Finish(true, false);
    ASSERT_EQ(geometry.History().StepCount(), 1u);
    geometry.History().Undo(geometry);
    EXPECT_EQ(StateOf(mesh), before);

    geometry.History().Clear();
    change.reset(mesh.StartChange());
    TouchRecord(*change, 1);
    mesh.vertexNormals.array[1].reserved = 9;
    change->Finish(true, false);
    EXPECT_EQ(geometry.History().StepCount(), 0u);
}

TEST_F(LevelChangeTest, StrokeWithoutChangesLeavesNoUndoStep) {
    const std::unique_ptr<MeshChange> change(mesh.StartChange());
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) TouchRecord(*change, v);
    change->Finish(true, false);
    EXPECT_EQ(geometry.History().StepCount(), 0u);
}

TEST_F(LevelChangeTest, DeletionWithoutFinishUnlinksAndLeavesNoUndoStep) {
    const auto before = StateOf(mesh);
    std::unique_ptr<MeshChange> change(mesh.StartChange());
    TouchRecord(*change, 4);
    change.reset();
    EXPECT_EQ(StateOf(mesh), before);
    EXPECT_EQ(mesh.OpenChange(), nullptr);
    EXPECT_EQ(mesh.changeRecords, nullptr);
    EXPECT_EQ(geometry.History().StepCount(), 0u);
}

TEST_F(LevelChangeTest, SecondChangeUnlinksTheFirst) {
    mesh.vertices.array[3].changeLink = 500;
    const std::unique_ptr<MeshChange> first(mesh.StartChange());
    MoveVertex(*first, 3, {0, 0, 1});
    const std::unique_ptr<MeshChange> second(mesh.StartChange());
    EXPECT_EQ(mesh.vertices.array[3].changeLink, 500u);
    EXPECT_EQ(mesh.OpenChange(), second.get());
    EXPECT_EQ(mesh.changeRecordCount, 0u);
    EXPECT_EQ(first->records->fill, 1u) << "records are kept";
    MoveVertex(*second, 3, {0, 0, 1});
    first->Finish(true, false);
    EXPECT_EQ(mesh.OpenChange(), second.get())
        << "finishing the unlinked change does not affect the other";
    EXPECT_EQ(mesh.changeRecords, second->records->array);
    EXPECT_EQ(mesh.changeRecordCount, 1u);
    EXPECT_EQ(mesh.vertices.array[3].changeLink, 0u);
    second->Finish(true, true);
    EXPECT_EQ(mesh.vertices.array[3].changeLink, 500u);
}

TEST_F(LevelChangeTest, LeavingALevelAndReturningIsOneUndoStep) {
    LevelGeometry other(Cube());
    RandomStroke(mesh, random, 5);
    RandomStroke(*other.Bound(), random, 5);
    const auto before = StateOf(mesh);
    const auto otherBefore = StateOf(*other.Bound());

    std::unique_ptr<MeshChange> a1(mesh.StartChange());
    MoveSome(*a1, random, 30);
    // If the first visit makes a change and the second reverts it exactly, both must still be
    // undone correctly.
    MoveVertex(*a1, 0, {0, 0, 1});
    const Vector moved = mesh.Position(0);
    std::unique_ptr<MeshChange> b(other.Bound()->StartChange());
    MoveSome(*b, random, 10);
    std::unique_ptr<MeshChange> a2(mesh.StartChange());
    MoveSome(*a2, random, 30);
    TouchRecord(*a2, 0);
    Vector original;
    for (uint32_t i = 0; i < a1->records->fill; ++i) {
        const StoredVertexInfo& record = a1->records->array[i];
        if (record.vertexIndex == 0)
            original = {
                record.originalPosition[0], record.originalPosition[1], record.originalPosition[2]};
    }
    ASSERT_NE(original, moved);
    mesh.SetPosition(0, original);
    a1->Finish(true, false);
    b->Finish(true, true);
    a2->Finish(true, true);
    const auto after = StateOf(mesh);
    const auto otherAfter = StateOf(*other.Bound());

    EXPECT_EQ(geometry.History().StepCount(), 3u);
    EXPECT_EQ(other.History().StepCount(), 2u);
    geometry.History().Undo(geometry);
    EXPECT_EQ(StateOf(mesh), before);
    EXPECT_EQ(geometry.History().Position(), 1u) << "the previous stroke is not joined";
    other.History().Undo(other);
    EXPECT_EQ(StateOf(*other.Bound()), otherBefore);
    EXPECT_EQ(other.History().Position(), 1u)
        << "joined to the stroke, not to the geometry's earlier step";
    geometry.History().Redo(geometry);
    EXPECT_EQ(StateOf(mesh), after);
    other.History().Redo(other);
    EXPECT_EQ(StateOf(*other.Bound()), otherAfter);
}

TEST_F(LevelChangeTest, SecondMeshDoesNotJoinAnEarlierStrokeWhenTheFirstChangedNothing) {
    RandomStroke(mesh, random, 5);
    const auto before = StateOf(mesh);
    const std::unique_ptr<MeshChange> idle(mesh.StartChange());
    const std::unique_ptr<MeshChange> busy(mesh.StartChange());
    MoveSome(*busy, random, 5);
    idle->Finish(true, false);
    busy->Finish(true, true);
    ASSERT_EQ(geometry.History().StepCount(), 2u);
    geometry.History().Undo(geometry);
    EXPECT_EQ(StateOf(mesh), before);
    EXPECT_EQ(geometry.History().Position(), 1u);
}

TEST_F(LevelChangeTest, StepHasTheNextLabel) {
    geometry.History().SetNextLabel("Pinch");
    RandomStroke(mesh, random, 3);
    EXPECT_EQ(geometry.History().Label(0), "Pinch");
}

TEST_F(LevelChangeTest, UndoBindsTheLevelOfTheStroke) {
    geometry.Subdivide();
    LevelMesh& fine = *geometry.Bound();
    const auto before = StateOf(fine);
    RandomStroke(fine, random, 40);
    const auto after = StateOf(fine);
    geometry.BindLevel(0);
    geometry.History().Undo(geometry);
    EXPECT_EQ(geometry.BoundIndex(), 1u);
    EXPECT_EQ(StateOf(fine), before);
    geometry.BindLevel(0);
    geometry.History().Redo(geometry);
    EXPECT_EQ(StateOf(fine), after);
}

}  // namespace
}  // namespace trovik::test
