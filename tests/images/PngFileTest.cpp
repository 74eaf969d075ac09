// SPDX-License-Identifier: Apache-2.0

/// \file Tests PNG files of every kind, and damaged files, for which libpng must not print
/// anything.
#include "framework/errors/HostError.h"
#include "framework/images/PngFile.h"
#include "tests/files/TemporaryFolder.h"

#include <OpenImageIO/imageio.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <png.h>
#include <random>
#include <string>
#include <vector>

namespace trovik {
namespace {

using testing::HasSubstr;

/// Writes an image of random samples directly with libpng, with any colour type and bit depth of
/// the format.
std::string WritePng(const std::string& path, int colorType, int bitDepth, bool isInterlaced) {
    constexpr png_uint_32 width = 19;
    constexpr png_uint_32 height = 13;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    std::FILE* file = std::fopen(path.c_str(), "wb");
    png_init_io(png, file);
    png_set_IHDR(png,
                 info,
                 width,
                 height,
                 bitDepth,
                 colorType,
                 isInterlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    std::mt19937 random(1);
    if (colorType == PNG_COLOR_TYPE_PALETTE) {
        std::vector<png_color> palette(std::size_t{1} << bitDepth);
        for (png_color& color : palette) {
            color = {static_cast<png_byte>(random()),
                     static_cast<png_byte>(random()),
                     static_cast<png_byte>(random())};
        }
        png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
        const png_byte clear[] = {0, 99};
        png_set_tRNS(png, info, clear, 2, nullptr);
    }
    std::string key = "Description";
    std::string text = "what it shows";
    png_text description = {};
    description.compression = PNG_TEXT_COMPRESSION_NONE;
    description.key = key.data();
    description.text = text.data();
    png_set_text(png, info, &description, 1);
    png_write_info(png, info);
    std::vector<png_byte> bytes(png_get_rowbytes(png, info) * height);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<png_byte>(random()); });
    std::vector<png_bytep> rows;
    for (png_uint_32 y = 0; y < height; ++y) {
        rows.push_back(bytes.data() + y * png_get_rowbytes(png, info));
    }
    png_write_image(png, rows.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
    return path;
}

struct Kind {
    std::vector<int> depths;
    int colorType;
    std::uint32_t channels;
};

const Kind kinds[] = {{{1, 2, 4, 8, 16}, PNG_COLOR_TYPE_GRAY, 1},
                      {{8, 16}, PNG_COLOR_TYPE_GRAY_ALPHA, 2},
                      {{8, 16}, PNG_COLOR_TYPE_RGB, 3},
                      {{8, 16}, PNG_COLOR_TYPE_RGBA, 4},
                      {{1, 2, 4, 8}, PNG_COLOR_TYPE_PALETTE, 4}};

TEST(PngFile, EveryKindHasTheSamplesOfTheImageLibrary) {
    const TemporaryFolder folder;
    for (const Kind& kind : kinds) {
        for (const int depth : kind.depths) {
            for (const bool isInterlaced : {false, true}) {
                SCOPED_TRACE(testing::Message() << "type " << kind.colorType << ", " << depth
                                                << " bits" << (isInterlaced ? ", interlaced" : ""));
                const std::string path =
                    WritePng(folder.Path("a.png"), kind.colorType, depth, isInterlaced);
                const FloatImage image = ReadImageFile(path);
                OIIO::ImageSpec asTheyStand;
                asTheyStand.attribute("oiio:UnassociatedAlpha", 1);
                const auto input = OIIO::ImageInput::open(path, &asTheyStand);
                ASSERT_TRUE(input);
                const OIIO::ImageSpec spec = input->spec();
                ASSERT_EQ(image.width, static_cast<std::uint32_t>(spec.width));
                ASSERT_EQ(image.height, static_cast<std::uint32_t>(spec.height));
                ASSERT_EQ(image.channels, static_cast<std::uint32_t>(spec.nchannels));
                EXPECT_EQ(image.channels, kind.channels);
                EXPECT_FALSE(image.isFloat);
                std::vector<std::uint16_t> wide(image.pixels.size());
                std::vector<std::uint8_t> narrow(image.pixels.size());
                const bool isWide = depth == 16;
                ASSERT_TRUE(isWide ? input->read_image(
                                         0, 0, 0, spec.nchannels, OIIO::TypeUInt16, wide.data())
                                   : input->read_image(
                                         0, 0, 0, spec.nchannels, OIIO::TypeUInt8, narrow.data()));
                for (std::size_t i = 0; i < image.pixels.size(); ++i) {
                    ASSERT_EQ(image.pixels[i],
                              isWide ? static_cast<float>(wide[i]) / 65535.0f
                                     : static_cast<float>(narrow[i]) / 255.0f)
                        << i;
                }
                EXPECT_EQ(ReadImageDescription(path), "what it shows");
            }
        }
    }
}

TEST(PngFile, DamagedFilesAreRefusedWithOneLineAndNoLibraryOutput) {
    const TemporaryFolder folder;
    const std::string whole =
        TemporaryFolder::Content(WritePng(folder.Path("a.png"), PNG_COLOR_TYPE_RGB, 8, true));
    testing::internal::CaptureStderr();
    int refused = 0;
    for (std::size_t place = 0; place < whole.size(); place += 3) {
        std::string damaged = whole;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x55);
        for (const std::string& content : {whole.substr(0, place), damaged}) {
            const std::string path = folder.Fill("damaged.png", content);
            try {
                const FloatImage image = ReadImageFile(path);
                EXPECT_EQ(image.pixels.size(),
                          std::size_t{image.width} * image.height * image.channels);
            } catch (const HostError& error) {
                ++refused;
                const std::string message = error.what();
                EXPECT_THAT(message, HasSubstr("cannot read image " + path + ": "));
                EXPECT_EQ(message.find('\n'), std::string::npos);
            }
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_GT(refused, 300);
}

TEST(PngFile, ExtensionDoesNotMakeAFileAPng) {
    const TemporaryFolder folder;
    EXPECT_FALSE(IsPngFile(folder.Fill("a.png", "\x89PNG\r\n\x1a")));
    EXPECT_FALSE(IsPngFile(folder.Fill("b.png", "II*\0 no PNG")));
    EXPECT_TRUE(IsPngFile(folder.Fill("c.tif", "\x89PNG\r\n\x1a\n")));
}

}  // namespace
}  // namespace trovik
