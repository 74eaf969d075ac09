// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/LayerStack.h"
#include "framework/nodes/SceneStream.h"

namespace trovik {

class LevelGeometry;

/// Chunk LAYR: one layer with its level, name, strength, write lock, active and visible flags, and
/// the vertices that have offsets, in slot order.
void WriteLayerChunk(SceneStream& stream, const SculptLayer& layer);
/// The level must already have been read; its positions include the layer.
std::shared_ptr<SculptLayer> ReadLayerChunk(SceneStream& stream, const LevelGeometry& geometry);

/// Chunk LGND: the layer base of a level (LayerBase).
void WriteLayerBaseChunk(SceneStream& stream, uint32_t level, const LayerBase& ground);
void ReadLayerBaseChunk(SceneStream& stream, LevelGeometry& geometry);

}  // namespace trovik
