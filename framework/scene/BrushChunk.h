// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/nodes/SceneStream.h"
#include "host/BrushOperation.h"

#include <string>
#include <vector>

namespace trovik {

/// Chunk BRSH: class of the brush; for each tool that was used, its name and the brush's serialized
/// data under that tool's settings, with the active tool last; then settings that do not belong to
/// a tool.
///
/// The brush temporarily takes each tool's settings; at the end its own settings are restored,
/// including its stamp image.
void WriteBrushChunk(SceneStream& stream, BrushOperation& brush);

/// Loads the tools of the chunk into a new brush: each tool is activated, which applies its
/// defaults, and then reads its data, so that values missing in an older file keep their defaults.
/// \param brush  null to read only the tool names into `tools`. A brush class other than that of
/// the file, and tools unknown to the class, are skipped, each with a line in `notes`.
void ReadBrushChunk(SceneStream& stream,
                    BrushOperation* brush,
                    std::vector<std::string>& tools,
                    std::vector<std::string>& notes);

}  // namespace trovik
