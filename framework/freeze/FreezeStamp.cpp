// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeStamp.h"

#include "framework/freeze/BilinearValue.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

/// Limit for pixel coordinates; no real stamp is repeated often enough to reach it.
constexpr float farthest = 1e9f;

int64_t Wrapped(int64_t coordinate, int64_t size) {
    const int64_t rest = coordinate % size;
    return rest < 0 ? rest + size : rest;
}

}  // namespace

void FreezeStamp::Read(const BrushOperation& brush) {
    Image* image = brush.MaskImage(stampMask);
    width = image->Width();
    height = image->Height();
    enabled = brush.IsMaskEnabled(stampMask) && width > 0 && height > 0;
    pixels.clear();
    if (!enabled) return;
    factor = brush.MaskFactor(stampMask);
    tiled = brush.IsMaskTiled(stampMask);
    pixels.resize(static_cast<std::size_t>(width * height));
    PixelDescriptor grey{};
    grey.channels = 1;
    grey.format = 3;
    grey.depth = 5;
    image->getTile(0, 0, static_cast<int>(width), static_cast<int>(height), pixels.data(), &grey);
    const float offset = brush.MaskOffset(stampMask);
    const bool inverted = brush.IsMaskInverted(stampMask);
    for (float& pixel : pixels) pixel = inverted ? (1.0f - pixel) + offset : pixel - offset;
}

float FreezeStamp::Pixel(int64_t column, int64_t row) const {
    if (tiled) {
        column = Wrapped(column, width);
        row = Wrapped(row, height);
    } else if (column < 0 || row < 0 || column >= width || row >= height) {
        return 0.0f;
    }
    return pixels[static_cast<std::size_t>(row * width + column)];
}

float FreezeStamp::WeightAt(const Vector& position, const Matrix& toPixels) const {
    if (!enabled) return 1.0f;
    const auto at = [&](int column) {
        return (position.x * toPixels.m[0][column] + position.y * toPixels.m[1][column]) +
               (position.z * toPixels.m[2][column] + toPixels.m[3][column]);
    };
    const float w = at(3);
    const float u = at(0) / w;
    const float v = at(1) / w;
    if (!(std::fabs(u) < farthest) || !(std::fabs(v) < farthest)) return 0.0f;
    const float value =
        BilinearValue(u, v, [this](int64_t column, int64_t row) { return Pixel(column, row); });
    return std::clamp(value * factor, 0.0f, 1.0f);
}

}  // namespace trovik
