// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <vector>

namespace trovik {

class LevelMesh;

/// The level whose faces are the patches of a report by vertices: patches of up to 32 x 32 faces.
inline uint32_t ReportedPatchLevel(uint32_t level) { return level > 5 ? level - 5 : 0; }

/// The faces of level `patchLevel`, ascending, that have one of the vertices at a corner of one of
/// their descendants in `level`. A vertex that no face uses lies in none.
///
/// Vertices are numbered by the faces that first meet them, so the patch that owns a vertex follows
/// from its number. Where the patch across a side of an owner is not an owner itself, the vertices
/// on that side are looked up. Cost: a few nanoseconds for most vertices, if those of a patch
/// follow each other in the list.
TROVIK_API std::vector<uint32_t> PatchesAt(LevelMesh& level,
                                           uint32_t patchLevel,
                                           const std::vector<uint32_t>& vertices);

}  // namespace trovik
