// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/levels/LevelMesh.h"

namespace trovik {

/// One Catmull-Clark step (Catmull and Clark, "Recursively generated B-spline surfaces on arbitrary
/// topological meshes", 1978): of a level's topology, and of its positions. Boundary rule: border
/// edges are kept as curves, and a vertex of a single face stays where it is.
class LevelRefiner {
public:
    explicit LevelRefiner(LevelMesh& coarseLevel);

    uint32_t FineFaceCount() const;
    /// Vertices of the level above. Cost: O(faces).
    uint64_t CountFineVertices();

    /// Faces and vertex numbers of the level above. `fine` must be empty.
    void RefineTopology(LevelMesh& fine);
    /// Positions of the level above by the coarse level's present ones. `place(vertex, position)`
    /// is called once for each vertex of the fine level. `fine` supplies the vertex numbers.
    template <typename Place>
    void RefinePositions(const LevelMesh& fine, Place place);

private:
    bool OwnsEdge(uint32_t face, uint32_t side, uint32_t neighbour) const;

    LevelMesh& coarse;
    uint32_t corners;
};

}  // namespace trovik

#include "framework/levels/LevelRefiner.inl"
