// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace trovik {

/// Magnitude of planeClampMin and planeClampMax at which displacement towards the plane is not
/// limited.
inline constexpr float unlimited = 100000000.0f;

}  // namespace trovik
