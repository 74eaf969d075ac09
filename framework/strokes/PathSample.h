// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

namespace trovik {

/// A path sample: a viewport position in pixels (z unused), or a position on the surface in world
/// space.
struct PathSample {
    PathSample() = default;
    /// A sample of an upright pen.
    PathSample(const Vector& at, float pressed = 1.0f) : position(at), pressure(pressed) {}

    Vector position;
    /// 0 to 1.
    float pressure = 1.0f;
    /// Pen tilt: a unit vector that points along the pen towards its upper end, projected onto the
    /// viewport (x to the right, y down). Its length is 0 if the pen is upright and 1 if the pen
    /// lies flat. z is unused.
    Vector tilt;
    /// Timestamp in seconds since an arbitrary moment. Used only by airbrush dabs and the pointer
    /// filter.
    double time = 0.0;
};

}  // namespace trovik
