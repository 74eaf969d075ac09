// SPDX-License-Identifier: Apache-2.0
#include "render/UploadQueue.h"

#include <algorithm>

namespace trovik::studio {

void UploadQueue::Reset(std::shared_ptr<const PatchLayout> ofLayout) {
    layout = std::move(ofLayout);
    sources.assign(layout != nullptr ? layout->PatchCount() : 0, {});
    order.clear();
    bytes = 0;
}

void UploadQueue::Add(const std::shared_ptr<const SurfaceUpdate>& update) {
    uint64_t firstVertex = 0;
    for (std::size_t i = 0; i < update->patches.size(); ++i) {
        const uint32_t patch = update->patches[i];
        Source& source = sources[patch];
        if (source.update == nullptr) {
            order.push_back(patch);
            bytes += BytesOf(patch);
        }
        source = {update, static_cast<uint32_t>(i), firstVertex};
        firstVertex += layout->VertexCount(patch);
    }
}

void UploadQueue::Take(uint64_t byteBudget,
                       const std::function<bool(const AxisAlignedBoundingBox&)>& isPreferred,
                       const std::function<void(const Patch&)>& upload) {
    if (bytes > byteBudget)
        std::stable_partition(order.begin(), order.end(), [&](uint32_t patch) {
            const Source& source = sources[patch];
            return isPreferred(source.update->boxes[source.index]);
        });
    uint64_t taken = 0;
    while (!order.empty()) {
        const uint32_t patch = order.front();
        const uint64_t size = BytesOf(patch);
        if (taken > 0 && taken + size > byteBudget) return;
        Source& source = sources[patch];
        upload({patch,
                std::span(source.update->vertices)
                    .subspan(source.firstVertex, layout->VertexCount(patch)),
                source.update->boxes[source.index]});
        source = {};
        order.pop_front();
        taken += size;
        bytes -= size;
    }
}

}  // namespace trovik::studio
