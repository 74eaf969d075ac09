// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/RenderImage.h"
#include "host/Api.h"

#include <string>

namespace trovik {

/// The largest absolute world-space coordinate that the renderer accepts for vertices and cameras.
/// Squared distances then stay within float range.
inline constexpr float maxRenderCoordinate = 1e18f;

/// Returns whether all coordinates are finite and at most maxRenderCoordinate.
bool IsRenderable(const Vector& position);

/// Checks that a position is renderable (IsRenderable).
/// \param what  the object, for example "vertex 12".
/// \throw HostError with `what` and the position if it is not.
void CheckRenderable(const std::string& what, const Vector& position);

/// Checks that a camera can be used for a render.
/// \throw HostError if the eye or the target of the camera is not renderable, if they coincide, if
/// `up` is non-finite, or if the field of view is not between 0 and 180 degrees.
TROVIK_API void CheckCamera(const RenderCamera& camera);

}  // namespace trovik
