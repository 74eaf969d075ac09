// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/levels/LevelGeometry.h"
#include "framework/scene/SceneStream.h"

namespace trovik {

/// Whether level 0 carries anything that chunk SURF would hold.
bool HasAttributes(const LevelGeometry& geometry);

/// Chunk SURF: what level 0 carries beside its shape. Written only where there is something.
void WriteAttributeChunk(SceneStream& stream, const LevelGeometry& geometry);
/// Gives the geometry what the chunk holds. \throw Error* for lists that do not fit level 0.
void ReadAttributeChunk(SceneStream& stream, LevelGeometry& geometry);

}  // namespace trovik
