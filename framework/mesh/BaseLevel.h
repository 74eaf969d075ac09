// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"
#include "host/Store.h"

#include <string>

namespace trovik {

/// Polygons as level 0 can hold them: all quads or all triangles. Other faces are split by one
/// Catmull-Clark step: face f of n corners gives n quads in a row, quad k having as corners corner
/// k, the point on edge k, the face point, the point on edge k - 1.
/// \throw Cancelled.
PolygonMesh ToUniformFaces(const PolygonMesh& polygons, JobControl* job = nullptr);

/// What a user should know before refining the mesh, one sentence; empty if there is nothing. It is
/// about meshes of which at least half of the faces are triangles.
TROVIK_API std::string RefinementNote(const PolygonMesh& polygons);

/// Across each side of each face the neighbour as face * 4 + side, or openBorder. An edge that is
/// not shared by exactly two faces in opposite senses is open. Cost: linear in corners (and the
/// sort of each vertex's edges).
/// \param vertexCount  all vertex numbers are below it.
/// \throw Cancelled; `neighbours` is then as it was.
void FindNeighbours(const Store<uint32_t>& faceVertexIndices,
                    uint32_t faceCount,
                    uint32_t corners,
                    uint32_t vertexCount,
                    Store<uint32_t>& neighbours,
                    JobControl* job = nullptr);

}  // namespace trovik
