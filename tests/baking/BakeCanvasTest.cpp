// SPDX-License-Identifier: Apache-2.0
#include "framework/baking/BakeCanvas.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

constexpr MapValue neutral = {-1.0f, -1.0f, -1.0f};

BakeCanvas::Options Small(std::uint32_t side, std::uint32_t samplesPerSide, std::uint32_t padding) {
    BakeCanvas::Options options;
    options.width = side;
    options.height = side;
    options.channels = 1;
    options.samplesPerSide = samplesPerSide;
    options.padding = padding;
    return options;
}

/// A rectangle with a single value, in texels; rows are counted from the top.
struct Block {
    double left, top, right, bottom;
    float value;
};

std::array<TilePoint, 4> CornersOf(const Block& block, std::uint32_t side) {
    const auto at = [side](double x, double y) { return TilePoint{x / side, 1.0 - y / side}; };
    return {at(block.left, block.top),
            at(block.left, block.bottom),
            at(block.right, block.bottom),
            at(block.right, block.top)};
}

FloatImage Rasterized(BakeCanvas::Options options,
                      const std::vector<Block>& blocks,
                      BakeCanvas::Counts* counts = nullptr) {
    BakeCanvas canvas(options);
    for (const Block& block : blocks) {
        const MapValue value = {block.value, 0.0f, 0.0f};
        canvas.AddQuad(CornersOf(block, options.width), {value, value, value, value});
    }
    for (const Block& block : blocks) {
        const auto corners = CornersOf(block, options.width);
        const MapValue value = {block.value, 0.0f, 0.0f};
        for (std::size_t k = 0; k < 4; ++k)
            canvas.PadEdge(corners[k], corners[(k + 1) % 4], value, value);
    }
    BakeCanvas::Counts own;
    return canvas.Finish(neutral, counts == nullptr ? own : *counts);
}

/// Returns the texels as digits, one row per string, from the top; a dot stands for the neutral
/// value.
std::vector<std::string> TexelDigits(const FloatImage& image) {
    std::vector<std::string> rows;
    for (std::uint32_t y = 0; y < image.height; ++y) {
        std::string row;
        for (std::uint32_t x = 0; x < image.width; ++x) {
            const float value = image.pixels[y * image.width + x];
            row += value < 0.0f ? '.' : static_cast<char>('0' + std::lround(value));
        }
        rows.push_back(row);
    }
    return rows;
}

TEST(BakeCanvasTest, PaddingHasTheRequestedWidthAndStaysOutOfOtherIslands) {
    BakeCanvas::Counts counts;
    const FloatImage image =
        Rasterized(Small(12, 1, 2), {{1, 1, 4, 4, 1}, {7, 1, 9, 11, 2}}, &counts);
    // The middle column of the three-column gap is equally near to both blocks, and the first block
    // wins. Texels that are 1.5 away in both directions have a distance of 2.12.
    EXPECT_EQ(TexelDigits(image)[1], "11111122222.");
    // The expected value of each texel is computed from its distances to both blocks.
    for (std::uint32_t y = 0; y < 12; ++y) {
        for (std::uint32_t x = 0; x < 12; ++x) {
            const auto away = [x, y](const Block& b) {
                const double cx = x + 0.5;
                const double cy = y + 0.5;
                const double dx = std::max({b.left - cx, 0.0, cx - b.right});
                const double dy = std::max({b.top - cy, 0.0, cy - b.bottom});
                return dx * dx + dy * dy;
            };
            const double one = away({1, 1, 4, 4, 1});
            const double two = away({7, 1, 9, 11, 2});
            const float want = std::min(one, two) > 4.0 ? -1.0f : one <= two ? 1.0f : 2.0f;
            EXPECT_EQ(image.pixels[y * 12 + x], want) << x << ", " << y;
        }
    }
    EXPECT_EQ(counts.covered, 9u + 20u);
    EXPECT_EQ(counts.overlapping, 0u);
    std::uint64_t padded = 0;
    for (const float value : image.pixels) padded += value >= 0.0f ? 1u : 0u;
    EXPECT_EQ(counts.padded, padded - 29u);
}

