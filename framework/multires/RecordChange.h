// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/math/SameBits.h"
#include "framework/mesh/LevelMesh.h"

#include <cstring>

namespace trovik {

/// Returns whether the position of the record's vertex differs bitwise from the position in the
/// record.
inline bool HasMoved(const LevelMesh& level, const StoredVertexInfo& record) {
    const float* before = record.originalPosition;
    return !SameBits(level.Position(record.vertexIndex), Vector(before[0], before[1], before[2]));
}

/// Returns whether the position or the normal differs bitwise from that in the record.
inline bool IsChanged(const LevelMesh& level, const StoredVertexInfo& record) {
    if (HasMoved(level, record)) return true;
    if (record.vertexIndex >= level.vertexNormals.fill) return false;
    const PackedNormal& normal = level.vertexNormals.array[record.vertexIndex];
    return std::memcmp(&normal.x, &record.originalNormal.x, 3 * sizeof normal.x) != 0;
}

}  // namespace trovik
