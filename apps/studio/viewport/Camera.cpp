// SPDX-License-Identifier: Apache-2.0
#include "viewport/Camera.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace trovik::studio {

namespace {

constexpr float minFieldOfView = 5.0f;
constexpr float maxFieldOfView = 120.0f;
/// Earlier versions stored an orthographic view as a perspective view from this many times the
/// distance, with a field of view of at most 0.78 degrees.
constexpr double formerOrthographicFactor = 256.0;
constexpr float formerOrthographicFieldOfView = 0.8f;
/// Limits of the distance from eye to target, world units.
constexpr double minDistance = 1e-6;
constexpr double maxDistance = 1e8;
/// Margin around the box in Frame, as a factor of the box size.
constexpr double frameMargin = 1.12;

double HalfTangent(double degrees) { return std::tan(degrees * std::numbers::pi / 360.0); }

/// Double-precision vectors, so that many small motions do not add up to a drift.
struct Precise {
    double x, y, z;

    Precise(double px, double py, double pz) : x(px), y(py), z(pz) {}
    explicit Precise(const Vector& v) : x(v.x), y(v.y), z(v.z) {}
    Vector ToVector() const {
        return {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)};
    }
    Precise operator+(const Precise& o) const { return {x + o.x, y + o.y, z + o.z}; }
    Precise operator-(const Precise& o) const { return {x - o.x, y - o.y, z - o.z}; }
    Precise operator*(double f) const { return {x * f, y * f, z * f}; }
    double operator|(const Precise& o) const { return x * o.x + y * o.y + z * o.z; }
    Precise operator&(const Precise& o) const {
        return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x};
    }
    double Length() const { return std::sqrt(*this | *this); }
    Precise Normalized() const {
        const double length = Length();
        return length > 0.0 ? *this * (1.0 / length) : *this;
    }
    /// Rotates counterclockwise about a unit axis. See Rodrigues: "Des lois géométriques qui
    /// régissent les déplacements d'un système solide dans l'espace" (1840).
    Precise Rotated(const Precise& axis, double radians) const {
        const double c = std::cos(radians);
        return *this * c + (axis & *this) * std::sin(radians) + axis * ((axis | *this) * (1.0 - c));
    }
};

/// Bit-identical to the axes along which strokes cast their rays.
struct Axes {
    explicit Axes(const StrokeView& view) : matrix(view.ToWorld()) {}

    Precise Row(int row) const { return {matrix.m[row][0], matrix.m[row][1], matrix.m[row][2]}; }
    Precise Right() const { return Row(0); }
    Precise Up() const { return Row(1); }
    Precise Back() const { return Row(2); }
    Precise Eye() const { return Row(3); }

    Matrix matrix;
};

template <typename Visit>
void ForEachCorner(const AxisAlignedBoundingBox& box, Visit visit) {
    for (int corner = 0; corner < 8; ++corner)
        visit(Precise((corner & 1) != 0 ? box.maxX : box.minX,
                      (corner & 2) != 0 ? box.maxY : box.minY,
                      (corner & 4) != 0 ? box.maxZ : box.minZ));
}

}  // namespace

void Camera::SetSize(int widthPixels, int heightPixels) {
    width = std::max(widthPixels, 1);
    height = std::max(heightPixels, 1);
}

void Camera::SetView(const StrokeView& view) {
    target = view.target;
    up = view.up;
    eye = view.eye;
    fieldOfView = view.verticalFieldOfView;
    isOrthographic = view.isOrthographic;
    if (isOrthographic || fieldOfView > formerOrthographicFieldOfView) return;
    isOrthographic = true;
    const double tangent = HalfTangent(view.verticalFieldOfView) * formerOrthographicFactor;
    SetFieldOfView(static_cast<float>(std::atan(tangent) * 360.0 / std::numbers::pi));
}

void Camera::SetPose(const CameraPose& pose) {
    eye = pose.eye;
    target = pose.target;
    up = pose.up;
    fieldOfView = pose.fieldOfView;
    isOrthographic = pose.isOrthographic;
}

void Camera::SetOrthographic(bool on) { isOrthographic = on; }

void Camera::SetFieldOfView(float degrees) {
    const float wanted = std::clamp(degrees, minFieldOfView, maxFieldOfView);
    const double factor = HalfTangent(fieldOfView) / HalfTangent(wanted);
    eye = (Precise(target) + (Precise(eye) - Precise(target)) * factor).ToVector();
    fieldOfView = wanted;
}

