// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/SurfaceChange.h"
#include "host/Api.h"

#include <vector>

namespace trovik {

class LevelMesh;
struct FaceVisit;

/// Receives what happens to the levels of a geometry. All members do nothing by default. They are
/// called on the thread that changes the geometry, from inside the call that does so: an observer
/// changes neither the geometry nor its list of observers, and throws nothing.
class TROVIK_API GeometryObserver {
public:
    /// A walk over faces or vertices of the level has ended, also by an exception of its visitor.
    /// `visits`: the results of the visitor's Tester, in order, as far as it was called. Valid
    /// until the next walk on the level.
    virtual void WalkEnded(const LevelMesh& /*level*/, const std::vector<FaceVisit>& /*visits*/) {}
    /// MeshChange::Finish was called with these arguments on a change of the level.
    virtual void ChangeFinished(const LevelMesh& /*level*/,
                                bool /*keepTopology*/,
                                bool /*joinPrevious*/) {}
    /// A level has changed, which need not be the bound one. One operation may report several
    /// changes, and name patches that have not changed along with those that have.
    virtual void SurfaceChanged(const SurfaceChange& /*change*/) {}

protected:
    ~GeometryObserver() = default;
};

}  // namespace trovik
