// SPDX-License-Identifier: Apache-2.0
#include "framework/filters/PositionEdit.h"

#include "framework/edits/SurfaceMoves.h"
#include "framework/errors/HostError.h"
#include "framework/math/IsFinite.h"
#include "framework/math/SameBits.h"
#include "framework/mesh/UnfrozenFraction.h"

#include <utility>

namespace trovik {

std::vector<float> MoveWeights(const LevelMesh& level) {
    std::vector<float> weights(level.VertexCount());
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        weights[v] = UnfrozenFraction(level.FreezeOfTools(v));
    return weights;
}

PositionEdit GivenPositions(std::vector<Vector> positions, const std::string& label) {
    const auto masked = [given = std::move(positions)](LevelGeometry& geometry, JobControl*) {
        const LevelMesh& level = *geometry.Bound();
        if (given.size() != level.VertexCount()) {
            throw HostError("expected one position for each of the " +
                            std::to_string(level.VertexCount()) + " vertices, got " +
                            std::to_string(given.size()));
        }
        std::vector<Vector> result = given;
        const std::vector<float> weights = MoveWeights(level);
        for (uint32_t v = 0; v < level.VertexCount(); ++v) {
            if (weights[v] == 1.0f) continue;
            const Vector before = level.Position(v);
            result[v] = weights[v] == 0.0f ? before : before + (given[v] - before) * weights[v];
        }
        return result;
    };
    return {label, masked};
}

uint32_t EditPositions(LevelGeometry& geometry, const PositionEdit& edit, JobControl* job) {
    LevelMesh& level = *geometry.Bound();
    RequireWritableLayer(level);
    const std::vector<Vector> positions = edit.positions(geometry, job);
    SurfaceMoves moves(level);
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        if (SameBits(positions[v], level.Position(v))) continue;
        if (!IsFinite(positions[v]))
            throw HostError("vertex " + std::to_string(v) + " would get a non-finite position");
        moves.Add(v, positions[v]);
    }
    return moves.ApplyAsStep(geometry, edit.label);
}

}  // namespace trovik
