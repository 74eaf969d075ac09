// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"

#include <vector>

namespace trovik {

/// Computes the mean curvature at each vertex, multiplied by `size`. At a vertex with position p
/// and normal n, the mean curvature is the average of 2 (q - p) . n / |q - p|^2 over the positions
/// q of its neighbours. The result is positive in concave regions; on a sphere of radius `size`
/// whose normals point inwards, it is 1. A vertex without faces gets 0. BlurredFreeze uses the same
/// neighbours. The term for each neighbour is the normal curvature defined in Taubin: "Estimating
/// the Tensor of Curvature of a Surface from a Polyhedral Approximation" (1995).
/// \param positions, normals  per vertex, in the same space; the normals have unit length.
/// \param size  a length in that space.
/// \param rings  number of averaging passes over the neighbours; each pass averages in the same way
/// as a step of BlurredFreeze.
/// Cost: O(faces).
TROVIK_API std::vector<float> MeanCurvatures(const LevelMesh& level,
                                             const std::vector<Vector>& positions,
                                             const std::vector<Vector>& normals,
                                             float size,
                                             uint32_t rings);

}  // namespace trovik
