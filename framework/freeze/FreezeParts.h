// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"

#include <vector>

namespace trovik {

/// 1 for each vertex of the level that hangs together with `vertex` over faces, 0 for the others.
/// Cost: O(faces).
TROVIK_API std::vector<float> SharesOfShell(const LevelMesh& level, uint32_t vertex);

/// 1 for each vertex of a face of the level that lies in a face of level 0 of this group, 0 for the
/// others; vertices on a group's border belong to it. Cost: O(faces).
/// \param group  number into SurfaceAttributes::groupNames, or `none` for the faces of no group.
TROVIK_API std::vector<float> SharesOfGroup(const LevelGeometry& geometry,
                                            uint32_t levelIndex,
                                            uint32_t group);

/// 1 at `center` and inside, 0 at `radius` and beyond; between them, over the share `soft` (0 to 1)
/// of the radius next to the rim, falling evenly. World space.
TROVIK_API std::vector<float> SharesInBall(const LevelGeometry& geometry,
                                           const Vector& center,
                                           float radius,
                                           float soft);

/// 1 within the box, its sides included. World space.
TROVIK_API std::vector<float> SharesInBox(const LevelGeometry& geometry,
                                          const Vector& low,
                                          const Vector& high);

}  // namespace trovik
