// SPDX-License-Identifier: Apache-2.0
#include "framework/images/ImageFile.h"
#include "tests/SourceFolder.h"
#include "tests/files/TemporaryFolder.h"
#include "tools/stamps/LatticeNoise.h"
#include "tools/stamps/ShippedStamps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <string>

namespace trovik::stamps {
namespace {

std::string ShippedFolder() { return test::SourceFolder() + "/stamps"; }

std::string ShippedPath(const ShippedStamp& stamp) { return ShippedFolder() + "/" + stamp.path; }

const ShippedStamp& StampAt(const std::string& path) {
    return *std::find_if(ShippedStamps().begin(),
                         ShippedStamps().end(),
                         [&path](const ShippedStamp& stamp) { return stamp.path == path; });
}

float Value(const FloatImage& image, std::uint32_t column, std::uint32_t row, std::uint32_t c = 0) {
    return image.pixels[(std::size_t{row} * image.width + column) * image.channels + c];
}

class EachStamp : public testing::TestWithParam<std::size_t> {
protected:
    const ShippedStamp& Stamp() const { return ShippedStamps()[GetParam()]; }
};

TEST_P(EachStamp, PaintedAgainIsBitIdenticalToTheShippedFile) {
    const TemporaryFolder folder;
    WriteStamp(Stamp(), folder.Path("anew"));
    const FloatImage anew = ReadImageFile(folder.Path("anew/" + std::string(Stamp().path)));
    const FloatImage shipped = ReadImageFile(ShippedPath(Stamp()));
    ASSERT_EQ(shipped.width, anew.width);
    ASSERT_EQ(shipped.height, anew.height);
    ASSERT_EQ(shipped.channels, anew.channels);
    EXPECT_EQ(shipped.isFloat, anew.isFloat);
    std::size_t different = 0;
    for (std::size_t i = 0; i < anew.pixels.size(); ++i)
        if (std::bit_cast<std::uint32_t>(shipped.pixels[i]) !=
            std::bit_cast<std::uint32_t>(anew.pixels[i]))
            ++different;
    EXPECT_EQ(0u, different) << "of " << anew.pixels.size() << " values";
}

TEST_P(EachStamp, BordersAreExactlyNeutral) {
    const FloatImage image = ReadImageFile(ShippedPath(Stamp()));
    const std::uint32_t last = image.width - 1;
    ASSERT_EQ(image.width, image.height);
    for (std::uint32_t i = 0; i <= last; ++i) {
        for (std::uint32_t c = 0; c < image.channels; ++c) {
            ASSERT_EQ(0.0f, Value(image, i, 0, c)) << "column " << i;
            ASSERT_EQ(0.0f, Value(image, i, last, c)) << "column " << i;
            ASSERT_EQ(0.0f, Value(image, 0, i, c)) << "row " << i;
            ASSERT_EQ(0.0f, Value(image, last, i, c)) << "row " << i;
        }
    }
}

TEST_P(EachStamp, HasTheKindOfValuesForItsUse) {
    const FloatImage image = ReadImageFile(ShippedPath(Stamp()));
    const auto [low, high] = std::minmax_element(image.pixels.begin(), image.pixels.end());
    switch (Stamp().file) {
        case StampFile::Heights:
            EXPECT_EQ(1u, image.channels);
            EXPECT_FALSE(image.isFloat);
            EXPECT_EQ(0.0f, *low);
            EXPECT_GT(*high, 0.9f);
            EXPECT_LE(*high, 1.0f);
            break;
        case StampFile::SignedHeights:
            EXPECT_EQ(1u, image.channels);
            EXPECT_FALSE(image.isFloat);
            EXPECT_LT(*low, -0.9f);
            EXPECT_GE(*low, -1.0f);
            break;
        case StampFile::Vectors:
            EXPECT_EQ(3u, image.channels);
            EXPECT_TRUE(image.isFloat);
            // Tools recognise a vector displacement map by this suffix in its name.
            EXPECT_NE(std::string::npos, std::string(Stamp().path).find("_vdm"));
            break;
    }
}

/// Tests for overhangs, which no height map can have: two points of the map are displaced to
/// positions one above the other. The map is treated as a surface of quads; seen from above, some
/// of them must face away.
TEST_P(EachStamp, OverhangsIfItIsAVectorMap) {
    if (Stamp().file != StampFile::Vectors) return;
    const FloatImage image = ReadImageFile(ShippedPath(Stamp()));
    const double cell = 1.0 / image.width;
    const auto at = [&](std::uint32_t x, std::uint32_t y, std::uint32_t c) {
        return static_cast<double>(Value(image, x, y, c));
    };
    std::size_t facingAway = 0;
    for (std::uint32_t y = 0; y + 1 < image.height; ++y) {
        for (std::uint32_t x = 0; x + 1 < image.width; ++x) {
            const double rightX = cell + at(x + 1, y, 0) - at(x, y, 0);
            const double rightY = at(x + 1, y, 2) - at(x, y, 2);
            const double downX = at(x, y + 1, 0) - at(x, y, 0);
            const double downY = cell + at(x, y + 1, 2) - at(x, y, 2);
            if (rightX * downY - rightY * downX < 0.0) ++facingAway;
        }
    }
    // More than two percent of all quads must face away.
    EXPECT_GT(facingAway, image.pixels.size() / 3 / 50);
}

INSTANTIATE_TEST_SUITE_P(
    Shipped,
    EachStamp,
    testing::Range(std::size_t{0}, ShippedStamps().size()),
    [](const auto& stamp) {
        std::string name = std::filesystem::path(ShippedStamps()[stamp.param].path).stem().string();
        std::erase(name, '_');
        return name;
    });

TEST(ShippedStamps, AreTheFilesThatTheToolsUse) {
    std::vector<std::string> paths;
    for (const ShippedStamp& stamp : ShippedStamps()) paths.emplace_back(stamp.path);
    for (const char* named : {"Stamps/bw_brickTile.tif",
                              "Stamps/bw_scale.tif",
                              "Stamps/knife.tif",
                              "Stamps/rubble.tif"})
        EXPECT_EQ(1, std::count(paths.begin(), paths.end(), named)) << named;
}

TEST(ShippedStamps, FolderHasOnlyPaintedStamps) {
    std::size_t files = 0;
    std::uintmax_t bytes = 0;
    for (const auto& entry : std::filesystem::directory_iterator(ShippedFolder() + "/Stamps")) {
        ++files;
        bytes += entry.file_size();
    }
    EXPECT_EQ(ShippedStamps().size(), files);
    EXPECT_LT(bytes, 15u << 20);
}

TEST(KnifeStamp, DabsAtAQuarterOfItsSideMakeAnEvenGroove) {
    const FloatImage knife = ReadImageFile(ShippedPath(StampAt("Stamps/knife.tif")));
    ASSERT_EQ(512u, knife.height);
    const auto depth = [&knife](std::uint32_t row) {
        float sum = 0.0f;
        for (std::uint32_t at = row % 128; at < 512; at += 128) sum += Value(knife, 256, at);
        return sum;
    };
    for (std::uint32_t row = 1; row < 128; ++row) EXPECT_NEAR(depth(0), depth(row), 0.01f) << row;
    EXPECT_LT(depth(0), -1.5f);
}

TEST(BrickStamp, SlopesAcrossItsSeamsAreNotSteeperThanWithin) {
    const FloatImage brick = ReadImageFile(ShippedPath(StampAt("Stamps/bw_brickTile.tif")));
    const std::uint32_t last = brick.width - 1;
    for (std::uint32_t i = 0; i <= last; ++i) {
        EXPECT_NEAR(Value(brick, 1, i), Value(brick, last - 1, i), 0.02f) << "row " << i;
        EXPECT_NEAR(Value(brick, i, 1), Value(brick, i, last - 1), 0.02f) << "column " << i;
    }
}

TEST(LatticeNoise, RepeatsAfterItsPeriodAndIsZeroOnTheLattice) {
    const Point2 p{2.375, 5.25};
    EXPECT_DOUBLE_EQ(Noise(p, 7, 3u), Noise({p.x + 7.0, p.y - 14.0}, 7, 3u));
    EXPECT_NE(Noise(p, 7, 3u), Noise({p.x + 1.0, p.y}, 7, 3u));
    EXPECT_NE(Noise(p, 7, 3u), Noise(p, 7, 4u));
    EXPECT_EQ(0.0, Noise({4.0, -3.0}, 7, 3u));
    EXPECT_DOUBLE_EQ(CellDistance(p, 7, 3u), CellDistance({p.x - 7.0, p.y + 7.0}, 7, 3u));
}

TEST(StableArithmetic, SineEqualsTheLibrarySineInFloatPrecision) {
    for (int i = -64; i <= 64; ++i) {
        const double turns = i / 32.0;
        EXPECT_NEAR(std::sin(turns * 6.283185307179586), SineOfTurns(turns), 1e-11) << turns;
    }
}

}  // namespace
}  // namespace trovik::stamps
