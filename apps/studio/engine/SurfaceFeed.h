// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/EngineMessages.h"
#include "engine/VertexArrays.h"
#include "framework/display/DirtyPatches.h"
#include "framework/document/Document.h"
#include "framework/document/DocumentObserver.h"

#include <memory>
#include <vector>

namespace trovik::studio {

/// Follows the changes of a document's surface and packs the changed patches for the viewport.
/// Changes are merged until they are packed, so several dabs in one region are packed only once.
///
/// Used on the engine thread only.
class SurfaceFeed final : public DocumentObserver {
public:
    /// Marks the whole surface to be sent. Borrows the document.
    explicit SurfaceFeed(Document& ofDocument);
    ~SurfaceFeed();
    SurfaceFeed(const SurfaceFeed&) = delete;
    SurfaceFeed& operator=(const SurfaceFeed&) = delete;

    /// Marks the whole surface to be sent again.
    void SendAll() { isLayoutCurrent = false; }
    /// Reports a new mesh transform. The next update contains it, even if no patch has changed.
    void SendTransform() { isTransformPending = true; }
    bool HasWork() const {
        return !isLayoutCurrent || isTransformPending || nextPatch < PatchCount() ||
               !dirty->IsEmpty();
    }
    /// Packs changed patches, up to about `maxBytes` of vertices, but at least one patch. Returns
    /// null if nothing has changed. Cost: O(patches packed); after a level change, O(level) for the
    /// layout, and the vertices are spread over several updates. After a stroke has changed the
    /// topology, the whole surface is packed at once.
    std::shared_ptr<SurfaceUpdate> Pack(std::size_t maxBytes);

private:
    void SurfaceChanged(const SurfaceChange& change) override;
    uint32_t PatchCount() const { return layout == nullptr ? 0 : layout->PatchCount(); }
    void MakeLayout();
    void AddPatch(SurfaceUpdate& update, uint32_t patch, std::size_t& vertices) const;

    Document& document;
    /// Shared with the updates, which return their arrays.
    std::shared_ptr<VertexArrays> arrays;
    std::shared_ptr<const PatchLayout> layout;
    std::unique_ptr<DirtyPatches> dirty;
    bool isLayoutCurrent = false;
    /// Whether the next layout is sent in one update, because strokes change the topology with
    /// every dab, and the viewport would otherwise show only a part of the surface meanwhile.
    bool sendsAtOnce = false;
    bool isTransformPending = false;
    /// While a layout is sent for the first time: the first patch that has not been sent yet.
    uint32_t nextPatch = 0;
};

}  // namespace trovik::studio
