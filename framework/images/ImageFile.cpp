// SPDX-License-Identifier: Apache-2.0
#include "framework/images/ImageFile.h"

#include "framework/images/ImageCodec.h"
#include "framework/images/ImageLimits.h"
#include "framework/images/PngFile.h"
#include "framework/io/FilePath.h"
#include "framework/io/OutputFile.h"
#include "framework/modules/Module.h"

#include <cassert>
#include <limits>
#include <thread>

namespace trovik {

namespace {

void EncodeAndWrite(const std::string& path, const EncodedImage& image, JobControl* job = nullptr) {
    assert(image.samples != nullptr || image.width == 0 || image.height == 0);
    if (image.width == 0 || image.height == 0 || image.channels == 0)
        ThrowImageError("write", path, "it has no pixels");
    constexpr std::uint32_t maxSide = std::numeric_limits<int>::max();
    if (image.width > maxSide || image.height > maxSide || image.channels > maxSide)
        ThrowImageError("write", path, "it has more pixels than any image format can store");
    // Encodes to memory first, because for some formats the library does not report a full disk.
    const std::vector<unsigned char> bytes = LoadedImageCodec().Encode(path, image, job);
    OutputFile file(path);
    file.Write(bytes.data(), bytes.size());
    file.Commit();
}

}  // namespace

const ImageCodec& LoadedImageCodec() {
    // The libraries map about 400 MiB of address space and start as many threads as there are
    // processors.
    static const auto& codec = ModuleInterface<ImageCodec>(
        {"trovik-openimageio.so",
         "images",
         (std::size_t{448} + std::size_t{16} * std::thread::hardware_concurrency()) << 20});
    return codec;
}

FloatImage ReadImageFile(const std::string& path, std::size_t maxBytes) {
    // Checked first, because the system's reason is more precise than the library's.
    RegularFileSize(path);
    if (IsPngFile(path)) return ReadPngFile(path, maxBytes);
    return LoadedImageCodec().Read(path, maxBytes);
}

std::string ReadImageDescription(const std::string& path) {
    RegularFileSize(path);
    if (IsPngFile(path)) return ReadPngDescription(path);
    return LoadedImageCodec().ReadDescription(path);
}

void WriteImageFile(const std::string& path,
                    const std::uint8_t* pixels,
                    std::uint32_t width,
                    std::uint32_t height,
                    std::uint32_t channels) {
    EncodeAndWrite(path, {SampleType::UInt8, pixels, width, height, channels, {}});
}

void WriteImageFile(const std::string& path,
                    const std::uint16_t* pixels,
                    std::uint32_t width,
                    std::uint32_t height,
                    std::uint32_t channels,
                    const std::string& description,
                    JobControl* job) {
    EncodeAndWrite(path, {SampleType::UInt16, pixels, width, height, channels, description}, job);
}

void WriteImageFile(const std::string& path,
                    const std::int16_t* pixels,
                    std::uint32_t width,
                    std::uint32_t height,
                    std::uint32_t channels) {
    const std::string extension = LowerExtension(path);
    if (extension != ".tif" && extension != ".tiff") {
        ThrowImageError("write", path, "signed values can be written only to .tif and .tiff files");
    }
    EncodeAndWrite(path, {SampleType::Int16, pixels, width, height, channels, {}});
}

void WriteFloatImageFile(const std::string& path,
                         const FloatImage& image,
                         const std::string& description,
                         JobControl* job) {
    const std::string extension = LowerExtension(path);
    if (extension != ".exr" && extension != ".tif" && extension != ".tiff") {
        ThrowImageError("write", path, "floats can be written only to .exr, .tif and .tiff files");
    }
    assert(image.pixels.size() == std::size_t{image.width} * image.height * image.channels &&
           "one value per pixel and channel");
    CheckImageFinite("write", path, image);
    EncodeAndWrite(path,
                   {SampleType::Float,
                    image.pixels.data(),
                    image.width,
                    image.height,
                    image.channels,
                    description},
                   job);
}

}  // namespace trovik
