// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/nodes/SceneStream.h"
#include "framework/strokes/DabDynamics.h"

namespace trovik {

/// Chunk PENS: the effect of pen pressure, tilt, time and randomness on dabs, for all tools.
void WritePenChunk(SceneStream& stream, const DabDynamics& dynamics);
DabDynamics ReadPenChunk(SceneStream& stream);

}  // namespace trovik
