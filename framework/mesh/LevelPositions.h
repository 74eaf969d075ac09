// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"

#include <vector>

namespace trovik {

/// Returns the positions of all vertices of the level, mesh-local.
inline std::vector<Vector> PositionsOf(const LevelMesh& level) {
    std::vector<Vector> positions(level.VertexCount());
    for (uint32_t v = 0; v < level.VertexCount(); ++v) positions[v] = level.Position(v);
    return positions;
}

}  // namespace trovik