void Camera::Orbit(const Vector& pivot, float dx, float dy) {
    const Axes axes(ToStrokeView());
    const double perPixel = std::numbers::pi / height;
    // If the camera is upside down, a motion to the right rotates the surface in the opposite
    // direction.
    const double turn = (axes.Up().y < 0.0 ? dx : -dx) * perPixel;
    const Precise vertical(0.0, 1.0, 0.0);
    const Precise right = axes.Right().Normalized();
    const auto rotated = [&](const Precise& v) {
        return v.Rotated(right, -dy * perPixel).Rotated(vertical, turn);
    };
    const Precise centre(pivot);
    // The offset is rotated and added to the target, so that the distance does not drift.
    const Precise offset = Precise(eye) - Precise(target);
    const Precise newTarget = centre + rotated(Precise(target) - centre);
    eye = (newTarget + rotated(offset)).ToVector();
    target = newTarget.ToVector();
    up = rotated(axes.Up()).Normalized().ToVector();
}

void Camera::Roll(float radians) {
    const Axes axes(ToStrokeView());
    up = axes.Up().Rotated(axes.Back().Normalized(), radians).Normalized().ToVector();
}

void Camera::Pan(const Vector& anchor, float dx, float dy) {
    const Axes axes(ToStrokeView());
    const double depth = (axes.Eye() - Precise(anchor)) | axes.Back();
    // A point behind the eye cannot be followed, so the target's depth is used.
    const bool isAtAnchor = depth > 0.0 && !isOrthographic;
    const double usedDepth = isAtAnchor ? depth : (axes.Eye() - Precise(target)) | axes.Back();
    const double perPixel = 2.0 * HalfTangent(fieldOfView) * usedDepth / height;
    const Precise move = axes.Up() * (dy * perPixel) - axes.Right() * (dx * perPixel);
    eye = (Precise(eye) + move).ToVector();
    target = (Precise(target) + move).ToVector();
}

void Camera::Dolly(const Vector& anchor, float factor) {
    const double distance = (Precise(eye) - Precise(target)).Length();
    if (!(factor > 0.0f) || !(distance > 0.0)) return;
    const double used = std::clamp(distance * factor, minDistance, maxDistance) / distance;
    const Precise centre(anchor);
    eye = (centre + (Precise(eye) - centre) * used).ToVector();
    target = (centre + (Precise(target) - centre) * used).ToVector();
}

void Camera::LookAlong(const Vector& direction, const Vector& upDirection) {
    const double distance = (Precise(eye) - Precise(target)).Length();
    eye = (Precise(target) - Precise(direction).Normalized() * distance).ToVector();
    up = upDirection.Normalized();
}

void Camera::Frame(const AxisAlignedBoundingBox& worldBox) {
    if (worldBox.IsEmpty()) return;
    const Axes axes(ToStrokeView());
    const Precise centre((static_cast<double>(worldBox.minX) + worldBox.maxX) * 0.5,
                         (static_cast<double>(worldBox.minY) + worldBox.maxY) * 0.5,
                         (static_cast<double>(worldBox.minZ) + worldBox.maxZ) * 0.5);
    const double tangentY = HalfTangent(fieldOfView);
    const double tangentX = tangentY * width / height;
    double distance = 0.0;
    double radius = 0.0;
    ForEachCorner(worldBox, [&](const Precise& corner) {
        const Precise offset = corner - centre;
        // The depth of a corner does not affect its size in orthographic projection.
        const double nearer = isOrthographic ? 0.0 : offset | axes.Back();
        const double reach = std::max(std::abs(offset | axes.Right()) / tangentX,
                                      std::abs(offset | axes.Up()) / tangentY);
        distance = std::max(distance, reach * frameMargin + nearer);
        radius = std::max(radius, offset.Length());
    });
    // If the box is a single point, the current distance is kept.
    if (radius == 0.0) distance = (Precise(eye) - Precise(target)).Length();
    distance = std::clamp(distance, minDistance, maxDistance);
    eye = (centre + axes.Back().Normalized() * distance).ToVector();
    target = centre.ToVector();
    up = axes.Up().ToVector();
}

