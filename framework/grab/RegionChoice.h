// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"

#include <vector>

namespace trovik {

class BrushOperation;

/// Vertices and one weight above 0 for each of them.
struct WeightedVertices {
    /// In ascending order.
    std::vector<uint32_t> vertices;
    std::vector<float> weights;
};

/// The extent of a region.
enum class RegionReach {
    /// All vertices within the radius, whether or not they are connected with the hit.
    Distance,
    /// The vertices within the radius that are connected with the hit's face through faces that
    /// have a corner within the radius.
    Connected
};

/// Returns the vertices that a dab moves. A weight is the product of the falloff at the vertex's
/// distance, the facing factor, and the unfrozen fraction of the vertex. Frozen and hidden vertices
/// have weight 0 and are omitted.
/// \param falloff  samples from the centre to the rim. \param face  the face of the hit.
/// \param center  mesh-local. \param radius  in world units; distances are measured in world space.
/// Cost: O(faces under the dab) with Connected, O(vertices of the level) with Distance.
TROVIK_API WeightedVertices ChooseRegion(LevelMesh& level,
                                         const BrushOperation& brush,
                                         const Store<float>& falloff,
                                         RegionReach reach,
                                         uint32_t face,
                                         const Vector& center,
                                         float radius);

}  // namespace trovik
