// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"
#include "framework/nodes/SceneStream.h"

#include <string>

namespace trovik {

/// Returns whether a surface has any data for chunk SURF.
bool HasAttributes(const SurfaceAttributes& attributes);

/// Chunk SURF: attributes of level 0 other than its shape. Written only if there are any. Paths of
/// material files are stored relative to the scene's folder.
/// \param scenePath  the path of the scene file.
void WriteAttributes(SceneStream& stream,
                     const SurfaceAttributes& attributes,
                     const std::string& scenePath);
/// \param counts  the element counts of the surface to which the attributes belong.
/// \param name  the name of the surface, for messages.
/// \param scenePath  the path of the scene file.
/// \throw Error* for lists that do not match the counts.
SurfaceAttributes ReadAttributes(SceneStream& stream,
                                 const SurfaceCounts& counts,
                                 const std::string& name,
                                 const std::string& scenePath);

}  // namespace trovik
