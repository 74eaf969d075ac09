// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/IndexSet.h"
#include "host/Api.h"

#include <cstdint>
#include <vector>

namespace trovik {

class LevelMesh;

/// Sorts the list and removes duplicates.
void MakeSet(std::vector<uint32_t>& list);

/// Returns the faces around any of the vertices, ascending. Cost: linear in the vertices, lowest if
/// neighbours are close together in the list; at most linear in the level.
TROVIK_API std::vector<uint32_t> FacesAt(LevelMesh& level, const std::vector<uint32_t>& vertices);

/// The same for vertices of which some faces are known. Most vertices of a region then have all of
/// their faces among these, and only those on its border are looked at one by one.
/// \param faces  ascending; at least one of each vertex that has any. Others may be among them.
TROVIK_API std::vector<uint32_t> FacesAt(LevelMesh& level,
                                         const IndexSet& vertices,
                                         const std::vector<uint32_t>& faces);

/// The faces and all others that share a vertex with one of them, ascending.
TROVIK_API std::vector<uint32_t> WithFacesAround(LevelMesh& level, std::vector<uint32_t> faces);

/// Writes the faces around a vertex, ascending and without duplicates, to `faces`; the list is
/// empty if the vertex has none. Old contents are replaced, and the allocation is reused.
void FacesAt(LevelMesh& level, uint32_t vertex, std::vector<uint32_t>& faces);

/// Returns the vertices of the faces, ascending, without duplicates.
TROVIK_API std::vector<uint32_t> CornersOf(const LevelMesh& level,
                                           const std::vector<uint32_t>& faces);

/// The same as a set.
IndexSet CornerSetOf(const LevelMesh& level, const std::vector<uint32_t>& faces);

/// Returns the vertices and all other vertices of the faces around them, ascending. These are the
/// vertices whose normals change when the given vertices move. A vertex without faces is included
/// alone. Cost: linear in their number.
TROVIK_API std::vector<uint32_t> WithNeighbours(LevelMesh& level,
                                                const std::vector<uint32_t>& vertices);

}  // namespace trovik
