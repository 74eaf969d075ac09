// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"

#include <functional>

namespace trovik {

/// One Catmull-Clark step of a whole level: its topology, and its positions by the rules of
/// CatmullClarkRules.h.
class LevelRefiner {
public:
    explicit LevelRefiner(LevelMesh& coarseLevel);

    /// Thrown out of the refining when whoever waits for it asked to stop.
    struct Stopped {};
    /// Asked now and then during the refining; null for nobody. Borrowed.
    void SetStop(const std::function<bool()>* askedToStop) { stop = askedToStop; }

    uint32_t FineFaceCount() const;
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

    void AskStop(uint32_t at) const {
        if (stop != nullptr && at % stopInterval == 0 && (*stop)()) throw Stopped();
    }

    static constexpr uint32_t stopInterval = 1u << 14;
    const std::function<bool()>* stop = nullptr;
    LevelMesh& coarse;
    uint32_t corners;
};

}  // namespace trovik

#include "framework/mesh/LevelRefiner.inl"
