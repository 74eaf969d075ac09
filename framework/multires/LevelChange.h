// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/UndoHistory.h"
#include "framework/layers/SculptLayer.h"
#include "framework/mesh/LevelMesh.h"
#include "framework/mesh/StrokeResources.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik {

class StrokeStep;

/// The change of a LevelMesh: the records of a stroke, and on Finish one step of the undo history.
///
/// A stroke that leaves a mesh and returns to it has two changes of that mesh. Only the later one
/// is linked. The effect of the earlier one is recorded when it is unlinked, so that the two steps
/// can be undone one after the other, bit-exactly, even if the second one restored a vertex.
///
/// A change is *open* until it is finished or deleted. While a level has an open change, its
/// geometry refuses undo, redo and the removal of levels (LevelGeometry::RefuseInStroke). If the
/// brush that held the lock of the level when the change was started is destroyed, it ends the
/// change. If the level is destroyed, it detaches its open changes: such a change has no mesh, and
/// its Finish creates no undo step.
class TROVIK_API LevelChange : public EndableChange {
public:
    /// Opens and links the change. If another change of the level is open, it is unlinked first.
    explicit LevelChange(LevelMesh* level);
    /// If the change was not finished, unlinks its vertices and creates no undo step.
    ~LevelChange() override;

    /// Restores visitStampWord in the changeLink of every vertex whose link still refers to its
    /// record, and pushes the undo step: the position, normal and layer offset before the stroke of
    /// each vertex that was touched. Vertices whose values are bit-identical to before are omitted;
    /// if no vertex changed, nothing is pushed. Hidden vertices are at exactly their positions from
    /// before the stroke.
    ///
    /// Finish without `joinPrevious` starts a new stroke for the histories. Steps of other meshes
    /// join only steps of that stroke, each in the history of its own geometry.
    void Finish(bool keepTopology, bool joinPrevious) override;
    bool IsFinished() const override { return finished; }

    /// Finishes a change that is not a stroke, as one step with this label. The label of later
    /// strokes does not change.
    void FinishAs(const std::string& label);

    /// Restores the stamps; the records are kept for undo. The change is then no longer the open
    /// change of the level.
    void Unlink();
    /// Called when the level is about to be destroyed; see the class description.
    void Detach();

    /// Restores every vertex of the open change exactly to its state before the stroke, with its
    /// layer offset, and clears its build-up. The change stays open.
    /// \return the vertices.
    std::vector<uint32_t> RevertStroke();

    /// Records for the neighbouring levels the positions before the stroke of the vertices that
    /// moved. Unlink does this; otherwise only code that binds another level during a stroke calls
    /// it.
    void NoteOlderPositions();

    /// Returns the records of hidden vertices whose position is not exactly that from before the
    /// stroke. Cost: O(records) if anything is hidden.
    std::vector<uint32_t> MovedHidden() const;
    /// Restores the position from before the stroke of the vertices of these records. Unlink does
    /// so for all hidden vertices; a host that reports every change to an observer calls this
    /// before.
    void RestoreHidden(const std::vector<uint32_t>& moved);

    const Store<StoredVertexInfo>& Records() const { return recordStore; }

    /// If memory is unlimited, the record array of the last change is kept for the next change of
    /// any mesh, up to 32 MiB. This frees it.
    static void DropSpareMemory();

protected:
    /// Returns the slot of the vertex in the layer that was active when the change was opened, or
    /// noSlot if there was none.
    uint32_t ReserveLayerSlot(uint32_t vertex) override;

private:
    friend class StrokeStep;
    /// The layer state of a vertex when record `record` was created.
    struct LayerBefore {
        uint32_t record;
        SculptLayer::State state;
    };
    void RestoreStamps();
    /// Moves the step of the unlinked change, if there is one, to the history.
    void PushStep(uint64_t strokeNumber);
    /// Removes the change from the lists of its level and its brush.
    void Close();

    /// Null after the change is detached.
    LevelMesh* level;
    /// The resources of the brush that locked the level; null if there is none.
    StrokeResources* resources;
    /// Vertex count of the level, stored because the level may no longer exist when it is read.
    uint32_t vertexCount;
    Store<StoredVertexInfo> recordStore;
    /// The earlier layer states, in the order of the records; contains only records with a layer
    /// slot.
    std::vector<LayerBefore> layerBefore;
    /// The layer of the stroke, which may be deleted before the change; null if there is none.
    std::shared_ptr<SculptLayer*> layer;
    float layerStrength = 0.0f;
    /// Created when the change is unlinked; null if nothing changed.
    std::unique_ptr<StrokeStep> step;
    bool linked = true;
    bool finished = false;
};

}  // namespace trovik
