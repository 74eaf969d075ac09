// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "input/Gesture.h"
#include "input/NavigationPreset.h"
#include "viewport/Camera.h"

namespace trovik::studio {

class ViewportWidget;

/// A drag that moves the camera.
class CameraGesture final : public Gesture {
public:
    /// \param anchor  the world point to orbit about, pan with, or zoom to.
    CameraGesture(ViewportWidget& viewport,
                  CameraMotion motion,
                  const Vector& anchor,
                  const PointerEvent& press);

    void Move(const PointerEvent& event) override;
    void Finish() override {}
    void Cancel() override;

private:
    ViewportWidget& viewport;
    CameraMotion motion;
    Vector anchor;
    Camera before;
    QPointF last;
};

}  // namespace trovik::studio
