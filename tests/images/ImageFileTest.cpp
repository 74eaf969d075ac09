// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/images/ImageFile.h"
#include "tests/files/TemporaryFolder.h"

#include <OpenImageIO/imageio.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace trovik {
namespace {

using testing::HasSubstr;

/// Writes a file directly with the image library, so that its values are known.
template <class Sample>
std::string WriteSamples(const std::string& path,
                         const OIIO::TypeDesc& type,
                         int width,
                         int height,
                         int channels,
                         const std::vector<Sample>& samples) {
    const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(path);
    OIIO::ImageSpec spec(width, height, channels, type);
    spec.attribute("oiio:UnassociatedAlpha", 1);
    EXPECT_TRUE(output && output->open(path, spec) && output->write_image(type, samples.data()) &&
                output->close())
        << path;
    return path;
}

std::vector<std::uint32_t> Bits(const std::vector<float>& values) {
    std::vector<std::uint32_t> bits;
    bits.reserve(values.size());
    for (const float value : values) {
        bits.push_back(std::bit_cast<std::uint32_t>(value));
    }
    return bits;
}

TEST(ImageFile, EightBitValuesBecomeTheNearestFloatFractions) {
    const TemporaryFolder folder;
    std::vector<std::uint8_t> samples;
    std::vector<float> expected;
    for (int value = 0; value < 256; ++value) {
        samples.push_back(static_cast<std::uint8_t>(value));
        expected.push_back(static_cast<float>(value) / 255.0f);
    }
    for (const char* name : {"a.png", "a.tif"}) {
        SCOPED_TRACE(name);
        WriteImageFile(folder.Path(name), samples.data(), 32, 8, 1);
        const FloatImage image = ReadImageFile(folder.Path(name));
        EXPECT_EQ(image.width, 32u);
        EXPECT_EQ(image.height, 8u);
        EXPECT_EQ(image.channels, 1u);
        EXPECT_FALSE(image.isFloat);
        EXPECT_EQ(Bits(image.pixels), Bits(expected));
    }
}

TEST(ImageFile, SixteenAndThirtyTwoBitsKeepTheirResolution) {
    const TemporaryFolder folder;
    const std::vector<std::uint16_t> shorts = {0, 1, 32767, 32768, 65534, 65535};
    for (const char* name : {"s.png", "s.tif"}) {
        SCOPED_TRACE(name);
        const FloatImage image =
            ReadImageFile(WriteSamples(folder.Path(name), OIIO::TypeUInt16, 3, 2, 1, shorts));
        EXPECT_FALSE(image.isFloat);
        for (std::size_t i = 0; i < shorts.size(); ++i) {
            EXPECT_EQ(image.pixels[i], static_cast<float>(shorts[i]) / 65535.0f);
        }
    }
    const std::vector<std::uint32_t> words = {0, 1u << 16, 1u << 31, 0xFFFFFFFFu};
    const FloatImage image =
        ReadImageFile(WriteSamples(folder.Path("w.tif"), OIIO::TypeUInt32, 2, 2, 1, words));
    EXPECT_FALSE(image.isFloat);
    for (std::size_t i = 0; i < words.size(); ++i) {
        EXPECT_EQ(image.pixels[i], static_cast<float>(words[i] / 4294967295.0));
    }
}

TEST(ImageFile, FloatsKeepEveryBitAndSign) {
    const TemporaryFolder folder;
    FloatImage image;
    image.width = 3;
    image.height = 2;
    image.channels = 3;
    for (int i = 0; i < 18; ++i) {
        image.pixels.push_back(static_cast<float>(i - 9) * 1000.1f);
    }
    image.pixels[3] = -0.0f;
    image.pixels[4] = std::numeric_limits<float>::max();
    image.pixels[5] = std::numeric_limits<float>::denorm_min();
    for (const char* name : {"f.exr", "f.tif", "F.TIFF"}) {
        SCOPED_TRACE(name);
        WriteFloatImageFile(folder.Path(name), image);
        const FloatImage read = ReadImageFile(folder.Path(name));
        EXPECT_TRUE(read.isFloat);
        EXPECT_EQ(read.width, 3u);
        EXPECT_EQ(read.height, 2u);
        EXPECT_EQ(read.channels, 3u);
        EXPECT_EQ(Bits(read.pixels), Bits(image.pixels));
    }
    EXPECT_THAT(MessageOf<HostError>([&] { WriteFloatImageFile(folder.Path("f.png"), image); }),
                HasSubstr("floats can be written only to .exr, .tif and .tiff files"));
    EXPECT_EQ(folder.FileCount(), 3u);
}

TEST(ImageFile, ColoursAreNotMultipliedByAlpha) {
    const TemporaryFolder folder;
    const std::vector<std::uint8_t> samples = {200, 100, 50, 0, 255, 128, 1, 64};
    for (const char* name : {"a.png", "a.tif"}) {
        SCOPED_TRACE(name);
        WriteImageFile(folder.Path(name), samples.data(), 2, 1, 4);
        const FloatImage image = ReadImageFile(folder.Path(name));
        ASSERT_EQ(image.pixels.size(), 8u);
        for (std::size_t i = 0; i < 8; ++i) {
            EXPECT_EQ(image.pixels[i], static_cast<float>(samples[i]) / 255.0f);
        }
    }
}

TEST(ImageFile, SixteenBitsAreWrittenUnchanged) {
    const TemporaryFolder folder;
    const std::vector<std::uint16_t> plain{0, 1, 32768, 65535};
    for (const char* name : {"plain.tif", "plain.png"}) {
        WriteImageFile(folder.Path(name), plain.data(), 2, 2, 1);
        const FloatImage read = ReadImageFile(folder.Path(name));
        EXPECT_FALSE(read.isFloat);
        EXPECT_EQ(Bits({0.0f, 1.0f / 65535.0f, 32768.0f / 65535.0f, 1.0f}), Bits(read.pixels));
    }
    const std::vector<std::int16_t> withSigns{-32767, -1, 0, 32767};
    WriteImageFile(folder.Path("signed.tif"), withSigns.data(), 4, 1, 1);
    EXPECT_EQ(Bits({-1.0f, -1.0f / 32767.0f, 0.0f, 1.0f}),
              Bits(ReadImageFile(folder.Path("signed.tif")).pixels));
}

TEST(ImageFile, FilesHaveNoTimestamp) {
    const TemporaryFolder folder;
    const std::vector<std::uint8_t> pixels{1, 2, 3, 4};
    WriteImageFile(folder.Path("a.tif"), pixels.data(), 2, 2, 1);
    WriteFloatImageFile(folder.Path("a.exr"), {2, 2, 1, {1.0f, 2.0f, 3.0f, 4.0f}, true});
    for (const char* name : {"a.tif", "a.exr"}) {
        const auto input = OIIO::ImageInput::open(folder.Path(name));
        ASSERT_TRUE(input) << name;
        EXPECT_EQ("1970:01:01 00:00:00", input->spec().get_string_attribute("DateTime")) << name;
    }
}

TEST(ImageFile, SignedValuesAreRefusedForUnsignedFormats) {
    const TemporaryFolder folder;
    const std::int16_t value = -5;
    EXPECT_THAT(
        MessageOf<HostError>([&] { WriteImageFile(folder.Path("signed.png"), &value, 1, 1, 1); }),
        HasSubstr("signed.png: signed values"));
    EXPECT_EQ(0u, folder.FileCount());
}

TEST(ImageFile, TiledAndTallImagesKeepTheirRows) {
    const TemporaryFolder folder;
    constexpr int width = 1024;
    constexpr int height = 5000;
    std::vector<std::uint8_t> samples(std::size_t{width} * height);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<std::uint8_t>((i * 7 + i / width) % 251);
    }
    const std::string path = folder.Path("tiled.tif");
    const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(path);
    OIIO::ImageSpec spec(width, height, 1, OIIO::TypeUInt8);
    spec.tile_width = 48;
    spec.tile_height = 80;
    ASSERT_TRUE(output->open(path, spec));
    ASSERT_TRUE(output->write_image(OIIO::TypeUInt8, samples.data()));
    ASSERT_TRUE(output->close());
    WriteImageFile(folder.Path("rows.png"), samples.data(), width, height, 1);
    for (const std::string& each : {path, folder.Path("rows.png")}) {
        SCOPED_TRACE(each);
        const FloatImage image = ReadImageFile(each);
        ASSERT_EQ(image.pixels.size(), samples.size());
        std::size_t wrong = 0;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            wrong += image.pixels[i] != static_cast<float>(samples[i]) / 255.0f ? 1u : 0u;
        }
        EXPECT_EQ(wrong, 0u);
    }
}

