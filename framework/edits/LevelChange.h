// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/edits/UndoHistory.h"
#include "framework/levels/LevelMesh.h"

namespace trovik {

/// The change of a LevelMesh: the records of a stroke, and on Finish one step of the undo history.
class TROVIK_API LevelChange : public MeshChange {
public:
    /// Opens and links the change. A change still open on the level is unlinked first.
    explicit LevelChange(LevelMesh* level);
    /// A change deleted without Finish unlinks its vertices and leaves no undo step.
    ~LevelChange() override;

    /// Puts visitStampWord back into the changeLink of every vertex whose link still names its
    /// record, and pushes the step: for each touched vertex the position, normal and layer offset
    /// before the stroke. Vertices that ended with the bits they had are left out.
    void Finish(bool keepTopology, bool joinPrevious) override;

    /// Puts the stamps back; the records stay for undo. The change is no longer the level's open
    /// one.
    void Unlink();

    const Store<StoredVertexInfo>& Records() const { return recordStore; }

protected:
    uint32_t ReserveLayerSlot(uint32_t vertex) override;

private:
    LevelMesh* level;
    Store<StoredVertexInfo> recordStore;
    /// Layer offset at first touch, by record; only for records that hold a slot.
    std::vector<Vector> offsetsBefore;
    SculptLayer* layer;
    bool linked = false;
    bool finished = false;
};

}  // namespace trovik
