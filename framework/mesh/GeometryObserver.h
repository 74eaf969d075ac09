// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/SurfaceChange.h"
#include "host/Api.h"

#include <vector>

namespace trovik {

class LevelMesh;
struct FaceVisit;

/// Receives notifications about the levels of a geometry. The default implementations do nothing.
/// All members are called on the thread that changes the geometry, before the changing call
/// returns. An observer must not change the geometry or its list of observers, and must not throw.
class TROVIK_API GeometryObserver {
public:
    /// Called when a walk over the faces or vertices of the level has ended, including by an
    /// exception of its visitor.
    /// \param visits  the results of the calls of the visitor's Tester, in order; valid until the
    /// next walk on the level.
    virtual void WalkEnded(const LevelMesh& /*level*/, const std::vector<FaceVisit>& /*visits*/) {}
    /// Called after a MeshChange of the level was finished with these arguments
    /// (MeshChange::Finish).
    virtual void ChangeFinished(const LevelMesh& /*level*/,
                                bool /*keepTopology*/,
                                bool /*joinPrevious*/) {}
    /// Called after a level, not necessarily the bound one, has changed. One operation may report
    /// several changes, and may list unchanged patches along with changed ones.
    virtual void SurfaceChanged(const SurfaceChange& /*change*/) {}

protected:
    ~GeometryObserver() = default;
};

}  // namespace trovik
