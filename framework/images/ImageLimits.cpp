// SPDX-License-Identifier: Apache-2.0
#include "framework/images/ImageLimits.h"

#include "framework/errors/HostError.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace trovik {

void ThrowImageError(const char* doing, const std::string& path, std::string reason) {
    // Messages from libraries may have several lines and end with a line break; a HostError is one
    // line.
    std::replace(reason.begin(), reason.end(), '\n', ' ');
    reason.erase(reason.find_last_not_of(' ') + 1);
    if (reason.empty()) {
        reason = "the file is damaged or has an unknown format";
    }
    throw HostError(std::string("cannot ") + doing + " image " + path + ": " + reason);
}

void CheckImageSize(const std::string& path,
                    std::int64_t width,
                    std::int64_t height,
                    std::int64_t channels,
                    std::size_t maxBytes) {
    const std::string size = std::to_string(width) + " x " + std::to_string(height) + " x " +
                             std::to_string(channels) + " values";
    if (width <= 0 || height <= 0 || channels <= 0) {
        ThrowImageError("read", path, "its size is given as " + size);
    }
    // The product of width, height, channels and 4 may exceed 64 bits, so the check divides
    // instead.
    const std::uint64_t rowValues =
        static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(channels);
    const std::uint64_t maxValues = maxBytes / sizeof(float);
    if (static_cast<std::uint64_t>(height) > maxValues / rowValues) {
        ThrowImageError(
            "read",
            path,
            size + " take more than the limit of " + std::to_string(maxBytes) + " bytes as floats");
    }
}

void CheckImageFinite(const char* doing, const std::string& path, const FloatImage& image) {
    const auto bad = std::find_if_not(
        image.pixels.begin(), image.pixels.end(), [](float value) { return std::isfinite(value); });
    if (bad != image.pixels.end()) {
        const auto value = static_cast<std::size_t>(bad - image.pixels.begin());
        const std::size_t pixel = value / image.channels;
        ThrowImageError(doing,
                        path,
                        "the value of pixel (" + std::to_string(pixel % image.width) + ", " +
                            std::to_string(pixel / image.width) + "), channel " +
                            std::to_string(value % image.channels) + " is not finite");
    }
}

}  // namespace trovik
