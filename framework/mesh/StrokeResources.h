// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

#include <vector>

namespace trovik {

class BrushOperation;
class LevelMesh;

/// A change that StrokeResources can end.
class TROVIK_API EndableChange : public MeshChange {
public:
    using MeshChange::MeshChange;
    virtual bool IsFinished() const = 0;
};

/// The meshes that a brush has locked and the changes that it has not deleted yet. It is a member
/// of the brush base class, so that destroying a brush in mid-stroke releases its locks and ends
/// its changes. Both lists are empty after a brush ends its stroke.
///
/// Meshes and changes add and remove themselves. Not thread-safe.
class TROVIK_API StrokeResources {
public:
    /// Returns the resources of a brush, or null for any other lock holder. Defined alongside the
    /// brush base class, which owns the resources.
    static StrokeResources* Of(MeshUnlocker* holder);

    explicit StrokeResources(BrushOperation& ofBrush) : brush(ofBrush) {}
    /// Cleans up a stroke that was not ended: finishes and deletes its changes, and then unlocks
    /// the meshes. Changes are finished in the order in which they were started, so that they form
    /// one undo step. A change that cannot be finished is deleted without an undo step.
    ~StrokeResources();
    StrokeResources(const StrokeResources&) = delete;
    StrokeResources& operator=(const StrokeResources&) = delete;

    /// Calls the brush's EndStroke because its mesh is about to be destroyed. Exceptions from
    /// EndStroke are ignored.
    void EndStroke();

    /// \throw std::bad_alloc.
    void AddLock(LevelMesh& mesh) { lockedMeshes.push_back(&mesh); }
    void RemoveLock(const LevelMesh& mesh);
    /// \throw std::bad_alloc.
    void AddChange(EndableChange& change) { changes.push_back(&change); }
    void RemoveChange(const EndableChange& change);

private:
    BrushOperation& brush;
    std::vector<LevelMesh*> lockedMeshes;
    std::vector<EndableChange*> changes;
};

}  // namespace trovik
