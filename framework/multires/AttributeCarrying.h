// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/SurfaceAttributes.h"

#include <cstdint>

namespace trovik {

class JobControl;
class LevelGeometry;
struct CoarseFaces;

/// \file Converts surface attributes when a different level becomes level 0.

/// Returns the attributes that a level would have if it were level 0, computed by refining the
/// attributes of level 0 (AttributeRefinement.h). Cost: O(faces of the level).
SurfaceAttributes AttributesOfLevel(const LevelGeometry& geometry,
                                    uint32_t level,
                                    JobControl* job = nullptr);

/// Returns the attributes of the coarse faces of a level 0: the texture coordinates and colours of
/// the vertices that remain, and the group and material of the first child of each face. The values
/// of the fine vertices in between are lost, unless they are the mean of the surrounding corners.
/// Cost: O(faces).
SurfaceAttributes AttributesOfCoarse(const SurfaceAttributes& fine,
                                     const CoarseFaces& coarse,
                                     JobControl* job = nullptr);

}  // namespace trovik
