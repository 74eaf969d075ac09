// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace trovik {

/// Name of the file with the topological mirror of every corner.
inline constexpr const char* mirrorCornersFile = "mirror_corners.npy";

/// Writes the state of a mesh into a folder, which is made: meta.json, every level's faces,
/// positions and flags, and what belongs to the bound level, down to the records of an open change.
/// docs/trace.md tells every file.
///
/// \param unlocker  who would lock the mesh, for "lockable". \param mirrorCorners  write the
/// topological mirror of every corner too. Cost: that of the files.
/// \throw HostError naming a file and the system's reason.
TROVIK_API void WriteMeshState(const std::string& folder,
                               LevelGeometry& geometry,
                               const MeshUnlocker* unlocker,
                               bool mirrorCorners);

/// The geometries of the scene in their order: those of the meshes "m0", "m1" and so on.
TROVIK_API std::vector<LevelGeometry*> SceneGeometries();

/// Hashes of the files of a state, by their names within its folder.
using MeshStateHashes = std::map<std::string, uint64_t>;

/// Hashes of the files that WriteMeshState would write; equal exactly when the files are, up to
/// hash collisions. Writes nothing. Cost: one pass over all arrays of the mesh.
TROVIK_API MeshStateHashes HashMeshState(LevelGeometry& geometry,
                                         const MeshUnlocker* unlocker,
                                         bool mirrorCorners);

}  // namespace trovik
