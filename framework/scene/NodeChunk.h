// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/nodes/SceneStream.h"

#include <string>
#include <vector>

namespace trovik {

class LevelGeometry;

/// Chunk NODE: all child nodes of the geometry and of its levels whose classes can be created, with
/// their own children. Nodes that exist only while the program runs, such as renderers, have no
/// such class.
void WriteNodeChunk(SceneStream& stream, LevelGeometry& geometry);

/// Links each node while its level shows no faces: nodes that build their contents from the mesh
/// when they are linked remain empty. They then receive the data of the file, or stay empty if the
/// file is too old to contain it. Nodes of classes that are not registered are skipped, each with a
/// line in `notes`.
void ReadNodeChunk(SceneStream& stream, LevelGeometry& geometry, std::vector<std::string>& notes);

/// \throw Error* if the file contains the class with a version newer than this program supports.
void RefuseNewerClass(const SceneStream& stream, const ClassDesc& desc);

}  // namespace trovik
