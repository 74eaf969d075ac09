// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/nodes/SceneStream.h"
#include "host/BrushOperation.h"

#include <string>
#include <vector>

namespace trovik {

/// Chunk BRSH contains the class of the brush and, for each tool that was used, the tool's name and
/// the brush's serialized data with that tool's settings; the active tool comes last. The settings
/// that do not belong to a tool follow.
///
/// The settings of each tool are temporarily applied to the brush. At the end, the brush's own
/// settings are restored, including its stamp image.
void WriteBrushChunk(SceneStream& stream, BrushOperation& brush);

/// Loads the tools in the chunk into a new brush. Each tool is activated, which applies its
/// defaults, before its data is read, so that values missing from an older file keep their
/// defaults.
/// \param brush  null to read only the tool names into `tools`. If its class differs from that of
/// the brush in the file, all settings are skipped; otherwise, only tools that the class does not
/// have are skipped. Each case adds a line to `notes`.
void ReadBrushChunk(SceneStream& stream,
                    BrushOperation* brush,
                    std::vector<std::string>& tools,
                    std::vector<std::string>& notes);

/// Chunk PBRS, one for each brush of a further plug-in: whether the brush is active, followed by
/// the content of chunk BRSH.
void WritePluginBrushChunk(SceneStream& stream, BrushOperation& brush, bool isActive);

/// Reads the settings of a plug-in's brush, like ReadBrushChunk.
/// \param brushes  new brushes, one of which receives the settings. If none has the class in the
/// chunk, the settings are skipped.
/// \param areSettingsWanted  whether skipped settings add a line to `notes`.
/// \param tools  receives the tool names: of the active brush at the end, of others at the
/// beginning.
/// \return the brush if it is active and has at least one of the tools; otherwise null.
BrushOperation* ReadPluginBrushChunk(SceneStream& stream,
                                     const std::vector<BrushOperation*>& brushes,
                                     bool areSettingsWanted,
                                     std::vector<std::string>& tools,
                                     std::vector<std::string>& notes);

}  // namespace trovik
