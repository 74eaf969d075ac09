// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <vector>

namespace trovik {

class LevelMesh;

/// Returns the level whose faces are the patches when changed vertices are reported. A patch has up
/// to 32 x 32 faces.
inline uint32_t ReportedPatchLevel(uint32_t level) { return level > 5 ? level - 5 : 0; }

/// Returns the faces of level `patchLevel`, ascending, that have a descendant in `level` with one
/// of the vertices at a corner. A vertex without faces belongs to no patch.
///
/// Vertices are numbered by the first face that uses them, so the patch that owns a vertex follows
/// from its number. If the patch across a side of an owner is not an owner itself, the vertices on
/// that side are looked up. Cost: a few nanoseconds for most vertices, if vertices of the same
/// patch are adjacent in the list.
TROVIK_API std::vector<uint32_t> PatchesAt(LevelMesh& level,
                                           uint32_t patchLevel,
                                           const std::vector<uint32_t>& vertices);

}  // namespace trovik
