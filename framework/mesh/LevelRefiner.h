// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/jobs/JobPhase.h"
#include "framework/mesh/LevelMesh.h"

namespace trovik {

/// Applies one Catmull-Clark step to the topology and the positions of a whole level. The position
/// rules are in CatmullClarkRules.h.
class LevelRefiner {
public:
    /// \param jobControl  checked by RefineTopology and RefinePositions, which throw Cancelled and
    /// then leave their output incomplete.
    explicit LevelRefiner(LevelMesh& coarseLevel, JobControl* jobControl = nullptr);

    /// Returns the number of vertices of the level above. Cost: O(faces).
    uint64_t CountFineVertices();

    /// Builds the faces and vertex numbers of the level above. `fine` must be empty.
    void RefineTopology(LevelMesh& fine);
    /// Computes the positions of the level above. Calls `setPosition(vertex, position)` once for
    /// each vertex of the fine level. `fine` supplies the vertex numbers.
    /// \param positions  positions of the coarse level; null to use its current positions.
    /// Borrowed.
    template <typename SetPosition>
    void RefinePositions(const LevelMesh& fine,
                         SetPosition setPosition,
                         const Vector* positions = nullptr);

private:
    bool OwnsEdge(uint32_t face, uint32_t side, uint32_t neighbour) const;

    LevelMesh& coarse;
    JobControl* job;
    uint32_t corners;
};

}  // namespace trovik

#include "framework/mesh/LevelRefiner.inl"
