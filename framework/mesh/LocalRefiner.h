// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/CatmullClarkRules.h"
#include "framework/mesh/LevelMesh.h"
#include "host/Api.h"

#include <vector>

namespace trovik {

/// Computes individual points of a Catmull-Clark step, bit-identical to the results of
/// LevelRefiner. The cost depends only on the faces around the point, not on the size of the level.
class TROVIK_API LocalRefiner {
public:
    /// \param positions  positions of the coarse level; null to use its current positions. Both
    /// arguments are borrowed.
    LocalRefiner(LevelMesh& coarseLevel, const Vector* positions)
        : coarse(coarseLevel), inputPositions(positions), corners(coarseLevel.CornersPerFace()) {}
    /// Refines an older state of the coarse level.
    /// \param positions  must be sorted.
    LocalRefiner(LevelMesh& coarseLevel, const OlderValues<Vector>& positions)
        : coarse(coarseLevel), older(&positions), corners(coarseLevel.CornersPerFace()) {}

    /// Returns the position that the refinement uses for a coarse vertex.
    Vector At(uint32_t vertex) const {
        if (inputPositions != nullptr) return inputPositions[vertex];
        const Vector* position = older == nullptr ? nullptr : older->Find(vertex);
        return position == nullptr ? coarse.Position(vertex) : *position;
    }
    Vector FacePoint(uint32_t face) const {
        const uint32_t* v = coarse.faceVertexIndices.array + face * corners;
        Vector around[4];
        for (uint32_t k = 0; k < corners; ++k) around[k] = At(v[k]);
        return FacePointRule(ExactSum(around, corners), corners);
    }
    Vector EdgePoint(uint32_t face, uint32_t side) const;
    Vector VertexPoint(uint32_t vertex);

private:
    LevelMesh& coarse;
    const Vector* inputPositions = nullptr;
    const OlderValues<Vector>* older = nullptr;
    uint32_t corners;
    std::vector<uint32_t> facesAround;
    std::vector<Vector> terms;
    std::vector<Vector> borderEnds;
};

}  // namespace trovik
