// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <vector>

namespace trovik {

class LevelMesh;

/// Sorts the list and leaves each number in it once.
void MakeSet(std::vector<uint32_t>& list);

/// The faces around any of the vertices, ascending. Cost: by the number of the vertices, and never
/// more than by the level's.
std::vector<uint32_t> FacesAt(LevelMesh& level, const std::vector<uint32_t>& vertices);

/// The faces around a vertex, ascending, each once; none around one without a face. They replace
/// what is in the list, whose memory serves again.
void FacesAt(LevelMesh& level, uint32_t vertex, std::vector<uint32_t>& faces);

/// The vertices of the faces, ascending, each once.
std::vector<uint32_t> CornersOf(const LevelMesh& level, const std::vector<uint32_t>& faces);

/// The vertices and all others of the faces around them, ascending: whose normals change with their
/// positions. A vertex without a face is among them by itself. Cost: by their number.
TROVIK_API std::vector<uint32_t> WithNeighbours(LevelMesh& level,
                                                const std::vector<uint32_t>& vertices);

}  // namespace trovik
