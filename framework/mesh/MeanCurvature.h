// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"

#include <vector>

namespace trovik {

/// Computes the mean curvature at each vertex, times `size`: the mean, over the vertex's neighbours
/// q, of 2 (q - p) . n / |q - p|^2, where p is the vertex's position and n its normal. The value is
/// positive in concave regions, 1 inside a hollow ball of radius `size`, and 0 for a vertex without
/// faces. Neighbours are defined as for BlurredFreeze. The term of a neighbour is the normal
/// curvature in Taubin: "Estimating the Tensor of Curvature of a Surface from a Polyhedral
/// Approximation" (1995).
/// \param positions, normals  per vertex, in the same space; the normals have unit length.
/// \param size  a length in that space.
/// \param rings  number of averaging passes over the neighbours; each pass works like a step of
/// BlurredFreeze.
/// Cost: O(faces).
TROVIK_API std::vector<float> MeanCurvatures(const LevelMesh& level,
                                             const std::vector<Vector>& positions,
                                             const std::vector<Vector>& normals,
                                             float size,
                                             uint32_t rings);

}  // namespace trovik
