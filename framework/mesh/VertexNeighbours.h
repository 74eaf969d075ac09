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

/// Returns, in ascending order, the faces that use any of the vertices. Cost: linear in the number
/// of vertices, but at most linear in the size of the level; lowest if neighbouring vertices are
/// close together in the list.
TROVIK_API std::vector<uint32_t> FacesAt(LevelMesh& level, const std::vector<uint32_t>& vertices);

/// Overload for callers that already have some faces of the vertices, such as the faces of a
/// region. `faces` then contains all faces of most vertices, so only the vertices on the region's
/// border require individual searches.
/// \param faces  in ascending order; must include at least one face of each vertex that has faces,
/// and may include others.
TROVIK_API std::vector<uint32_t> FacesAt(LevelMesh& level,
                                         const IndexSet& vertices,
                                         const std::vector<uint32_t>& faces);

/// Returns the given faces and all other faces that share a vertex with one of them, in ascending
/// order.
TROVIK_API std::vector<uint32_t> WithFacesAround(LevelMesh& level, std::vector<uint32_t> faces);

/// Writes the faces around a vertex to `faces`, in ascending order and without duplicates; the list
/// is empty if the vertex has none. Old contents are replaced, and the allocation is reused.
void FacesAt(LevelMesh& level, uint32_t vertex, std::vector<uint32_t>& faces);

/// Returns the vertices of the faces, in ascending order and without duplicates.
TROVIK_API std::vector<uint32_t> CornersOf(const LevelMesh& level,
                                           const std::vector<uint32_t>& faces);

/// Returns the same vertices as CornersOf, as a set.
IndexSet CornerSetOf(const LevelMesh& level, const std::vector<uint32_t>& faces);

/// Returns the given vertices and all other vertices of the faces around them, in ascending order.
/// These are the vertices whose normals change when the given vertices move. A vertex without faces
/// contributes only itself. Cost: linear in the number of vertices.
TROVIK_API std::vector<uint32_t> WithNeighbours(LevelMesh& level,
                                                const std::vector<uint32_t>& vertices);

}  // namespace trovik
