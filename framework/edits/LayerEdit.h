// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/edits/LayerStep.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// Takes down a level and its layers, lets them be changed, and makes the step of the difference.
class LayerEdit {
public:
    /// What a change may touch.
    enum class Reach {
        /// Layers and their properties, but no vertex.
        Properties,
        /// What the layers add to the surface.
        Surface,
        /// Offsets, but the surface keeps its bits.
        HiddenFromSurface
    };

    LayerEdit(LevelGeometry& geometry, uint32_t level, Reach reach);
    /// The layers of the level, to be changed at will, like their properties and offsets.
    LayerGround::Layers& Layers() { return layers; }
    LevelMesh& Mesh() { return mesh; }
    /// Brings the level up to date. \return the step, or null when nothing is other than before.
    std::unique_ptr<UndoStep> Finish(const std::string& label);

private:
    void TakeVertices(LayerStep& step, const LayerGround::Replaced& replaced) const;
    void TakeEntries(LayerStep& step) const;
    bool SameRows(const LayerStep& step) const;

    LevelGeometry& geometry;
    uint32_t level;
    LevelMesh& mesh;
    Reach reach;
    LayerGround::Layers layers;
    std::vector<LayerStep::Row> rowsBefore;
    std::shared_ptr<SculptLayer*> activeBefore;
    /// Per row the states of all slots.
    std::vector<std::vector<SculptLayer::State>> statesBefore;
    std::vector<LayerGround::Knot> knotsBefore;
};

}  // namespace trovik
