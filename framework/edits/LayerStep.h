// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/UndoHistory.h"
#include "framework/layers/LayerStack.h"
#include "framework/mesh/VertexSwap.h"

#include <memory>
#include <vector>

namespace trovik {

/// A change of the layers of one level: the other layers in the other order with the other
/// properties, the other active one, and the other state of every vertex and layer entry that
/// changed with it. A layer that was removed, or whose adding was taken back, lives on in the step.
class TROVIK_API LayerStep : public UndoStep {
public:
    void Apply(LevelGeometry& geometry) override;
    uint64_t Bytes() const override;
    /// Also the content of a layer that lives in this step alone.
    std::vector<StepArray> Arrays() override;

private:
    friend class LayerEdit;
    struct Row {
        std::shared_ptr<SculptLayer> layer;
        SculptLayer::Properties given;
    };
    /// The other states of some entries of a layer.
    struct Entries {
        std::shared_ptr<SculptLayer> layer;
        std::vector<uint32_t> slots;
        std::vector<SculptLayer::State> states;
    };

    static std::vector<Row> RowsOf(const LevelGeometry& geometry, uint32_t level);
    /// Layers of `rows` that the geometry has not, and that no other step holds for certain.
    void FindKept(const std::vector<Row>& rowsInUse);

    uint32_t level = 0;
    std::vector<Row> rows;
    std::shared_ptr<SculptLayer*> active;
    std::vector<Entries> entries;
    std::vector<uint32_t> vertices;
    std::vector<Vector> positions;
    std::vector<NormalWords> normals;
    /// What else was known of the ground under the layers: what the step took in of strokes before
    /// it, it knows only by its rounding.
    std::vector<LayerGround::OtherKnot> knots;
    std::vector<std::shared_ptr<SculptLayer>> kept;
};

}  // namespace trovik
