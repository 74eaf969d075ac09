// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PressureCurve.h"

namespace trovik {

/// How pressure, pen tilt, time and randomness affect each dab of a stroke.
struct DabDynamics {
    /// Applied to the pressure before the brush applies its own pressure and bias settings.
    PressureCurve strengthCurve;
    PressureCurve sizeCurve;
    /// The maximum fraction (0 to 1) by which a dab's radius is randomly reduced.
    float randomSize = 0.0f;
    /// The top of the stamp points in the direction of the pen's tilt, regardless of the stamp
    /// positioning.
    bool tiltRotatesStamp = false;
    /// The fraction (at least -1) by which a dab is larger or stronger when the pen lies flat. At a
    /// smaller tilt, the fraction is multiplied by the length of PathSample::tilt.
    float tiltToSize = 0.0f;
    float tiltToStrength = 0.0f;
    /// The brush radius in viewport pixels, at the depth of each dab; 0 selects the radius in world
    /// units.
    float radiusPixels = 0.0f;
    /// Dabs per second while the pen is paused or moves more slowly than the spacing requires; 0
    /// disables timed dabs.
    float airbrush = 0.0f;
};

}  // namespace trovik
