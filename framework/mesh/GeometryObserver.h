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
    /// Called when a walk over the level's faces or vertices has ended, even if its visitor threw
    /// an exception.
    /// \param visits  the results of the visitor's Tester calls, in order; valid until the next
    /// walk on the level.
    virtual void WalkEnded(const LevelMesh& /*level*/, const std::vector<FaceVisit>& /*visits*/) {}
    /// Called after MeshChange::Finish, with its arguments, for each finished change of the level.
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
