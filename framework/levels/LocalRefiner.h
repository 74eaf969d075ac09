// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/levels/LevelMesh.h"

#include <vector>

namespace trovik {

/// Single points of a Catmull-Clark step, to the bits of LevelRefiner, at the cost of the faces
/// around them and not of the level.
class LocalRefiner {
public:
    /// \param positions  of the coarse level; null for those that it has. Borrowed, as all is.
    LocalRefiner(LevelMesh& coarseLevel, const Vector* positions)
        : coarse(coarseLevel), places(positions), corners(coarseLevel.CornersPerFace()) {}

    Vector FacePoint(uint32_t face) const;
    Vector EdgePoint(uint32_t face, uint32_t side) const;
    Vector VertexPoint(uint32_t vertex);

private:
    Vector At(uint32_t vertex) const {
        return places == nullptr ? coarse.Position(vertex) : places[vertex];
    }

    LevelMesh& coarse;
    const Vector* places;
    uint32_t corners;
    std::vector<uint32_t> around;
};

}  // namespace trovik
