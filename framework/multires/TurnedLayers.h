// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/LayerGround.h"
#include "host/Api.h"

#include <memory>
#include <utility>
#include <vector>

namespace trovik {

/// What the layers of a level hold of the vertices that a change of the level below moves: the
/// ground goes along with the surface as a vertex without layers would, and every offset turns as
/// the vertex's detail turns, whatever the layer's strength and whether it is visible. So a layer
/// that is turned off after the change leaves, to the bit, what carrying the change without it
/// would have left there; turned on again, it gives the bits that there were.
///
/// A turned offset keeps its length but for the rounding of single precision.
///
/// Only a level's own offsets turn, by changes of coarser levels. What a stroke or a finer level
/// does to a level happens to the ground, and the offsets above it keep their direction.
///
/// Cost and memory: for each moved vertex that a layer touched, 44 bytes, and 40 for each layer.
class TROVIK_API TurnedLayers {
public:
    /// Borrows the level and the ground until Finish.
    TurnedLayers(LevelMesh& level, LayerGround::Layers ofLevel, LayerGround& ground);

    /// To be called ahead of the vertex's moving to `place`, once a vertex.
    void Turn(uint32_t vertex, const Vector& place, const SurfaceMove& move);
    /// To be called once, behind the last turn.
    void Finish();
    /// Nothing was turned.
    bool IsEmpty() const { return knots.empty(); }

    /// Swaps what is held now with what was held before, bit for bit. \param ground  that of the
    /// level.
    void Exchange(LayerGround& ground);
    uint64_t Bytes() const;

private:
    /// The other states of a layer's entries.
    struct Entries {
        std::shared_ptr<SculptLayer*> layer;
        std::vector<uint32_t> slots;
        std::vector<SculptLayer::State> states;
    };

    LevelMesh& mesh;
    LayerGround::Layers layers;
    LayerGround* ground;
    std::vector<Entries> entries;
    /// What is known of the vertices in the other state; until Finish in the one to come.
    std::vector<LayerGround::OtherKnot> knots;
};

}  // namespace trovik
