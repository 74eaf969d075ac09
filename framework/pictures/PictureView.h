// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/pictures/Picture.h"

namespace trovik {

/// A ray of unit direction, world space.
struct ViewRay {
    Vector origin;
    Vector direction;
};

/// A camera together with a picture's size: turns pixels into rays and points into pixels.
/// Pixel coordinates run from the upper left corner of the picture, whole numbers between pixels.
class PictureView {
public:
    /// \throw HostError for a camera that has no direction, or values that are not finite.
    PictureView(const PictureCamera& camera, int width, int height);

    ViewRay RayThrough(float pixelX, float pixelY) const;

    /// Camera space: x to the right, y up, z the depth in front of the eye.
    Vector ToCamera(const Vector& world) const;
    /// A point in front of the eye, in pixels from the picture's centre, y up; z is not used.
    Vector ToScreen(const Vector& inCamera) const;

    const Vector& Right() const { return right; }
    const Vector& Up() const { return up; }
    const Vector& Back() const { return back; }

private:
    Vector eye, right, up, back;
    float halfWidth, halfHeight;
    bool isParallel;
    /// World units of a pixel: at depth 1 in perspective, everywhere in parallel projection.
    float pixelSize;
};

}  // namespace trovik
