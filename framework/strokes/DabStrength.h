// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

namespace trovik {

/// The strength argument of a dab, from the brush's strength in percent under a pressure. Tools
/// that average, pull or work in shares of the way to a plane take the percent as they are. Tools
/// whose strength is a length (those that push, and Wax, which lifts its plane by it) take it in
/// world units: at 100 percent a pushing dab moves its centre by one radius before build-up, and
/// Wax stands its plane a quarter of a radius above the surface. With a vector stamp all but Wax
/// take the percent: at 100 a value of 1 moves by one side of the stamp.
/// \param radius  world units.
TROVIK_API float DabStrength(const BrushOperation& brush, float pressure, float radius);

/// A dab's strength at another radius: strengths that are a length grow with it, percent stay.
TROVIK_API float StrengthAtRadius(const BrushOperation& brush,
                                  float strength,
                                  float radius,
                                  float newRadius);

}  // namespace trovik
