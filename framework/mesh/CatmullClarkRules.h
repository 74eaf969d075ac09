// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/math/ExactSum.h"

#include <cstdint>

/// \file
/// The rules of one Catmull-Clark step; see Catmull, Clark: "Recursively Generated B-Spline
/// Surfaces on Arbitrary Topological Meshes" (1978). Border edges are refined as curves, like the
/// sharp edges in DeRose, Kass, Truong: "Subdivision Surfaces in Character Animation" (1998).
///
/// Positions are single precision. Every sum is either exact or has only two terms. All other
/// arithmetic is in double precision, and each result is rounded once. Results therefore do not
/// depend on the order in which faces and corners are visited, and an exactly mirror-symmetric mesh
/// stays exactly symmetric.
namespace trovik {

/// Returns the mean of the corners of a face.
/// \param corners  the sum of the corner positions.
inline Vector FacePointRule(const DoubleVector& corners, uint32_t count) {
    return MeanOf(corners, count);
}

/// Returns the edge point of an inner edge.
/// \param a, b  the endpoints of the edge.
/// \param left, right  the face points on the two sides of the edge.
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

/// Returns the refined position of an inner vertex.
/// \param around  the sum of the face point and the next corner of every face at the vertex.
/// \param faces  the number of those faces, at least 1.
inline Vector VertexPointRule(const Vector& vertex, const DoubleVector& around, uint32_t faces) {
    const auto n = static_cast<double>(faces);
    const double own = n * (n - 2.0);
    const double all = n * n;
    const auto mean = [own, all](double p, double sum) {
        return static_cast<float>((p * own + sum) / all);
    };
    return {mean(vertex.x, around.x), mean(vertex.y, around.y), mean(vertex.z, around.z)};
}

/// Returns the refined position of a border vertex. A vertex with a single face does not move.
/// \param ends  the sum of the opposite endpoints of the vertex's border edges.
/// \param faces  the number of faces at the vertex.
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
