// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Matrix.h"

#include <vector>

namespace trovik {

/// The copies of a dab under mirrors: reflections in planes through the origin and turns about an
/// axis through it, all mesh-local.
struct MirrorSetting {
    /// Planes across the axes 0 x, 1 y, 2 z, each at most once.
    std::vector<int> planes;
    /// Copies about `axis`, the dab itself among them; 1 for none but that.
    int copies = 1;
    int axis = 1;
};

/// The maps of points to their copies, each different from the others and from staying in place,
/// the turn by nothing first. Two planes give three maps, n copies n - 1, both together their
/// products. Quarter turns are exact.
TROVIK_API std::vector<Matrix> MirrorMaps(const MirrorSetting& setting);

/// The most maps that a setting may give.
constexpr std::size_t mostMirrorMaps = 64;

}  // namespace trovik
