// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/nodes/SceneStream.h"
#include "host/BrushOperation.h"

#include <string>
#include <vector>

namespace trovik {

/// Chunk BRSH: class of the brush, and for each tool that was used its name and the class's own
/// data under that tool's settings, the active tool last; then what belongs to no tool.
///
/// The brush takes each tool's settings for a moment and has its own back at the end, its stamp
/// image included.
void WriteBrushChunk(SceneStream& stream, BrushOperation& brush);

/// Brings a new brush to the tools of the chunk: each is made active, which gives it its defaults,
/// and then takes the file's data, so that what an older file lacks keeps its default.
/// \param brush  null: only the names are read, into `tools`. Another class than the file's, and
/// tools that the class does not have, are left out, each with a line in `notes`.
void ReadBrushChunk(SceneStream& stream,
                    BrushOperation* brush,
                    std::vector<std::string>& tools,
                    std::vector<std::string>& notes);

}  // namespace trovik
