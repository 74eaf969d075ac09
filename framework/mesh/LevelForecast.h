// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

#include <cstdint>

namespace trovik {

/// What more levels would hold.
struct LevelForecast {
    /// Of the highest of them.
    uint64_t faces = 0;
    uint64_t vertices = 0;
    /// Of all of them together: arrays of faces and vertices, and the copies of positions that tell
    /// what changed since the level was bound.
    uint64_t bytes = 0;
    /// How many levels these are: fewer than asked for when a level cannot be counted any more.
    uint32_t levels = 0;

    /// Four indices, flags, and the stamp of walks.
    static constexpr uint64_t bytesPerFace = 4 * sizeof(uint32_t) + 1 + sizeof(uint32_t);
    static constexpr uint64_t bytesPerVertex = sizeof(Vertex) + sizeof(PackedNormal);
};

}  // namespace trovik
