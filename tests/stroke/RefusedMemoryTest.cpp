// SPDX-License-Identifier: Apache-2.0

/// \file Makes allocations fail during a stroke, and checks the invariants that still hold between
/// dabs.
#include "framework/multires/LevelChange.h"
#include "tests/fixture/Triangles.h"
#include "tests/memory/MemoryLimit.h"
#include "tests/stamps/StampFixture.h"
#include "tests/stroke/FakeMesh.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <stdexcept>

namespace {

/// The array size for which allocations fail; 0 if none.
std::size_t refusedBytes = 0;

}  // namespace

void* operator new[](std::size_t size) {
    void* memory = size != 0 && size == refusedBytes ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace trovik::test {
namespace {

/// Makes the allocation of an array of this many mesh/change pairs fail during its lifetime.
class NoRoomForPairs {
public:
    explicit NoRoomForPairs(std::size_t pairs) { refusedBytes = pairs * sizeof(MeshChangePair); }
    ~NoRoomForPairs() { refusedBytes = 0; }
    NoRoomForPairs(const NoRoomForPairs&) = delete;
    NoRoomForPairs& operator=(const NoRoomForPairs&) = delete;
};

/// Runs `action` and expects that an allocation fails.
template <class Action>
void ExpectRefusal(Action action) {
    try {
        action();
        ADD_FAILURE() << "no allocation failed";
    } catch (Error* error) {
        EXPECT_EQ(error, Error::s_cBadAlloc);
    }
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
}

class RefusedPair : public testing::Test {
protected:
    ~RefusedPair() override { brush.EndStroke(); }
    /// Expects that the mesh/change pair of `other` was not stored: `other` has neither a change
    /// nor a binding.
    void ExpectUnbound(FakeGeometry& other) {
        EXPECT_EQ(brush.mesh, nullptr);
        ASSERT_EQ(log.size(), 3u);
        EXPECT_EQ(log[0], "lock " + other.level.name);
        EXPECT_EQ(log[1], "delete " + other.level.name + "0");
        EXPECT_EQ(log[2].substr(0, 8), "unlock " + other.level.name);
        EXPECT_EQ(other.level.walks, 0);
        log.clear();
    }

    CallLog log;
    FakeGeometry b{"B", log};
    StrokeFixture a{FlatGrid(3)};
    SwiftStroke& brush = *a.brush;
};

TEST_F(RefusedPair, OfTheFirstMeshLeavesNoBinding) {
    const auto begin = [&](Mesh* mesh) {
        brush.BeginStroke(mesh, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    };
    {
        const MemoryLimit limit(0);
        ExpectRefusal([&] { begin(&b.level); });
    }
    ExpectUnbound(b);
    EXPECT_FALSE(brush.strokeActive);
    EXPECT_EQ(brush.meshChanges.fill, 0u);

    begin(nullptr);
    b.level.changesStarted = 0;
    {
        const NoRoomForPairs noRoom(1);
        a.Dab(b.Hit(), 1.0f);
    }
    ExpectUnbound(b);
    EXPECT_TRUE(brush.strokeActive);
    EXPECT_EQ(brush.meshChanges.fill, 0u);
    // Once memory is available again, the next dab binds the mesh.
    a.Dab(b.Hit(), 1.0f);
    EXPECT_EQ(static_cast<Mesh*>(brush.mesh), &b.level);
    EXPECT_EQ(b.level.walks, 1);
    EXPECT_EQ(brush.CurrentChange()->mesh, &b.level);
}

TEST_F(RefusedPair, OfTheSecondMeshKeepsTheChangeOfTheFirst) {
    a.Begin();
    a.Dab(a.HitFace(4), 0.8f);
    MeshChange* const change = brush.CurrentChange();
    const uint32_t records = *change->recordCount;
    {
        const MemoryLimit limit(0);
        ExpectRefusal([&] { a.Dab(b.Hit(), 1.0f); });
    }
    ExpectUnbound(b);
    EXPECT_FALSE(brush.strokeActive);
    b.level.changesStarted = 0;
    {
        const NoRoomForPairs noRoom(3);
        EXPECT_TRUE(a.Dab(b.Hit(), 1.0f).IsEmpty());
    }
    ExpectUnbound(b);
    EXPECT_EQ(brush.meshChanges.fill, 1u);
    EXPECT_EQ(brush.CurrentChange(), change);
    EXPECT_EQ(*change->recordCount, records);
}

/// Both meshes are real. The second one is larger, so its records would not fit into the first
/// one's storage.
TEST(RefusedPairOfTwoMeshes, NothingOfTheSecondMeshIsTouched) {
    StrokeFixture a(FlatGrid(2));
    StrokeFixture b(FlatGrid(12));
    const auto bitsOfA = BitsOf(a.Mesh());
    const auto bitsOfB = BitsOf(b.Mesh());
    b.Begin();
    b.End();
    a.Begin();
    a.Dab(a.HitFace(0), 0.8f);
    const auto sculpted = BitsOf(a.Mesh());
    {
        const NoRoomForPairs noRoom(3);
        a.Dab(b.HitFace(140), 3.0f);
    }
    EXPECT_EQ(a.brush->mesh, nullptr);
    EXPECT_EQ(b.Mesh().OpenChange(), nullptr);
    EXPECT_TRUE(b.Mesh().Changes().empty());
    EXPECT_EQ(b.Mesh().LockHolder(), nullptr);
    EXPECT_EQ(BitsOf(b.Mesh()), bitsOfB);
    EXPECT_EQ(BitsOf(a.Mesh()), sculpted);
    a.Dab(b.HitFace(140), 3.0f);
    EXPECT_NE(BitsOf(b.Mesh()), bitsOfB);
    a.End();
    EXPECT_TRUE(a.geometry->History().Undo(*a.geometry));
    EXPECT_TRUE(b.geometry->History().Undo(*b.geometry));
    EXPECT_EQ(BitsOf(a.Mesh()), bitsOfA);
    EXPECT_EQ(BitsOf(b.Mesh()), bitsOfB);
}

/// Begins a stroke that does not reuse the records of the previous one.
void BeginWithoutRecords(StrokeFixture& bench) {
    LevelChange::DropSpareMemory();
    bench.Begin();
}

/// Applies a dab during which the memory for most of its records cannot be allocated.
void RefuseRecords(StrokeFixture& bench, uint32_t face, float radius) {
    // Memory for seven records; while the array grows, it holds 1 + 3 + 7 of them.
    const MemoryLimit limit(11 * sizeof(StoredVertexInfo) + 64);
    ExpectRefusal([&] { bench.Dab(bench.HitFace(face), radius, 0.1f); });
}

TEST(RefusedRecords, OfAWalkOverTrianglesLeaveNoPendingNormals) {
    StrokeFixture large(FlatTriangles(20));
    StrokeFixture small(FlatTriangles(1));
    SwiftStroke& brush = *large.brush;
    BeginWithoutRecords(large);
    const uint32_t stamp = large.Mesh().visitStamp;
    // Capacity for the traversal's pairs, which are stored before the records.
    brush.deferredNormals.SetCapacity(512);
    RefuseRecords(large, 799, 5.0f);
    EXPECT_EQ(brush.deferredNormals.fill, 0u);
    EXPECT_GT(large.Mesh().changeRecordCount, 0u);
    EXPECT_EQ(large.Mesh().visitStamp, stamp + 1)
        << "vertices marked by the traversal are not treated as visited";
    EXPECT_EQ(brush.positionGridAllocation, nullptr);
    // These normals would be those of vertices that the small mesh does not have.
    large.Dab(small.HitFace(0), 0.8f);
    EXPECT_EQ(static_cast<Mesh*>(brush.mesh), &small.Mesh());
    EXPECT_EQ(brush.deferredNormals.fill, 0u);
    large.End();
}

TEST(RefusedRecords, OfAWalkOverPatchesLeaveNoMarkOfTheNextDab) {
    StrokeFixture bench(FlatGrid(8));
    BeginWithoutRecords(bench);
    const uint32_t stamp = bench.Mesh().visitStamp;
    RefuseRecords(bench, 36, 3.0f);
    EXPECT_EQ(bench.Mesh().visitStamp, stamp + 1);
    std::vector<std::pair<uint32_t, float>> touched;
    for (uint32_t i = 0; i < bench.Mesh().changeRecordCount; ++i) {
        const uint32_t vertex = bench.Mesh().changeRecords[i].vertexIndex;
        touched.emplace_back(vertex, bench.Mesh().Position(vertex).z);
    }
    ASSERT_FALSE(touched.empty());
    for (uint32_t i = 0; i < bench.Mesh().changeRecordCount; ++i)
        bench.Mesh().changeRecords[i].buildUp = 0.0f;
    bench.Dab(bench.HitFace(36), 3.0f, 0.1f);
    for (const auto& [vertex, height] : touched)
        EXPECT_GT(bench.Mesh().Position(vertex).z, height) << vertex;
    bench.End();
}

TEST(RefusedRecords, OfSmoothReleaseBothGrids) {
    StrokeFixture bench(FlatGrid(8));
    bench.Activate(Tool::Smooth);
    bench.brush->affectAllLayers.SetValue(false, true);
    BeginWithoutRecords(bench);
    RefuseRecords(bench, 36, 3.0f);
    EXPECT_EQ(bench.brush->positionGridAllocation, nullptr);
    EXPECT_EQ(bench.brush->layerGridAllocation, nullptr);
    bench.End();
}

TEST(Unwinding, FromAPlaneSampleEndsTheSampling) {
    CallLog log;
    FakeGeometry geometry("A", log);
    StrokeFixture bench(FlatGrid(4));
    bench.Activate(Tool::Flatten);
    bench.brush->directionAttribute.SetValue(1, true);
    SwiftStroke& brush = *bench.brush;
    brush.BeginStroke(&geometry.level, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    const uint32_t stamp = geometry.level.visitStamp;
    geometry.level.onWalk = [&] {
        EXPECT_TRUE(brush.planeSampling);
        throw std::runtime_error("the traversal was interrupted");
    };
    EXPECT_THROW(bench.Dab(geometry.Hit(), 1.0f), std::runtime_error);
    EXPECT_FALSE(brush.planeSampling);
    EXPECT_EQ(geometry.level.visitStamp, stamp + 1);
    EXPECT_EQ(geometry.level.walks, 1);
    geometry.level.onWalk = nullptr;
    bench.Dab(geometry.Hit(), 1.0f);
    EXPECT_EQ(geometry.level.walks, 3) << "one to sample, one to sculpt";
    brush.EndStroke();
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
}

/// An image whose file was deleted.
class LostImage : public TestImage {
public:
    LostImage() : TestImage(4, 4, std::vector<float>(16, 1.0f)) {}
    void getTile(int x, int y, int w, int h, void* out, const PixelDescriptor* form) override {
        if (isLost) throw std::runtime_error("no such image");
        TestImage::getTile(x, y, w, h, out, form);
    }
    bool isLost = true;
};

TEST(Unwinding, FromAnUnreadableStampLeavesNoPartlyReadStamp) {
    StrokeFixture bench(FlatGrid(4));
    SwiftStroke& brush = *bench.brush;
    SetTestStamp(brush, QStringLiteral("plain"), 1, 1, {1.0f});
    auto lost = std::make_shared<LostImage>();
    brush.Settings().stampImage = lost;
    EXPECT_THROW(bench.Begin(), std::runtime_error);
    EXPECT_FALSE(brush.stampEnabled);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
    lost->isLost = false;
    bench.Begin();
    EXPECT_TRUE(brush.stampEnabled);
    ASSERT_EQ(lost->reads.size(), 1u) << "the pixels were read again";
    EXPECT_EQ(brush.stampPixels[15], 1.0f);
    bench.End();
}

}  // namespace
}  // namespace trovik::test
