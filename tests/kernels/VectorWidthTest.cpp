// SPDX-License-Identifier: Apache-2.0

/// \file Tests that every vector width gives bit-identical results, even for NaN and whole dabs.
#include "kernels/batch/BatchStages.h"
#include "kernels/stages/DabConstants.h"
#include "tests/brush/ToolRows.h"
#include "tests/fixture/StrokeFixture.h"
#include "tests/kernels/Widths.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <random>
#include <utility>

namespace trovik::test {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float tiny = std::numeric_limits<float>::denorm_min();
constexpr float oddities[] = {0.0f, -0.0f, infinity, -infinity, notANumber, tiny, 1e30f, -1e-30f};

/// Mostly ordinary numbers, occasionally a special value.
class Numbers {
public:
    explicit Numbers(uint32_t seed) : engine(seed) {}
    float Next() {
        if (engine() % 16 == 0) return oddities[engine() % std::size(oddities)];
        return static_cast<float>(engine() % 20001) * 1e-4f - 1.0f;
    }
    uint32_t Word() { return static_cast<uint32_t>(engine()); }

private:
    std::mt19937 engine;
};

class VectorWidths : public ::testing::Test {
protected:
    void SetUp() override {
        if (WiderWidths().empty()) GTEST_SKIP() << "the CPU supports only one width";
    }
};

constexpr uint32_t dabStamp = 77;

VertexBatch RandomBatch(Numbers& numbers) {
    VertexBatch batch{};
    for (uint32_t i = 0; i < VertexBatch::capacity; ++i) {
        for (int k = 0; k < 3; ++k) batch.start[i][k] = numbers.Next();
        batch.start[i][3] = std::bit_cast<float>(numbers.Word() % 4 == 0 ? dabStamp : 3u);
        batch.buildUp[i] = numbers.Next();
        batch.facing[i] = numbers.Next();
        batch.weight[i] = -5.0f;
    }
    return batch;
}

void ExpectSameWeights(StrokeFixture& bench, BuildUp buildUp, bool inWorldSpace) {
    Numbers numbers(1 + static_cast<uint32_t>(buildUp));
    SwiftStroke& brush = *bench.brush;
    const auto weigh = [&](VectorWidth width) {
        return StagesOf(width).weights[static_cast<unsigned>(buildUp)][inWorldSpace ? 1 : 0];
    };
    const float table[] = {1.0f, 0.75f, 0.5f, -0.0f, notANumber};
    for (int round = 0; round < 400; ++round) {
        DabConstants dab(brush, false);
        dab.center = HWVector(numbers.Next(), numbers.Next(), numbers.Next(), 0.0f);
        dab.radiusSquared = round % 20 == 0 ? numbers.Next() : 1.5f;
        dab.falloffTable = table;
        dab.falloffLast = 4;
        dab.falloffScale = round % 7 == 0 ? numbers.Next() : 3.0f;
        dab.buildUpRateCubed = 0.343f;
        dab.dabPressure = numbers.Next();
        dab.dabStamp = dabStamp;
        dab.facingActive = round % 3 == 0;
        dab.scaleAsWax = round % 2 == 0;
        dab.waxScale = 0.6f;
        for (HWVector& row : brush.brushSpace->meshToWorld)
            row = HWVector(numbers.Next(), numbers.Next(), numbers.Next(), numbers.Next());
        const uint32_t count = 1 + numbers.Word() % VertexBatch::capacity;
        VertexBatch four = RandomBatch(numbers);
        const VertexBatch before = four;
        const uint64_t within = weigh(VectorWidth::Four)(dab, count, four);
        for (const VectorWidth width : WiderWidths()) {
            VertexBatch wide = before;
            ASSERT_EQ(within, weigh(width)(dab, count, wide));
            for (uint32_t i = 0; i < count; ++i) {
                if (((within >> i) & 1u) == 0) continue;
                ASSERT_EQ(std::bit_cast<uint32_t>(four.weight[i]),
                          std::bit_cast<uint32_t>(wide.weight[i]))
                    << "width " << static_cast<int>(width) << ", round " << round << ", vertex "
                    << i;
                ASSERT_EQ(std::bit_cast<uint32_t>(four.buildUp[i]),
                          std::bit_cast<uint32_t>(wide.buildUp[i]));
            }
        }
    }
}

TEST_F(VectorWidths, WeightsAreBitIdentical) {
    StrokeFixture bench(SingleQuad());
    bench.Activate(Tool::Sculpt, 1);
    bench.Begin();
    for (const BuildUp buildUp : {BuildUp::None, BuildUp::Damps, BuildUp::DampsAndGrows})
        for (const bool inWorldSpace : {false, true})
            ExpectSameWeights(bench, buildUp, inWorldSpace);
    bench.End();
}

TEST_F(VectorWidths, PackedNormalsAreBitIdentical) {
    Numbers numbers(4);
    for (uint32_t count = 1; count <= PackedRow::capacity; ++count) {
        for (int round = 0; round < 20; ++round) {
            const uint32_t stride = count + 2;
            std::vector<HWVector> grid(3 * stride);
            for (HWVector& cell : grid)
                cell = HWVector(numbers.Next(), numbers.Next(), numbers.Next(), 0.0f);
            const HWVector scale(1.0f, 0.25f, 4.0f, 0.0f);
            const HWVector* const first = grid.data() + stride + 1;
            PackedRow four{};
            StagesOf(VectorWidth::Four).packNormals(first, stride, count, scale, four);
            for (const VectorWidth width : WiderWidths()) {
                PackedRow wide{};
                StagesOf(width).packNormals(first, stride, count, scale, wide);
                for (uint32_t i = 0; i < count; ++i)
                    ASSERT_EQ(four.normals[i], wide.normals[i]) << count << ", " << i;
            }
        }
    }
}

/// Compares the normals with those computed by the vector class's own operations, one cell at a
/// time.
TEST(PackedNormals, EqualThoseOfTheVectorOperations) {
    Numbers numbers(5);
    for (uint32_t count = 1; count <= 9; ++count) {
        for (int round = 0; round < 50; ++round) {
            const uint32_t stride = count + 2;
            std::vector<HWVector> grid(3 * stride);
            for (HWVector& cell : grid)
                cell = HWVector(numbers.Next(), numbers.Next(), numbers.Next(), 0.0f);
            const HWVector scale(0.5f, 1.0f, 2.0f, 0.0f);
            PackedRow packed{};
            const HWVector* cell = grid.data() + stride + 1;
            StagesOf(VectorWidth::Four).packNormals(cell, stride, count, scale, packed);
            for (uint32_t i = 0; i < count; ++i, ++cell) {
                HWVector normal =
                    ((cell[-1] - cell[1]) & (*(cell - stride) - *(cell + stride))) * scale;
                normal.Normalize();
                int integers[4];
                normal.StoreNormalAsInt(integers);
                const auto low = [](int word) { return static_cast<uint64_t>(word) & 0xffffu; };
                ASSERT_EQ(packed.normals[i],
                          low(integers[3]) | low(integers[2]) << 16 | low(integers[1]) << 32);
            }
        }
    }
}

std::vector<VertexBits> StrokeWith(VectorWidth width,
                                   Tool tool,
                                   BrushOperation::Modifier modifier,
                                   bool byFacingAngle) {
    const WithWidth chosen(width);
    StrokeFixture bench(RotatedCornerGrid(4), 4);
    bench.Activate(tool, 1);
    bench.brush->SetFalloffBasedOnFacingAngle(byFacingAngle, 20.0f, 60.0f);
    bench.Begin(modifier);
    for (const uint32_t face : {40u, 300u, 900u}) bench.Dab(bench.HitFace(face), 1.3f, 20.0f, 0.8f);
    bench.End();
    // This setting is shared by all brushes.
    bench.brush->SetFalloffBasedOnFacingAngle(false, 20.0f, 60.0f);
    return BitsOf(bench.Mesh());
}

/// Inverted plane tools have the opposite sign, and some tools clamp the move on one side.
TEST_F(VectorWidths, WholeDabsAreBitIdentical) {
    for (const Tool tool : allTools)
        for (const auto modifier : {BrushOperation::ModifierNone, BrushOperation::ModifierInvert})
            for (const bool byFacingAngle : {false, true})
                for (const VectorWidth width : WiderWidths())
                    EXPECT_EQ(StrokeWith(VectorWidth::Four, tool, modifier, byFacingAngle),
                              StrokeWith(width, tool, modifier, byFacingAngle))
                        << "width " << static_cast<int>(width) << ", tool "
                        << static_cast<int>(tool) << ", modifier " << modifier
                        << ", by facing angle " << byFacingAngle;
}

enum class Heights { Uneven, ZerosOfBothSigns, SomeNaN };

/// With zeros of both signs, or with some NaN positions, the bounds depend on the order in which
/// positions are added.
float HeightOf(uint32_t v, Heights heights) {
    const uint32_t drawn = v * 2654435761u >> 16;
    // Heights are much less than the side length of a face, which determines the patch size.
    const float height = 1e-8f * static_cast<float>(drawn);
    if (heights == Heights::ZerosOfBothSigns)
        return drawn % 5 == 0 ? 0.0f : drawn % 5 == 1 ? -0.0f : height;
    if (heights == Heights::SomeNaN && v % 211 == 17) return notANumber;
    return height;
}

/// All results of a dab as bytes: vertices, normals, records and the bounds of the moved vertices.
std::vector<uint8_t> DabWith(VectorWidth width,
                             Tool tool,
                             float radius,
                             int32_t patchLevel,
                             Heights heights,
                             bool inWorldSpace) {
    const WithWidth chosen(width);
    StrokeFixture bench(SingleQuad(), 7);
    if (inWorldSpace) bench.geometry->Transform().Set({1.0f, 1.25f, 1.5f}, {}, {});
    LevelMesh& mesh = bench.Mesh();
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
        mesh.vertices.array[v].z = HeightOf(v, heights);
        mesh.SetFreeze(v, static_cast<uint8_t>(v % 128));
    }
    std::vector<uint8_t> bytes;
    const auto add = [&bytes](const auto* first, std::size_t count) {
        const auto* raw = reinterpret_cast<const uint8_t*>(first);
        bytes.insert(bytes.end(), raw, raw + count * sizeof *first);
    };
    bench.Activate(tool, 1);
    bench.Begin();
    bench.Dab(bench.HitFace(2000), radius, 0.001f, 0.8f);
    EXPECT_EQ(bench.brush->patchLevel, patchLevel);
    EXPECT_EQ(bench.brush->nonUniformScale, inWorldSpace);
    add(&bench.brush->brushSpace->boundsMin, 1);
    add(&bench.brush->brushSpace->boundsMax, 1);
    bench.Dab(bench.HitFace(9000), radius, 0.001f, 0.8f);
    add(mesh.vertices.array, mesh.VertexCount());
    add(mesh.vertexNormals.array, mesh.VertexCount());
    add(mesh.changeRecords, mesh.changeRecordCount);
    add(&bench.brush->brushSpace->boundsMin, 1);
    add(&bench.brush->brushSpace->boundsMax, 1);
    bench.End();
    return bytes;
}

