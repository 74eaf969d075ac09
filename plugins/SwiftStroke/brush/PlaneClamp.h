// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace trovik {

/// Magnitude of planeClampMin and planeClampMax where displacement towards the plane has no limit.
inline constexpr float unlimited = 100000000.0f;

}  // namespace trovik
