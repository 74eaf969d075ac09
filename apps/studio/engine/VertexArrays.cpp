// SPDX-License-Identifier: Apache-2.0
#include "engine/VertexArrays.h"

#include <algorithm>
#include <utility>

namespace trovik::studio {

namespace {

/// Enough for two updates of the maximum size: one is packed while the other is uploaded.
constexpr std::size_t maxKeptBytes = std::size_t{18} << 20;

std::size_t BytesOf(const std::vector<DisplayVertex>& array) {
    return array.capacity() * sizeof(DisplayVertex);
}

}  // namespace

std::vector<DisplayVertex> VertexArrays::Take(std::size_t size) {
    std::vector<DisplayVertex> taken;
    if (size == 0) return taken;
    {
        const std::lock_guard lock(mutex);
        // Takes the largest array, because growing an array clears the added vertices.
        const auto largest =
            std::max_element(kept.begin(), kept.end(), [](const auto& a, const auto& b) {
                return a.size() < b.size();
            });
        if (largest != kept.end()) {
            taken = std::move(*largest);
            kept.erase(largest);
            keptBytes -= BytesOf(taken);
        }
    }
    taken.resize(size);
    return taken;
}

void VertexArrays::Return(std::vector<DisplayVertex> array) {
    const std::lock_guard lock(mutex);
    if (keptBytes + BytesOf(array) > maxKeptBytes) return;
    keptBytes += BytesOf(array);
    kept.push_back(std::move(array));
}

}  // namespace trovik::studio
