// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"
#include "host/Store.h"

#include <string>

namespace trovik {

/// Whether level 0 can store the faces: they are all quads or all triangles.
bool HasUniformFaces(const PolygonMesh& polygons);

/// Converts polygons into faces that level 0 can store: splits a mesh that HasUniformFaces refuses
/// with RefineToQuads. \throw Cancelled.
PolygonMesh ToUniformFaces(const PolygonMesh& polygons, JobControl* job = nullptr);

/// Makes one Catmull-Clark step: a face with n corners becomes n consecutive quads. The corners of
/// quad k are corner k, the point on edge k, the face point and the point on edge k - 1. Vertices
/// keep their numbers. \throw Cancelled.
PolygonMesh RefineToQuads(const PolygonMesh& polygons, JobControl* job = nullptr);

/// If at least half of the faces are triangles, returns one sentence of advice for a user who is
/// about to refine the mesh; otherwise returns an empty string.
TROVIK_API std::string RefinementNote(const PolygonMesh& polygons);

/// Computes the neighbour across each side of each face, as face * 4 + side, or openBorder. An edge
/// is open unless exactly two faces share it in opposite directions.
/// Cost: linear in the corner count, plus sorting the edges at each vertex.
/// \param vertexCount  must exceed every vertex index.
/// \throw Cancelled; `neighbours` is then unchanged.
void FindNeighbours(const Store<uint32_t>& faceVertexIndices,
                    uint32_t faceCount,
                    uint32_t corners,
                    uint32_t vertexCount,
                    Store<uint32_t>& neighbours,
                    JobControl* job = nullptr);

}  // namespace trovik