TEST(ImageFile, JpegIsReadAndWritten) {
    const TemporaryFolder folder;
    const std::vector<std::uint8_t> grey(std::size_t{16} * 16 * 3, 128);
    WriteImageFile(folder.Path("a.jpg"), grey.data(), 16, 16, 3);
    const FloatImage image = ReadImageFile(folder.Path("a.jpg"));
    EXPECT_EQ(image.channels, 3u);
    ASSERT_EQ(image.pixels.size(), grey.size());
    for (const float value : image.pixels) {
        EXPECT_NEAR(value, 128.0f / 255.0f, 1.5f / 255.0f);
    }
}

TEST(ImageFile, SameValuesGiveTheSameBytes) {
    const TemporaryFolder folder;
    const std::vector<std::uint8_t> samples(300, 77);
    WriteImageFile(folder.Path("a.png"), samples.data(), 10, 10, 3);
    WriteImageFile(folder.Path("b.png"), samples.data(), 10, 10, 3);
    EXPECT_EQ(TemporaryFolder::Content(folder.Path("a.png")),
              TemporaryFolder::Content(folder.Path("b.png")));
}

TEST(ImageFile, SizeBeyondTheLimitIsRefusedFromTheHeader) {
    const TemporaryFolder folder;
    const std::vector<std::uint8_t> samples(300, 77);
    const std::string path = folder.Path("a.png");
    WriteImageFile(path, samples.data(), 10, 10, 3);
    EXPECT_NO_THROW(ReadImageFile(path, 1200));
    EXPECT_EQ(MessageOf<HostError>([&] { ReadImageFile(path, 1199); }),
              "cannot read image " + path +
                  ": 10 x 10 x 3 values take more than the limit of 1199 bytes as floats");

    // The header of an uncompressed Targa image of 30000 x 30000 pixels, without the pixels.
    std::string header(18, '\0');
    header[2] = 2;
    header[12] = header[14] = static_cast<char>(30000 & 255);
    header[13] = header[15] = static_cast<char>(30000 >> 8);
    header[16] = 24;
    const std::string huge = folder.Fill("huge.tga", header);
    EXPECT_EQ(
        MessageOf<HostError>([&] { ReadImageFile(huge); }),
        "cannot read image " + huge +
            ": 30000 x 30000 x 3 values take more than the limit of 1073741824 bytes as floats");
}

