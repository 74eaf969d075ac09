// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cmath>

/// \file
/// Arithmetic for the patterns. It uses only operations whose results IEEE 754 defines exactly,
/// because the sines and powers of system libraries differ in their last bits between processors,
/// and a regenerated stamp must be identical to the installed one.
namespace trovik::stamps {

inline double Clamp01(double x) { return std::clamp(x, 0.0, 1.0); }

/// Interpolates smoothly from 0 at `from` to 1 at `to`, with zero slope at both ends and constant
/// values beyond them. `from` may be greater than `to`.
inline double SmoothStep(double from, double to, double x) {
    const double t = Clamp01((x - from) / (to - from));
    return t * t * (3.0 - 2.0 * t);
}

inline double Mix(double a, double b, double t) { return a + (b - a) * t; }
inline double Square(double x) { return x * x; }

/// Returns the minimum of two numbers, with the crease rounded over a width of `round`.
inline double SmoothMin(double a, double b, double round) {
    const double h = std::max(round - std::fabs(a - b), 0.0) / round;
    return std::min(a, b) - h * h * round * 0.25;
}
inline double SmoothMax(double a, double b, double round) { return -SmoothMin(-a, -b, round); }

/// Returns the sine of an angle in full turns; the error is less than 1e-11.
inline double SineOfTurns(double turns) {
    double t = turns - std::floor(turns + 0.5);
    if (t > 0.25) t = 0.5 - t;
    if (t < -0.25) t = -0.5 - t;
    const double x = t * 6.283185307179586;
    const double s = x * x;
    double sum = 1.0 - s / 210.0;
    sum = 1.0 - s / 156.0 * sum;
    sum = 1.0 - s / 110.0 * sum;
    sum = 1.0 - s / 72.0 * sum;
    sum = 1.0 - s / 42.0 * sum;
    sum = 1.0 - s / 20.0 * sum;
    sum = 1.0 - s / 6.0 * sum;
    return x * sum;
}
inline double CosineOfTurns(double turns) { return SineOfTurns(turns + 0.25); }

struct Point2 {
    double x;
    double y;
};
inline Point2 operator+(Point2 a, Point2 b) { return {a.x + b.x, a.y + b.y}; }
inline Point2 operator-(Point2 a, Point2 b) { return {a.x - b.x, a.y - b.y}; }
inline Point2 operator*(Point2 a, double f) { return {a.x * f, a.y * f}; }
inline Point2 Mix(Point2 a, Point2 b, double t) { return a * (1.0 - t) + b * t; }
inline double Dot(Point2 a, Point2 b) { return a.x * b.x + a.y * b.y; }
inline double Length(Point2 a) { return std::sqrt(Dot(a, a)); }
/// Returns the unit vector at an angle in full turns.
inline Point2 Heading(double turns) { return {CosineOfTurns(turns), SineOfTurns(turns)}; }

}  // namespace trovik::stamps
