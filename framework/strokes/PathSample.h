// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

namespace trovik {

/// A sample of a path: a place on the viewport in pixels (z unused), or on the surface in world
/// space.
struct PathSample {
    PathSample() = default;
    /// Of an upright pen.
    PathSample(const Vector& at, float pressed = 1.0f) : place(at), pressure(pressed) {}

    Vector place;
    /// 0 to 1.
    float pressure = 1.0f;
    /// Where the pen's upper end leans to: x to the viewport's right, y to its bottom, of a vector
    /// of length 1 along the pen; zero: upright; length 1: flat. z unused.
    Vector tilt;
    /// Seconds since any moment. Only airbrush dabs and the filter of pointer streams read it.
    double time = 0.0;
};

}  // namespace trovik
