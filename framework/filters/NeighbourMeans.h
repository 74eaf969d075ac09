// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/math/ExactSum.h"
#include "framework/mesh/LevelMesh.h"

#include <vector>

namespace trovik {

/// Computes the mean position of the edge-connected neighbours of each vertex of a level. On a
/// border, only neighbours along the border are used, so that borders do not shrink inwards. A
/// border vertex with a single face, such as the corner of a plane, gets its own position. Sums are
/// in double precision, which makes them independent of the order of the neighbours unless their
/// coordinates differ by more than 29 binary orders of magnitude.
class NeighbourMeans {
public:
    /// Borrows the level. Cost: O(faces).
    explicit NeighbourMeans(LevelMesh& ofLevel);

    /// Writes the mean for each vertex to `means`; a vertex without faces gets its own position.
    /// \param positions  one per vertex of the level. Cost: O(faces).
    void Compute(const std::vector<Vector>& positions, std::vector<Vector>& means);

private:
    enum class Kind : uint8_t { Inner, Border, Corner };
    struct BorderSide {
        uint32_t from;
        uint32_t to;
    };

    const LevelMesh& level;
    std::vector<Kind> kinds;
    std::vector<BorderSide> borderSides;
    std::vector<RunningSum> sums;
};

}  // namespace trovik
