// SPDX-License-Identifier: Apache-2.0
#include "framework/grab/MovedRegion.h"

#include "framework/edits/SurfaceMoves.h"
#include "framework/mesh/ChangedPatches.h"
#include "framework/multires/LevelGeometry.h"

#include <utility>

namespace trovik {

MovedRegion::MovedRegion(LevelMesh& ofLevel, LevelChange& change, std::vector<uint32_t> moved)
    : level(ofLevel),
      layer(ofLevel.ActiveLayer()),
      vertices(std::move(moved)),
      normals(ofLevel, vertices),
      patches(PatchesAt(ofLevel,
                        ReportedPatchLevel(static_cast<uint32_t>(ofLevel.Index())),
                        normals.Vertices())) {
    if (layer != nullptr && layer->EffectiveStrength() == 0.0f) layer = nullptr;
    starts.reserve(vertices.size());
    for (const uint32_t vertex : vertices) starts.push_back(level.Position(vertex));
    uint32_t near = openBorder;
    for (const uint32_t vertex : vertices) RecordOf(level, change, vertex, layer != nullptr, near);
    // A later region of the stroke may move these vertices, so they get a layer slot, too.
    for (const uint32_t vertex : normals.Vertices())
        RecordOf(level, change, vertex, layer != nullptr, near);
    if (layer == nullptr) return;
    slots.reserve(vertices.size());
    states.reserve(vertices.size());
    for (const uint32_t vertex : vertices) {
        slots.push_back(layer->SlotOf(vertex));
        states.push_back(layer->StateOfSlot(slots.back()));
    }
}

void MovedRegion::MoveInLayer(std::size_t index, const Vector& displacement) {
    const float fraction = 1.0f / layer->EffectiveStrength();
    const Vector offset = states[index].offset + displacement * fraction;
    layer->set(nullptr, slots[index], vertices[index], &offset, true);
}

void MovedRegion::Restore() {
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        if (layer != nullptr) {
            SculptLayer::State state = states[i];
            layer->SwapState(slots[i], state);
        }
        level.StorePosition(vertices[i], starts[i]);
    }
    Finish(1);
}

void MovedRegion::Finish(unsigned threads) {
    normals.Update(threads);
    const auto index = static_cast<uint32_t>(level.Index());
    level.Hierarchy().ReportPatches(index,
                                    SurfaceChange::Positions | SurfaceChange::Normals,
                                    ReportedPatchLevel(index),
                                    patches);
}

}  // namespace trovik
