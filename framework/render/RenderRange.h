// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/Picture.h"
#include "host/Api.h"

#include <string>

namespace trovik {

/// The largest coordinate, positive or negative, that renders accept of vertices and cameras in
/// world space. Squares of distances then stay in the range of floats.
inline constexpr float maxRenderCoordinate = 1e18f;

/// Whether all coordinates are numbers of at most maxRenderCoordinate.
bool IsRenderable(const Vector& position);

/// \param what  for example "vertex 12".
/// \throw HostError naming `what` and the position, unless IsRenderable.
void CheckRenderable(const std::string& what, const Vector& position);

/// \throw HostError if the camera's eye or target is not renderable, if they coincide, if `up` is
/// not finite, or if the field of view is not between 0 and 180 degrees.
TROVIK_API void CheckCamera(const PictureCamera& camera);

}  // namespace trovik
