// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <Qt>

#include <optional>
#include <vector>

namespace trovik::studio {

/// How a drag moves the camera.
enum class CameraMotion { Orbit, Pan, Zoom, Roll };

/// Which drags move the camera instead of sculpting.
struct NavigationPreset {
    struct Drag {
        Qt::MouseButton button;
        Qt::KeyboardModifiers modifiers;
        CameraMotion motion;
        /// Only where the press is next to the surface.
        bool isBesideSurface = false;
    };

    /// As Preferences::Navigation: "default", "alt-drag" or "pen".
    QString name;
    std::vector<Drag> drags;

    /// An unknown name gives "default".
    static const NavigationPreset& Named(const QString& name);

    /// The motion of a drag. \param isOnSurface  whether the press is on the surface.
    std::optional<CameraMotion> MotionOf(Qt::MouseButton button,
                                         Qt::KeyboardModifiers modifiers,
                                         bool isOnSurface) const;
    /// Whether a drag of this kind depends on what lies under the press.
    bool DependsOnSurface(Qt::MouseButton button, Qt::KeyboardModifiers modifiers) const;
};

}  // namespace trovik::studio
