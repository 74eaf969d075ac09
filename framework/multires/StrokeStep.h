// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/VertexSwap.h"
#include "framework/multires/LevelChange.h"

#include <memory>
#include <vector>

namespace trovik {

/// What one stroke did to one level: the other state of every vertex that it changed.
///
/// Apply exchanges positions, normals and layer states bit for bit, so any row of undo and redo
/// brings back each state exactly. Memory: 22 bytes a vertex, with a layer 62.
///
/// The step speaks of the level it was made on. When another level is bound, that one is bound
/// first, as the user would; BindLevel may carry changes of coarser levels up into vertices of this
/// level, and those of the step then get the exact state that the step holds, the others stay as
/// carried. Hosts that make each change of the bound level a step of its own (MakeLevelStep) never
/// come there, and their undo is exact over levels too.
class TROVIK_API StrokeStep : public UndoStep {
public:
    /// Compares the records of an unlinked change with the mesh as it is now.
    /// \return null when no vertex changed.
    static std::unique_ptr<StrokeStep> FromChange(const LevelChange& change);

    /// With a layer whose strength is another than when the step's content was taken, positions
    /// follow from the offsets at the present strength; normals are those of the content. When the
    /// layer is gone, positions and normals alone are exchanged.
    void Apply(LevelGeometry& geometry) override;
    uint64_t Bytes() const override;
    std::vector<StepArray> Arrays() override;

    /// Number of the level that the stroke was made on.
    uint32_t Level() const { return level; }
    /// The vertices that Apply changes, each once.
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
    /// Strength of the layer at which `positions` was composed.
    float layerStrength = 0.0f;
};

}  // namespace trovik
