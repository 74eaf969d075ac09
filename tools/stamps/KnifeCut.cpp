// SPDX-License-Identifier: Apache-2.0
#include "tools/stamps/ShippedStamps.h"
#include "tools/stamps/StampPainting.h"

namespace trovik::stamps {

namespace {

/// The blade stands along the image's height. Its depth along the cut is a window that adds up to
/// an even groove when dabs follow each other at half the stamp's side or any whole part of that.
double CutHeight(Point2 at) {
    constexpr double BladeHalfWidth = 0.055;
    const double along = std::fabs(at.y - 0.5) * 2.0;
    const double across = std::fabs(at.x - 0.5) / BladeHalfWidth;
    const double window = SmoothStep(1.0, 0.0, along);
    // A V whose bottom is a hair round, so that it does not alias, and the lips of clay that the
    // blade pushes up on both sides.
    const double bottom = 0.06;
    const double slope = std::sqrt(across * across + bottom * bottom) - bottom;
    const double cut = -SmoothStep(1.15, 0.85, across) * Clamp01(1.0 - slope / (1.0 - bottom));
    const double lip = 0.16 * SmoothStep(0.85, 1.45, across) * SmoothStep(3.2, 1.45, across);
    return window * (cut + lip);
}

}  // namespace

FloatImage PaintKnifeCut() {
    // The window ends in the border pixels' middles, so that these are exactly neutral.
    constexpr double Size = 512.0;
    return PaintHeights(512, 1, [](Point2 p) {
        return CutHeight({p.x, 0.5 + (p.y - 0.5) * Size / (Size - 1.0)});
    });
}

}  // namespace trovik::stamps
