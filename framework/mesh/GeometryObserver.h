// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/SurfaceChange.h"
#include "host/Api.h"

#include <vector>

namespace trovik {

class LevelMesh;
struct FaceVisit;

/// Receives notifications about the levels of a geometry. By default every member does nothing.
/// They are called on the thread that changes the geometry, inside the call that changes it. An
/// observer must not change the geometry or its list of observers, and must not throw.
class TROVIK_API GeometryObserver {
public:
    /// Called when a walk over the faces or vertices of the level has ended, including by an
    /// exception of its visitor.
    /// \param visits  the results of the visitor's Tester, in order, as far as it was called. Valid
    /// until the next walk on the level.
    virtual void WalkEnded(const LevelMesh& /*level*/, const std::vector<FaceVisit>& /*visits*/) {}
    /// Called after MeshChange::Finish was called with these arguments on a change of the level.
    virtual void ChangeFinished(const LevelMesh& /*level*/,
                                bool /*keepTopology*/,
                                bool /*joinPrevious*/) {}
    /// Called after a level has changed; it may be another level than the bound one. One operation
    /// may report several changes, and may list unchanged patches along with changed ones.
    virtual void SurfaceChanged(const SurfaceChange& /*change*/) {}

protected:
    ~GeometryObserver() = default;
};

}  // namespace trovik
