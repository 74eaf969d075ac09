// SPDX-License-Identifier: Apache-2.0
#include "tools/stamps/LatticeNoise.h"
#include "tools/stamps/ShippedStamps.h"
#include "tools/stamps/StampPainting.h"

namespace trovik::stamps {

namespace {

constexpr int NoisePeriod = 4096;

/// Returns the distance of a point from the outline of the scale, positive inside. The outline is
/// pointed at the rear (y = 0.88) and round in front: two arcs form the sides, and a circle forms
/// the front.
double Inside(Point2 p) {
    constexpr double arcRadius = 0.9094;
    constexpr double arcCentre = 0.2294;
    const double right = arcRadius - Length(p - Point2{-arcCentre, 0.0});
    const double left = arcRadius - Length(p - Point2{arcCentre, 0.0});
    const double front = 0.80 - Length(p - Point2{0.0, 0.06});
    // The rear of the front circle must not cut off the tip.
    const double flanks = SmoothMin(left, right, 0.06);
    return p.y < 0.06 ? SmoothMin(flanks, front, 0.12)
                      : SmoothMin(flanks, front + 2.0 * (p.y - 0.06), 0.12);
}

double ScaleHeight(Point2 at) {
    const Point2 p{(at.x - 0.5) * 2.0, (at.y - 0.5) * 2.0};
    const Point2 wobble{Noise(p * 3.0, NoisePeriod, 11u), Noise(p * 3.0, NoisePeriod, 12u)};
    const double inside = Inside(p + wobble * 0.02);
    if (inside <= 0.0) return 0.0;

    // The scale rises from 0 in front, where the previous scale overlaps it, to the free rear rim.
    const double rise = SmoothStep(-0.80, 0.62, p.y);
    const double dome = 1.0 - 0.42 * Square(p.x / 0.70);
    const double edge = Clamp01(inside / 0.10);
    const double rim = std::sqrt(edge * (2.0 - edge));

    const double away = std::fabs(p.x + 0.02 * wobble.x);
    const double keel = (1.0 / (1.0 + Square(away / 0.055)) - 0.03) * SmoothStep(-0.70, 0.0, p.y);
    // Growth rings follow the outline; ribs fan out from the front.
    const double years = inside * 15.0 + 0.5 * LayeredNoise(p * 4.0, NoisePeriod, 3, 13u);
    const double phase = years - std::floor(years);
    const double ring = SmoothStep(0.0, 0.75, phase) * SmoothStep(1.0, 0.80, phase) - 0.5;
    const double rings = ring * SmoothStep(0.03, 0.12, inside) * SmoothStep(0.50, 0.20, inside);
    const double fan = p.x / (p.y + 1.35);
    const double ribs = LayeredNoise({fan * 26.0, p.y * 1.6}, NoisePeriod, 3, 14u);
    const double grain = LayeredNoise(p * 30.0, NoisePeriod, 3, 15u);

    const double relief = 0.032 * rings + 0.036 * ribs + 0.008 * grain;
    const double top =
        (0.10 + 0.90 * rise) * (0.80 * dome + 0.12 * keel) + relief * (0.25 + 0.75 * rise);
    return rim * Clamp01(top);
}

}  // namespace

FloatImage PaintReptileScale() { return PaintHeights(1024, 2, ScaleHeight); }

}  // namespace trovik::stamps
