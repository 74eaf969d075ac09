// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace trovik {

/// Magnitude of planeClampMin and planeClampMax that leaves displacement towards the plane
/// unlimited.
inline constexpr float unlimited = 100000000.0f;

}  // namespace trovik