TEST(BakeCanvasTest, PaddingContinuesTheValuesAlongTheEdge) {
    BakeCanvas canvas(Small(8, 1, 3));
    const auto corners = CornersOf({0, 4, 8, 8, 0}, 8);
    const MapValue low = {0.0f, 0.0f, 0.0f};
    const MapValue high = {8.0f, 0.0f, 0.0f};
    canvas.AddQuad(corners, {low, low, high, high});
    canvas.PadEdge(corners[3], corners[0], high, low);
    BakeCanvas::Counts counts;
    const FloatImage image = canvas.Finish(neutral, counts);
    for (std::uint32_t x = 0; x < 8; ++x) {
        EXPECT_EQ(image.pixels[0 * 8 + x], -1.0f) << "3.5 texels away";
        EXPECT_NEAR(image.pixels[1 * 8 + x], static_cast<float>(x) + 0.5f, 1e-5f);
        EXPECT_NEAR(image.pixels[6 * 8 + x], static_cast<float>(x) + 0.5f, 1e-5f);
    }
}

TEST(BakeCanvasTest, SharedEdgesBelongToExactlyOneTriangle) {
    // Some edges pass through texel centres, and some are slanted.
    for (const std::uint32_t samples : {1u, 2u, 4u}) {
        BakeCanvas canvas(Small(16, samples, 0));
        const auto at = [](double x, double y) { return TilePoint{x / 16.0, 1.0 - y / 16.0}; };
        const TilePoint middle = at(7.5, 6.5);
        const TilePoint border[] = {at(0, 0), at(16, 0), at(16, 16), at(0, 16)};
        const TilePoint half[] = {at(8.5, 0), at(16, 5.3), at(2.5, 16), at(0, 9.5)};
        const MapValue one = {1.0f, 0.0f, 0.0f};
        for (std::size_t k = 0; k < 4; ++k) {
            canvas.AddQuad({border[k], half[k], middle, half[(k + 3) % 4]}, {one, one, one, one});
            EXPECT_FALSE(canvas.LastOverlapped());
        }
        BakeCanvas::Counts counts;
        const FloatImage image = canvas.Finish(neutral, counts);
        EXPECT_EQ(counts.covered, 256u);
        EXPECT_EQ(counts.overlapping, 0u);
        for (const float value : image.pixels) EXPECT_FLOAT_EQ(value, 1.0f);
    }
}

TEST(BakeCanvasTest, PartlyCoveredTexelIsTheMeanOfTheCoveringSamples) {
    // The left block ends in the middle of column 2, where the right one begins.
    const FloatImage image = Rasterized(Small(4, 4, 0), {{0, 0, 2.5, 4, 2}, {2.5, 0, 4, 2, 6}});
    EXPECT_EQ(TexelDigits(image), (std::vector<std::string>{"2246", "2246", "222.", "222."}));
}

TEST(BakeCanvasTest, OverlapIsCountedAndTheFirstValueIsKept) {
    BakeCanvas::Counts counts;
    const FloatImage image =
        Rasterized(Small(6, 2, 0), {{0, 0, 4, 4, 1}, {3, 3, 6, 6, 2}}, &counts);
    EXPECT_EQ(
        TexelDigits(image),
        (std::vector<std::string>{"1111..", "1111..", "1111..", "111122", "...222", "...222"}));
    EXPECT_EQ(counts.overlapping, 1u);
}

TEST(BakeCanvasTest, GeometryOutsideTheTileIsClipped) {
    const FloatImage image = Rasterized(Small(4, 1, 1), {{-3, -2, 1, 2, 7}});
    EXPECT_EQ(TexelDigits(image), (std::vector<std::string>{"77..", "77..", "77..", "...."}));
}

TEST(BakeCanvasTest, DirectionsAreNormalised) {
    BakeCanvas::Options options = Small(2, 2, 1);
    options.channels = 3;
    options.directions = true;
    BakeCanvas canvas(options);
    const auto corners = CornersOf({0, 0, 2, 1, 0}, 2);
    const MapValue a = {3.0f, 0.0f, 4.0f};
    canvas.AddQuad(corners, {a, a, a, a});
    canvas.PadEdge(corners[1], corners[2], a, a);
    BakeCanvas::Counts counts;
    const FloatImage image = canvas.Finish({0.0f, 0.0f, 1.0f}, counts);
    for (std::size_t texel = 0; texel < 4; ++texel) {
        EXPECT_FLOAT_EQ(image.pixels[texel * 3], 0.6f);
        EXPECT_FLOAT_EQ(image.pixels[texel * 3 + 2], 0.8f);
    }
}

}  // namespace
}  // namespace trovik::test
