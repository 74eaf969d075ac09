// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/SurfaceAttributes.h"

#include <cstdint>

namespace trovik {

class JobControl;
class LevelGeometry;
struct CoarseFaces;

/// \file
/// Surface attributes converted for another level 0 than the one that they belong to.

/// Returns the attributes of level 0 refined to a level (AttributeRefinement.h), as that level
/// would have them if it were level 0 itself. Cost: O(faces of the level).
SurfaceAttributes AttributesOfLevel(const LevelGeometry& geometry,
                                    uint32_t level,
                                    JobControl* job = nullptr);

/// Returns the attributes of the coarse faces of a level 0: the texture coordinates and colours of
/// the vertices that remain, and the group and material of the first child of each face. Values of
/// the fine vertices in between are lost unless they are the mean of their corners. Cost: O(faces).
SurfaceAttributes AttributesOfCoarse(const SurfaceAttributes& fine,
                                     const CoarseFaces& coarse,
                                     JobControl* job = nullptr);

}  // namespace trovik
