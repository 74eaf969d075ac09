// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/picking/TriangleQueries.h"

namespace trovik {

/// The squared distance between a point and a triangle.
inline double SquaredDistance(const Vector& point,
                              const Vector& a,
                              const Vector& b,
                              const Vector& c) {
    return NearestOfTriangle(ToDouble(point), ToDouble(a), ToDouble(b), ToDouble(c)).t;
}

/// The squared distance between a point and the line segment from `a` to `b`.
inline float SquaredDistance(const Vector& point, const Vector& a, const Vector& b) {
    const Vector along = b - a;
    const float squared = along | along;
    const float t = squared > 0.0f ? ((point - a) | along) / squared : 0.0f;
    const Vector nearest = a + along * (t < 0.0f ? 0.0f : t > 1.0f ? 1.0f : t);
    return (nearest - point) | (nearest - point);
}

/// Whether a triangle has a point within a distance of a point.
inline bool IsWithin(
    const Vector& point, float radius, const Vector& a, const Vector& b, const Vector& c) {
    const float squared = radius * radius;
    for (const Vector& corner : {a, b, c})
        if (((corner - point) | (corner - point)) <= squared) return true;
    return SquaredDistance(point, a, b, c) <= static_cast<double>(squared);
}

}  // namespace trovik
