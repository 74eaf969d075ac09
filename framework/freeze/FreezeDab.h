// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"
#include "host/Api.h"

#include <unordered_map>
#include <vector>

namespace trovik {

/// The vertices that a dab of radius `radius` (world units) reaches: those of the piece of the
/// surface around the hit that lies in the dab's ball, found face by face from the hit's face
/// through faces with a corner in the ball. What comes near only through space is not reached.
struct FreezeReach {
    uint32_t vertex;
    /// Of which the vertex is a corner.
    uint32_t face;
    /// From the hit, world units.
    float distance;
};
/// Each vertex once, in the order of the walk. \param center  mesh-local.
/// Cost: the faces under the dab.
TROVIK_API std::vector<FreezeReach> VerticesUnderDab(LevelMesh& level,
                                                     uint32_t face,
                                                     const Vector& center,
                                                     float radius);

/// What a stroke knows of the vertices that it touched. Within a stroke amounts are kept in full
/// precision, so that many faint dabs add up to what few strong ones do.
class TROVIK_API FreezeRecords {
public:
    explicit FreezeRecords(LevelMesh& strokeLevel) : level(strokeLevel) {}

    /// 0 to 1.
    float Share(uint32_t vertex) const;
    /// \return whether the vertex's amount, the nearest of the 127ths, is another one now.
    bool SetShare(uint32_t vertex, float share);

    /// Vertices touched, in order, and the amounts that they had before.
    const std::vector<uint32_t>& Vertices() const { return vertices; }
    const std::vector<uint8_t>& AmountsBefore() const { return amountsBefore; }

private:
    LevelMesh& level;
    std::unordered_map<uint32_t, uint32_t> indices;
    std::vector<uint32_t> vertices;
    std::vector<uint8_t> amountsBefore;
    std::vector<float> shares;
};

}  // namespace trovik
