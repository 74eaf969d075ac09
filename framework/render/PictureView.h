// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/Picture.h"
#include "host/Api.h"

namespace trovik {

/// A camera together with a picture's size: turns pixels into rays and points into pixels.
/// Pixel coordinates run from the upper left corner of the picture to the right and down; whole
/// numbers lie between pixels.
class TROVIK_API PictureView {
public:
    /// \throw HostError for a camera that has no direction, or values that are not finite.
    PictureView(const PictureCamera& camera, int width, int height);

    const Vector& Eye() const { return eye; }
    /// Unit direction, in world space, of the ray from the eye through a point of the picture.
    Vector DirectionThrough(float pixelX, float pixelY) const;
    /// World size of a pixel at a depth in front of the eye.
    float PixelSizeAt(float depth) const { return pixelSize * depth; }

    /// Camera space: x to the right, y up, z the depth in front of the eye.
    Vector ToCamera(const Vector& world) const;
    /// Pixel coordinates, z 0, of a point in camera space whose depth is above 0.
    Vector ToPixel(const Vector& inCamera) const;

    const Vector& Right() const { return right; }
    const Vector& Up() const { return up; }
    const Vector& Back() const { return back; }

private:
    Vector eye, right, up, back;
    float halfWidth, halfHeight;
    /// World units of a pixel at depth 1.
    float pixelSize = 0.0f;
};

}  // namespace trovik
