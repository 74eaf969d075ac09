// SPDX-License-Identifier: Apache-2.0
#include "framework/render/RenderFile.h"

#include "framework/errors/HostError.h"
#include "framework/images/ImageFile.h"
#include "framework/io/FilePath.h"

#include <cassert>
#include <filesystem>

namespace trovik {

void CheckRenderPath(const std::string& path, bool transparent) {
    const std::string extension = LowerExtension(path);
    const bool hasAlpha = extension == ".png" || extension == ".tif" || extension == ".tiff";
    if (transparent && !hasAlpha)
        throw HostError("cannot write a transparent render to " + path +
                        ": only .png, .tif and .tiff files store transparency");
}

void WriteRender(const std::string& path, const RenderImage& picture) {
    const auto width = static_cast<uint32_t>(picture.width);
    const auto height = static_cast<uint32_t>(picture.height);
    if (picture.alpha.empty()) {
        WriteImageFile(path, picture.rgb.data(), width, height, 3);
        return;
    }
    CheckRenderPath(path, true);
    std::vector<uint8_t> pixels;
    pixels.reserve(picture.alpha.size() * 4);
    for (std::size_t i = 0; i < picture.alpha.size(); ++i) {
        pixels.insert(pixels.end(), &picture.rgb[i * 3], &picture.rgb[i * 3] + 3);
        pixels.push_back(picture.alpha[i]);
    }
    WriteImageFile(path, pixels.data(), width, height, 4);
}

std::string FramePath(const std::string& path, int frame) {
    assert(frame >= 0 && frame <= maxFrames);
    const std::filesystem::path whole(path);
    std::string digits = std::to_string(frame);
    digits.insert(0, 4 - digits.size(), '0');
    return (whole.parent_path() /
            (whole.stem().string() + "_" + digits + whole.extension().string()))
        .string();
}

}  // namespace trovik
