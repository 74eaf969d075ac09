// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <cmath>

namespace trovik {

inline bool IsFinite(const Vector& p) {
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

}  // namespace trovik
