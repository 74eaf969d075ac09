// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/nodes/SceneStream.h"
#include "host/BrushOperation.h"

namespace trovik {

/// Chunk FRZB: whether the freeze brush is active, and its settings.
void WriteFreezeBrushChunk(SceneStream& stream, BrushOperation& brush, bool isFreezeBrushActive);
/// \param brush  a new brush that receives the settings; null to skip them. \return whether the
/// freeze brush is active.
bool ReadFreezeBrushChunk(SceneStream& stream, BrushOperation* brush);

}  // namespace trovik
