// SPDX-License-Identifier: Apache-2.0
#include "framework/render/RenderRange.h"

#include "framework/errors/HostError.h"
#include "framework/math/IsFinite.h"

#include <charconv>
#include <cmath>

namespace trovik {

namespace {

std::string Text(float value) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

std::string Text(const Vector& v) {
    return "(" + Text(v.x) + ", " + Text(v.y) + ", " + Text(v.z) + ")";
}

}  // namespace

bool IsRenderable(const Vector& position) {
    return std::fabs(position.x) <= maxRenderCoordinate &&
           std::fabs(position.y) <= maxRenderCoordinate &&
           std::fabs(position.z) <= maxRenderCoordinate;
}

void CheckRenderable(const std::string& what, const Vector& position) {
    if (!IsRenderable(position))
        throw HostError("cannot render: " + what + " is at " + Text(position) +
                        " in world space; coordinates must be from " + Text(-maxRenderCoordinate) +
                        " to " + Text(maxRenderCoordinate));
}

void CheckCamera(const RenderCamera& camera) {
    CheckRenderable("the eye of the camera", camera.eye);
    CheckRenderable("the target of the camera", camera.target);
    if (camera.eye == camera.target)
        throw HostError("cannot render: eye and target of the camera are both at " +
                        Text(camera.eye));
    if (!IsFinite(camera.up))
        throw HostError("cannot render: the up direction of the camera is " + Text(camera.up));
    if (!(camera.verticalFieldOfView > 0.0f && camera.verticalFieldOfView < 180.0f))
        throw HostError("cannot render: the field of view of the camera is " +
                        Text(camera.verticalFieldOfView) +
                        " degrees; it must be above 0 and below 180");
}

}  // namespace trovik
