// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/brushes/BrushSettings.h"
#include "tests/fixture/StrokeFixture.h"

#include <memory>
#include <utility>
#include <vector>

namespace trovik::test {

/// An image with pixels chosen by the test, which records how it is read. A single-channel read of
/// a pixel with three channels returns the first channel.
class TestImage : public Image {
public:
    TestImage(uint32_t imageWidth, uint32_t imageHeight, std::vector<float> values)
        : width(imageWidth), height(imageHeight), pixels(std::move(values)) {}

    uint32_t Width() const override { return width; }
    uint32_t Height() const override { return height; }
    int ImageKind() const override { return kind; }
    void getTile(
        int x, int y, int w, int h, void* buffer, const PixelDescriptor* descriptor) override {
        reads.push_back({x, y, w, h, *descriptor});
        const std::size_t count = std::size_t{width} * height;
        const std::size_t stored = count == 0 ? 1 : pixels.size() / count;
        auto* out = static_cast<float*>(buffer);
        for (std::size_t pixel = 0; pixel < count; ++pixel)
            for (std::size_t c = 0; c < descriptor->channels; ++c)
                *out++ = pixels[pixel * stored + (c < stored ? c : 0)];
    }

    struct Read {
        int x, y, width, height;
        PixelDescriptor descriptor;
    };
    uint32_t width;
    uint32_t height;
    std::vector<float> pixels;
    int kind = 0;
    std::vector<Read> reads;
};

/// Gives the brush a stamp with these pixels and the identity as its matrix: pixel centres are at
/// integer x and y.
inline TestImage& SetTestStamp(SwiftStroke& brush,
                               const QString& name,
                               uint32_t width,
                               uint32_t height,
                               std::vector<float> pixels) {
    auto image = std::make_shared<TestImage>(width, height, std::move(pixels));
    TestImage& given = *image;
    brush.SetStamp(true, name);
    BrushOperation::Private& settings = brush.Settings();
    settings.stampImage = image;
    settings.stampMatrix = Matrix();
    settings.stampTiled = false;
    settings.stampInverted = false;
    settings.stampBuildUp = false;
    settings.stampFactor = 1.0f;
    settings.stampOffset = 0.0f;
    return given;
}

}  // namespace trovik::test
