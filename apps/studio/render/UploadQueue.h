// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/EngineMessages.h"

#include <deque>
#include <functional>

namespace trovik::studio {

/// The patches of one layout that wait for upload. If a waiting patch is sent again, it keeps its
/// position in the queue and is uploaded once, with the newer vertices. An update is kept alive
/// only as long as one of its patches is waiting.
///
/// Not synchronised.
class UploadQueue {
public:
    /// A patch to upload; valid while the queue is not changed.
    struct Patch {
        uint32_t patch;
        std::span<const DisplayVertex> vertices;
        const AxisAlignedBoundingBox& box;
    };

    /// Removes everything, and accepts updates of this layout from now on.
    void Reset(std::shared_ptr<const PatchLayout> ofLayout);
    /// Adds the patches of an update, which must have this layout. Cost: O(patches).
    void Add(const std::shared_ptr<const SurfaceUpdate>& update);
    /// Removes patches with at most `byteBudget` bytes of vertices in total, but at least one
    /// patch, and calls `upload` for each. If not all patches fit, those for whose box
    /// `isPreferred` returns true come first; otherwise, patches are in the order of Add.
    void Take(uint64_t byteBudget,
              const std::function<bool(const AxisAlignedBoundingBox&)>& isPreferred,
              const std::function<void(const Patch&)>& upload);

    bool IsEmpty() const { return order.empty(); }
    uint64_t Bytes() const { return bytes; }

private:
    /// Location of a patch's newest vertices; without an update, the patch is not waiting.
    struct Source {
        std::shared_ptr<const SurfaceUpdate> update;
        uint32_t index = 0;
        uint64_t firstVertex = 0;
    };

    uint64_t BytesOf(uint32_t patch) const {
        return uint64_t{layout->VertexCount(patch)} * sizeof(DisplayVertex);
    }

    std::shared_ptr<const PatchLayout> layout;
    std::vector<Source> sources;
    std::deque<uint32_t> order;
    uint64_t bytes = 0;
};

}  // namespace trovik::studio
