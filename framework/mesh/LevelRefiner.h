// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/jobs/JobPhase.h"
#include "framework/mesh/LevelMesh.h"

namespace trovik {

/// One Catmull-Clark step of a whole level: its topology, and its positions by the rules of
/// CatmullClarkRules.h.
class LevelRefiner {
public:
    /// \param jobControl  of RefineTopology and RefinePositions, which throw Cancelled; what they
    /// fill is then incomplete.
    explicit LevelRefiner(LevelMesh& coarseLevel, JobControl* jobControl = nullptr);

    /// Vertices of the level above. Cost: O(faces).
    uint64_t CountFineVertices();

    /// Faces and vertex numbers of the level above. `fine` must be empty.
    void RefineTopology(LevelMesh& fine);
    /// Computes the positions of the level above. `place(vertex, position)` is called once for each
    /// vertex of the fine level. `fine` supplies the vertex numbers.
    /// \param positions  of the coarse level; null for those that it has. Borrowed.
    template <typename Place>
    void RefinePositions(const LevelMesh& fine, Place place, const Vector* positions = nullptr);

private:
    bool OwnsEdge(uint32_t face, uint32_t side, uint32_t neighbour) const;

    LevelMesh& coarse;
    JobControl* job;
    uint32_t corners;
};

}  // namespace trovik

#include "framework/mesh/LevelRefiner.inl"
