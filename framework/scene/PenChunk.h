// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/nodes/SceneStream.h"
#include "framework/strokes/DabDynamics.h"

namespace trovik {

/// Chunk PENS: what the pen's pressure, tilt and time, and chance, do to the dabs of strokes to
/// come, whatever the tool.
void WritePenChunk(SceneStream& stream, const DabDynamics& dynamics);
DabDynamics ReadPenChunk(SceneStream& stream);

}  // namespace trovik
