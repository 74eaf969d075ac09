// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/Engine.h"

#include <cstring>
#include <vector>

namespace trovik::studio {

/// Applies all pending updates of the surface to a copy of its vertices.
inline void FollowUpdates(Engine& engine, std::vector<DisplayVertex>& copy) {
    for (const auto& update : engine.TakeUpdates()) {
        copy.resize(update->layout->TotalVertexCount());
        std::size_t first = 0;
        for (const uint32_t patch : update->patches) {
            const uint32_t count = update->layout->VertexCount(patch);
            std::memcpy(copy.data() + update->layout->FirstVertex(patch),
                        update->vertices.data() + first,
                        count * sizeof(DisplayVertex));
            first += count;
        }
    }
}

}  // namespace trovik::studio
