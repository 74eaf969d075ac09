// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/images/ImageFile.h"
#include "tools/stamps/StableArithmetic.h"

namespace trovik::stamps {

/// Paints a height stamp: `height(p)` returns the value at p, whose coordinates run from 0 to 1,
/// from left to right and from top to bottom. Each pixel is the mean of `samples` x `samples`
/// points, for antialiasing.
template <class Height>
FloatImage PaintHeights(std::uint32_t size, int samples, Height height) {
    FloatImage image{size, size, 1, {}, false};
    image.pixels.reserve(std::size_t{size} * size);
    const double scale = 1.0 / (static_cast<double>(size) * samples);
    for (std::uint32_t row = 0; row < size; ++row) {
        for (std::uint32_t column = 0; column < size; ++column) {
            double sum = 0.0;
            for (int j = 0; j < samples; ++j) {
                for (int i = 0; i < samples; ++i) {
                    const double x = static_cast<double>(column) * samples + i + 0.5;
                    const double y = static_cast<double>(row) * samples + j + 0.5;
                    sum += height(Point2{x * scale, y * scale});
                }
            }
            image.pixels.push_back(static_cast<float>(sum / (samples * samples)));
        }
    }
    return image;
}

}  // namespace trovik::stamps
