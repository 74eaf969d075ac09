// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/StrokePath.h"
#include "render/RenderSettings.h"

namespace trovik::studio {

/// The position, direction and projection of a camera. World space.
struct CameraPose {
    Vector eye, target, up;
    /// Vertical angle in degrees.
    float fieldOfView = 35.0f;
    bool isOrthographic = false;
    bool operator==(const CameraPose&) const = default;
};

/// The viewport's camera: an eye that looks at a target, with an up direction, in perspective or
/// orthographic projection. World space, right-handed. Motions are given in device pixels.
///
/// In orthographic projection, the viewport shows an area of the same size as in perspective at the
/// distance of the target, and everything in front of or behind it. Switching the
/// projection therefore keeps the screen size of objects at the target.
class Camera {
public:
    const Vector& Eye() const { return eye; }
    const Vector& Target() const { return target; }
    const Vector& Up() const { return up; }
    bool IsOrthographic() const { return isOrthographic; }
    float FieldOfView() const { return fieldOfView; }

    void SetSize(int widthPixels, int heightPixels);
    /// From a document; keeps the size. A view with a field of view below 5 degrees becomes
    /// orthographic: scenes of earlier versions contain orthographic views in this form.
    void SetView(const StrokeView& view);
    /// Keeps the size.
    void SetPose(const CameraPose& pose);
    CameraPose Pose() const { return {eye, target, up, fieldOfView, isOrthographic}; }
    void SetOrthographic(bool on);
    /// Sets the vertical angle in degrees, 5 to 120; objects at the target keep their screen size.
    void SetFieldOfView(float degrees);

    /// Rotates eye and target about a pivot, as if the pointer rotated the surface: about the
    /// world's y axis by dx, about the camera's right axis by dy. A drag across the viewport's
    /// height is half a turn. For rotation by horizontal and vertical motions, see Chen, Mountford,
    /// Sellen: "A Study in Interactive 3-D Rotation Using 2-D Control Devices" (1988).
    void Orbit(const Vector& pivot, float dx, float dy);
    /// Rotates about the view direction. \param radians  counterclockwise.
    void Roll(float radians);
    /// Pans so that a point at the depth of `anchor` follows the pointer.
    void Pan(const Vector& anchor, float dx, float dy);
    /// Multiplies the distance to a point by a factor; values below 1 move closer. The point stays
    /// at the same pixel.
    void Dolly(const Vector& anchor, float factor);
    /// Looks at the target along a world direction, from the same distance.
    void LookAlong(const Vector& direction, const Vector& upDirection);
    /// Frames a world box completely, from the current direction.
    void Frame(const AxisAlignedBoundingBox& worldBox);

    /// For strokes, picks and renders.
    StrokeView ToStrokeView() const;
    /// For drawing. \param worldBox  enclosed by the near and far planes.
    RenderView ToRenderView(const AxisAlignedBoundingBox& worldBox) const;
    /// Converts a world point to device pixels, (0, 0) at the upper left corner, with the depth
    /// along the view direction in z.
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
