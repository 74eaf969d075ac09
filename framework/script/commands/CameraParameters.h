// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/script/Command.h"

namespace trovik {

/// Camera parameters; missing parameters keep their current values.
struct CameraParameters {
    std::optional<int> width;
    std::optional<int> height;
    /// Vertical angle in degrees.
    std::optional<float> fieldOfView;
    std::optional<bool> orthographic;
    std::optional<Vector> eye;
    std::optional<Vector> target;
    std::optional<Vector> up;
    /// Direction from the mesh to the eye, used if `eye` is missing; the distance is chosen so that
    /// the whole mesh is in view.
    std::optional<Vector> from;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("width", width);
        visit("height", height);
        visit("fieldOfView", fieldOfView);
        visit("orthographic", orthographic);
        visit("eye", eye);
        visit("target", target);
        visit("up", up);
        visit("from", from);
    }
};

/// \param frames  number of frames of the turntable that starts with this view; 1 for a single
/// render.
/// \param pointer  JSON pointer of the parameters, for errors.
StrokeView ViewOf(const CommandContext& context,
                  const CameraParameters& camera,
                  StrokeView view,
                  const std::string& pointer,
                  int frames = 1);

}  // namespace trovik
