// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/SurfaceAttributes.h"

#include <cstdint>

namespace trovik {

class JobControl;
class LevelGeometry;
struct CoarseFaces;

/// \file
/// What a surface carries beside its shape, told for another level 0 than the one it belongs to.

/// What level 0 carries, refined to a level (AttributeRefinement.h): what that level carries as a
/// level 0 of its own. Cost: O(faces of the level).
SurfaceAttributes AttributesOfLevel(const LevelGeometry& geometry,
                                    uint32_t level,
                                    JobControl* job = nullptr);

/// What the coarse faces of a level 0 carry: texture coordinates and colours of the vertices that
/// stay, and the group and material of each face's first child. What the finer faces had in between
/// is not kept where it is no mean of its corners. Cost: O(faces).
SurfaceAttributes AttributesOfCoarse(const SurfaceAttributes& fine,
                                     const CoarseFaces& coarse,
                                     JobControl* job = nullptr);

}  // namespace trovik
