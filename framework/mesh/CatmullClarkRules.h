// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/math/ExactSum.h"

#include <cstdint>

/// \file
/// The rules of one Catmull-Clark step (Catmull and Clark, "Recursively generated B-spline surfaces
/// on arbitrary topological meshes", 1978), each once. Border edges are refined as curves.
///
/// Positions are single precision. Sums are taken exactly or of two terms, the rest in double
/// precision, and each result is rounded once. So results do not depend on the order in which faces
/// and corners are visited, and a mesh that is mirror-symmetric to the bit stays so.
namespace trovik {

/// The mean of a face's corners. \param corners  the sum of their positions.
inline Vector FacePointRule(const DoubleVector& corners, uint32_t count) {
    const auto n = static_cast<double>(count);
    return {static_cast<float>(corners.x / n),
            static_cast<float>(corners.y / n),
            static_cast<float>(corners.z / n)};
}

/// \param a, b  the ends of an edge. \param left, right  the face points on either side.
inline Vector EdgePointRule(const Vector& a,
                            const Vector& b,
                            const Vector& left,
                            const Vector& right) {
    const auto mean = [](double p, double q, double r, double s) {
        return static_cast<float>(((p + q) + (r + s)) * 0.25);
    };
    return {mean(a.x, b.x, left.x, right.x),
            mean(a.y, b.y, left.y, right.y),
            mean(a.z, b.z, left.z, right.z)};
}

inline Vector BorderEdgePointRule(const Vector& a, const Vector& b) {
    const auto mean = [](double p, double q) { return static_cast<float>((p + q) * 0.5); };
    return {mean(a.x, b.x), mean(a.y, b.y), mean(a.z, b.z)};
}

/// \param around  the sum over the faces at the vertex of the face point and of the next corner.
/// \param faces  their number, at least 1.
inline Vector VertexPointRule(const Vector& vertex, const DoubleVector& around, uint32_t faces) {
    const auto n = static_cast<double>(faces);
    const double own = n * (n - 2.0);
    const double all = n * n;
    const auto mean = [own, all](double p, double sum) {
        return static_cast<float>((p * own + sum) / all);
    };
    return {mean(vertex.x, around.x), mean(vertex.y, around.y), mean(vertex.z, around.z)};
}

/// \param ends  the sum of the other ends of the border edges at the vertex.
/// \param faces  the number of faces at it. A vertex of a single face stays where it is.
inline Vector BorderVertexPointRule(const Vector& vertex,
                                    const DoubleVector& ends,
                                    uint32_t faces) {
    if (faces == 1) return vertex;
    const auto mean = [](double p, double sum) {
        return static_cast<float>(p * 0.75 + sum * 0.125);
    };
    return {mean(vertex.x, ends.x), mean(vertex.y, ends.y), mean(vertex.z, ends.z)};
}

}  // namespace trovik
