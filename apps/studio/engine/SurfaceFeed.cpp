// SPDX-License-Identifier: Apache-2.0
#include "engine/SurfaceFeed.h"

#include "framework/display/PatchBounds.h"
#include "framework/display/PatchPacker.h"
#include "framework/picking/PatchTree.h"

#include <limits>
#include <utility>

namespace trovik::studio {

namespace {

/// Number of threads used for packing, including the engine thread.
constexpr unsigned packingThreads = 2;

/// Destroys an update and keeps its vertex array for a later one. The viewport may do this after
/// the feed has been destroyed.
struct Recycler {
    std::shared_ptr<VertexArrays> arrays;
    void operator()(SurfaceUpdate* update) const {
        const std::unique_ptr<SurfaceUpdate> released(update);
        arrays->Return(std::move(released->vertices));
    }
};

}  // namespace

SurfaceFeed::SurfaceFeed(Document& ofDocument)
    : document(ofDocument), arrays(std::make_shared<VertexArrays>()) {
    document.AddObserver(*this);
}

SurfaceFeed::~SurfaceFeed() { document.RemoveObserver(*this); }

void SurfaceFeed::SurfaceChanged(const SurfaceChange& change) {
    const bool isTopology = (change.what & SurfaceChange::Topology) != 0;
    if (isTopology) sendsAtOnce = !change.all && (isLayoutCurrent || sendsAtOnce);
    if (!isLayoutCurrent) return;
    if (isTopology)
        isLayoutCurrent = false;
    else
        dirty->Add(change);
}

void SurfaceFeed::MakeLayout() {
    layout = std::make_shared<const PatchLayout>(*document.Geometry().Bound());
    dirty = std::make_unique<DirtyPatches>(*layout);
    isLayoutCurrent = true;
    nextPatch = 0;
}

void SurfaceFeed::AddPatch(SurfaceUpdate& update, uint32_t patch, std::size_t& vertices) const {
    update.patches.push_back(patch);
    vertices += layout->VertexCount(patch);
}

std::shared_ptr<SurfaceUpdate> SurfaceFeed::Pack(std::size_t maxBytes) {
    if (!HasWork()) return nullptr;
    if (!isLayoutCurrent) MakeLayout();
    isTransformPending = false;
    std::unique_ptr<SurfaceUpdate, Recycler> made(new SurfaceUpdate, Recycler{arrays});
    std::shared_ptr<SurfaceUpdate> update(std::move(made));
    update->layout = layout;
    update->toWorld = document.Geometry().Transform().ToWorld();
    update->bounds = document.Tree().Bounds();

    const std::size_t maxVertices = std::exchange(sendsAtOnce, false)
                                        ? std::numeric_limits<std::size_t>::max()
                                        : maxBytes / sizeof(DisplayVertex);
    std::size_t vertices = 0;
    for (const uint32_t patch : dirty->Patches()) {
        if (vertices >= maxVertices) break;
        // Patches that have never been sent are added by the next loop.
        if (patch < nextPatch) AddPatch(*update, patch, vertices);
    }
    while (nextPatch < PatchCount() && vertices < maxVertices)
        AddPatch(*update, nextPatch++, vertices);

    update->vertices = arrays->Take(vertices);
    PatchPacker(*document.Geometry().Bound(), *layout)
        .Pack(update->patches, update->vertices, packingThreads);
    update->boxes.reserve(update->patches.size());
    std::size_t first = 0;
    for (const uint32_t patch : update->patches) {
        const uint32_t count = layout->VertexCount(patch);
        update->boxes.push_back(layout->IsGrid()
                                    ? document.Tree().BoxOf(layout->PatchLevel(), patch)
                                    : BoxOf(std::span(update->vertices).subspan(first, count)));
        first += count;
    }
    dirty->Remove(update->patches);
    return update;
}

}  // namespace trovik::studio
