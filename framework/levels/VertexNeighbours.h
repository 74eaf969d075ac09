// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <vector>

namespace trovik {

class LevelMesh;

/// The vertices and all others of the faces around them, ascending: whose normals change with their
/// positions. A vertex without a face is among them by itself. Cost: by their number.
TROVIK_API std::vector<uint32_t> WithNeighbours(LevelMesh& level,
                                                const std::vector<uint32_t>& vertices);

}  // namespace trovik
