// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/files/PolygonMesh.h"
#include "framework/scene/SceneStream.h"

#include <string>

namespace trovik {

/// Whether a surface carries anything that chunk SURF would hold.
bool HasAttributes(const SurfaceAttributes& attributes);

/// Chunk SURF: what level 0 carries beside its shape. Written only where there is something.
void WriteAttributes(SceneStream& stream, const SurfaceAttributes& attributes);
/// \param counts  of the surface that the attributes belong to, \param name  what to call it.
/// \throw Error* for lists that do not fit it.
SurfaceAttributes ReadAttributes(SceneStream& stream,
                                 const SurfaceCounts& counts,
                                 const std::string& name);

}  // namespace trovik
