// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/edits/SculptLayer.h"
#include "framework/scene/SceneStream.h"

namespace trovik {

class LevelGeometry;

/// Chunk LAYR: one layer with its level, name, strength, write lock, whether it is active, and the
/// touched vertices in the order of their slots.
void WriteLayerChunk(SceneStream& stream, const SculptLayer& layer);
/// The level must be there with the positions that it had beside the layer.
std::unique_ptr<SculptLayer> ReadLayerChunk(SceneStream& stream, const LevelGeometry& geometry);

}  // namespace trovik
