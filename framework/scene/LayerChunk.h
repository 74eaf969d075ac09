// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/LayerStack.h"
#include "framework/nodes/SceneStream.h"

namespace trovik {

class LevelGeometry;

/// Chunk LAYR: one layer with its level, name, strength, write lock, whether it is active, whether
/// it is visible, and the touched vertices in the order of their slots.
void WriteLayerChunk(SceneStream& stream, const SculptLayer& layer);
/// The level must be there with the positions that it had beside the layer.
std::shared_ptr<SculptLayer> ReadLayerChunk(SceneStream& stream, const LevelGeometry& geometry);

/// Chunk LGND: what lies under the layers of a level (LayerGround).
void WriteGroundChunk(SceneStream& stream, uint32_t level, const LayerGround& ground);
void ReadGroundChunk(SceneStream& stream, LevelGeometry& geometry);

}  // namespace trovik
