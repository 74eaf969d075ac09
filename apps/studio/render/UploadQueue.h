// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/EngineMessages.h"

#include <deque>
#include <functional>

namespace trovik::studio {

/// Patches of one layout that wait for their upload. A patch that waits and is sent again keeps its
/// position in the queue and is uploaded once, with the newer vertices. Updates are kept alive only
/// as long as a patch of theirs waits.
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

    /// Removes everything and expects updates of a layout.
    void Reset(std::shared_ptr<const PatchLayout> ofLayout);
    /// Adds the patches of an update, which must be of the layout. O(patches).
    void Add(const std::shared_ptr<const SurfaceUpdate>& update);
    /// Removes patches whose vertices take at most `byteBudget` bytes together, but at least one,
    /// and calls upload for each. If not all of them fit, those come first for which `isPreferred`
    /// of their box returns true; otherwise their order is that of Add.
    void Take(uint64_t byteBudget,
              const std::function<bool(const AxisAlignedBoundingBox&)>& isPreferred,
              const std::function<void(const Patch&)>& upload);

    bool IsEmpty() const { return order.empty(); }
    uint64_t Bytes() const { return bytes; }

private:
    /// Where the newest vertices of a patch are; no update: the patch does not wait.
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
