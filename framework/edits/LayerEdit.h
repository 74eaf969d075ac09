// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/edits/LayerStep.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// Records the state of a level and its layers, provides write access to them, and creates an undo
/// step from the difference.
class LayerEdit {
public:
    /// The parts that a change may affect.
    enum class Reach {
        /// Layers and their properties, but no vertices.
        Properties,
        /// The contribution of the layers to the surface.
        Surface,
        /// Only offsets; the surface stays bit-identical.
        HiddenFromSurface
    };

    LayerEdit(LevelGeometry& geometry, uint32_t level, Reach reach);
    /// The layers of the level. The caller may change the list and the properties and offsets of
    /// each layer.
    LayerBase::Layers& Layers() { return layers; }
    LevelMesh& Mesh() { return mesh; }
    /// Updates the level.
    /// \return the undo step, or null if nothing has changed.
    std::unique_ptr<UndoStep> Finish(const std::string& label);

private:
    void TakeVertices(LayerStep& step, const LayerBase::Replaced& replaced) const;
    void TakeEntries(LayerStep& step) const;
    bool SameRows(const LayerStep& step) const;

    LevelGeometry& geometry;
    uint32_t level;
    LevelMesh& mesh;
    Reach reach;
    LayerBase::Layers layers;
    std::vector<LayerStep::Row> rowsBefore;
    std::shared_ptr<SculptLayer*> activeBefore;
    /// For each row, the states of all slots.
    std::vector<std::vector<SculptLayer::State>> statesBefore;
    std::vector<LayerBase::LayeredVertex> knotsBefore;
};

}  // namespace trovik
