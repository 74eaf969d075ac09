// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>

#include <array>

namespace trovik::studio {

/// An image that a frame shows.
struct ReferenceQuad {
    QImage image;
    /// x, y, w in clip space: lower left, lower right, upper left, upper right. The depth is not
    /// used.
    std::array<std::array<float, 3>, 4> corners;
    /// 0 to 1.
    float opacity = 1.0f;
    /// Drawn over the surface instead of behind it.
    bool isInFront = false;
};

}  // namespace trovik::studio
