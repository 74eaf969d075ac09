// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <vector>

namespace trovik {

class LevelMesh;

/// Returns the level whose faces define the patches in reports of changed vertices. A patch has up
/// to 32 x 32 faces.
inline uint32_t ReportedPatchLevel(uint32_t level) { return level > 5 ? level - 5 : 0; }

/// Returns, in ascending order, the faces of level `patchLevel` with a descendant in `level` that
/// uses one of the vertices. A vertex without faces does not belong to any patch.
///
/// Vertices are numbered in the order of the first face that uses them, so a vertex's number
/// determines the patch that owns it. If the neighbour across a side of an owning patch does not
/// itself own any of the vertices, the vertices on that side are looked up. Cost: a few nanoseconds
/// for most vertices, provided that vertices of the same patch are adjacent in the list.
TROVIK_API std::vector<uint32_t> PatchesAt(LevelMesh& level,
                                           uint32_t patchLevel,
                                           const std::vector<uint32_t>& vertices);

}  // namespace trovik
