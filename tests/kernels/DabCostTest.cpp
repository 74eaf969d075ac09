// SPDX-License-Identifier: Apache-2.0

/// \file Tests that a dab allocates only its grids, and that its work does not grow with the mesh.
#include "tests/fixture/StrokeFixture.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace {

std::size_t allocations = 0;
std::size_t allocatedBytes = 0;

void* Counted(std::size_t size) {
    ++allocations;
    allocatedBytes += size;
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

void* operator new(std::size_t size) { return Counted(size); }
void* operator new[](std::size_t size) { return Counted(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace trovik::test {
namespace {

struct DabWork {
    std::size_t allocations;
    std::size_t bytes;
    std::size_t facesTested;
    uint32_t records;
};

/// The cost of the second of two identical dabs at the centre of an n x n grid with two
/// subdivisions. The surroundings of the hit do not depend on n.
DabWork SecondDab(unsigned n, Tool tool) {
    StrokeFixture bench(GridMesh(n, n), 2);
    bench.Activate(tool);
    const uint32_t middle = (n / 2 * n + n / 2) * 16;
    const SurfacePoint hit = bench.HitFace(middle);
    bench.Begin();
    bench.Dab(hit, 1.2f, 0.1f);
    const std::size_t allocationsBefore = allocations;
    const std::size_t bytesBefore = allocatedBytes;
    bench.Dab(hit, 1.2f, 0.1f);
    DabWork work{allocations - allocationsBefore,
                 allocatedBytes - bytesBefore,
                 0,
                 bench.Mesh().changeRecordCount};
    for (uint32_t level = 0; level < bench.geometry->LevelCount(); ++level)
        work.facesTested += bench.geometry->Level(level)->LastFaceWalk().size();
    bench.End();
    return work;
}

TEST(DabCost, LaterDabAllocatesItsGridsAndNothingElse) {
    for (const Tool tool : {Tool::Sculpt, Tool::Pinch, Tool::Flatten, Tool::Smooth}) {
        SCOPED_TRACE(static_cast<int>(tool));
        const DabWork work = SecondDab(9, tool);
        EXPECT_EQ(work.allocations, 1u);
    }
}

TEST(DabCost, StaysTheSameOnALargerMesh) {
    const DabWork small = SecondDab(9, Tool::Sculpt);
    const DabWork large = SecondDab(45, Tool::Sculpt);
    EXPECT_GT(small.facesTested, 0u);
    EXPECT_EQ(large.facesTested, small.facesTested);
    EXPECT_EQ(large.records, small.records);
    EXPECT_EQ(large.allocations, small.allocations);
    EXPECT_EQ(large.bytes, small.bytes);
}

}  // namespace
}  // namespace trovik::test
