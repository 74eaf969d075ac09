// SPDX-License-Identifier: Apache-2.0
#include "framework/images/StampImage.h"

#include "framework/errors/HostError.h"
#include "framework/io/FilePath.h"

#include <algorithm>
#include <cassert>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <utility>

namespace trovik {

namespace {

constexpr int imageOfValues = 0;
constexpr int imageOfDirections = 1;

struct Colour {
    float c[3];
};

/// Returns the three colour values of a pixel, multiplied by alpha for integer images with alpha.
Colour ColourOf(const float* pixel, uint32_t channels, bool isFloat) {
    const bool grey = channels <= 2;
    const bool hasAlpha = !isFloat && (channels == 2 || channels == 4);
    const float alpha = hasAlpha ? pixel[channels - 1] : 1.0f;
    if (grey) return {{0.0f, pixel[0] * alpha, 0.0f}};
    return {{pixel[0] * alpha, pixel[1] * alpha, pixel[2] * alpha}};
}

/// Computes the mean in double precision, so that the mean of equal values is exactly that value.
float MeanOf(const Colour& colour, bool grey) {
    if (grey) return colour.c[1];
    const double sum = (static_cast<double>(colour.c[0]) + static_cast<double>(colour.c[1])) +
                       static_cast<double>(colour.c[2]);
    return static_cast<float>(sum / 3.0);
}

}  // namespace

StampImage::StampImage(FloatImage pixels, int imageKind)
    : image(std::move(pixels)), kind(imageKind) {}

void StampImage::getTile(
    int x, int y, int width, int height, void* buffer, const PixelDescriptor* descriptor) {
    assert(x >= 0 && y >= 0 && width >= 0 && height >= 0);
    assert(static_cast<uint32_t>(x + width) <= image.width);
    assert(static_cast<uint32_t>(y + height) <= image.height);
    assert(descriptor->channels == 1 || descriptor->channels == 3);
    auto* out = static_cast<float*>(buffer);
    const bool grey = image.channels <= 2;
    for (int row = y; row < y + height; ++row) {
        const std::size_t first =
            static_cast<std::size_t>(row) * image.width + static_cast<std::size_t>(x);
        const float* pixel = image.pixels.data() + first * image.channels;
        for (int column = 0; column < width; ++column, pixel += image.channels) {
            const Colour colour = ColourOf(pixel, image.channels, image.isFloat);
            if (descriptor->channels == 1)
                *out++ = MeanOf(colour, grey);
            else
                out = std::copy(std::begin(colour.c), std::end(colour.c), out);
        }
    }
}

void StampImage::Replace(FloatImage newImage) {
    image = std::move(newImage);
    ContentChanged();
}

bool IsVectorStampName(const std::string& fileName) {
    std::string lower = fileName;
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) {
        return static_cast<char>(std::tolower(c));
    });
    return lower.find(".vdm") != std::string::npos || lower.find("_vdm") != std::string::npos;
}

StampCache& StampCache::Instance() {
    static StampCache cache;
    return cache;
}

StampCache::FileState StampCache::StateOf(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) ThrowFileError("read image", path, errno);
    return {static_cast<uint64_t>(status.st_dev),
            static_cast<uint64_t>(status.st_ino),
            static_cast<int64_t>(status.st_size),
            static_cast<int64_t>(status.st_mtim.tv_sec),
            static_cast<int64_t>(status.st_mtim.tv_nsec)};
}

namespace {

/// Reads a stamp within the size limit. The limit also applies to the brush's copy: if the name
/// identifies a vector displacement map, the brush requests three values per pixel, regardless of
/// the file's channels.
FloatImage ReadStamp(const std::string& path, std::size_t maxBytes) {
    FloatImage image = ReadImageFile(path, maxBytes);
    const std::size_t values = std::size_t{image.width} * image.height * 3;
    const bool isVector = IsVectorStampName(std::filesystem::path(path).filename().string());
    if (isVector && values > maxBytes / sizeof(float)) {
        throw HostError("cannot read image " + path + ": as a vector stamp it has " +
                        std::to_string(image.width) + " x " + std::to_string(image.height) +
                        " x 3 values, which take more than the limit of " +
                        std::to_string(maxBytes) + " bytes as floats");
    }
    return image;
}

}  // namespace

std::shared_ptr<StampImage> StampCache::Get(const std::string& path, std::size_t maxBytes) {
    // The identity is determined before the read, so that a file that changes during the read is
    // read again next time.
    const FileState state = StateOf(path);
    std::error_code failed;
    const std::filesystem::path canonical = std::filesystem::canonical(path, failed);
    const std::string name = failed ? path : canonical.string();
    const auto found = std::find_if(
        entries.begin(), entries.end(), [&name](const Entry& entry) { return entry.path == name; });
    if (found != entries.end()) {
        if (found->state != state) {
            found->image->Replace(ReadStamp(path, maxBytes));
            ++reads;
            found->state = state;
        }
        entries.splice(entries.begin(), entries, found);
        return entries.front().image;
    }

    FloatImage pixels = ReadStamp(path, maxBytes);
    ++reads;
    const std::string file = std::filesystem::path(path).filename().string();
    auto image = std::make_shared<StampImage>(
        std::move(pixels), IsVectorStampName(file) ? imageOfDirections : imageOfValues);
    // A brush identifies an image by its address and version. The version is advanced so that no
    // two images share an address and a version, even if one reuses the memory of another.
    for (uint64_t i = 0; i < reads; ++i) image->ContentChanged();
    entries.push_front({name, state, image});
    DropIdle(maxIdleStampBytes);
    return image;
}

void StampCache::DropIdle(std::size_t keepBytes) {
    std::size_t idle = 0;
    for (auto entry = entries.begin(); entry != entries.end();) {
        const bool held = entry->image.use_count() > 1;
        if (!held) idle += entry->image->Bytes();
        if (!held && idle > keepBytes) {
            idle -= entry->image->Bytes();
            entry = entries.erase(entry);
        } else {
            ++entry;
        }
    }
}

}  // namespace trovik
