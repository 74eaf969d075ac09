// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace trovik {

/// Name of the file that contains the topological mirror of every corner.
inline constexpr const char* mirrorCornersFile = "mirror_corners.npy";

/// Creates a folder and writes the state of a mesh to it: meta.json, every level's faces, positions
/// and flags, and the bound level's data, including the records of an open change. docs/trace.md
/// describes every file.
///
/// \param unlocker  determines the value of "lockable". \param mirrorCorners  whether to also write
/// the topological mirror of every corner. Cost: proportional to the size of the files.
/// \throw HostError with the name of a file and the system's error message.
TROVIK_API void WriteMeshState(const std::string& folder,
                               LevelGeometry& geometry,
                               const MeshUnlocker* unlocker,
                               bool mirrorCorners);

/// Returns the scene's geometries, in order; the trace names them "m0", "m1" and so on.
TROVIK_API std::vector<LevelGeometry*> SceneGeometries();

/// Hashes of the files of a state, by file name within its folder.
using MeshStateHashes = std::map<std::string, uint64_t>;

/// Returns the hashes of the files that WriteMeshState would write; except for hash collisions,
/// they are equal if and only if the files are equal. No files are written. Cost: one pass over all
/// arrays of the mesh.
TROVIK_API MeshStateHashes HashMeshState(LevelGeometry& geometry,
                                         const MeshUnlocker* unlocker,
                                         bool mirrorCorners);

}  // namespace trovik
