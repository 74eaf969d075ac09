// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/images/StampImage.h"
#include "framework/nodes/HostKernel.h"
#include "tests/files/TemporaryFolder.h"

#include <OpenImageIO/imageio.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <filesystem>
#include <memory>
#include <sys/resource.h>

namespace trovik::test {
namespace {

using testing::HasSubstr;

// 2 x 2 pixels with the palette indices 0, 1 / 2, 0; the palette is black, white, (51, 102, 0).
constexpr unsigned char palettePng[] = {
    0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48, 0x44, 0x52,
    0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x02, 0x08, 0x03, 0x00, 0x00, 0x00, 0x45, 0x68, 0xfd,
    0x16, 0x00, 0x00, 0x00, 0x09, 0x50, 0x4c, 0x54, 0x45, 0x00, 0x00, 0x00, 0xff, 0xff, 0xff, 0x33,
    0x66, 0x00, 0x66, 0x4c, 0x14, 0x99, 0x00, 0x00, 0x00, 0x0e, 0x49, 0x44, 0x41, 0x54, 0x78, 0xda,
    0x63, 0x60, 0x60, 0x64, 0x60, 0x62, 0x00, 0x00, 0x00, 0x0e, 0x00, 0x04, 0xdb, 0xe0, 0x32, 0x8e,
    0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82,
};
constexpr unsigned char oneBitPng[] = {
    0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48,
    0x44, 0x52, 0x00, 0x00, 0x00, 0x04, 0x00, 0x00, 0x00, 0x01, 0x01, 0x00, 0x00, 0x00,
    0x00, 0xd1, 0x47, 0x32, 0x60, 0x00, 0x00, 0x00, 0x0a, 0x49, 0x44, 0x41, 0x54, 0x78,
    0xda, 0x63, 0x58, 0x00, 0x00, 0x00, 0xa2, 0x00, 0xa1, 0x71, 0x05, 0xcb, 0x41, 0x00,
    0x00, 0x00, 0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82,
};
constexpr unsigned char hugePng[] = {
    0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48,
    0x44, 0x52, 0x00, 0x00, 0x75, 0x30, 0x00, 0x00, 0x75, 0x30, 0x08, 0x00, 0x00, 0x00,
    0x00, 0x43, 0x4c, 0xa7, 0x66, 0x00, 0x00, 0x00, 0x0b, 0x49, 0x44, 0x41, 0x54, 0x78,
    0xda, 0x63, 0x60, 0x40, 0x05, 0x00, 0x00, 0x10, 0x00, 0x01, 0xaa, 0x19, 0xf8, 0x82,
    0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82,
};

PixelDescriptor Descriptor(uint8_t channels) { return {channels, 3, 5, 0}; }

std::vector<float> TileOf(StampImage& image, uint8_t channels) {
    std::vector<float> values(std::size_t{image.Width()} * image.Height() * channels, -99.0f);
    const PixelDescriptor descriptor = Descriptor(channels);
    image.getTile(0,
                  0,
                  static_cast<int>(image.Width()),
                  static_cast<int>(image.Height()),
                  values.data(),
                  &descriptor);
    return values;
}

/// Writes a file directly with the image library.
template <class Sample>
std::string WriteFile(const std::string& path,
                      const OIIO::TypeDesc& type,
                      int channels,
                      const std::vector<Sample>& samples,
                      int bits = 0) {
    const auto output = OIIO::ImageOutput::create(path);
    const int pixels = static_cast<int>(samples.size()) / channels;
    OIIO::ImageSpec spec(pixels / 2, 2, channels, type);
    spec.attribute("oiio:UnassociatedAlpha", 1);
    if (bits != 0) spec.attribute("oiio:BitsPerSample", bits);
    EXPECT_TRUE(output && output->open(path, spec) && output->write_image(type, samples.data()) &&
                output->close())
        << path;
    return path;
}

template <std::size_t size>
std::string Bytes(const unsigned char (&data)[size]) {
    return {reinterpret_cast<const char*>(data), size};
}

long PeakMemoryKiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

class StampImageTest : public testing::Test {
protected:
    StampImageTest() { HostKernel::Instance(); }
    std::vector<float> Grey(const std::string& path) {
        return TileOf(*StampCache::Instance().Get(path), 1);
    }