StrokeView Camera::ToStrokeView() const {
    StrokeView view;
    view.eye = eye;
    view.target = target;
    view.up = up;
    view.verticalFieldOfView = fieldOfView;
    view.width = width;
    view.height = height;
    view.isOrthographic = isOrthographic;
    const Precise offset = Precise(eye) - Precise(target);
    const double distance = offset.Length();
    if (distance == 0.0) view.eye = target + Vector(0.0f, 0.0f, 1.0f);
    // The right axis is undefined if the up direction is parallel to the line of sight.
    if ((view.up & (view.eye - view.target).Normalized()).Length() < 1e-6f)
        view.up = std::abs(offset.y) > 0.9 * distance ? Vector(0.0f, 0.0f, -1.0f)
                                                      : Vector(0.0f, 1.0f, 0.0f);
    return view;
}

RenderView Camera::ToRenderView(const AxisAlignedBoundingBox& worldBox) const {
    const Axes axes(ToStrokeView());
    const Precise from = axes.Eye();
    const double distance = (from - Precise(target)).Length();
    double nearest = distance * 0.5;
    double farthest = distance * 2.0;
    if (!worldBox.IsEmpty()) {
        nearest = std::numeric_limits<double>::infinity();
        farthest = -nearest;
        ForEachCorner(worldBox, [&](const Precise& corner) {
            const double depth = (from - corner) | axes.Back();
            nearest = std::min(nearest, depth);
            farthest = std::max(farthest, depth);
        });
    }
    const double scaleY = 1.0 / HalfTangent(fieldOfView);
    const double scaleX = scaleY * height / width;
    const Precise forward = axes.Back() * -1.0;
    RenderView result;
    // Makes a column of the matrix project points onto `axis`, measured from `from`, and add
    // `shift`.
    const auto set = [&](int column, const Precise& axis, double shift) {
        result.worldToClip.m[0][column] = static_cast<float>(axis.x);
        result.worldToClip.m[1][column] = static_cast<float>(axis.y);
        result.worldToClip.m[2][column] = static_cast<float>(axis.z);
        result.worldToClip.m[3][column] = static_cast<float>(shift - (from | axis));
    };
    // The depth range is slightly larger than the box, because rounding would otherwise clip faces
    // on its sides.
    if (isOrthographic) {
        const double margin = (farthest - nearest) * 0.01 + distance * 1e-3;
        nearest -= margin;
        farthest += margin;
        const double scaleZ = 2.0 / (farthest - nearest);
        set(0, axes.Right() * (scaleX / distance), 0.0);
        set(1, axes.Up() * (scaleY / distance), 0.0);
        set(2, forward * scaleZ, -nearest * scaleZ - 1.0);
        set(3, forward * 0.0, 1.0);
    } else {
        // The ratio is limited, because it determines the depth precision.
        farthest = std::max(farthest * 1.01, distance * 1e-3);
        nearest = std::clamp(nearest * 0.99, farthest * 1e-4, farthest * 0.999);
        const double range = farthest - nearest;
        set(0, axes.Right() * scaleX, 0.0);
        set(1, axes.Up() * scaleY, 0.0);
        set(2, forward * ((farthest + nearest) / range), -2.0 * farthest * nearest / range);
        set(3, forward, 0.0);
    }
    result.eye = from.ToVector();
    result.forward = forward.ToVector();
    result.right = axes.Right().ToVector();
    result.up = axes.Up().ToVector();
    result.isOrthographic = isOrthographic;
    result.width = width;
    result.height = height;
    result.pixelSize =
        static_cast<float>(2.0 / scaleY / height * (isOrthographic ? distance : 1.0));
    return result;
}

Vector Camera::ToPixel(const Vector& world) const {
    const Axes axes(ToStrokeView());
    const Precise offset = Precise(world) - axes.Eye();
    const double depth = -(offset | axes.Back());
    const double scaleDepth = isOrthographic ? (Precise(target) - axes.Eye()).Length() : depth;
    const double perUnit = height * 0.5 / (HalfTangent(fieldOfView) * scaleDepth);
    return Precise(width * 0.5 + (offset | axes.Right()) * perUnit,
                   height * 0.5 - (offset | axes.Up()) * perUnit,
                   depth)
        .ToVector();
}

}  // namespace trovik::studio
