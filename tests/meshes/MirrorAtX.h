// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

namespace trovik::test {

/// Returns the reflection in the plane at this x.
inline Matrix MirrorAtX(float x) {
    Matrix map;
    map.m[0][0] = -1.0f;
    map.m[3][0] = 2.0f * x;
    return map;
}

/// Returns the mirror configuration that a brush receives for the plane x = 0.
inline MirrorConfiguration MirroredAtX() {
    MirrorConfiguration mirror;
    mirror.SetMirrorMode(MirrorConfiguration::PlaneX);
    mirror.SetPointMap(MirrorAtX(0.0f));
    return mirror;
}

}  // namespace trovik::test
