// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"

#include <vector>

namespace trovik {

/// Returns 1 for each of the level's vertices in the connected component of `vertex`, 0 for the
/// others. Cost: O(faces).
TROVIK_API std::vector<float> WeightsOfComponent(const LevelMesh& level, uint32_t vertex);

/// Returns 1 for each vertex of a face that descends from a level 0 face in this group, 0 for the
/// others. Vertices on a group's border belong to the group. Cost: O(faces).
/// \param group  index into SurfaceAttributes::groupNames, or `none` for the faces without a group.
TROVIK_API std::vector<float> WeightsOfGroup(const LevelGeometry& geometry,
                                             uint32_t levelIndex,
                                             uint32_t group);

/// Returns 1 near `center` and 0 at distances of `radius` or more. The weight falls off linearly
/// over the outer fraction `soft` (0 to 1) of the radius. The centre and the radius are in world
/// space.
TROVIK_API std::vector<float> WeightsInSphere(const LevelGeometry& geometry,
                                              const Vector& center,
                                              float radius,
                                              float soft);

/// Returns 1 inside the box and on its sides, 0 outside. The box is in world space.
TROVIK_API std::vector<float> WeightsInBox(const LevelGeometry& geometry,
                                           const Vector& low,
                                           const Vector& high);

}  // namespace trovik
