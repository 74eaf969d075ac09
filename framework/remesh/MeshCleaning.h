// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SurfaceReplacement.h"

#include <cstddef>
#include <vector>

/// \file Repairs that remove vertices and faces. All functions keep the sources of the remaining
/// elements and the UVs of the remaining corners up to date.
namespace trovik {

/// Merges vertices that are at the same position or, if `distance` (mesh-local) is greater than 0,
/// within that distance of each other. The vertex with the lowest number keeps its position.
/// Corners that become equal to the next corner of their face are removed, and faces with fewer
/// than three different vertices or with a repeated vertex, too. Cost: O(vertices), if few of them
/// are within the distance of each other. \return the number of vertices that were removed.
std::size_t WeldVertices(NewSurface& surface, float distance, JobControl* job = nullptr);

/// Returns, for each vertex, the vertex into which WeldVertices merges it.
std::vector<uint32_t> WeldedNumbers(const PolygonMesh& mesh,
                                    float distance,
                                    JobControl* job = nullptr);

/// Returns which faces are degenerate: with fewer than three different vertices, with a repeated
/// vertex, or with all vertices on one line.
std::vector<bool> DegenerateFaces(const PolygonMesh& mesh);

/// Returns which faces have the same vertices as a face with a lower number, in any order.
std::vector<bool> DuplicateFaces(const PolygonMesh& mesh);

/// Returns which faces belong to a connected component with fewer faces than `minFaces`.
std::vector<bool> FacesOfSmallPieces(const PolygonMesh& mesh, std::size_t minFaces);

/// Removes vertices without faces. \return the number of these vertices.
std::size_t RemoveUnusedVertices(NewSurface& surface);

/// Removes the marked faces, and all vertices without faces. \return the number of removed faces.
std::size_t RemoveFaces(NewSurface& surface, const std::vector<bool>& isRemoved);

}  // namespace trovik
