// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/scene/SceneFile.h"

namespace trovik {

/// Chunk SETT: the view; the radius, spacing and random seed of strokes; mirrors.
void WriteSettingsChunk(SceneStream& stream, const SceneSettings& settings);
SceneSettings ReadSettingsChunk(SceneStream& stream);

}  // namespace trovik
