// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"
#include "framework/nodes/SceneStream.h"

#include <string>

namespace trovik {

/// Whether a surface carries anything that chunk SURF would hold.
bool HasAttributes(const SurfaceAttributes& attributes);

/// Chunk SURF: what level 0 carries beside its shape. Written only where there is something.
/// Material files are stored relative to the folder of the scene.
/// \param scenePath  of the scene file.
void WriteAttributes(SceneStream& stream,
                     const SurfaceAttributes& attributes,
                     const std::string& scenePath);
/// \param counts  of the surface that the attributes belong to, \param name  what to call it.
/// \param scenePath  of the scene file. \throw Error* for lists that do not fit it.
SurfaceAttributes ReadAttributes(SceneStream& stream,
                                 const SurfaceCounts& counts,
                                 const std::string& name,
                                 const std::string& scenePath);

}  // namespace trovik
