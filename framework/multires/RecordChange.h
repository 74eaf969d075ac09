// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/math/SameBits.h"
#include "framework/mesh/LevelMesh.h"

namespace trovik {

/// Returns whether the position of the record's vertex differs bitwise from the position in the
/// record.
inline bool HasMoved(const LevelMesh& level, const StoredVertexInfo& record) {
    const float* before = record.originalPosition;
    return !SameBits(level.Position(record.vertexIndex), Vector(before[0], before[1], before[2]));
}

}  // namespace trovik