TEST(ImageFile, UnreadableFilesAreRefused) {
    const TemporaryFolder folder;
    EXPECT_EQ(MessageOf<HostError>([&] { ReadImageFile(folder.Path("none.png")); }),
              "cannot read " + folder.Path("none.png") + ": No such file or directory");
    std::filesystem::create_directory(folder.Path("dir.png"));
    EXPECT_EQ(MessageOf<HostError>([&] { ReadImageFile(folder.Path("dir.png")); }),
              "cannot read " + folder.Path("dir.png") + ": Is a directory");
    for (const char* name : {"a.png", "a.tif", "a.exr", "a.jpg", "a", "a.obj"}) {
        for (const std::string_view content : {"", "no image at all", "\x89PNG\r\n\x1a\n"}) {
            SCOPED_TRACE(name);
            const std::string path = folder.Fill(name, content);
            const std::string message = MessageOf<HostError>([&] { ReadImageFile(path); });
            EXPECT_THAT(message, HasSubstr("cannot read image " + path + ": "));
            EXPECT_EQ(message.find('\n'), std::string::npos) << message;
        }
    }
}

TEST(ImageFile, TruncatedFilesAreRefused) {
    const TemporaryFolder folder;
    FloatImage image;
    image.width = image.height = 64;
    image.channels = 1;
    for (std::uint32_t i = 0; i < 64 * 64; ++i) {
        image.pixels.push_back(static_cast<float>(i * 2654435761u % 9973));
    }
    std::vector<std::uint8_t> samples;
    for (const float value : image.pixels) {
        samples.push_back(static_cast<std::uint8_t>(static_cast<int>(value) & 255));
    }
    WriteImageFile(folder.Path("a.png"), samples.data(), 64, 64, 1);
    WriteFloatImageFile(folder.Path("a.tif"), image);
    WriteFloatImageFile(folder.Path("a.exr"), image);
    for (const char* name : {"a.png", "a.tif", "a.exr"}) {
        const std::string whole = TemporaryFolder::Content(folder.Path(name));
        for (const std::size_t eighth : {1u, 2u, 3u, 4u, 5u, 6u}) {
            SCOPED_TRACE(std::string(name) + " " + std::to_string(eighth));
            const std::string cut = whole.substr(0, whole.size() * eighth / 8);
            const std::string path = folder.Fill(std::string("cut-") + name, cut);
            EXPECT_THROW(ReadImageFile(path), HostError);
        }
    }
}

