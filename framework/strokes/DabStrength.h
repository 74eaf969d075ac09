// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

namespace trovik {

/// Converts the brush strength at a pressure, in percent, to the strength argument of a dab. Tools
/// that average vertices, pull them, or move them part of the way to a plane use the percentage
/// unchanged. Tools whose strength is a length require it in world units. These are the pushing
/// tools and Wax, which raises its plane by that length. At 100 percent, a pushing dab moves its
/// centre by one radius before build-up is applied, and Wax places its plane a quarter of a radius
/// above the surface. With a vector stamp, all tools except Wax use the percentage: at 100 percent,
/// a stamp value of 1 moves a vertex by the length of the stamp's side.
/// \param radius  in world units.
TROVIK_API float DabStrength(const BrushOperation& brush, float pressure, float radius);

/// Converts a dab's strength to a different radius: a length scales with the radius, while a
/// percentage does not change.
TROVIK_API float StrengthAtRadius(const BrushOperation& brush,
                                  float strength,
                                  float radius,
                                  float newRadius);

}  // namespace trovik
