// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeFilters.h"
#include "tests/freeze/FreezeGrid.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

using Row = std::vector<int>;

TEST(FreezeFilters, InvertSubtractsEachAmountFrom127) {
    FreezeGrid grid(2);
    grid.Set(1, 1, 127);
    grid.Set(2, 1, 27);
    EXPECT_EQ(grid.Row(1, InvertedFreeze(grid.Level())), (Row{127, 0, 100}));
}

TEST(FreezeFilters, GrowingAddsOneRingOfNeighboursPerStep) {
    FreezeGrid grid(6);
    grid.Set(3, 3, 100);
    const auto once = GrownFreeze(grid.Level(), 1);
    EXPECT_EQ(grid.Row(3, once), (Row{0, 0, 100, 100, 100, 0, 0}));
    EXPECT_EQ(grid.Row(2, once), (Row{0, 0, 0, 100, 0, 0, 0})) << "over edges, not over corners";
    const auto twice = GrownFreeze(grid.Level(), 2);
    EXPECT_EQ(grid.Row(3, twice), (Row{0, 100, 100, 100, 100, 100, 0}));
    EXPECT_EQ(grid.Row(2, twice), (Row{0, 0, 100, 100, 100, 0, 0}));
    EXPECT_EQ(grid.Row(1, twice), (Row{0, 0, 0, 100, 0, 0, 0}));
    EXPECT_EQ(GrownFreeze(grid.Level(), 0), FreezeAmounts(grid.Level()));
}

TEST(FreezeFilters, ShrinkingIsGrowingOfTheUnmasked) {
    FreezeGrid grid(5);
    for (int x = 0; x < 6; ++x)
        for (int y = 0; y < 6; ++y) grid.Set(x, y, static_cast<uint8_t>((x * 37 + y * 11) % 128));
    std::vector<uint8_t> shrunk = ShrunkFreeze(grid.Level(), 2);
    const auto inverted = InvertedFreeze(grid.Level());
    for (uint32_t v = 0; v < inverted.size(); ++v) grid.Level().SetFreeze(v, inverted[v]);
    const auto grown = GrownFreeze(grid.Level(), 2);
    for (std::size_t v = 0; v < grown.size(); ++v) EXPECT_EQ(shrunk[v], 127 - grown[v]) << v;
}

TEST(FreezeFilters, BlurringAveragesWithTheNeighboursMean) {
    FreezeGrid grid(6);
    grid.Set(3, 3, 127);
    const auto once = BlurredFreeze(grid.Level(), 1);
    // 63.5 rounds up; a neighbour gets an eighth, 15.875.
    EXPECT_EQ(grid.Row(3, once), (Row{0, 0, 16, 64, 16, 0, 0}));
    EXPECT_EQ(grid.Row(2, once), (Row{0, 0, 0, 16, 0, 0, 0}));
    // There is no rounding between steps: 127 (1/4 + 4 / 64) = 39.69, 127 (1/16 + 1/16) = 15.875.
    const auto twice = BlurredFreeze(grid.Level(), 2);
    EXPECT_EQ(grid.Row(3, twice), (Row{0, 2, 16, 40, 16, 2, 0}));
    EXPECT_EQ(grid.Row(2, twice), (Row{0, 0, 4, 16, 4, 0, 0}));
}

TEST(FreezeFilters, BorderNeighbourCountsOncePerFaceAtItsEdge) {
    FreezeGrid grid(4);
    grid.Set(2, 1, 100);
    grid.Set(1, 0, 40);
    // Vertex (2, 0) is in two faces, so its neighbour (2, 1) counts twice, and (1, 0) and (3, 0)
    // count once: (200 + 40) / 4 / 2.
    EXPECT_EQ(grid.Row(0, BlurredFreeze(grid.Level(), 1))[2], 30);
}

TEST(FreezeFilters, UniformAmountIsUnchangedByEveryFilter) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry geometry(zoo.mesh);
        LevelMesh& level = *geometry.Level(0);
        for (uint32_t v = 0; v < level.VertexCount(); ++v) level.SetFreeze(v, 77);
        const auto before = FreezeAmounts(level);
        EXPECT_EQ(BlurredFreeze(level, 5), before);
        EXPECT_EQ(SharpenedFreeze(level, 5), before);
        EXPECT_EQ(GrownFreeze(level, 5), before);
        EXPECT_EQ(ShrunkFreeze(level, 5), before);
    }
}

TEST(FreezeFilters, SharpeningSteepensASlope) {
    FreezeGrid grid(6);
    const int slope[] = {0, 0, 20, 60, 100, 127, 127};
    for (int x = 0; x < 7; ++x)
        for (int y = 0; y < 7; ++y) grid.Set(x, y, static_cast<uint8_t>(slope[x]));
    // An inner vertex with amount a has two neighbours with amounts l and r and two with amount a,
    // so the result is 2a - (l + r + 2a) / 4. At x = 1, this is 0 - 20 / 4, which is clamped to 0;
    // at x = 4, it is 200 - 387 / 4 = 103.25.
    EXPECT_EQ(grid.Row(3, SharpenedFreeze(grid.Level(), 1)), (Row{0, 0, 15, 60, 103, 127, 127}));
}

TEST(FreezeFilters, ResultDoesNotDependOnTheOrderOfFaces) {
    const PolygonMesh forward = SphereQuads(3);
    PolygonMesh backward = forward;
    for (std::size_t face = 0; face < forward.faceSizes.size(); ++face) {
        const std::size_t from = forward.faceSizes.size() - 1 - face;
        for (std::size_t k = 0; k < 4; ++k)
            backward.faceVertices[face * 4 + k] = forward.faceVertices[from * 4 + (k + 1) % 4];
    }
    LevelGeometry a(forward);
    LevelGeometry b(backward);
    for (uint32_t v = 0; v < a.Level(0)->VertexCount(); ++v) {
        const auto amount = static_cast<uint8_t>(v * 29 % 128);
        a.Level(0)->SetFreeze(v, amount);
        b.Level(0)->SetFreeze(v, amount);
    }
    EXPECT_EQ(BlurredFreeze(*a.Level(0), 7), BlurredFreeze(*b.Level(0), 7));
    EXPECT_EQ(SharpenedFreeze(*a.Level(0), 3), SharpenedFreeze(*b.Level(0), 3));
    EXPECT_EQ(GrownFreeze(*a.Level(0), 3), GrownFreeze(*b.Level(0), 3));
    EXPECT_NE(BlurredFreeze(*a.Level(0), 7), FreezeAmounts(*a.Level(0)));
}

}  // namespace
}  // namespace trovik::test
