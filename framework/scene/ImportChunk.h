// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"
#include "framework/nodes/SceneStream.h"

#include <string>

namespace trovik {

/// Chunk IMPT: the imported positions of level 0, as differences from the current ones; or the
/// whole imported mesh if level 0 no longer has the same faces and colours.
/// \param scenePath  the path of the scene file.
/// \throw Cancelled. ReadImportChunk throws it, too.
void WriteImportChunk(SceneStream& stream,
                      const LevelGeometry& geometry,
                      const PolygonMesh& imported,
                      const std::string& scenePath,
                      JobControl* job);
/// Reads the imported mesh and gives it this name. \param isOther  set to true if the mesh is
/// stored as a whole. It then has attributes of its own; otherwise, its attributes are those of
/// level 0.
PolygonMesh ReadImportChunk(SceneStream& stream,
                            const LevelGeometry& geometry,
                            const std::string& name,
                            const std::string& scenePath,
                            bool& isOther,
                            JobControl* job);

}  // namespace trovik
