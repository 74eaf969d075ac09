// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "tests/jobs/TestJob.h"
#include "tests/levels/GeometryState.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

template <typename Act>
std::string RefusalOf(Act act) {
    try {
        act();
    } catch (const HostError& error) {
        return error.what();
    }
    return "nothing was refused";
}

TEST(SubdivideBudget, ForecastEqualsTheMemoryOfTheLevels) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry geometry(zoo.mesh);
        const LevelForecast three = geometry.Forecast(3);
        uint64_t bytes = 0;
        for (int i = 0; i < 3; ++i) {
            const LevelForecast one = geometry.Forecast();
            geometry.Subdivide();
            EXPECT_EQ(one.faces, geometry.Bound()->faceCount);
            EXPECT_EQ(one.vertices, geometry.Bound()->VertexCount());
            EXPECT_EQ(one.levels, 1u);
            EXPECT_EQ(one.bytes, one.faces * 21 + one.vertices * 40);
            bytes += one.bytes;
        }
        EXPECT_EQ(three.faces, geometry.Bound()->faceCount);
        EXPECT_EQ(three.vertices, geometry.Bound()->VertexCount());
        EXPECT_EQ(three.levels, 3u);
        EXPECT_EQ(three.bytes, bytes);
    }
}

TEST(SubdivideBudget, RefusalReportsTheRequirementAndChangesNothing) {
    LevelGeometry geometry(Cube());
    geometry.Subdivide();
    geometry.BindLevel(0);
    geometry.Bound()->SetPosition(0, {-2, -2, -2});
    const std::string before = StateOfAll(geometry);
    const std::string reason =
        "subdividing to level 2 would give 96 faces and 98 vertices and "
        "take 5936 bytes; the budget is 5935";
    EXPECT_EQ(RefusalOf([&] { geometry.Subdivide(5935); }), reason);
    EXPECT_EQ(RefusalOf([&] { SubdivideAsStep(geometry, 5935); }), reason);
    EXPECT_TRUE(StateOfAll(geometry) == before);
    geometry.Subdivide(5936);
    EXPECT_EQ(geometry.LevelCount(), 3u);
}

TEST(SubdivideBudget, LevelCountsThatOverflowAreRefusedBeforeAnyLevelIsMade) {
    const LevelGeometry geometry(Cube());
    EXPECT_EQ(RefusalOf([&] { geometry.CheckForecast(30, ~uint64_t{0}); }),
              "subdividing to level 15 would give 6442450944 faces; a level holds at most "
              "1073741823");
}

TEST(SubdivideBudget, RefusesLevelsBeyondTheMemoryOfTheMachine) {
    LevelGeometry geometry(Cube());
    EXPECT_NO_THROW(geometry.CheckForecast(1, ~uint64_t{0}, 1000));
    const uint64_t further = uint64_t{1} << 60;
    const std::string reason = RefusalOf([&] { geometry.CheckForecast(1, ~uint64_t{0}, further); });
    EXPECT_EQ(reason.find("subdividing to level 1 would give 24 faces and 26 vertices and take " +
                          std::to_string(further + 24 * 21 + 26 * 40) + " bytes; only "),
              0u)
        << reason;
    EXPECT_NE(reason.find(" bytes of memory are free ("), std::string::npos) << reason;
}

TEST(SubdivideBudget, CancellationChangesNothing) {
    LevelGeometry geometry(GridMesh(200, 200));
    geometry.Subdivide();
    geometry.BindLevel(0);
    // A change that has to be propagated to the highest level.
    geometry.Bound()->SetPosition(7, {7, 0, 1});
    const std::string before = StateOfAll(geometry);
    uint64_t cancelled = 0;
    for (uint64_t at = 1;; ++at) {
        TestJob job(at, {1u << 16, {}});
        try {
            if (at % 2 == 0)
                geometry.Subdivide(LevelGeometry::unlimitedBytes, &job);
            else
                SubdivideAsStep(geometry, LevelGeometry::unlimitedBytes, &job);
            break;
        } catch (const Cancelled&) {
            ++cancelled;
        }
        ASSERT_EQ(job.reports, at) << "cancelled at once";
        ASSERT_TRUE(StateOfAll(geometry) == before) << at;
    }
    EXPECT_GT(cancelled, 30u) << "while propagating upwards, in topology, positions and normals";
    EXPECT_EQ(geometry.LevelCount(), 3u);
    EXPECT_EQ(geometry.Bound()->faceCount, 640000u);
}

}  // namespace
}  // namespace trovik::test
