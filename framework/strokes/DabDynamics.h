// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PressureCurve.h"

namespace trovik {

/// How pressure, the pen's tilt, time and chance shape each dab of a stroke.
struct DabDynamics {
    /// Applied to the pressure before the brush's own settings of pressure and bias.
    PressureCurve strengthCurve;
    PressureCurve sizeCurve;
    /// 0 to 1: a dab's radius is made smaller by up to this share, at random.
    float randomSize = 0.0f;
    /// The stamp's top points where the pen leans to, whatever its positioning.
    bool tiltTurnsStamp = false;
    /// From -1: how much larger and stronger a dab is under a pen that lies flat, as a share; under
    /// a pen that leans less, in proportion to the length of PathSample::tilt.
    float tiltToSize = 0.0f;
    float tiltToStrength = 0.0f;
    /// The brush's radius in pixels of the viewport at the depth of each dab; 0: the radius in
    /// world units counts.
    float radiusPixels = 0.0f;
    /// Dabs a second while the pen rests or is slower than the spacing; 0: none for time.
    float airbrush = 0.0f;
};

}  // namespace trovik
