// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

namespace trovik {

/// A sample of a path: a position on the viewport in pixels (z unused), or on the surface in world
/// space.
struct PathSample {
    PathSample() = default;
    /// A sample of an upright pen.
    PathSample(const Vector& at, float pressed = 1.0f) : position(at), pressure(pressed) {}

    Vector position;
    /// 0 to 1.
    float pressure = 1.0f;
    /// Tilt of the pen: the projection to the viewport of a vector of length 1 along the pen toward
    /// its upper end, x to the right and y down. Zero is upright, length 1 flat. z is unused.
    Vector tilt;
    /// Seconds since an arbitrary moment. Only airbrush dabs and the filter of pointer streams read
    /// it.
    double time = 0.0;
};

}  // namespace trovik
