// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/scene/SceneFile.h"

namespace trovik {

/// Chunk SETT: the view; the radius, spacing and random seed of strokes; mirrors.
void WriteSettingsChunk(SceneStream& stream, const SceneSettings& settings);
/// Reads the chunk into the settings; leaves those of other chunks unchanged.
void ReadSettingsChunk(SceneStream& stream, SceneSettings& settings);

/// Chunk PROJ: the projection of the view. It is written only for an orthographic view, so that
/// programs without support for it skip the chunk and show the same part of the surface in
/// perspective.
void WriteProjectionChunk(SceneStream& stream, const StrokeView& view);
void ReadProjectionChunk(SceneStream& stream, StrokeView& view);

/// Chunk DETL: the refinement of the mesh by strokes. It is written only if its settings differ
/// from the defaults; programs without support for it skip the chunk.
void WriteDetailChunk(SceneStream& stream, const DetailSettings& detail);
DetailSettings ReadDetailChunk(SceneStream& stream);

}  // namespace trovik
