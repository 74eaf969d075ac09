// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/LayerBase.h"
#include "host/Api.h"

#include <memory>
#include <utility>
#include <vector>

namespace trovik {

/// Stores the layer data of the vertices that move because the level below changed. The layer base
/// moves with the surface in the same way as a vertex without layers. Every offset rotates with the
/// detail of its vertex, regardless of the layer's strength and visibility. The result of hiding a
/// layer after the change is therefore bit-identical to that of propagating the change without the
/// layer, and showing the layer again restores the previous positions exactly.
///
/// A rotated offset keeps its length, up to single-precision rounding.
///
/// Only the offsets of the level itself are rotated, and only by changes of coarser levels. Changes
/// by strokes or from a finer level affect the layer base; the offsets above it keep their
/// direction.
///
/// Cost and memory: 44 bytes for each moved vertex with layer data, plus 40 for each of its layers.
class TROVIK_API RotatedLayers {
public:
    /// Borrows the level and the layer base until Finish.
    RotatedLayers(LevelMesh& level, LayerBase::Layers ofLevel, LayerBase& ground);

    /// Called once per vertex, before the vertex moves to `position`.
    void Turn(uint32_t vertex, const Vector& position, const SurfaceMove& move);
    /// Called once, after the last call to Turn.
    void Finish();
    /// Whether no offset was rotated.
    bool IsEmpty() const { return layeredVertices.empty(); }

    /// Exchanges the current layer data with the stored data, bit-exactly.
    /// \param ground  layer base of the level.
    void Exchange(LayerBase& ground);
    uint64_t Bytes() const;

private:
    /// The stored states of one layer's entries.
    struct Entries {
        std::shared_ptr<SculptLayer*> layer;
        std::vector<uint32_t> slots;
        std::vector<SculptLayer::State> states;
    };

    LevelMesh& mesh;
    LayerBase::Layers layers;
    LayerBase* ground;
    std::vector<Entries> entries;
    /// The data of the vertices in the other state. Until Finish is called, this is the state that
    /// is being prepared.
    std::vector<LayerBase::OtherLayeredVertex> layeredVertices;
};

}  // namespace trovik
