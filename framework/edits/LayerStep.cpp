// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/LayerStep.h"

#include "framework/multires/LevelGeometry.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace trovik {

std::vector<LayerStep::Row> LayerStep::RowsOf(const LevelGeometry& geometry, uint32_t level) {
    std::vector<Row> rows;
    for (const auto& layer : geometry.Layers().OfLevel(*geometry.Level(level)))
        rows.push_back({layer, layer->UserProperties()});
    return rows;
}

// A removed layer is listed in the rows of this step but not in the rows in use. This is the case
// only for the step that removed it, so each unused layer is counted and compressed once.
void LayerStep::FindKept(const std::vector<Row>& rowsInUse) {
    kept.clear();
    for (const Row& row : rows) {
        const bool inUse =
            std::any_of(rowsInUse.begin(), rowsInUse.end(), [&row](const Row& other) {
                return other.layer == row.layer;
            });
        if (!inUse) kept.push_back(row.layer);
    }
}

void LayerStep::Apply(LevelGeometry& geometry) {
    if (geometry.BoundIndex() != level) geometry.BindLevel(level);
    LevelMesh& mesh = *geometry.Level(level);
    assert(mesh.OpenChange() == nullptr && "no undo during a stroke");

    std::vector<Row> now = RowsOf(geometry, level);
    LayerBase::Layers layers;
    for (const Row& row : rows) {
        row.layer->SetUserProperties(row.given);
        layers.push_back(row.layer);
    }
    geometry.Layers().SetOfLevel(mesh, layers);
    rows.swap(now);
    FindKept(now);

    std::shared_ptr<SculptLayer*> other = std::move(active);
    const SculptLayer* present = mesh.ActiveLayer();
    active = present == nullptr ? nullptr : present->Handle();
    mesh.SetActiveLayer(other == nullptr ? nullptr : *other);

    for (Entries& list : entries)
        for (std::size_t i = 0; i < list.slots.size(); ++i)
            list.layer->SwapState(list.slots[i], list.states[i]);
    if (!layeredVertices.empty()) geometry.Layers().LayerBaseOf(mesh).Exchange(layeredVertices);

    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const uint32_t vertex = vertices[i];
        SwapPosition(mesh, vertex, positions[i]);
        SwapNormal(mesh.vertexNormals.array[vertex], normals[i]);
    }
    mesh.ContentChanged();
    geometry.ReportVertices(level, SurfaceChange::Positions | SurfaceChange::Normals, vertices);
}

uint64_t LayerStep::Bytes() const {
    uint64_t bytes = sizeof(LayerStep) + label.capacity() + rows.capacity() * sizeof(Row) +
                     entries.capacity() * sizeof(Entries) + vertices.capacity() * sizeof(uint32_t) +
                     positions.capacity() * sizeof(Vector) +
                     normals.capacity() * sizeof(NormalWords) +
                     layeredVertices.capacity() * sizeof(LayerBase::OtherLayeredVertex);
    for (const Row& row : rows) bytes += row.given.name.capacity();
    for (const Entries& list : entries) {
        bytes += list.slots.capacity() * sizeof(uint32_t) +
                 list.states.capacity() * sizeof(SculptLayer::State);
    }
    for (const auto& layer : kept) bytes += sizeof(SculptLayer) + layer->Bytes();
    return bytes;
}

std::vector<StepArray> LayerStep::Arrays() {
    std::vector<StepArray> arrays = {
        StepArray(vertices), StepArray(positions), StepArray(normals), StepArray(layeredVertices)};
    for (Entries& list : entries) {
        arrays.emplace_back(list.slots);
        arrays.emplace_back(list.states);
    }
    for (const auto& layer : kept) arrays.push_back(layer->Content());
    return arrays;
}

}  // namespace trovik
