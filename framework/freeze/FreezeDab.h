// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"
#include "host/Api.h"

#include <unordered_map>
#include <vector>

namespace trovik {

/// A vertex within reach of a dab: it lies in the sphere of the dab's radius (world units) around
/// the hit and is connected to the hit's face through faces that have a corner in that sphere.
/// Parts of the surface that are near the hit only in space, not along the surface, are not
/// reached.
struct FreezeReach {
    uint32_t vertex;
    /// A face that contains the vertex.
    uint32_t face;
    /// Distance from the hit, in world units.
    float distance;
};
/// Returns the vertices within reach of a dab, each listed once, in traversal order. Cost: O(faces
/// under the dab).
/// \param center  mesh-local.
TROVIK_API std::vector<FreezeReach> VerticesUnderDab(LevelMesh& level,
                                                     uint32_t face,
                                                     const Vector& center,
                                                     float radius);

/// The mask weights of the vertices that a stroke has touched. During a stroke, they are not
/// rounded to freeze amounts, so that many weak dabs add up to the same result as a few strong
/// ones.
class TROVIK_API FreezeRecords {
public:
    explicit FreezeRecords(LevelMesh& strokeLevel) : level(strokeLevel) {}

    /// Returns the mask weight of a vertex, 0 to 1.
    float Share(uint32_t vertex) const;
    /// Sets the mask weight of a vertex.
    /// \return whether its freeze amount, which is the weight rounded to a multiple of 1/127, has
    /// changed.
    bool SetWeight(uint32_t vertex, float weight);

    /// Vertices returns the touched vertices in the order of first touch, and AmountsBefore their
    /// original amounts in the same order.
    const std::vector<uint32_t>& Vertices() const { return vertices; }
    const std::vector<uint8_t>& AmountsBefore() const { return amountsBefore; }

private:
    LevelMesh& level;
    std::unordered_map<uint32_t, uint32_t> indices;
    std::vector<uint32_t> vertices;
    std::vector<uint8_t> amountsBefore;
    std::vector<float> weights;
};

}  // namespace trovik
