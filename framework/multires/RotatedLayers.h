// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/LayerBase.h"
#include "host/Api.h"

#include <memory>
#include <utility>
#include <vector>

namespace trovik {

/// The layer data of the vertices of a level that are moved by a change of the level below. The
/// layer base moves with the surface as a vertex without layers would, and every offset rotates as
/// the detail of the vertex rotates, regardless of the strength and visibility of the layer. If a
/// layer is hidden after the change, the result is therefore bit-identical to propagating the
/// change without the layer; if it is shown again, the previous positions return exactly.
///
/// A rotated offset keeps its length, up to single-precision rounding.
///
/// Only the offsets of the level itself are rotated, by changes of coarser levels. Changes by a
/// stroke or from a finer level affect the layer base, and the offsets above it keep their
/// direction.
///
/// Cost and memory: for each moved vertex that a layer touches, 44 bytes, and 40 for each layer.
class TROVIK_API RotatedLayers {
public:
    /// Borrows the level and the layer base until Finish.
    RotatedLayers(LevelMesh& level, LayerBase::Layers ofLevel, LayerBase& ground);

    /// Called once per vertex, before the vertex moves to `position`.
    void Turn(uint32_t vertex, const Vector& position, const SurfaceMove& move);
    /// Called once, after the last call of Turn.
    void Finish();
    /// Whether nothing was rotated.
    bool IsEmpty() const { return layeredVertices.empty(); }

    /// Exchanges the current layer data with the stored data, bit-exactly.
    /// \param ground  of the level.
    void Exchange(LayerBase& ground);
    uint64_t Bytes() const;

private:
    /// The other states of the entries of a layer.
    struct Entries {
        std::shared_ptr<SculptLayer*> layer;
        std::vector<uint32_t> slots;
        std::vector<SculptLayer::State> states;
    };

    LevelMesh& mesh;
    LayerBase::Layers layers;
    LayerBase* ground;
    std::vector<Entries> entries;
    /// Data of the vertices in the other state; until Finish, in the state that is being prepared.
    std::vector<LayerBase::OtherLayeredVertex> layeredVertices;
};

}  // namespace trovik
