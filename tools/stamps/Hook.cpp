// SPDX-License-Identifier: Apache-2.0
#include "tools/stamps/LatticeNoise.h"
#include "tools/stamps/ShippedStamps.h"
#include "tools/stamps/VectorPainting.h"

#include <array>

namespace trovik::stamps {

namespace {

constexpr int SpineSteps = 256;
/// Points within this distance from the centre form the horn; the ring around them forms its root.
constexpr double RootEdge = 0.62;
constexpr double NeckRadius = 0.27;
constexpr double SpineLength = 1.45;

/// A point on the horn's centre line, in the vertical plane along `right`, and the direction there.
struct SpinePoint {
    double right;
    double up;
    Point2 heading;
};

/// Returns the centre line, which goes up, over and down again: a bend of more than half a turn.
const std::array<SpinePoint, SpineSteps + 1>& Spine() {
    static const auto spine = [] {
        std::array<SpinePoint, SpineSteps + 1> points{};
        double right = -0.22;
        double up = 0.13;
        for (int i = 0; i <= SpineSteps; ++i) {
            const double s = static_cast<double>(i) / SpineSteps;
            const Point2 heading = Heading(0.29 - 0.66 * s * (0.35 + 0.65 * s));
            points[static_cast<std::size_t>(i)] = {right, up, heading};
            right += heading.x * SpineLength / SpineSteps;
            up += heading.y * SpineLength / SpineSteps;
        }
        return points;
    }();
    return spine;
}

SpinePoint OnSpine(double s) {
    const double step = Clamp01(s) * SpineSteps;
    const int i = std::min(static_cast<int>(step), SpineSteps - 1);
    const double t = step - i;
    const SpinePoint& a = Spine()[static_cast<std::size_t>(i)];
    const SpinePoint& b = Spine()[static_cast<std::size_t>(i) + 1];
    return {Mix(a.right, b.right, t), Mix(a.up, b.up, t), Mix(a.heading, b.heading, t)};
}

/// Returns a point on the surface of the horn; `far` is 0 at its tip and 1 at its neck, and
/// `heading` is the direction around its centre line.
Point3 HornPoint(double far, Point2 heading) {
    const double s = 1.0 - far;
    const SpinePoint spine = OnSpine(s);
    // A round tip, an evenly tapered body, and growth rings that fade towards the tip.
    const double tip = far * (2.0 - far);
    const double taper = 0.12 + 0.88 * far;
    const double ring = SineOfTurns(s * 13.0 + 0.04 * heading.y);
    const double rings = 0.045 * ring * SmoothStep(0.02, 0.16, s) * SmoothStep(0.80, 0.45, s);
    const double grain =
        0.03 * Noise({heading.x * 3.0 + 40.0, heading.y * 3.0 + s * 2.0 + 40.0}, 4096, 21u);
    const double radius =
        NeckRadius * std::sqrt(tip) * taper * (1.0 + rings + grain * SmoothStep(0.0, 0.2, s));
    // The radius is measured perpendicular to the centre line: one component lies in its plane, the
    // other is perpendicular to that plane.
    const Point2 across{spine.heading.y, -spine.heading.x};
    return {spine.right + radius * heading.x * across.x,
            spine.up + radius * heading.x * across.y,
            radius * heading.y};
}

Point3 HookShape(Point2 p) {
    const double far = Length(p);
    const Point2 heading = far > 1e-9 ? p * (1.0 / far) : Point2{1.0, 0.0};
    if (far <= RootEdge) return HornPoint(far / RootEdge, heading);

    // The root: a cubic curve from the flat surface to the neck, where it has the direction of the
    // neck.
    const double t = (far - RootEdge) / (1.0 - RootEdge);
    constexpr double Reach = 1e-3;
    const Point3 neck = HornPoint(1.0, heading);
    const Point3 above = HornPoint(1.0 - Reach, heading);
    const Point3 slope = (neck + above * -1.0) * ((1.0 - RootEdge) / RootEdge / Reach);
    const Point3 rim{heading.x, 0.0, heading.y};
    const Point3 flat = rim * (1.0 - RootEdge);
    const double t2 = t * t;
    const double t3 = t2 * t;
    const Point3 point = neck * (2.0 * t3 - 3.0 * t2 + 1.0) + slope * (t3 - 2.0 * t2 + t) +
                         rim * (3.0 * t2 - 2.0 * t3) + flat * (t3 - t2);
    // Curvature fades out before the rim, because an abrupt end would be visible under light.
    const Point3 here{p.x, 0.0, p.y};
    return here + (point + here * -1.0) * SmoothStep(1.0, 0.35, t);
}

}  // namespace

FloatImage PaintHook() { return PaintVectors(512, HookShape); }

}  // namespace trovik::stamps