/// Patches of 128, 64 and fewer faces per side. The larger brushes move whole rows, the smaller
/// ones parts of rows.
TEST_F(VectorWidths, DabsOnPatchesOfEverySizeAreBitIdentical) {
    for (const Tool tool : {Tool::Sculpt, Tool::Flatten, Tool::Pinch, Tool::Smooth, Tool::Bulge}) {
        for (const auto& [radius, patchLevel] :
             {std::pair{4.0f, 7}, {1.5f, 6}, {0.7f, 4}, {0.2f, 3}, {0.05f, 1}}) {
            for (const Heights heights :
                 {Heights::Uneven, Heights::ZerosOfBothSigns, Heights::SomeNaN}) {
                for (const bool inWorldSpace : {false, true}) {
                    const auto dab =
                        [&, radius = radius, patchLevel = patchLevel](VectorWidth width) {
                            return DabWith(width, tool, radius, patchLevel, heights, inWorldSpace);
                        };
                    const auto expected = dab(VectorWidth::Four);
                    for (const VectorWidth width : WiderWidths())
                        EXPECT_TRUE(dab(width) == expected)
                            << "width " << static_cast<int>(width) << ", tool "
                            << static_cast<int>(tool) << ", radius " << radius << ", heights "
                            << static_cast<int>(heights) << ", in world space " << inWorldSpace;
                }
            }
        }
    }
}

}  // namespace
}  // namespace trovik::test
