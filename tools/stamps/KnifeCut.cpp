// SPDX-License-Identifier: Apache-2.0
#include "tools/stamps/ShippedStamps.h"
#include "tools/stamps/StampPainting.h"

namespace trovik::stamps {

namespace {

/// The blade runs along the height of the image. The depth along the cut is a window function, so
/// that dabs at a spacing of half the stamp's side, or an integer fraction of it, add up to an even
/// groove.
double CutHeight(Point2 at) {
    constexpr double BladeHalfWidth = 0.055;
    const double along = std::fabs(at.y - 0.5) * 2.0;
    const double across = std::fabs(at.x - 0.5) / BladeHalfWidth;
    const double window = SmoothStep(1.0, 0.0, along);
    // A V with a slightly rounded bottom, to avoid aliasing, and raised lips on both sides.
    const double bottom = 0.06;
    const double slope = std::sqrt(across * across + bottom * bottom) - bottom;
    const double cut = -SmoothStep(1.15, 0.85, across) * Clamp01(1.0 - slope / (1.0 - bottom));
    const double lip = 0.16 * SmoothStep(0.85, 1.45, across) * SmoothStep(3.2, 1.45, across);
    return window * (cut + lip);
}

}  // namespace

FloatImage PaintKnifeCut() {
    // The window ends at the centres of the border pixels, so that these are exactly 0.
    constexpr double Size = 512.0;
    return PaintHeights(512, 1, [](Point2 p) {
        return CutHeight({p.x, 0.5 + (p.y - 0.5) * Size / (Size - 1.0)});
    });
}

}  // namespace trovik::stamps
