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
    /// Total memory of all additional levels: the face and vertex arrays, and the position copies
    /// that are needed to detect changes since the level was bound.
    uint64_t bytes = 0;
    /// Number of additional levels. It is lower than requested if a level would have more elements
    /// than the index type can count.
    uint32_t levels = 0;

    /// Each face stores four indices, its flags, and a visit stamp for walks.
    static constexpr uint64_t bytesPerFace = 4 * sizeof(uint32_t) + 1 + sizeof(uint32_t);
    static constexpr uint64_t bytesPerVertex = sizeof(Vertex) + sizeof(PackedNormal);
};

}  // namespace trovik
