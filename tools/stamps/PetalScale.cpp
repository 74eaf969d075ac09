// SPDX-License-Identifier: Apache-2.0
#include "tools/stamps/LatticeNoise.h"
#include "tools/stamps/ShippedStamps.h"
#include "tools/stamps/VectorPainting.h"

namespace trovik::stamps {

namespace {

/// The profile behind, towards the image's bottom: over the upper side, around the thin rim, back
/// along the lower side into the crease, and out to the flat surface.
constexpr std::array<ProfilePoint, 17> Behind = {{{0.000, 0.300},
                                                  {0.150, 0.330},
                                                  {0.300, 0.375},
                                                  {0.450, 0.425},
                                                  {0.590, 0.465},
                                                  {0.710, 0.490},
                                                  {0.800, 0.505},
                                                  {0.835, 0.470},
                                                  {0.790, 0.430},
                                                  {0.660, 0.375},
                                                  {0.500, 0.300},
                                                  {0.370, 0.200},
                                                  {0.340, 0.075},
                                                  {0.470, 0.000},
                                                  {0.700, 0.000},
                                                  {0.9375, 0.000},
                                                  {1.000, 0.000}}};

/// The profile in front: a low slope that ends below the adjacent petal.
constexpr std::array<ProfilePoint, 17> Before = {{{0.0000, 0.300},
                                                  {0.0625, 0.285},
                                                  {0.1250, 0.260},
                                                  {0.1875, 0.230},
                                                  {0.2500, 0.197},
                                                  {0.3125, 0.163},
                                                  {0.3750, 0.130},
                                                  {0.4375, 0.098},
                                                  {0.5000, 0.069},
                                                  {0.5625, 0.044},
                                                  {0.6250, 0.024},
                                                  {0.6875, 0.010},
                                                  {0.7500, 0.002},
                                                  {0.8125, 0.000},
                                                  {0.8750, 0.000},
                                                  {0.9375, 0.000},
                                                  {1.0000, 0.000}}};

Point3 PetalShape(Point2 p) {
    const double far = Length(p);
    const Point2 heading = far > 1e-9 ? p * (1.0 / far) : Point2{0.0, 1.0};
    // The profiles share a centre and are blended at the sides.
    const double behind = SmoothStep(-0.55, 0.60, heading.y);
    const ProfilePoint a = OnProfile(Before, far);
    const ProfilePoint b = OnProfile(Behind, far);
    ProfilePoint at{Mix(a.out, b.out, behind), Mix(a.up, b.up, behind)};

    const double body = SmoothStep(1.0, 0.72, far);
    const double upper = SmoothStep(0.45, 0.30, far);
    Point3 point{heading.x * at.out, at.up, heading.y * at.out};
    // The tip curls up, there is a hollow along the centre line, and the rim is wavy.
    const double tip = SmoothStep(0.55, 1.0, heading.y) * body * SmoothStep(0.10, 0.42, far);
    point.down += 0.11 * tip;
    point.up += 0.10 * tip * SmoothStep(0.25, 0.75, at.out);
    point.right *= 1.0 - 0.16 * body * behind;
    const double side = point.right / 0.62;
    point.up += 0.14 * body * behind * side * side;
    const double veinFan = point.right / (point.down + 0.75);
    const double veins = Noise({veinFan * 15.0 + 40.0, point.down * 0.9 + 40.0}, 4096, 31u);
    const double keel = 1.0 / (1.0 + Square(point.right / 0.035));
    point.up += upper * (0.016 * veins + 0.022 * keel * behind);
    return point;
}

}  // namespace

FloatImage PaintPetalScale() { return PaintVectors(512, PetalShape); }

}  // namespace trovik::stamps
