// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/StrokeStep.h"

#include "framework/math/SameBits.h"
#include "framework/multires/LevelGeometry.h"
#include "framework/multires/RecordChange.h"

#include <cassert>

namespace trovik {

namespace {

/// Prefetching is needed because the vertices of a step are scattered over a mesh that is larger
/// than the caches.
constexpr std::size_t prefetchAhead = 16;

}  // namespace

std::unique_ptr<StrokeStep> StrokeStep::FromChange(const LevelChange& change) {
    const LevelMesh& mesh = *change.level;
    SculptLayer* layer = change.layer == nullptr ? nullptr : *change.layer;
    std::unique_ptr<StrokeStep> step(new StrokeStep());
    step->level = static_cast<uint32_t>(mesh.Index());
    step->layerStrength = change.layerStrength;

    auto before = change.layerBefore.begin();
    for (uint32_t i = 0; i < change.recordStore.fill; ++i) {
        const StoredVertexInfo& record = change.recordStore.array[i];
        bool changed = IsChanged(mesh, record);
        if (before != change.layerBefore.end() && before->record == i) {
            if (layer != nullptr) {
                const SculptLayer::State& now = layer->StateOfSlot(record.layerSlot);
                changed = changed || !SameBits(now.offset, before->state.offset);
                if (changed) {
                    step->layerEntries.push_back({record.layerSlot, before->state});
                } else {
                    // The stroke did not change this vertex. If the layer absorbed an earlier move
                    // into its rest position during the stroke, undoing that move could not restore
                    // the rest position. The old layer state is therefore restored here.
                    SculptLayer::State seen = before->state;
                    layer->SwapState(record.layerSlot, seen);
                }
            }
            // If a record could not be added after its slot had been reserved, there is a second
            // entry for it.
            while (before != change.layerBefore.end() && before->record == i) ++before;
        }
        if (changed) step->Add(record);
    }
    if (step->vertices.empty()) return nullptr;
    if (!step->layerEntries.empty()) step->layer = change.layer;
    step->ShrinkToFit();
    return step;
}

void StrokeStep::Add(const StoredVertexInfo& record) {
    vertices.push_back(record.vertexIndex);
    const float* position = record.originalPosition;
    positions.emplace_back(position[0], position[1], position[2]);
    const PackedNormal& normal = record.originalNormal;
    normals.push_back({normal.x, normal.y, normal.z});
}

void StrokeStep::ShrinkToFit() {
    vertices.shrink_to_fit();
    positions.shrink_to_fit();
    normals.shrink_to_fit();
    layerEntries.shrink_to_fit();
}

void StrokeStep::Apply(LevelGeometry& geometry) {
    if (geometry.BoundIndex() != level) geometry.BindLevel(level);
    LevelMesh& mesh = *geometry.Level(level);
    assert(mesh.OpenChange() == nullptr && "steps cannot be applied during a stroke");

    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const uint32_t vertex = vertices[i];
        if (i + prefetchAhead < vertices.size()) {
            const uint32_t ahead = vertices[i + prefetchAhead];
            __builtin_prefetch(&mesh.vertices.array[ahead], 1);
            __builtin_prefetch(&mesh.vertexNormals.array[ahead], 1);
        }
        SwapPosition(mesh, vertex, positions[i]);
        if (vertex < mesh.vertexNormals.fill)
            SwapNormal(mesh.vertexNormals.array[vertex], normals[i]);
    }

    if (SculptLayer* alive = layer == nullptr ? nullptr : *layer) {
        const float strength = alive->EffectiveStrength();
        const bool sameStrength = SameBits(strength, layerStrength);
        for (LayerEntry& entry : layerEntries) {
            alive->SwapState(entry.slot, entry.state);
            if (!sameStrength) alive->Compose(entry.slot);
        }
        layerStrength = strength;
    }
    mesh.ContentChanged();
    geometry.ReportVertices(level, SurfaceChange::Positions | SurfaceChange::Normals, vertices);
}

uint64_t StrokeStep::Bytes() const {
    return sizeof(StrokeStep) + vertices.capacity() * sizeof(uint32_t) +
           positions.capacity() * sizeof(Vector) + normals.capacity() * sizeof(NormalWords) +
           layerEntries.capacity() * sizeof(LayerEntry) + label.capacity();
}

std::vector<StepArray> StrokeStep::Arrays() {
    return {StepArray(vertices), StepArray(positions), StepArray(normals), StepArray(layerEntries)};
}

}  // namespace trovik
