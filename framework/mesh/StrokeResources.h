// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

#include <vector>

namespace trovik {

class BrushOperation;
class LevelMesh;

/// A change that the resources of a brush can end.
class TROVIK_API EndableChange : public MeshChange {
public:
    using MeshChange::MeshChange;
    virtual bool IsFinished() const = 0;
};

/// The meshes that one brush has locked and the changes that it has not deleted yet. It is a part
/// of the brush's base, so that the locks and changes of a brush that is destroyed in mid-stroke
/// end with the brush. A brush that ends its strokes leaves both lists empty.
///
/// Meshes and changes enter and leave the lists themselves. For one thread.
class TROVIK_API StrokeResources {
public:
    /// Those of a brush; null for any other holder of locks. Defined with the base of the brushes,
    /// which owns them.
    static StrokeResources* Of(MeshUnlocker* holder);

    explicit StrokeResources(BrushOperation& ofBrush) : brush(ofBrush) {}
    /// Releases what a stroke without an end has left: finishes and deletes the changes in the
    /// order in which they were started, which makes them one undo step, and unlocks the meshes. A
    /// change that cannot be finished is deleted without an undo step.
    ~StrokeResources();
    StrokeResources(const StrokeResources&) = delete;
    StrokeResources& operator=(const StrokeResources&) = delete;

    /// Calls EndStroke of the brush, for a mesh that is about to be destroyed under it. Errors that
    /// it throws are dropped.
    void EndStroke();

    /// Errors: std::bad_alloc.
    void AddLock(LevelMesh& mesh) { lockedMeshes.push_back(&mesh); }
    void RemoveLock(const LevelMesh& mesh);
    /// Errors: std::bad_alloc.
    void AddChange(EndableChange& change) { changes.push_back(&change); }
    void RemoveChange(const EndableChange& change);

private:
    BrushOperation& brush;
    std::vector<LevelMesh*> lockedMeshes;
    std::vector<EndableChange*> changes;
};

}  // namespace trovik
