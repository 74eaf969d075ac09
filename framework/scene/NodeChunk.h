// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/nodes/SceneStream.h"

#include <string>
#include <vector>

namespace trovik {

class LevelGeometry;

/// Chunk NODE: all child nodes of the geometry and of its levels whose classes can be created, with
/// their own children. Nodes that exist only at run time, such as renderers, belong to other
/// classes and are not written.
void WriteNodeChunk(SceneStream& stream, LevelGeometry& geometry);

/// Reads the child nodes and links them. Some nodes build their contents from the mesh when they
/// are linked. To keep such a node empty at first, all faces of its level are hidden while it is
/// linked. Nodes then read their data from the file, or stay empty if the file is too old to
/// contain it. Nodes whose class is not registered are skipped, each with a line in `notes`.
void ReadNodeChunk(SceneStream& stream, LevelGeometry& geometry, std::vector<std::string>& notes);

/// \throw Error* if the file contains the class in a newer version than this program supports.
void RefuseNewerClass(const SceneStream& stream, const ClassDesc& desc);

}  // namespace trovik
