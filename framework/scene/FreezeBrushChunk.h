// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/nodes/SceneStream.h"
#include "host/BrushOperation.h"

namespace trovik {

/// Chunk FRZB: whether the brush that freezes is at work, and its settings.
void WriteFreezeBrushChunk(SceneStream& stream, BrushOperation& brush, bool isAtWork);
/// \param brush  a new one, which takes the settings; null: they are passed over. \return whether
/// it is at work.
bool ReadFreezeBrushChunk(SceneStream& stream, BrushOperation* brush);

}  // namespace trovik
