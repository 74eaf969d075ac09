// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace trovik {

using Vector3d = std::array<double, 3>;

inline Vector3d ToDouble(const Vector& v) {
    return {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
}
inline Vector3d operator-(const Vector3d& a, const Vector3d& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline double Dot(const Vector3d& a, const Vector3d& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
inline Vector3d Cross(const Vector3d& a, const Vector3d& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline double Square(double a) { return a * a; }
inline double Length(const Vector3d& v) { return std::sqrt(Dot(v, v)); }

using Triangle3d = std::array<Vector3d, 3>;

/// In double precision, the area does not overflow for any coordinates in single precision.
inline double AreaOf(const Triangle3d& triangle) {
    return 0.5 * Length(Cross(triangle[1] - triangle[0], triangle[2] - triangle[0]));
}
inline double LongestEdgeOf(const Triangle3d& triangle) {
    return std::max({Length(triangle[1] - triangle[0]),
                     Length(triangle[2] - triangle[1]),
                     Length(triangle[0] - triangle[2])});
}

/// A point on a triangle, as barycentric coordinates that add up to 1; `t` is the ray parameter or
/// the squared distance.
struct TrianglePoint {
    std::array<double, 3> weights;
    double t;
};

/// A ray, with a sheared frame in which the ray starts at the origin and runs along the third axis.
///
/// In this frame, the signs of three 2D edge functions determine whether a triangle is hit. Two
/// triangles compute the same products for a shared edge. Because rounding is monotone, the sign of
/// a difference of products is never wrong; at worst the difference becomes zero, and zero counts
/// as a hit. A ray that passes through an edge therefore hits at least one of the adjacent
/// triangles. See Woop, Benthin, Wald: "Watertight Ray/Triangle Intersection" (2013).
class RayFrame {
public:
    RayFrame(const Vector& rayOrigin, const Vector& direction) : origin(ToDouble(rayOrigin)) {
        const Vector3d d = ToDouble(direction);
        for (std::size_t a = 1; a < 3; ++a)
            if (std::fabs(d[a]) > std::fabs(d[alongAxis])) alongAxis = a;
        firstAxis = (alongAxis + 1) % 3;
        secondAxis = (alongAxis + 2) % 3;
        firstShear = d[firstAxis] / d[alongAxis];
        secondShear = d[secondAxis] / d[alongAxis];
        along = d[alongAxis];
    }

    Vector3d Place(const Vector& point) const {
        const Vector3d p = ToDouble(point) - origin;
        return {p[firstAxis] - firstShear * p[alongAxis],
                p[secondAxis] - secondShear * p[alongAxis],
                p[alongAxis]};
    }

    /// Tests a triangle whose corners are given in the frame (see Place).
    /// \return false if the triangle is missed or seen edge-on.
    bool Hit(const Vector3d& a, const Vector3d& b, const Vector3d& c, TrianglePoint& out) const {
        const double u = Edge(b, c);
        const double v = Edge(c, a);
        const double w = Edge(a, b);
        const bool front = u >= 0.0 && v >= 0.0 && w >= 0.0;
        const bool back = u <= 0.0 && v <= 0.0 && w <= 0.0;
        if (!front && !back) return false;
        const double sum = u + v + w;
        if (sum == 0.0) return false;
        out.weights = {u / sum, v / sum, w / sum};
        out.t = (out.weights[0] * a[2] + out.weights[1] * b[2] + out.weights[2] * c[2]) / along;
        return true;
    }

private:
    static double Edge(const Vector3d& p, const Vector3d& q) { return p[0] * q[1] - p[1] * q[0]; }

    Vector3d origin;
    std::size_t alongAxis = 0;
    std::size_t firstAxis = 1;
    std::size_t secondAxis = 2;
    double firstShear;
    double secondShear;
    double along;
};

/// The point on a triangle nearest to `p`: it lies on the feature (corner, edge or interior) whose
/// Voronoi region contains `p`. A degenerate triangle is treated as three edges. See Ericson:
/// "Real-Time Collision Detection" (2005), section 5.1.5.
inline TrianglePoint NearestOfTriangle(const Vector3d& p,
                                       const Vector3d& a,
                                       const Vector3d& b,
                                       const Vector3d& c) {
    const auto point = [&](double v, double w) {
        const double u = 1.0 - v - w;
        double squared = 0.0;
        for (std::size_t axis = 0; axis < 3; ++axis)
            squared += Square(u * a[axis] + v * b[axis] + w * c[axis] - p[axis]);
        return TrianglePoint{{u, v, w}, squared};
    };
    const Vector3d ab = b - a;
    const Vector3d ac = c - a;
    const double abA = Dot(ab, p - a);
    const double acA = Dot(ac, p - a);
    if (abA <= 0.0 && acA <= 0.0) return point(0.0, 0.0);
    const double abB = Dot(ab, p - b);
    const double acB = Dot(ac, p - b);
    if (abB >= 0.0 && acB <= abB) return point(1.0, 0.0);
    const double abC = Dot(ab, p - c);
    const double acC = Dot(ac, p - c);
    if (acC >= 0.0 && abC <= acC) return point(0.0, 1.0);

    const double areaC = abA * acB - abB * acA;
    if (areaC <= 0.0 && abA >= 0.0 && abB <= 0.0 && abA - abB > 0.0)
        return point(abA / (abA - abB), 0.0);
    const double areaB = abC * acA - abA * acC;
    if (areaB <= 0.0 && acA >= 0.0 && acC <= 0.0 && acA - acC > 0.0)
        return point(0.0, acA / (acA - acC));
    const double areaA = abB * acC - abC * acB;
    const double towardsC = acB - abB;
    const double towardsB = abC - acC;
    if (areaA <= 0.0 && towardsC >= 0.0 && towardsB >= 0.0 && towardsC + towardsB > 0.0) {
        const double w = towardsC / (towardsC + towardsB);
        return point(1.0 - w, w);
    }
    const double area = areaA + areaB + areaC;
    if (area <= 0.0) return point(0.0, 0.0);
    return point(areaB / area, areaC / area);
}

}  // namespace trovik
