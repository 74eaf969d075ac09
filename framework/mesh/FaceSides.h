// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"

namespace trovik {

/// Calls side(a, b) for each side of each face. An edge between two faces is visited twice.
template <typename Side>
void ForEachSide(const LevelMesh& level, Side side) {
    const uint32_t corners = level.CornersPerFace();
    const uint32_t* face = level.faceVertexIndices.array;
    for (uint32_t number = 0; number < level.faceCount; ++number, face += corners)
        for (uint32_t k = 0; k < corners; ++k) side(face[k], face[(k + 1) % corners]);
}

}  // namespace trovik
