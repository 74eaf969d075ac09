// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"

#include <cstdint>
#include <vector>

namespace trovik {

/// Returns, for each face, the corner from which it is split into a fan of triangles: the first one
/// whose diagonals are not edges or diagonals of other faces. This is nearly always corner 0; it is
/// another one for example if two quads have all four vertices in common. If there is no such
/// corner, it is 0. Cost: O(corners) for bounded valences and face sizes.
std::vector<uint32_t> FanStarts(const PolygonMesh& mesh);

}  // namespace trovik
