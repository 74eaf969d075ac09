// SPDX-License-Identifier: Apache-2.0
#include "input/NavigationPreset.h"

namespace trovik::studio {

namespace {

constexpr Qt::KeyboardModifiers none = Qt::NoModifier;
constexpr Qt::KeyboardModifiers shift = Qt::ShiftModifier;
constexpr Qt::KeyboardModifiers control = Qt::ControlModifier;
constexpr Qt::KeyboardModifiers alt = Qt::AltModifier;

/// Drags with the middle button work in every preset.
std::vector<NavigationPreset::Drag> WithMiddleButton(std::vector<NavigationPreset::Drag> drags) {
    drags.insert(drags.end(),
                 {{Qt::MiddleButton, none, CameraMotion::Orbit},
                  {Qt::MiddleButton, shift, CameraMotion::Pan},
                  {Qt::MiddleButton, control, CameraMotion::Zoom},
                  {Qt::MiddleButton, shift | control, CameraMotion::Roll}});
    return drags;
}

const std::vector<NavigationPreset>& Presets() {
    static const std::vector<NavigationPreset> presets = {
        {QStringLiteral("default"), WithMiddleButton({})},
        {QStringLiteral("alt-drag"),
         WithMiddleButton({{Qt::LeftButton, alt, CameraMotion::Orbit},
                           {Qt::MiddleButton, alt, CameraMotion::Pan},
                           {Qt::RightButton, alt, CameraMotion::Zoom},
                           {Qt::LeftButton, alt | shift, CameraMotion::Pan},
                           {Qt::LeftButton, alt | control, CameraMotion::Zoom}})},
        // A pen's barrel button acts as the middle button. It pans, because a drag that starts off
        // the surface orbits the camera.
        {QStringLiteral("pen"),
         {{Qt::LeftButton, none, CameraMotion::Orbit, true},
          {Qt::LeftButton, shift, CameraMotion::Pan, true},
          {Qt::LeftButton, control, CameraMotion::Zoom, true},
          {Qt::MiddleButton, none, CameraMotion::Pan},
          {Qt::MiddleButton, shift, CameraMotion::Orbit},
          {Qt::MiddleButton, control, CameraMotion::Zoom},
          {Qt::MiddleButton, shift | control, CameraMotion::Roll}}}};
    return presets;
}

}  // namespace

const NavigationPreset& NavigationPreset::Named(const QString& wanted) {
    for (const NavigationPreset& preset : Presets())
        if (preset.name == wanted) return preset;
    return Presets().front();
}

std::optional<CameraMotion> NavigationPreset::MotionOf(Qt::MouseButton button,
                                                       Qt::KeyboardModifiers modifiers,
                                                       bool isOnSurface) const {
    for (const Drag& drag : drags)
        if (drag.button == button && drag.modifiers == modifiers &&
            !(drag.isBesideSurface && isOnSurface))
            return drag.motion;
    return std::nullopt;
}

bool NavigationPreset::DependsOnSurface(Qt::MouseButton button,
                                        Qt::KeyboardModifiers modifiers) const {
    return MotionOf(button, modifiers, true) != MotionOf(button, modifiers, false);
}

}  // namespace trovik::studio
