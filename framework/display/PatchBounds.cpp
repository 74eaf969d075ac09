// SPDX-License-Identifier: Apache-2.0
#include "framework/display/PatchBounds.h"

#include "framework/picking/TriangleQueries.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace trovik {

namespace {

/// Safety margin, added to sines and subtracted from cosines. It is much larger than the rounding
/// errors below, but too small to affect how many patches are culled.
constexpr double slack = 1e-6;

Vector3d PositionOf(const DisplayVertex& v) { return ToDouble({v.x, v.y, v.z}); }

/// Calls visit(normal) with the unnormalised normal of each triangle.
template <typename Visit>
void VisitNormals(std::span<const DisplayVertex> vertices,
                  std::span<const uint16_t> triangles,
                  Visit visit) {
    for (std::size_t i = 0; i + 2 < triangles.size(); i += 3) {
        const Vector3d a = PositionOf(vertices[triangles[i]]);
        const Vector3d b = PositionOf(vertices[triangles[i + 1]]);
        const Vector3d c = PositionOf(vertices[triangles[i + 2]]);
        visit(Cross(b - a, c - a));
    }
}

}  // namespace

AxisAlignedBoundingBox BoxOf(std::span<const DisplayVertex> vertices) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    Vector low(infinity, infinity, infinity);
    Vector high(-infinity, -infinity, -infinity);
    for (const DisplayVertex& v : vertices) {
        // A comparison with NaN is false, so NaN is ignored.
        low = {v.x < low.x ? v.x : low.x, v.y < low.y ? v.y : low.y, v.z < low.z ? v.z : low.z};
        high = {
            v.x > high.x ? v.x : high.x, v.y > high.y ? v.y : high.y, v.z > high.z ? v.z : high.z};
    }
    AxisAlignedBoundingBox box;
    if (low.x > high.x || low.y > high.y || low.z > high.z) return box;
    return {low.x, low.y, low.z, high.x, high.y, high.z};
}

AxisAlignedBoundingBox TransformBox(const AxisAlignedBoundingBox& box, const Matrix& matrix) {
    AxisAlignedBoundingBox around;
    if (box.IsEmpty()) return around;
    for (int corner = 0; corner < 8; ++corner)
        around.Extend(matrix.AffineTransform({(corner & 1) != 0 ? box.maxX : box.minX,
                                              (corner & 2) != 0 ? box.maxY : box.minY,
                                              (corner & 4) != 0 ? box.maxZ : box.minZ},
                                             1.0f));
    return around;
}

NormalCone ConeOf(std::span<const DisplayVertex> vertices, std::span<const uint16_t> triangles) {
    Vector3d sum{};
    VisitNormals(vertices, triangles, [&](const Vector3d& normal) {
        for (std::size_t i = 0; i < 3; ++i) sum[i] += normal[i];
    });
    NormalCone cone;
    const double length = std::sqrt(Dot(sum, sum));
    if (!(length > 0.0) || !std::isfinite(length)) return cone;
    const Vector axis(static_cast<float>(sum[0] / length),
                      static_cast<float>(sum[1] / length),
                      static_cast<float>(sum[2] / length));
    // Angles are measured from the rounded axis, because the cone stores that axis.
    const Vector3d rounded = ToDouble(axis);
    double minCosine = 1.0;
    VisitNormals(vertices, triangles, [&](const Vector3d& normal) {
        const double squared = Dot(normal, normal);
        if (squared > 0.0)
            minCosine = std::min(minCosine, Dot(rounded, normal) / std::sqrt(squared));
    });
    minCosine -= slack;
    if (minCosine <= 0.0) return cone;
    cone.axis = axis;
    cone.sinAngle =
        static_cast<float>(std::sqrt(std::max(0.0, 1.0 - minCosine * minCosine)) + slack);
    return cone;
}

bool NormalCone::FacesAway(const AxisAlignedBoundingBox& box, const Vector& eye) const {
    if (axis == Vector() || box.IsEmpty()) return false;
    // A triangle is seen from the back if the dot product of its normal and the vector from the eye
    // to one of its points is positive. All these points lie in the box and thus in a sphere around
    // the box centre.
    const Vector3d low = ToDouble({box.minX, box.minY, box.minZ}) - ToDouble(eye);
    const Vector3d high = ToDouble({box.maxX, box.maxY, box.maxZ}) - ToDouble(eye);
    Vector3d centre;
    for (std::size_t i = 0; i < 3; ++i) centre[i] = 0.5 * (low[i] + high[i]);
    const Vector3d half = high - centre;
    const double radius = std::sqrt(Dot(half, half));
    const double distance = std::sqrt(Dot(centre, centre));
    return Dot(ToDouble(axis), centre) - radius >
           (static_cast<double>(sinAngle) + slack) * (distance + radius);
}

bool NormalCone::FacesAwayFrom(const Vector& direction) const {
    if (axis == Vector()) return false;
    const Vector3d d = ToDouble(direction);
    return Dot(ToDouble(axis), d) > (static_cast<double>(sinAngle) + slack) * std::sqrt(Dot(d, d));
}

}  // namespace trovik
