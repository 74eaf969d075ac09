// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/NormalBackup.h"

#include "framework/layers/SculptLayer.h"
#include "framework/math/SameBits.h"
#include "framework/multires/LevelChange.h"
#include "framework/multires/RecordChange.h"

#include <algorithm>

namespace trovik {

namespace {

bool HasMovedVertex(const LevelMesh& level) {
    const LevelChange* change = level.OpenChange();
    if (change == nullptr) return false;
    const Store<StoredVertexInfo>& records = change->Records();
    return std::any_of(
        records.array, records.array + records.fill, [&level](const StoredVertexInfo& record) {
            return HasMoved(level, record);
        });
}

}  // namespace

void NormalBackup::Begin(const LevelMesh& level) {
    const SculptLayer* layer = level.ActiveLayer();
    if (layer == nullptr || layer->Writable()) return;
    const PackedNormal* present = level.vertexNormals.array;
    normals.assign(present, present + level.vertexNormals.fill);
}

bool NormalBackup::AppliesTo(const LevelMesh& level) const {
    return !normals.empty() && !HasMovedVertex(level);
}

std::vector<uint32_t> NormalBackup::Changed(const LevelMesh& level) const {
    std::vector<uint32_t> changed;
    for (uint32_t v = 0; v < normals.size(); ++v)
        if (!SameBits(normals[v], level.vertexNormals.array[v])) changed.push_back(v);
    return changed;
}

void NormalBackup::Restore(LevelMesh& level, const std::vector<uint32_t>& changed) const {
    level.CountOutsideEdit();
    for (const uint32_t v : changed) level.vertexNormals.array[v] = normals[v];
    for (uint32_t i = 0; i < level.changeRecordCount; ++i) {
        StoredVertexInfo& record = level.changeRecords[i];
        record.originalNormal = normals[record.vertexIndex];
    }
}

}  // namespace trovik
