// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

#include <vector>

namespace trovik {

/// A brush's stamp, converted to weights. A stamp that is disabled or has no pixels has weight 1
/// everywhere.
class TROVIK_API FreezeStamp {
public:
    /// Reads the pixels. If o is the brush's stamp offset, a pixel value v is read as v - o
    /// or, if the stamp is inverted, as (1 - v) + o, as for sculpting. Cost: O(pixels) if the image
    /// has changed.
    void Read(const BrushOperation& brush);
    /// Returns a weight from 0 to 1: the bilinearly interpolated pixel times the stamp's factor; 0
    /// outside a stamp that is not tiled.
    /// \param position, toPixels  see StampPlacement::ToPixels.
    float WeightAt(const Vector& position, const Matrix& toPixels) const;

private:
    float Pixel(int64_t column, int64_t row) const;

    std::vector<float> pixels;
    int64_t width = 0;
    int64_t height = 0;
    float factor = 1.0f;
    bool tiled = false;
    bool enabled = false;
};

}  // namespace trovik
