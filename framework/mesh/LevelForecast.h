// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

#include <cstdint>

namespace trovik {

/// The size of additional levels.
struct LevelForecast {
    /// Faces and vertices of the highest additional level.
    uint64_t faces = 0;
    uint64_t vertices = 0;
    /// Memory of all additional levels together: the arrays of faces and vertices, and the copies
    /// of positions that are needed to detect changes since the level was bound.
    uint64_t bytes = 0;
    /// Number of additional levels. It is less than requested if the elements of a level cannot be
    /// counted in the index type.
    uint32_t levels = 0;

    /// Four indices, the flags, and the stamp of the walks.
    static constexpr uint64_t bytesPerFace = 4 * sizeof(uint32_t) + 1 + sizeof(uint32_t);
    static constexpr uint64_t bytesPerVertex = sizeof(Vertex) + sizeof(PackedNormal);
};

}  // namespace trovik
