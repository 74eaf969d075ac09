// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/RenderImage.h"
#include "host/Api.h"

namespace trovik {

/// A camera together with the size of an image: converts pixels to rays and points to pixels. Pixel
/// coordinates start at the upper left corner of the image and increase to the right and downwards;
/// integer coordinates lie on the borders between pixels.
class TROVIK_API RenderViewport {
public:
    /// \throw HostError for a camera without a direction or with non-finite values.
    RenderViewport(const RenderCamera& camera, int width, int height);

    const Vector& Eye() const { return eye; }
    bool IsOrthographic() const { return isOrthographic; }
    /// Returns the unit direction, in world space, of the ray through a point of the image.
    Vector DirectionThrough(float pixelX, float pixelY) const;
    /// Returns the start of that ray: the eye, or in orthographic projection a point at depth
    /// `nearest`.
    Vector OriginThrough(float pixelX, float pixelY, float nearest) const;
    /// Returns the size of a pixel in world units at a given depth in front of the eye.
    float PixelSizeAt(float depth) const { return isOrthographic ? pixelSize : pixelSize * depth; }

    /// Converts to camera space: x to the right, y up, z the depth in front of the eye.
    Vector ToCamera(const Vector& world) const;
    /// Returns the pixel coordinates (with z = 0) of a camera-space point, whose depth must be
    /// positive in perspective.
    Vector ToPixel(const Vector& inCamera) const;

    const Vector& Right() const { return right; }
    const Vector& Up() const { return up; }
    const Vector& Back() const { return back; }

private:
    Vector eye, right, up, back;
    float halfWidth, halfHeight;
    bool isOrthographic;
    /// World units per pixel at depth 1, or in orthographic projection at any depth.
    float pixelSize = 0.0f;
};

}  // namespace trovik
