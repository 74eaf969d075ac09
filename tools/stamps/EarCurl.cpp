// SPDX-License-Identifier: Apache-2.0
#include "tools/stamps/ShippedStamps.h"
#include "tools/stamps/VectorPainting.h"

namespace trovik::stamps {

namespace {

using Profile = std::array<ProfilePoint, 21>;

/// The profile behind and above: the hollow, the inner fold, the furrow, the rolled rim (which
/// overhangs both the furrow and the head), the back of the ear, and the head.
constexpr Profile Rolled = {
    {{0.000, 0.060}, {0.110, 0.070}, {0.215, 0.110}, {0.300, 0.210}, {0.365, 0.330}, {0.440, 0.405},
     {0.520, 0.395}, {0.590, 0.345}, {0.660, 0.315}, {0.725, 0.335}, {0.735, 0.395}, {0.690, 0.440},
     {0.690, 0.505}, {0.765, 0.545}, {0.855, 0.520}, {0.885, 0.440}, {0.830, 0.310}, {0.735, 0.150},
     {0.745, 0.020}, {0.950, 0.000}, {1.000, 0.000}}};

/// The profile below: the lower end of the hollow, and the lobe, which is soft and not rolled.
constexpr Profile Lobe = {
    {{0.000, 0.060}, {0.105, 0.075}, {0.200, 0.120}, {0.280, 0.205}, {0.345, 0.275}, {0.410, 0.300},
     {0.475, 0.300}, {0.540, 0.300}, {0.600, 0.305}, {0.655, 0.310}, {0.705, 0.308}, {0.750, 0.298},
     {0.785, 0.275}, {0.808, 0.240}, {0.815, 0.195}, {0.800, 0.145}, {0.775, 0.090}, {0.770, 0.035},
     {0.810, 0.000}, {0.950, 0.000}, {1.000, 0.000}}};

/// The profile in front, towards the face: the small flap over the hollow, then the cheek.
constexpr Profile Front = {
    {{0.000, 0.060}, {0.080, 0.068}, {0.155, 0.095}, {0.215, 0.150}, {0.255, 0.215}, {0.275, 0.270},
     {0.310, 0.295}, {0.355, 0.280}, {0.400, 0.235}, {0.440, 0.180}, {0.480, 0.130}, {0.525, 0.088},
     {0.575, 0.055}, {0.630, 0.031}, {0.690, 0.014}, {0.750, 0.004}, {0.800, 0.000}, {0.850, 0.000},
     {0.900, 0.000}, {0.950, 0.000}, {1.000, 0.000}}};

Point3 EarShape(Point2 p) {
    const double far = Length(p);
    const Point2 heading = far > 1e-9 ? p * (1.0 / far) : Point2{1.0, 0.0};
    // The face is on the left; the lobe is at the bottom, slightly forward.
    const double toFront = SmoothStep(0.25, 0.92, Dot(heading, Heading(0.53)));
    const double toLobe = SmoothStep(0.30, 0.95, Dot(heading, Heading(0.31)));
    const double rest = std::max(1.0 - toFront - toLobe, 0.0);
    const double total = rest + toFront + toLobe;
    const ProfilePoint rolled = OnProfile(Rolled, far);
    const ProfilePoint lobe = OnProfile(Lobe, far);
    const ProfilePoint front = OnProfile(Front, far);
    const double out = (rolled.out * rest + lobe.out * toLobe + front.out * toFront) / total;
    double up = (rolled.up * rest + lobe.up * toLobe + front.up * toFront) / total;

    // The ear is taller than it is wide, wider at the top, and leans back; the head around it does
    // not move.
    const double body = SmoothStep(0.97, 0.80, far);
    Point3 point{heading.x * out, 0.0, heading.y * out};
    point.right =
        Mix(point.right, point.right * (0.70 - 0.13 * point.down) - 0.10 * point.down, body);
    // The rear rim is farthest from the head.
    up *= 1.0 + 0.35 * body * Clamp01(0.5 + 0.6 * point.right);
    point.up = up;
    return point;
}

}  // namespace

FloatImage PaintEarCurl() { return PaintVectors(512, EarShape); }

}  // namespace trovik::stamps