    TemporaryFolder folder;
};

TEST_F(StampImageTest, IntegersOfEveryDepthKeepTheirValues) {
    const std::vector<uint8_t> bytes = {0, 1, 127, 255};
    const std::vector<float> ofBytes = {0.0f, 1.0f / 255.0f, 127.0f / 255.0f, 1.0f};
    for (const char* name : {"a.png", "a.tif"})
        EXPECT_EQ(Grey(WriteFile(folder.Path(name), OIIO::TypeUInt8, 1, bytes)), ofBytes) << name;
    const std::vector<uint16_t> words = {0, 1, 40000, 65535};
    const std::vector<float> ofWords = {0.0f, 1.0f / 65535.0f, 40000.0f / 65535.0f, 1.0f};
    for (const char* name : {"b.png", "b.tif"})
        EXPECT_EQ(Grey(WriteFile(folder.Path(name), OIIO::TypeUInt16, 1, words)), ofWords) << name;
    const std::vector<uint32_t> longs = {0, 1u << 31, 1u << 16, 0xffffffffu};
    const auto ofLongs = Grey(WriteFile(folder.Path("c.tif"), OIIO::TypeUInt32, 1, longs));
    EXPECT_EQ(ofLongs[1], static_cast<float>(2147483648.0 / 4294967295.0));
    EXPECT_EQ(ofLongs[3], 1.0f);
    const std::vector<int16_t> shorts = {-32767, 32767, -1, 0};
    EXPECT_EQ(Grey(WriteFile(folder.Path("d.tif"), OIIO::TypeInt16, 1, shorts)),
              (std::vector<float>{-1.0f, 1.0f, -1.0f / 32767.0f, 0.0f}));
}

TEST_F(StampImageTest, FloatsKeepTheirMagnitudeAndSign) {
    const std::vector<float> values = {-3.25f, 0.1f, 1e-30f, 70000.5f};
    for (const char* name : {"a.exr", "a.tif"})
        EXPECT_EQ(Grey(WriteFile(folder.Path(name), OIIO::TypeFloat, 1, values)), values) << name;
    const std::vector<float> halves = {-3.25f, 0.5f, 0.125f, 1000.0f};
    EXPECT_EQ(Grey(WriteFile(folder.Path("h.exr"),
                             OIIO::TypeHalf,
                             1,
                             [&] {
                                 std::vector<uint16_t> bits;
                                 for (const float v : halves) {
                                     const uint32_t word = std::bit_cast<uint32_t>(v);
                                     bits.push_back(
                                         static_cast<uint16_t>((word >> 16 & 0x8000u) |
                                                               ((word >> 23 & 0xffu) - 112) << 10 |
                                                               (word >> 13 & 0x3ffu)));
                                 }
                                 return bits;
                             }())),
              halves);
    const std::vector<double> doubles = {-3.25, 0.1, 1e-30, 70000.5};
    EXPECT_EQ(
        Grey(WriteFile(folder.Path("d.tif"), OIIO::TypeDesc(OIIO::TypeDesc::DOUBLE), 1, doubles)),
        values);
}

TEST_F(StampImageTest, JpegIsWithinItsCompressionLoss) {
    const std::vector<uint8_t> flat(32, 200);
    for (const float value : Grey(WriteFile(folder.Path("a.jpg"), OIIO::TypeUInt8, 1, flat)))
        EXPECT_NEAR(value, 200.0f / 255.0f, 0.01f);
}

TEST_F(StampImageTest, ReadsOneBitAndPaletteImages) {
    const std::vector<uint8_t> bits = {255, 0, 0, 255};
    EXPECT_EQ(Grey(WriteFile(folder.Path("bit.tif"), OIIO::TypeUInt8, 1, bits, 1)),
              (std::vector<float>{1.0f, 0.0f, 0.0f, 1.0f}));
    EXPECT_EQ(Grey(folder.Fill("bit.png", Bytes(oneBitPng))),
              (std::vector<float>{1.0f, 0.0f, 1.0f, 0.0f}));
    const auto image = StampCache::Instance().Get(folder.Fill("palette.png", Bytes(palettePng)));
    EXPECT_EQ(TileOf(*image, 3),
              (std::vector<float>{
                  0.0f, 0.0f, 0.0f, 1.0f, 1.0f, 1.0f, 0.2f, 0.4f, 0.0f, 0.0f, 0.0f, 0.0f}));
    EXPECT_NEAR(TileOf(*image, 1)[2], 0.2f, 1e-7f) << "the mean of the colours";
}

TEST_F(StampImageTest, ChannelsBecomeOneValueOrThree) {
    const auto image = [](uint32_t channels, std::vector<float> pixel, bool isFloat) {
        FloatImage floats;
        floats.width = floats.height = 1;
        floats.channels = channels;
        floats.pixels = std::move(pixel);
        floats.isFloat = isFloat;
        return StampImage(std::move(floats), 0);
    };
    using Values = std::vector<float>;
    StampImage grey = image(1, {0.5f}, true);
    EXPECT_EQ(TileOf(grey, 1), Values({0.5f}));
    EXPECT_EQ(TileOf(grey, 3), Values({0.0f, 0.5f, 0.0f})) << "a height";
    StampImage greyAlpha = image(2, {0.5f, 0.25f}, false);
    EXPECT_EQ(TileOf(greyAlpha, 1), Values({0.125f}));
    StampImage colour = image(3, {0.5f, -1.0f, 2.0f}, true);
    EXPECT_EQ(TileOf(colour, 1), Values({0.5f}));
    EXPECT_EQ(TileOf(colour, 3), Values({0.5f, -1.0f, 2.0f}));
    StampImage colourAlpha = image(4, {0.5f, 1.0f, 0.0f, 0.5f}, false);
    EXPECT_EQ(TileOf(colourAlpha, 1), Values({0.25f}));
    EXPECT_EQ(TileOf(colourAlpha, 3), Values({0.25f, 0.5f, 0.0f}));
    StampImage premultiplied = image(4, {0.5f, 1.0f, 0.0f, 0.5f}, true);
    EXPECT_EQ(TileOf(premultiplied, 3), Values({0.5f, 1.0f, 0.0f}));
    StampImage many = image(6, {3.0f, 6.0f, 9.0f, 50.0f, 50.0f, 50.0f}, true);
    EXPECT_EQ(TileOf(many, 1), Values({6.0f}));
    // The mean of equal channels is exactly their common value.
    for (const float v : {0.1f, 0.7f, 1.0f / 3.0f, -123.456f}) {
        StampImage even = image(3, {v, v, v}, true);
        EXPECT_EQ(TileOf(even, 1), Values({v}));
    }
}

TEST_F(StampImageTest, SinglePartOfTheImageCanBeRead) {
    FloatImage floats;
    floats.width = 3;
    floats.height = 3;
    floats.channels = 1;
    for (int i = 0; i < 9; ++i) floats.pixels.push_back(static_cast<float>(i));
    StampImage image(floats, 0);
    std::vector<float> values(4);
    const PixelDescriptor descriptor = Descriptor(1);
    image.getTile(1, 1, 2, 2, values.data(), &descriptor);
    EXPECT_EQ(values, (std::vector<float>{4.0f, 5.0f, 7.0f, 8.0f}));
}

TEST_F(StampImageTest, NamesOfDisplacementMapsGiveVectorImages) {
    const std::vector<float> values(12, 0.5f);
    for (const auto& [name, kind] : {std::pair("ear_vdm.exr", 1),
                                     std::pair("EAR.VDM.exr", 1),
                                     std::pair("a_VDM_b.exr", 1),
                                     std::pair("vdm.exr", 0),
                                     std::pair("ear.exr", 0)}) {
        const std::string path = WriteFile(folder.Path(name), OIIO::TypeFloat, 3, values);
        EXPECT_EQ(StampCache::Instance().Get(path)->ImageKind(), kind) << name;
    }
    std::filesystem::create_directory(folder.Path("x_vdm"));
    const std::string inside = WriteFile(folder.Path("x_vdm/a.exr"), OIIO::TypeFloat, 3, values);
    EXPECT_EQ(StampCache::Instance().Get(inside)->ImageKind(), 0)
        << "the name of a folder has no effect";
}

TEST_F(StampImageTest, BadFilesAreOneErrorThatNamesTheFile) {
    const auto refuse = [](const std::string& path, const std::string& reason) {
        const std::string message = MessageOf<HostError>([&] { StampCache::Instance().Get(path); });
        EXPECT_THAT(message, HasSubstr(path));
        EXPECT_THAT(message, HasSubstr(reason));
        EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    };
    refuse(folder.Path("none.tif"), "No such file");
    refuse(std::filesystem::path(folder.Path("none.tif")).parent_path().string(), "Is a directory");
    refuse(folder.Fill("empty.png", ""), "cannot read image");
    refuse(folder.Fill("text.tif", "not an image"), "cannot read image");
    refuse(folder.Fill("huge.png", Bytes(hugePng)), "30000 x 30000 x 1 values take more");
    refuse(WriteFile(folder.Path("nan.exr"),
                     OIIO::TypeFloat,
                     1,
                     std::vector<float>{0.0f, 1.0f, std::nanf(""), 0.0f}),
           "pixel (0, 1), channel 0 is not finite");
}

TEST_F(StampImageTest, TruncatedFilesAreRefused) {
    std::vector<uint8_t> noise(64 * 64 * 3);
    for (std::size_t i = 0; i < noise.size(); ++i)
        noise[i] = static_cast<uint8_t>((i * 2654435761u) >> 13);
    std::vector<float> floats(noise.begin(), noise.end());
    WriteFile(folder.Path("a.png"), OIIO::TypeUInt8, 3, noise);
    WriteFile(folder.Path("a.tif"), OIIO::TypeUInt8, 3, noise);
    WriteFile(folder.Path("a.jpg"), OIIO::TypeUInt8, 3, noise);
    WriteFile(folder.Path("a.exr"), OIIO::TypeFloat, 3, floats);
    for (const std::string name : {"a.png", "a.tif", "a.jpg", "a.exr"}) {
        const std::string whole = TemporaryFolder::Content(folder.Path(name));
        for (const std::size_t share : {4u, 2u}) {
            const std::string cut = folder.Fill("cut-" + std::to_string(share) + name,
                                                whole.substr(0, whole.size() / share));
            EXPECT_THAT(MessageOf<HostError>([&] { StampCache::Instance().Get(cut); }),
                        HasSubstr(cut));
        }
    }
}

TEST_F(StampImageTest, LimitIsReportedBeforeAnyAllocation) {
    const std::string path = folder.Fill("huge.png", Bytes(hugePng));
    const long before = PeakMemoryKiB();
    const std::string message = MessageOf<HostError>([&] { StampCache::Instance().Get(path); });
    EXPECT_THAT(message, HasSubstr("limit of 536870912 bytes"));
    EXPECT_LT(PeakMemoryKiB() - before, 50000) << "its pixels would take 3.6 GB";
    const std::vector<uint8_t> bytes(64, 7);
    const std::string small = WriteFile(folder.Path("s.tif"), OIIO::TypeUInt8, 1, bytes);
    EXPECT_THAT(MessageOf<HostError>([&] { StampCache::Instance().Get(small, 255); }),
                HasSubstr("limit of 255 bytes"));
    EXPECT_EQ(StampCache::Instance().Get(small, 256)->Width(), 32u);
    // The brush uses three values per pixel of a vector stamp.
    const std::string grey = WriteFile(folder.Path("s_vdm.tif"), OIIO::TypeUInt8, 1, bytes);
    EXPECT_THAT(MessageOf<HostError>([&] { StampCache::Instance().Get(grey, 767); }),
                HasSubstr("32 x 2 x 3 values"));
    EXPECT_EQ(StampCache::Instance().Get(grey, 768)->Width(), 32u);
}

TEST_F(StampImageTest, FileIsReadAgainOnlyAfterAChange) {
    StampCache& cache = StampCache::Instance();
    const std::string path =
        WriteFile(folder.Path("a.tif"), OIIO::TypeUInt8, 1, std::vector<uint8_t>(4, 255));
    const auto image = cache.Get(path);
    const uint64_t reads = cache.ReadCount();
    const uint32_t version = image->Version();
    EXPECT_EQ(cache.Get(path), image);
    // Another path to the same file.
    std::filesystem::create_symlink(path, folder.Path("link.tif"));
    EXPECT_EQ(cache.Get(folder.Path("link.tif")), image);
    EXPECT_EQ(cache.ReadCount(), reads);
    EXPECT_EQ(image->Version(), version);

    WriteFile(path, OIIO::TypeUInt8, 1, std::vector<uint8_t>(8, 0));
    EXPECT_EQ(cache.Get(path), image) << "every owner gets the new pixels";
    EXPECT_EQ(cache.ReadCount(), reads + 1);
    EXPECT_NE(image->Version(), version);
    EXPECT_EQ(TileOf(*image, 1), std::vector<float>(8, 0.0f));

    folder.Fill("a.tif", "damaged");
    EXPECT_THROW(cache.Get(path), HostError);
    EXPECT_EQ(image->Width(), 4u) << "the earlier image is unchanged";
}

TEST_F(StampImageTest, NoTwoImagesShareAddressAndVersion) {
    StampCache& cache = StampCache::Instance();
    const std::string path =
        WriteFile(folder.Path("a.tif"), OIIO::TypeUInt8, 1, std::vector<uint8_t>(4, 255));
    const uint32_t first = cache.Get(path)->Version();
    cache.DropIdle(0);
    const uint64_t reads = cache.ReadCount();
    EXPECT_GT(cache.Get(path)->Version(), first);
    EXPECT_EQ(cache.ReadCount(), reads + 1) << "it was not referenced any more";
}

TEST_F(StampImageTest, IdleStampsAreDroppedLeastRecentlyUsedFirst) {
    StampCache& cache = StampCache::Instance();
    cache.DropIdle(0);
    const auto file = [&](const char* name) {
        return WriteFile(folder.Path(name), OIIO::TypeUInt8, 1, std::vector<uint8_t>(64, 9));
    };
    const std::string a = file("a.tif");
    const std::string b = file("b.tif");
    const std::string c = file("c.tif");
    const auto held = cache.Get(a);
    cache.Get(b);
    cache.Get(c);
    // Each image takes 256 bytes, so there is room for one in addition to those in use.
    cache.DropIdle(300);
    const uint64_t reads = cache.ReadCount();
    cache.Get(a);
    cache.Get(c);
    EXPECT_EQ(cache.ReadCount(), reads);
    cache.Get(b);
    EXPECT_EQ(cache.ReadCount(), reads + 1);
}

}  // namespace
}  // namespace trovik::test
