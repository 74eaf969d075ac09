// SPDX-License-Identifier: Apache-2.0
#include "framework/pictures/PictureView.h"

#include "framework/errors/HostError.h"

#include <cmath>

namespace trovik {

namespace {

constexpr float radiansPerDegree = 0.017453293f;

float Checked(float value, const char* what) {
    if (!std::isfinite(value) || value <= 0.0f)
        throw HostError(std::string("picture: the camera's ") + what + " must be above 0");
    return value;
}

}  // namespace

PictureView::PictureView(const PictureCamera& camera, int width, int height)
    : eye(camera.eye),
      halfWidth(static_cast<float>(width) * 0.5f),
      halfHeight(static_cast<float>(height) * 0.5f),
      isParallel(camera.orthographicHeight > 0.0f) {
    const Vector sight = camera.eye - camera.target;
    const float distance = sight.Length();
    if (!std::isfinite(distance) || distance == 0.0f)
        throw HostError("picture: the camera's eye and target give no direction");
    back = sight.Normalized();

    right = (camera.up.Normalized() & back);
    if (!(right.Length() > 1e-6f)) right = Vector(0, 0, -1) & back;
    if (!(right.Length() > 1e-6f)) right = Vector(0, 1, 0) & back;
    right.Normalize();
    up = back & right;

    if (isParallel) {
        pixelSize = Checked(camera.orthographicHeight, "height") * 0.5f / halfHeight;
    } else {
        if (camera.verticalFieldOfView >= 180.0f)
            throw HostError("picture: the camera's field of view must be below 180 degrees");
        const float angle = Checked(camera.verticalFieldOfView, "field of view");
        pixelSize = std::tan(angle * 0.5f * radiansPerDegree) / halfHeight;
    }
}

ViewRay PictureView::RayThrough(float pixelX, float pixelY) const {
    const Vector across =
        right * ((pixelX - halfWidth) * pixelSize) + up * ((halfHeight - pixelY) * pixelSize);
    if (isParallel) return {eye + across, -back};
    return {eye, (across - back).Normalized()};
}

Vector PictureView::ToCamera(const Vector& world) const {
    const Vector way = world - eye;
    return {way | right, way | up, -(way | back)};
}

Vector PictureView::ToScreen(const Vector& inCamera) const {
    const float scale = 1.0f / (isParallel ? pixelSize : pixelSize * inCamera.z);
    return {inCamera.x * scale, inCamera.y * scale, 0.0f};
}

}  // namespace trovik
