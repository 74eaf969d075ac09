// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/images/ImageFile.h"
#include "tools/stamps/StableArithmetic.h"

#include <array>
#include <cstddef>

namespace trovik::stamps {

/// A point above the stamp, in units of the stamp's side: right and down as in the image, up out of
/// the surface.
struct Point3 {
    double right;
    double up;
    double down;
};

inline Point3 operator+(Point3 a, Point3 b) {
    return {a.right + b.right, a.up + b.up, a.down + b.down};
}
inline Point3 operator*(Point3 a, double f) { return {a.right * f, a.up * f, a.down * f}; }

/// The displaced position of the points at a certain distance from the disc's centre: distance from
/// the axis, and height.
struct ProfilePoint {
    double out;
    double up;
};

/// A smooth curve (a uniform cubic B-spline) from the centre of the disc, x = 0, to its rim, x = 1.
/// The surface has no crease at the centre. It blends into the flat surface beyond the rim if the
/// last two points are on the flat disc.
template <std::size_t Count>
ProfilePoint OnProfile(const std::array<ProfilePoint, Count>& points, double x) {
    constexpr int Last = static_cast<int>(Count) - 1;
    const auto point = [&points](int i) -> ProfilePoint {
        if (i < 0) {
            const ProfilePoint& p = points[static_cast<std::size_t>(-i)];
            return {-p.out, p.up};
        }
        if (i > Last) return {static_cast<double>(i) / Last, 0.0};
        return points[static_cast<std::size_t>(i)];
    };
    const double knot = x * Last;
    const int first = static_cast<int>(std::floor(knot));
    const double t = knot - first;
    const double s = 1.0 - t;
    const double weights[4] = {s * s * s / 6.0,
                               (3.0 * t * t * t - 6.0 * t * t + 4.0) / 6.0,
                               (3.0 * s * s * s - 6.0 * s * s + 4.0) / 6.0,
                               t * t * t / 6.0};
    ProfilePoint sum{0.0, 0.0};
    for (int i = 0; i < 4; ++i) {
        const ProfilePoint p = point(first - 1 + i);
        sum.out += weights[i] * p.out;
        sum.up += weights[i] * p.up;
    }
    return sum;
}

/// Paints a vector displacement map: `shape(p)` returns the position to which the surface point at
/// p moves. All coordinates are relative to the stamp's centre, in units of half a side. `shape` is
/// called only within the unit disc; points outside it do not move.
template <class Shape>
FloatImage PaintVectors(std::uint32_t size, Shape shape) {
    // Rounding to multiples of this step is invisible and reduces the compressed size to a third.
    constexpr double Step = 1.0 / (1 << 20);
    const auto stepped = [](double move) {
        return static_cast<float>(std::floor(move * 0.5 / Step + 0.5) * Step);
    };
    FloatImage image{size, size, 3, {}, true};
    image.pixels.reserve(std::size_t{size} * size * 3);
    // The disc ends inside the outermost pixels.
    const double half = (size - 3) * 0.5;
    for (std::uint32_t row = 0; row < size; ++row) {
        for (std::uint32_t column = 0; column < size; ++column) {
            const Point2 p{(column + 0.5 - size * 0.5) / half, (row + 0.5 - size * 0.5) / half};
            Point3 move{0.0, 0.0, 0.0};
            if (Length(p) < 1.0) move = shape(p) + Point3{-p.x, 0.0, -p.y};
            image.pixels.insert(image.pixels.end(),
                                {stepped(move.right), stepped(move.up), stepped(move.down)});
        }
    }
    return image;
}

}  // namespace trovik::stamps
