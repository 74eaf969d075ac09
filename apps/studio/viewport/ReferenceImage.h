// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "render/ReferenceQuad.h"
#include "render/RenderSettings.h"

#include <QString>

#include <optional>

namespace trovik::studio {

/// An image that is shown behind or in front of the surface as a model to sculpt from.
struct ReferenceImage {
    /// Whether the image is fixed to the screen, or to a plane in the world that is perpendicular
    /// to a view direction. An image in the world is shown only from that direction.
    enum class Lock { Screen, Front, Back, Right, Left, Top, Bottom };

    /// Absolute path of the file.
    QString path;
    Lock lock = Lock::Screen;
    /// The centre. Screen: x and y as fractions of the viewport's height from its centre, y up.
    /// Otherwise: world space.
    Vector centre;
    /// Height of the image: a fraction of the viewport's height, or world units.
    float height = 0.6f;
    /// 0 to 1.
    float opacity = 0.5f;
    bool isInFront = false;
    bool isVisible = true;
    bool operator==(const ReferenceImage&) const = default;
};

/// The directions of a view to which images can be locked, unit vectors. World space.
struct ReferenceDirections {
    Vector along, right, up;
};
/// Empty for Lock::Screen.
std::optional<ReferenceDirections> DirectionsOf(ReferenceImage::Lock lock);

/// Where a frame shows an image; empty if the view does not show it. An image in the world is shown
/// if the camera looks along its direction, to within two degrees.
std::optional<ReferenceQuad> QuadOf(const ReferenceImage& reference,
                                    const QImage& image,
                                    const RenderView& view);
/// The lock direction along which a camera looks, to within two degrees; Lock::Screen if there is
/// none.
/// \param forward  unit length.
ReferenceImage::Lock LockFor(const Vector& forward);

/// Names used in files, in the order of ReferenceImage::Lock: "screen", "front" …
inline constexpr const char* referenceLockNames[] = {
    "screen", "front", "back", "right", "left", "top", "bottom"};

}  // namespace trovik::studio
