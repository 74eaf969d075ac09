// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

namespace trovik {

/// Returns the strength argument of a dab, computed from the brush strength in percent at a
/// pressure. Tools that average, pull or move vertices part of the way to a plane take the
/// percentage unchanged. Tools whose strength is a length (those that push, and Wax, which raises
/// its plane by that length) take it in world units: at 100 percent, a pushing dab moves its centre
/// by one radius before build-up is applied, and Wax places its plane a quarter of a radius above
/// the surface. With a vector stamp, all tools except Wax take the percentage: at 100 percent, a
/// value of 1 moves a vertex by one side of the stamp.
/// \param radius  world units.
TROVIK_API float DabStrength(const BrushOperation& brush, float pressure, float radius);

/// Converts a dab's strength to a different radius: a length scales with the radius, a percentage
/// does not change.
TROVIK_API float StrengthAtRadius(const BrushOperation& brush,
                                  float strength,
                                  float radius,
                                  float newRadius);

}  // namespace trovik
