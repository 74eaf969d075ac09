// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/IndexSet.h"
#include "host/Api.h"

#include <cstdint>
#include <vector>

namespace trovik {

class LevelMesh;

/// Sorts the list and leaves each number in it once.
void MakeSet(std::vector<uint32_t>& list);

/// The faces around any of the vertices, ascending. Cost: by the number of the vertices, least if
/// neighbours lie close together in the list, and never more than by the level's.
std::vector<uint32_t> FacesAt(LevelMesh& level, const std::vector<uint32_t>& vertices);

/// The same for vertices of which some faces are known. Most vertices of a region then have all of
/// their faces among these, and only those on its border are looked at one by one.
/// \param faces  ascending; at least one of each vertex that has any. Others may be among them.
std::vector<uint32_t> FacesAt(LevelMesh& level,
                              const IndexSet& vertices,
                              const std::vector<uint32_t>& faces);

/// The faces and all others that share a vertex with one of them, ascending.
std::vector<uint32_t> WithFacesAround(LevelMesh& level, std::vector<uint32_t> faces);

/// The faces around a vertex, ascending, each once; none around one without a face. They replace
/// what is in the list, whose memory serves again.
void FacesAt(LevelMesh& level, uint32_t vertex, std::vector<uint32_t>& faces);

/// The vertices of the faces, ascending, each once.
std::vector<uint32_t> CornersOf(const LevelMesh& level, const std::vector<uint32_t>& faces);

/// The same as a set.
IndexSet CornerSetOf(const LevelMesh& level, const std::vector<uint32_t>& faces);

/// The vertices and all others of the faces around them, ascending: whose normals change with their
/// positions. A vertex without a face is among them by itself. Cost: by their number.
TROVIK_API std::vector<uint32_t> WithNeighbours(LevelMesh& level,
                                                const std::vector<uint32_t>& vertices);

}  // namespace trovik
