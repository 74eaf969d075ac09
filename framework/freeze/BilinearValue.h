// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <cstdint>

namespace trovik {

/// Bilinear interpolation between four pixels, whose centres have integer coordinates; v points
/// downwards.
/// \param pixel  pixel(column, row) returns the pixel value for arbitrary integers.
template <typename Pixel>
float BilinearValue(float u, float v, Pixel pixel) {
    const float floorU = std::floor(u);
    const float floorV = std::floor(v);
    const auto column = static_cast<int64_t>(floorU);
    const auto row = static_cast<int64_t>(floorV);
    const float fu = u - floorU;
    const float fv = v - floorV;
    const float upper = pixel(column, row) * (1.0f - fu) + pixel(column + 1, row) * fu;
    const float lower = pixel(column, row + 1) * (1.0f - fu) + pixel(column + 1, row + 1) * fu;
    return upper * (1.0f - fv) + lower * fv;
}

}  // namespace trovik
