// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Matrix.h"

#include <vector>

namespace trovik {

/// The mirrored copies of a dab: reflections in planes through the origin and rotations about an
/// axis through it, all mesh-local.
struct MirrorSetting {
    /// Axes perpendicular to the mirror planes (0 is x, 1 is y, 2 is z), each listed at most once.
    std::vector<int> planes;
    /// Number of copies rotated about `axis`, including the dab itself; 1 disables rotation.
    int copies = 1;
    int axis = 1;
};

/// Returns the maps from points to their mirrored copies, ordered by rotation; maps without a
/// rotation come first. All maps are different from each other and from the identity. Two planes
/// give three maps, n copies give n - 1 maps, and both together give all products of these. Quarter
/// turns are exact.
TROVIK_API std::vector<Matrix> MirrorMaps(const MirrorSetting& setting);

/// The maximum number of maps.
constexpr std::size_t maxMirrorMaps = 64;

}  // namespace trovik
