// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/UndoHistory.h"
#include "framework/layers/LayerStack.h"
#include "framework/mesh/VertexSwap.h"

#include <memory>
#include <vector>

namespace trovik {

/// The undo step for a change to the layers of one level. It stores the state to switch to: the
/// layers, their order and properties, the active layer, and every vertex and layer entry that
/// changed. A layer that was removed, or whose addition was undone, is owned by the step.
class TROVIK_API LayerStep : public UndoStep {
public:
    void Apply(LevelGeometry& geometry) override;
    uint64_t Bytes() const override;
    /// Includes the contents of layers that only this step owns.
    std::vector<StepArray> Arrays() override;

private:
    friend class LayerEdit;
    struct Row {
        std::shared_ptr<SculptLayer> layer;
        SculptLayer::Properties given;
    };
    /// Changed entries of a layer, with the states to switch to.
    struct Entries {
        std::shared_ptr<SculptLayer> layer;
        std::vector<uint32_t> slots;
        std::vector<SculptLayer::State> states;
    };

    static std::vector<Row> RowsOf(const LevelGeometry& geometry, uint32_t level);
    /// Finds the layers of `rows` that are not in the geometry and that no other step can own.
    void FindKept(const std::vector<Row>& rowsInUse);

    uint32_t level = 0;
    std::vector<Row> rows;
    std::shared_ptr<SculptLayer*> active;
    std::vector<Entries> entries;
    std::vector<uint32_t> vertices;
    std::vector<Vector> positions;
    std::vector<NormalWords> normals;
    /// The layer base in the state to switch to. It is stored because it includes rounding from
    /// earlier strokes and cannot be recomputed exactly.
    std::vector<LayerBase::OtherLayeredVertex> layeredVertices;
    std::vector<std::shared_ptr<SculptLayer>> kept;
};

}  // namespace trovik
