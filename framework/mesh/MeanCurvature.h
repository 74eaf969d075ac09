// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelMesh.h"

#include <vector>

namespace trovik {

/// The mean curvature of the surface at each vertex, times `size`: the mean over the neighbours q
/// of 2 (q - p) . n / |q - p|^2, where n is the normal of the vertex at p. Positive where the
/// surface is hollow; 1 in a hollow ball of radius `size`. Neighbours count as for BlurredFreeze.
/// 0 for a vertex of no face.
/// \param positions, normals  in the same space, one of each for each vertex; normals of unit
/// length.
/// \param size  a length in that space. \param rings  how often the result is averaged over
/// neighbours; each time as a step of BlurredFreeze. Cost: O(faces).
TROVIK_API std::vector<float> MeanCurvatures(const LevelMesh& level,
                                             const std::vector<Vector>& positions,
                                             const std::vector<Vector>& normals,
                                             float size,
                                             uint32_t rings);

}  // namespace trovik
