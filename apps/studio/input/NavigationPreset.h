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
        /// Whether the binding applies only to presses off the surface.
        bool isBesideSurface = false;
    };

    /// A value of Preferences::Navigation: "default", "alt-drag" or "pen".
    QString name;
    std::vector<Drag> drags;

    /// An unknown name selects "default".
    static const NavigationPreset& Named(const QString& name);

    /// The motion of a drag. \param isOnSurface  whether the press is on the surface.
    std::optional<CameraMotion> MotionOf(Qt::MouseButton button,
                                         Qt::KeyboardModifiers modifiers,
                                         bool isOnSurface) const;
    /// Whether the effect of such a drag depends on whether the press is on the surface.
    bool DependsOnSurface(Qt::MouseButton button, Qt::KeyboardModifiers modifiers) const;
};

}  // namespace trovik::studio
