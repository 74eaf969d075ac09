// SPDX-License-Identifier: Apache-2.0
#include "tools/stamps/ShippedStamps.h"

#include "framework/errors/HostError.h"

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>

namespace trovik::stamps {

namespace {

template <class Sample>
void WriteHeights(const std::string& path, const FloatImage& image) {
    constexpr double largest = std::numeric_limits<Sample>::max();
    std::vector<Sample> samples;
    samples.reserve(image.pixels.size());
    for (const float value : image.pixels)
        samples.push_back(static_cast<Sample>(std::floor(value * largest + 0.5)));
    WriteImageFile(path, samples.data(), image.width, image.height, image.channels);
}

}  // namespace

const std::vector<ShippedStamp>& ShippedStamps() {
    static const std::vector<ShippedStamp> all = {
        {"Stamps/bw_brickTile.tif", StampFile::Heights, PaintBrickTile},
        {"Stamps/bw_scale.tif", StampFile::Heights, PaintReptileScale},
        {"Stamps/knife.tif", StampFile::SignedHeights, PaintKnifeCut},
        {"Stamps/rubble.tif", StampFile::Heights, PaintRubble},
        {"Stamps/ear_vdm.exr", StampFile::Vectors, PaintEarCurl},
        {"Stamps/hook_vdm.exr", StampFile::Vectors, PaintHook},
        {"Stamps/petal_vdm.exr", StampFile::Vectors, PaintPetalScale},
    };
    return all;
}

void WriteStamp(const ShippedStamp& stamp, const std::string& folder) {
    const std::filesystem::path path = std::filesystem::path(folder) / stamp.path;
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    if (error)
        throw HostError("cannot create the folder " + path.parent_path().string() + ": " +
                        error.message());
    const FloatImage image = stamp.paint();
    switch (stamp.file) {
        case StampFile::Heights:
            WriteHeights<std::uint16_t>(path.string(), image);
            break;
        case StampFile::SignedHeights:
            WriteHeights<std::int16_t>(path.string(), image);
            break;
        case StampFile::Vectors:
            WriteFloatImageFile(path.string(), image);
            break;
    }
}

}  // namespace trovik::stamps
