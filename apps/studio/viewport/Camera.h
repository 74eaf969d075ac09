// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/StrokePath.h"
#include "render/RenderSettings.h"

namespace trovik::studio {

/// The viewport's camera: an eye that looks at a target, with an up direction, in perspective or
/// orthographic projection. World space, right-handed. Motions take device pixels.
///
/// Strokes need a perspective view (StrokeView). In orthographic projection the eye is moved far
/// away and the field of view made small, so that strokes and picture agree to a fraction of a
/// pixel.
class Camera {
public:
    const Vector& Eye() const { return eye; }
    const Vector& Target() const { return target; }
    const Vector& Up() const { return up; }
    bool IsOrthographic() const { return isOrthographic; }
    float FieldOfView() const { return fieldOfView; }

    void SetSize(int widthPixels, int heightPixels);
    /// From a document or bookmark; keeps the size.
    void SetView(const StrokeView& view);
    void SetOrthographic(bool on);
    /// Degrees from top to bottom, 5 to 120; keeps the size of what lies at the target.
    void SetFieldOfView(float degrees);

    /// Rotates eye and target about a pivot, as if the surface were turned under the pointer: about
    /// the world's y axis by dx, about the camera's right axis by dy; a drag across the viewport's
    /// height is half a turn.
    void Orbit(const Vector& pivot, float dx, float dy);
    /// Rotates about the viewing direction. \param radians  counterclockwise.
    void Roll(float radians);
    /// Moves so that a point at the depth of `anchor` follows the pointer.
    void Pan(const Vector& anchor, float dx, float dy);
    /// Moves toward a point by a factor; below 1: closer. The point keeps its pixel.
    void Dolly(const Vector& anchor, float factor);
    /// Looks along a world direction at the target, with the distance kept.
    void LookAlong(const Vector& direction, const Vector& upDirection);
    /// Shows a world box completely, from the present direction.
    void Frame(const AxisAlignedBoundingBox& worldBox);

    /// For strokes, picks and renders.
    StrokeView ToStrokeView() const;
    /// For drawing. \param worldBox  near and far planes enclose it.
    RenderView ToRenderView(const AxisAlignedBoundingBox& worldBox) const;
    /// World point to device pixels, (0, 0) at the upper left corner, and the depth along the
    /// viewing direction in z.
    Vector ToPixel(const Vector& world) const;

    bool operator==(const Camera&) const = default;

private:
    Vector eye{0.0f, 0.0f, 5.0f};
    Vector target;
    Vector up{0.0f, 1.0f, 0.0f};
    float fieldOfView = 35.0f;
    bool isOrthographic = false;
    int width = 960;
    int height = 720;
};

}  // namespace trovik::studio