TEST(ImageFile, NonFiniteValuesAreRefusedWithTheirPixel) {
    const TemporaryFolder folder;
    FloatImage image;
    image.width = 4;
    image.height = 3;
    image.channels = 3;
    image.pixels.assign(36, 0.5f);
    image.pixels[3 * (2 * 4 + 1) + 2] = std::numeric_limits<float>::quiet_NaN();
    const std::string reason = ": the value of pixel (1, 2), channel 2 is not finite";
    EXPECT_EQ(MessageOf<HostError>([&] { WriteFloatImageFile(folder.Path("a.exr"), image); }),
              "cannot write image " + folder.Path("a.exr") + reason);
    EXPECT_EQ(folder.FileCount(), 0u);
    WriteSamples(folder.Path("a.exr"), OIIO::TypeFloat, 4, 3, 3, image.pixels);
    EXPECT_EQ(MessageOf<HostError>([&] { ReadImageFile(folder.Path("a.exr")); }),
              "cannot read image " + folder.Path("a.exr") + reason);
}

TEST(ImageFile, FailedWriteNamesThePathAndLeavesNothing) {
    const TemporaryFolder folder;
    const std::uint8_t pixel[3] = {1, 2, 3};
    const std::string lost = folder.Path("missing/a.png");
    EXPECT_EQ(MessageOf<HostError>([&] { WriteImageFile(lost, pixel, 1, 1, 3); }),
              "cannot write " + lost + ": No such file or directory");
    EXPECT_THAT(MessageOf<HostError>([&] { WriteImageFile(folder.Path("a.xyz"), pixel, 1, 1, 3); }),
                HasSubstr("no image format has the extension '.xyz'"));
    EXPECT_THAT(MessageOf<HostError>([&] { WriteImageFile(folder.Path("a.png"), pixel, 0, 1, 3); }),
                HasSubstr("it has no pixels"));
    EXPECT_EQ(folder.FileCount(), 0u);
}

}  // namespace
}  // namespace trovik
