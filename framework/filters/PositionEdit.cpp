// SPDX-License-Identifier: Apache-2.0
#include "framework/filters/PositionEdit.h"

#include "framework/edits/SurfaceMoves.h"
#include "framework/errors/HostError.h"
#include "framework/layers/LayerStack.h"
#include "framework/math/IsFinite.h"
#include "framework/math/SameBits.h"

namespace trovik {

std::vector<float> MoveWeights(const LevelMesh& level) {
    std::vector<float> weights(level.VertexCount());
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        weights[v] = 1.0f - static_cast<float>(level.FreezeOfTools(v)) /
                                static_cast<float>(freezeAmountMask);
    return weights;
}

uint32_t EditPositions(LevelGeometry& geometry, const PositionEdit& edit, JobControl* job) {
    LevelMesh& level = *geometry.Bound();
    const SculptLayer* layer = level.ActiveLayer();
    if (layer != nullptr && !layer->Writable())
        throw HostError("the active layer \"" + layer->Name() + "\" is hidden or locked");
    const std::vector<Vector> positions = edit.positions(geometry, job);
    SurfaceMoves moves(level);
    uint32_t moved = 0;
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        if (SameBits(positions[v], level.Position(v))) continue;
        if (!IsFinite(positions[v]))
            throw HostError("vertex " + std::to_string(v) + " would get a non-finite position");
        moves.Add(v, positions[v]);
        ++moved;
    }
    if (moved == 0) return 0;
    LevelChange change(&level);
    const std::vector<uint32_t> changed = moves.Apply(change);
    change.FinishAs(edit.label);
    geometry.ReportVertices(
        geometry.BoundIndex(), SurfaceChange::Positions | SurfaceChange::Normals, changed);
    return moved;
}

}  // namespace trovik
