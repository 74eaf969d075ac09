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
/// A stroke that leaves a mesh and comes back holds two changes of it. Only the later one is
/// linked; what the earlier one did is taken down when it is unlinked, so that the two steps undo
/// one after the other to the bit, also where the second brought a vertex back.
///
/// A change is *open* until it is finished or deleted. While a level has an open change its
/// geometry refuses undo, redo and the removal of levels (LevelGeometry::RefuseInStroke). The brush
/// that held the level's lock when the change was started ends the change when it is destroyed.
/// A level that is destroyed detaches its open changes: such a change has no mesh, and its Finish
/// leaves no undo step.
class TROVIK_API LevelChange : public EndableChange {
public:
    /// Opens and links the change. A change still open on the level is unlinked first.
    explicit LevelChange(LevelMesh* level);
    /// A change deleted without Finish unlinks its vertices and leaves no undo step.
    ~LevelChange() override;

    /// Puts visitStampWord back into the changeLink of every vertex whose link still names its
    /// record, and pushes the step: for each touched vertex the position, normal and layer offset
    /// before the stroke. Vertices that ended with the bits they had are left out; a change without
    /// any other pushes nothing. Hidden vertices have the position of before the stroke, bit for
    /// bit.
    ///
    /// Finish without `joinPrevious` begins a stroke in the eyes of the histories: steps of further
    /// meshes join only steps of that stroke, each in the history of its own geometry.
    void Finish(bool keepTopology, bool joinPrevious) override;
    bool IsFinished() const override { return finished; }

    /// Finish for what is not a stroke, as one step of this label; that of the strokes to come
    /// stays.
    void FinishAs(const std::string& label);

    /// Puts the stamps back; the records stay for undo. The change is no longer the level's open
    /// one.
    void Unlink();
    /// The level is about to be destroyed; see the class.
    void Detach();

    /// Puts every vertex of the open change back to its bits of before the stroke, with its layer
    /// offset, and forgets its build-up; the change stays open. \return the vertices.
    std::vector<uint32_t> PutBack();

    /// Notes for the neighbouring levels where the vertices that moved lay before the stroke. Done
    /// by unlinking; only code that binds another level during a stroke calls it.
    void NoteOlderPositions();

    /// Records of hidden vertices whose position is not that of before the stroke, bit for bit.
    /// Cost: O(records) if anything is hidden.
    std::vector<uint32_t> MovedHidden() const;
    /// Gives the vertices of these records the position of before the stroke. Unlink does so for
    /// all; a host that reports every change to an observer does it before.
    void RestoreHidden(const std::vector<uint32_t>& moved);

    const Store<StoredVertexInfo>& Records() const { return recordStore; }

    /// Without a limit of memory, the array of the last change's records is kept for the next
    /// change of any mesh, up to 32 MiB. This gives it back.
    static void DropSpareMemory();

protected:
    /// Slot of the vertex in the layer that was active when the change was opened; noSlot without
    /// one.
    uint32_t ReserveLayerSlot(uint32_t vertex) override;

private:
    friend class StrokeStep;
    /// What the layer knew of a vertex when record `record` was made.
    struct LayerBefore {
        uint32_t record;
        SculptLayer::State state;
    };
    void RestoreStamps();
    /// Gives the step of the unlinked change to the history, if it has one.
    void PushStep(uint64_t strokeNumber);
    /// Takes the change from the lists of its level and of its brush.
    void Close();

    /// Null once detached.
    LevelMesh* level;
    /// Of the brush that locked the level; null without one.
    StrokeResources* resources;
    /// Of the level, which may be gone when this is read.
    uint32_t vertexCount;
    Store<StoredVertexInfo> recordStore;
    /// In the order of the records; only for records that hold a slot.
    std::vector<LayerBefore> layerBefore;
    /// Layer of the stroke, which may be deleted before the change is; null without one.
    std::shared_ptr<SculptLayer*> layer;
    float layerStrength = 0.0f;
    /// Made when the change is unlinked; null when nothing changed.
    std::unique_ptr<StrokeStep> step;
    bool linked = true;
    bool finished = false;
};

}  // namespace trovik
