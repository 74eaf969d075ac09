// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/scene/SceneFile.h"

namespace trovik {

/// Chunk SETT: view; radius, spacing and random seed of the following strokes; mirrors.
void WriteSettingsChunk(SceneStream& stream, const SceneSettings& settings);
SceneSettings ReadSettingsChunk(SceneStream& stream);

}  // namespace trovik
