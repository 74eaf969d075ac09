// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/math/MatrixTransform.h"
#include "framework/mesh/MeshSpace.h"
#include "framework/remesh/SurfaceReplacement.h"

#include <string>

namespace trovik {

/// Settings for appending a mesh file.
struct MeshAppending {
    /// A mesh file in any format that can be imported.
    std::string path;
    /// Unit and up axis of the file; known members override those that the file specifies. If they
    /// are also known for the sculpture, coordinates are converted, before the transform.
    MeshSpace space = {};
    /// Applied to the positions of the file. Its `ToWorld` part is used.
    MatrixTransform transform = {};
    /// Whether the transform leads to world space; otherwise, to mesh-local space.
    bool isWorld = false;
};

/// Adds the mesh of a file to the surface of the current level, without connecting them. The
/// current level, with all its vertices and faces, becomes level 0.
///
/// - The faces of the file become quads if the level has quads: if some are not quads, each of them
///   is split around its centre, without changing the shape. If the level has triangles, they are
///   split into triangles. Warnings report this.
/// - If the transform mirrors, faces are flipped, so that their normals still point outwards.
/// - The UVs, colours, groups, materials and smoothing groups of the file are kept. Groups with the
///   same name become one group. If only one of the two parts has colours, the other part becomes
///   white.
/// - The file's part is not masked, and not part of any layer.
///
/// Throws HostError if the file cannot be read, or a position is not finite after the transform.
TROVIK_API SurfaceOperation AppendMesh(const MeshAppending& settings);

}  // namespace trovik
