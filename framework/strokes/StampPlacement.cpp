// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/StampPlacement.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace trovik {

namespace {

/// If less than this fraction of a direction's length remains after projection, the remainder is
/// rounding error.
constexpr float minRemainingLength = 1e-3f;

Vector RowOf(const Matrix& matrix, int row) {
    return {matrix.m[row][0], matrix.m[row][1], matrix.m[row][2]};
}

/// The component of `direction` perpendicular to the unit vector `axis`, normalised; zero if it
/// nearly vanishes.
Vector Across(const Vector& direction, const Vector& axis) {
    const Vector unit = direction.Normalized();
    const Vector part = unit - axis * (unit | axis);
    return part.Length() < minRemainingLength ? Vector() : part.Normalized();
}

double Dot(const float row[4], const Vector& axis) {
    return (static_cast<double>(row[0]) * static_cast<double>(axis.x) +
            static_cast<double>(row[1]) * static_cast<double>(axis.y)) +
           static_cast<double>(row[2]) * static_cast<double>(axis.z);
}

double Dot(const Vector& a, const Vector& b) {
    const float row[4] = {a.x, a.y, a.z, 0.0f};
    return Dot(row, b);
}

}  // namespace

TurnDirection DirectionOfTurn(float fullTurns) {
    const double turns =
        static_cast<double>(fullTurns) - std::floor(static_cast<double>(fullTurns));
    const double quarter = std::floor(turns * 4.0 + 0.5);
    // The angle is within an eighth of a turn of 0, where a few terms of the series suffice for
    // float precision.
    const double angle = (turns - quarter * 0.25) * 6.283185307179586;
    const double square = angle * angle;
    double sine = 0.0;
    double cosine = 0.0;
    for (int n = 8; n >= 1; --n) {
        sine = 1.0 - sine * square / static_cast<double>((2 * n) * (2 * n + 1));
        cosine = (1.0 - cosine * square / static_cast<double>((2 * n - 1) * (2 * n)));
    }
    sine *= angle;
    const auto c = static_cast<float>(cosine);
    const auto s = static_cast<float>(sine);
    switch (static_cast<int>(quarter) & 3) {
        case 0:
            return {c, s};
        case 1:
            return {-s, c};
        case 2:
            return {-c, -s};
        default:
            return {s, -c};
    }
}

void StampPlacement::SetUp(const Vector& toward, const Matrix& cameraToWorld) {
    up = Across(toward, out);
    if (up == Vector()) up = Across(RowOf(cameraToWorld, 1), out);
    if (up == Vector()) up = Across(-RowOf(cameraToWorld, 2), out);
    right = (up & out).Normalized();
}

StampPlacement StampPlacement::OnSurface(const Vector& middle,
                                         const Vector& normal,
                                         float radius,
                                         const Vector& toward,
                                         const Matrix& cameraToWorld) {
    StampPlacement placement;
    placement.middle = middle;
    placement.radius = radius;
    placement.out = normal.Normalized();
    placement.SetUp(toward, cameraToWorld);
    return placement;
}

StampPlacement StampPlacement::ByCamera(const Vector& middle,
                                        float radius,
                                        const Vector& toward,
                                        const Matrix& cameraToWorld,
                                        bool isOrthographic) {
    StampPlacement placement;
    placement.middle = middle;
    placement.radius = radius;
    placement.out = RowOf(cameraToWorld, 2).Normalized();
    placement.eye = RowOf(cameraToWorld, 3);
    placement.projected = !isOrthographic && ((placement.eye - middle) | placement.out) > radius;
    placement.SetUp(toward, cameraToWorld);
    return placement;
}

void StampPlacement::Turn(float fullTurns) {
    const TurnDirection turn = DirectionOfTurn(fullTurns);
    const Vector before = up;
    up = before * turn.cosine + right * turn.sine;
    right = right * turn.cosine - before * turn.sine;
}

// For a parallel projection, the components of a mapped position are the offsets from the centre
// along each axis, in pixels. For a perspective projection, they are the offsets from the line of
// sight through the centre; the fourth component is the distance from the eye plane relative to
// that of the centre, so it is 1 at the centre.
Matrix StampPlacement::ToPixels(uint32_t width, uint32_t height, const Matrix& localToWorld) const {
    assert(width > 0 && height > 0 && radius > 0.0f);
    const double pixels =
        static_cast<double>(std::max(width, height)) / (2.0 * static_cast<double>(radius));
    const double middleU = (static_cast<double>(width) - 1.0) * 0.5;
    const double middleV = (static_cast<double>(height) - 1.0) * 0.5;
    const Vector& origin = projected ? eye : middle;
    const double depth = projected ? Dot(eye, out) - Dot(middle, out) : 1.0;
    const double neighbourU = projected ? Dot(middle, right) - Dot(eye, right) : 0.0;
    const double neighbourV = projected ? Dot(middle, up) - Dot(eye, up) : 0.0;

    Matrix toPixels;
    for (int r = 0; r < 4; ++r) {
        // This row's contribution to the offset from the origin along the three axes.
        const float* row = localToWorld.m[r];
        double x = Dot(row, right);
        double y = Dot(row, up);
        double z = Dot(row, out);
        double one = 0.0;
        if (r == 3) {
            x -= Dot(origin, right);
            y -= Dot(origin, up);
            z -= Dot(origin, out);
            one = 1.0;
        }
        const double w = projected ? -z / depth : one;
        const double height3 = projected ? depth * one + z : z;
        toPixels.m[r][0] = static_cast<float>(w * (middleU - pixels * neighbourU) + pixels * x);
        toPixels.m[r][1] = static_cast<float>(w * (middleV + pixels * neighbourV) - pixels * y);
        toPixels.m[r][2] = static_cast<float>(pixels * height3);
        toPixels.m[r][3] = static_cast<float>(w);
    }
    return toPixels;
}

Matrix StampPlacement::Mirrored(const Matrix& toPixels, const Matrix& pointMap) {
    Matrix back = pointMap;
    back.Invert(nullptr);
    return back * toPixels;
}

}  // namespace trovik
