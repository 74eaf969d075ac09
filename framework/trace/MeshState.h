// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/levels/LevelGeometry.h"

#include <string>

namespace trovik {

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

}  // namespace trovik
