// SPDX-License-Identifier: Apache-2.0
#include "framework/math/FrameRotation.h"

#include <cmath>

namespace trovik {

namespace {

/// If the length of the summed normals is below this fraction of the sum of their lengths, the
/// normals cancel and the sum is noise.
constexpr double cancelMargin = 1e-2;
/// If the sums over the edges are below this fraction of their upper bound, the edges do not
/// determine an angle.
constexpr double angleMargin = 1e-9;

}  // namespace

bool FrameRotation::MakeUnit(Double3& v) {
    const double length = std::sqrt(Dot(v, v));
    if (!(length > 0.0) || !std::isfinite(length)) {
        v = {};
        return false;
    }
    v = {v.x / length, v.y / length, v.z / length};
    return true;
}

void FrameRotation::CloseNormals() {
    if (std::sqrt(Dot(normalBefore, normalBefore)) < areaBefore * cancelMargin ||
        std::sqrt(Dot(normalAfter, normalAfter)) < areaAfter * cancelMargin) {
        normalBefore = largestBefore;
        normalAfter = largestAfter;
    }
    const bool hasBefore = MakeUnit(normalBefore);
    const bool hasAfter = MakeUnit(normalAfter);
    isDefined = hasBefore && hasAfter;
    if (!isDefined) return;
    cosine = Dot(normalBefore, normalAfter);
    axis = Cross(normalBefore, normalAfter);
    if (1.0 + cosine > oppositeMargin) return;
    // Rotates by 180 degrees about any axis perpendicular to the normal; the edges then determine
    // the remaining angle.
    const Double3 n = normalBefore;
    const double ax = std::fabs(n.x);
    const double ay = std::fabs(n.y);
    const double az = std::fabs(n.z);
    const Double3 other = ax <= ay && ax <= az ? Double3{1.0, 0.0, 0.0}
                          : ay <= az           ? Double3{0.0, 1.0, 0.0}
                                               : Double3{0.0, 0.0, 1.0};
    axis = Cross(n, other);
    MakeUnit(axis);
}

void FrameRotation::CloseEdges() {
    const double length = std::sqrt(across * across + along * along);
    if (!isDefined || !(length > size * angleMargin) || !std::isfinite(length)) return;
    rotationSine = across / length;
    rotationCosine = along / length;
}

Vector FrameRotation::Turned(const Vector& v) const {
    if (!isDefined) return v;
    const Double3 a = ShortestRotationOf(Double(v));
    const Double3 sideways = Cross(normalAfter, a);
    const double f = Dot(normalAfter, a) * (1.0 - rotationCosine);
    return Single({a.x * rotationCosine + sideways.x * rotationSine + normalAfter.x * f,
                   a.y * rotationCosine + sideways.y * rotationSine + normalAfter.y * f,
                   a.z * rotationCosine + sideways.z * rotationSine + normalAfter.z * f});
}

}  // namespace trovik
