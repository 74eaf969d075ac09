// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"
#include "framework/remesh/voxels/VoxelField.h"

namespace trovik {

/// Returns the surface between the inside and the outside of a field, as a closed, oriented
/// manifold of quads whose normals point outwards. Positions are in units of the voxel size.
///
/// There is one quad for each pair of neighbouring voxels with different signs, and one vertex for
/// each loop of a cell (CellLoops), at the mean of the points where the edges of the loop cross the
/// surface; see Nielson: "Dual Marching Cubes" (2004). A field alone does not always give a
/// manifold: if the same two vertices are connected on both parts of an ambiguous side between two
/// cells, four quads share an edge. The connections on such a side are exchanged, which splits the
/// loops of both cells, so that each part of the side connects two other vertices.
///
/// The result does not depend on the number of threads. \throw Cancelled; HostError if there would
/// be more faces than a level can have. Cost: O(blocks).
TROVIK_API PolygonMesh DualSurfaceOf(const VoxelField& field, JobControl* job = nullptr);

/// Returns the number of faces of DualSurfaceOf. \throw Cancelled.
TROVIK_API uint64_t CountDualFaces(const VoxelField& field, JobControl* job = nullptr);

}  // namespace trovik
