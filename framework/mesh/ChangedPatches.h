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

/// Returns the patches of `level` that contain at least one of the vertices, as faces of level
/// `patchLevel` in ascending order. A vertex without faces does not belong to any patch.
///
/// Vertices are numbered in the order of the first face that uses them, so a vertex's number
/// determines the lowest-numbered patch that contains it. A vertex on the border between two
/// patches also belongs to the other patch. Such vertices are looked up only along borders whose
/// other patch was not determined by any vertex number. Cost: a few nanoseconds for most vertices,
/// provided that the vertices of each patch are adjacent in the list.
TROVIK_API std::vector<uint32_t> PatchesAt(LevelMesh& level,
                                           uint32_t patchLevel,
                                           const std::vector<uint32_t>& vertices);

}  // namespace trovik
