// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/VertexSwap.h"
#include "framework/multires/LevelChange.h"

#include <memory>
#include <vector>

namespace trovik {

/// The effect of one stroke on one level: for every vertex that the stroke changed, the state that
/// Apply exchanges with the current one.
///
/// Apply exchanges positions, normals and layer states bit-exactly, so any sequence of undo and
/// redo restores each state exactly. Memory: 22 bytes per vertex, or 62 with a layer.
///
/// The step belongs to the level on which it was recorded. If another level is bound, Apply first
/// binds that level. BindLevel may propagate changes from coarser levels to this level. The
/// vertices of the step then get the exact state that the step stores, and all other vertices keep
/// the propagated values. Hosts that record each level switch as a separate step (BindLevelAsStep)
/// avoid this case; in these hosts, undo is also exact across levels.
class TROVIK_API StrokeStep : public UndoStep {
public:
    /// Compares the records of an unlinked change with the current mesh.
    /// \return null if no vertex changed.
    static std::unique_ptr<StrokeStep> FromChange(const LevelChange& change);

    /// If the layer's strength has changed since the step was recorded, positions are composed from
    /// the offsets at the current strength, and normals are taken from the step. If the layer has
    /// been deleted, only positions and normals are exchanged.
    void Apply(LevelGeometry& geometry) override;
    uint64_t Bytes() const override;
    std::vector<StepArray> Arrays() override;

    /// Number of the level to which the stroke was applied.
    uint32_t Level() const { return level; }
    /// The vertices that Apply changes, without duplicates.
    const std::vector<uint32_t>& Vertices() const { return vertices; }

private:
    struct LayerEntry {
        uint32_t slot;
        SculptLayer::State state;
    };
    StrokeStep() = default;
    void Add(const StoredVertexInfo& record);
    void ShrinkToFit();

    uint32_t level = 0;
    std::vector<uint32_t> vertices;
    std::vector<Vector> positions;
    std::vector<NormalWords> normals;
    std::vector<LayerEntry> layerEntries;
    std::shared_ptr<SculptLayer*> layer;
    /// The layer strength that was used to compose `positions`.
    float layerStrength = 0.0f;
};

}  // namespace trovik
