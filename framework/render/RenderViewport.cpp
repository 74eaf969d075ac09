// SPDX-License-Identifier: Apache-2.0
#include "framework/render/RenderViewport.h"

#include "framework/errors/HostError.h"

#include <cmath>

namespace trovik {

namespace {

constexpr float radiansPerDegree = 0.017453293f;

}  // namespace

RenderViewport::RenderViewport(const RenderCamera& camera, int width, int height)
    : eye(camera.eye),
      halfWidth(static_cast<float>(width) * 0.5f),
      halfHeight(static_cast<float>(height) * 0.5f),
      isOrthographic(camera.isOrthographic) {
    const Vector sight = camera.eye - camera.target;
    const float distance = sight.Length();
    if (!std::isfinite(distance) || distance == 0.0f)
        throw HostError("the camera has no direction: its eye and its target are the same point");
    back = sight.Normalized();

    right = camera.up.Normalized() & back;
    if (!(right.Length() > 1e-6f)) right = Vector(0, 0, -1) & back;
    if (!(right.Length() > 1e-6f)) right = Vector(0, 1, 0) & back;
    right.Normalize();
    up = back & right;

    const float angle = camera.verticalFieldOfView;
    if (!(angle > 0.0f && angle < 180.0f))
        throw HostError("the camera's field of view is " + std::to_string(angle) +
                        " degrees; it must be between 0 and 180");
    pixelSize = std::tan(angle * 0.5f * radiansPerDegree) / halfHeight;
    if (isOrthographic) pixelSize *= distance;
}

Vector RenderViewport::DirectionThrough(float pixelX, float pixelY) const {
    if (isOrthographic) return -back;
    const Vector across =
        right * ((pixelX - halfWidth) * pixelSize) + up * ((halfHeight - pixelY) * pixelSize);
    return (across - back).Normalized();
}

Vector RenderViewport::OriginThrough(float pixelX, float pixelY, float nearest) const {
    if (!isOrthographic) return eye;
    return eye + right * ((pixelX - halfWidth) * pixelSize) +
           up * ((halfHeight - pixelY) * pixelSize) - back * nearest;
}

Vector RenderViewport::ToCamera(const Vector& world) const {
    const Vector way = world - eye;
    return {way | right, way | up, -(way | back)};
}

Vector RenderViewport::ToPixel(const Vector& inCamera) const {
    const float scale = 1.0f / PixelSizeAt(inCamera.z);
    return {halfWidth + inCamera.x * scale, halfHeight - inCamera.y * scale, 0.0f};
}

}  // namespace trovik
