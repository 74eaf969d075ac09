// SPDX-License-Identifier: Apache-2.0
#include "render/FaceEdges.h"

#include <QThreadPool>

#include <algorithm>
#include <array>
#include <utility>

namespace trovik::studio {

// The triangles of a face are consecutive and start with the same vertex; no triangle of another
// face starts with it. The diagonals of quads can therefore be left out.
FaceEdges FaceEdgesOf(const PatchLayout& layout) {
    FaceEdges edges;
    std::vector<std::array<uint16_t, 2>> sides;
    for (uint32_t patch = 0; patch < layout.PatchCount(); ++patch) {
        const auto list = layout.Triangles(patch);
        sides.clear();
        for (std::size_t i = 0; i < list.size();) {
            const uint16_t first = list[i];
            uint16_t last = list[i + 1];
            sides.push_back({first, last});
            for (; i < list.size() && list[i] == first; i += 3) {
                sides.push_back({list[i + 1], list[i + 2]});
                last = list[i + 2];
            }
            sides.push_back({last, first});
        }
        for (auto& side : sides)
            if (side[0] > side[1]) std::swap(side[0], side[1]);
        std::sort(sides.begin(), sides.end());
        sides.erase(std::unique(sides.begin(), sides.end()), sides.end());
        edges.patches.push_back(
            {static_cast<uint32_t>(edges.lines.size()), static_cast<uint32_t>(sides.size() * 2)});
        for (const auto& side : sides)
            edges.lines.insert(edges.lines.end(), side.begin(), side.end());
    }
    return edges;
}

std::future<FaceEdges> StartFaceEdges(std::shared_ptr<const PatchLayout> layout) {
    // Shared, because the pool copies its tasks.
    const auto task = std::make_shared<std::packaged_task<FaceEdges()>>(
        [layout = std::move(layout)] { return FaceEdgesOf(*layout); });
    std::future<FaceEdges> result = task->get_future();
    QThreadPool::globalInstance()->start([task] { (*task)(); });
    return result;
}

}  // namespace trovik::studio
