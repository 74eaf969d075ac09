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
class TopologicalMirror;
class TriangleEdit;

/// Implements MeshChange for a LevelMesh. It holds the records of a stroke, and Finish turns them
/// into one undo step.
///
/// A stroke that leaves a mesh and returns to it creates two changes for that mesh. Only the later
/// one is linked. The effect of the earlier one is recorded when it is unlinked. The two steps can
/// therefore be undone bit-exactly, one after the other, even if the second one moved a vertex back
/// to its original position.
///
/// A change is *open* until it is finished or deleted. While a level has an open change, its
/// geometry refuses undo, redo and the removal of levels (LevelGeometry::RefuseInStroke). If a
/// brush held the level's lock when the change was started, destroying that brush also ends the
/// change. When a level is destroyed, it detaches its open changes. A detached change has no mesh,
/// and its Finish function does not create an undo step.
class TROVIK_API LevelChange : public EndableChange {
public:
    /// Opens and links the change. If another change of the level is open, it is unlinked first.
    explicit LevelChange(LevelMesh* level);
    /// If the change was not finished, unlinks its vertices without creating an undo step.
    ~LevelChange() override;

    /// Restores visitStampWord in the changeLink of every vertex whose link still refers to its
    /// record. Then pushes the undo step, which stores the pre-stroke position, normal and layer
    /// offset of each touched vertex. Vertices whose values are bit-identical to those before the
    /// stroke are omitted; if no vertex changed, nothing is pushed. Afterwards, hidden vertices are
    /// exactly at their pre-stroke positions.
    ///
    /// Finish without `joinPrevious` starts a new stroke in all histories. Later steps of other
    /// meshes join only steps of that stroke, each in its own geometry's history.
    void Finish(bool keepTopology, bool joinPrevious) override;
    bool IsFinished() const override { return finished; }

    /// Finishes a change that is not a stroke, as one undo step with this label. The labels of
    /// later strokes do not change.
    void FinishAs(const std::string& label);

    /// Restores the stamps; the records are kept for undo. The change is then no longer the open
    /// change of the level.
    void Unlink();
    /// Called when the level is about to be destroyed; see the class comment.
    void Detach();

    /// Returns the edit of the mesh's topology that belongs to this change, which must be open, and
    /// starts it if necessary. Unlink compacts the mesh, and the undo step then contains the edit.
    /// Requires that LevelGeometry::WhyTopologyIsFixed is empty.
    TriangleEdit& Topology();
    bool EditsTopology() const { return topology != nullptr; }
    /// Declares that the next change to be finished begins a new stroke, even if it is finished
    /// with `joinPrevious`.
    static void StartStroke();

    /// Restores every vertex of the open change exactly to its pre-stroke state, including its
    /// layer offset, and clears its build-up. Also reverts the edit of the topology; all records
    /// are then discarded. The change stays open.
    /// \return the vertices.
    std::vector<uint32_t> RevertStroke();

    /// Records the pre-stroke positions of the vertices that moved, for synchronisation with the
    /// neighbouring levels. Called by Unlink; other code needs it only to bind another level during
    /// a stroke.
    void NoteOlderPositions();

    /// Returns the records of the hidden vertices that are not exactly at their pre-stroke
    /// positions. Cost: O(1) if nothing is hidden, otherwise O(records).
    std::vector<uint32_t> MovedHidden() const;
    /// Restores the pre-stroke positions of these records' vertices. Unlink does so for all hidden
    /// vertices; a host that reports every change to an observer calls this first.
    void RestoreHidden(const std::vector<uint32_t>& moved);

    const Store<StoredVertexInfo>& Records() const { return recordStore; }

    /// Frees the cached record array. If memory is unlimited, the record array of the last change,
    /// up to 32 MiB, is kept for the next change of any mesh.
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
    /// Ends the edit of the topology, after the records of the moved vertices were added to it.
    std::unique_ptr<UndoStep> FinishTopology();
    std::vector<uint32_t> RevertTopology();
    /// Moves the step of the unlinked change, if there is one, to the history.
    void PushStep(uint64_t strokeNumber);
    /// Removes the change from the lists of its level and its brush.
    void Close();

    /// Null after the change is detached.
    LevelMesh* level;
    /// The resources of the brush that locked the level; null if there is none.
    StrokeResources* resources;
    /// A copy of the level's vertex count, because the level may already have been destroyed when
    /// the count is read.
    uint32_t vertexCount;
    Store<StoredVertexInfo> recordStore;
    /// The previous layer states of the records that have a layer slot, in record order.
    std::vector<LayerBefore> layerBefore;
    /// The layer of the stroke, which may be deleted before the change; null if there is none.
    std::shared_ptr<SculptLayer*> layer;
    float layerStrength = 0.0f;
    /// Created when the change is unlinked; null if nothing changed.
    std::unique_ptr<UndoStep> step;
    /// Null unless the stroke edits the topology.
    std::unique_ptr<TriangleEdit> topology;
    /// The mirror of the mesh before its topology was edited.
    std::unique_ptr<TopologicalMirror> mirror;
    bool linked = true;
    bool finished = false;
};

}  // namespace trovik
