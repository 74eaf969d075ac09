// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/remesh/voxels/CellLoops.h"
#include "framework/remesh/voxels/DualSurface.h"
#include "tests/jobs/TestJob.h"
#include "tests/remesh/ReplacedSurface.h"

#include <functional>
#include <random>

namespace trovik::test {
namespace {

/// A field whose values are given by a function; blocks cover a cube around the origin.
class GivenField final : public VoxelField {
public:
    GivenField(int32_t blocks, const std::function<float(const Voxel&)>& value)
        : outside(value({blocks * blockSide, 0, 0})) {
        for (int32_t x = -blocks; x < blocks; ++x)
            for (int32_t y = -blocks; y < blocks; ++y)
                for (int32_t z = -blocks; z < blocks; ++z) {
                    const Voxel origin = {x * blockSide, y * blockSide, z * blockSide};
                    std::vector<float>& list = values.emplace_back();
                    for (int32_t i = 0; i < blockSide; ++i)
                        for (int32_t j = 0; j < blockSide; ++j)
                            for (int32_t k = 0; k < blockSide; ++k)
                                list.push_back(
                                    value({origin[0] + i, origin[1] + j, origin[2] + k}));
                    blockList.push_back({origin, nullptr});
                }
        for (std::size_t i = 0; i < values.size(); ++i) blockList[i].values = values[i].data();
    }
    const std::vector<Block>& Blocks() const override { return blockList; }
    float Value(const Voxel&) const override { return outside; }

private:
    float outside;
    std::vector<std::vector<float>> values;
    std::vector<Block> blockList;
};

/// A field that changes its sign where it has no blocks.
class InconsistentField final : public VoxelField {
public:
    InconsistentField() { blockList.push_back({{0, 0, 0}, values.data()}); }
    const std::vector<Block>& Blocks() const override { return blockList; }
    float Value(const Voxel& at) const override { return at[0] < 0 ? -1.0f : 1.0f; }

private:
    std::vector<float> values = std::vector<float>(blockSide * blockSide * blockSide, 1.0f);
    std::vector<Block> blockList;
};

void ExpectClosedQuads(const PolygonMesh& mesh) {
    for (const uint32_t size : mesh.faceSizes) ASSERT_EQ(size, 4u);
    ExpectManifold(mesh);
    LevelGeometry geometry(mesh);
    EXPECT_EQ(BorderEdgesOf(*geometry.Bound()), 0u);
}

TEST(DualSurface, RandomFieldsGiveClosedManifoldsOfQuads) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> number(-1.0f, 1.0f);
    for (int i = 0; i < 40; ++i) {
        const float bias = 0.1f * static_cast<float>(i % 9 - 4);
        const GivenField field(1, [&](const Voxel& at) {
            const float value = number(random) + bias;
            for (const int32_t c : at)
                if (c <= -7 || c >= 6) return 1.0f;
            return value;
        });
        const PolygonMesh mesh = DualSurfaceOf(field);
        EXPECT_GT(mesh.faceSizes.size(), 500u);
        EXPECT_EQ(mesh.faceSizes.size(), CountDualFaces(field));
        ExpectClosedQuads(mesh);
    }
}

TEST(DualSurface, FieldsOfMinusOneAndOneGiveManifolds) {
    std::mt19937 random(3);
    for (int i = 0; i < 20; ++i) {
        const GivenField field(1, [&](const Voxel& at) {
            const bool isInside = random() % 2 == 0;
            for (const int32_t c : at)
                if (c <= -7 || c >= 6) return 1.0f;
            return isInside ? -1.0f : 1.0f;
        });
        ExpectClosedQuads(DualSurfaceOf(field));
    }
}

TEST(DualSurface, FollowsTheField) {
    const GivenField sphere(2, [](const Voxel& at) {
        const Vector p(
            static_cast<float>(at[0]), static_cast<float>(at[1]), static_cast<float>(at[2]));
        return p.Length() - 12.3f;
    });
    TestJob job;
    const PolygonMesh mesh = DualSurfaceOf(sphere, &job);
    job.ExpectFinished();
    ExpectClosedQuads(mesh);
    for (const auto& p : mesh.positions)
        EXPECT_NEAR(Vector(p[0], p[1], p[2]).Length(), 12.3f, 0.03f);
    LevelGeometry geometry(mesh);
    EXPECT_NEAR(VolumeOf(*geometry.Bound()), 4.18879 * 12.3 * 12.3 * 12.3, 60.0)
        << "normals point outwards";
}

TEST(DualSurface, AllInsideOrAllOutsideHasNoFaces) {
    for (const float value : {-1.0f, 1.0f}) {
        const GivenField field(1, [&](const Voxel&) { return value; });
        EXPECT_TRUE(DualSurfaceOf(field).faceSizes.empty());
    }
}

TEST(DualSurface, RefusesInconsistentFields) {
    EXPECT_THAT(MessageOf<HostError>([] { DualSurfaceOf(InconsistentField()); }),
                testing::HasSubstr("the distances to the surface are inconsistent"));
}

TEST(CellLoops, ExchangingAnAmbiguousSideThatALoopPassesTwiceSplitsTheLoop) {
    int exchanges = 0;
    for (uint32_t code = 0; code < 256; ++code) {
        const auto corners = static_cast<uint8_t>(code);
        const uint8_t ambiguous = CellLoops::AmbiguousSides(corners);
        for (uint32_t joined = 0; joined < 64; ++joined) {
            if ((joined & ~uint32_t{ambiguous}) != 0) continue;
            const CellLoops loops(corners, static_cast<uint8_t>(joined));
            EXPECT_LE(loops.count, 4u);
            for (uint32_t side = 0; side < 6; ++side) {
                if ((ambiguous >> side & 1) == 0 || !loops.PassesTwice(side)) continue;
                const CellLoops split(corners, static_cast<uint8_t>(joined ^ 1u << side));
                EXPECT_EQ(split.count, loops.count + 1);
                EXPECT_FALSE(split.PassesTwice(side));
                ++exchanges;
            }
        }
    }
    EXPECT_GT(exchanges, 100);
}

}  // namespace
}  // namespace trovik::test
