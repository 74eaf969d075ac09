// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/nodes/SceneStream.h"

#include <string>
#include <vector>

namespace trovik {

class LevelGeometry;

/// Chunk NODE: all child nodes of the geometry and of its levels whose classes can be created, with
/// theirs. What only lives with the program, such as renderers, has no such class.
void WriteNodeChunk(SceneStream& stream, LevelGeometry& geometry);

/// Links a node while its level shows no faces: what builds itself from its mesh when it is linked
/// stays empty then, and has what the file brings for it, or nothing where the file is too old to
/// hold it. Nodes of classes that are not registered are left out, each with a line in `notes`.
void ReadNodeChunk(SceneStream& stream, LevelGeometry& geometry, std::vector<std::string>& notes);

/// \throw Error* when the file has the class under a version that this program does not know yet.
void RefuseNewerClass(const SceneStream& stream, const ClassDesc& desc);

}  // namespace trovik
