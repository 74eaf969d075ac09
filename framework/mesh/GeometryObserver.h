// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <vector>

namespace trovik {

class LevelMesh;
struct FaceVisit;

/// Hears what happens to the levels of a geometry while a brush works on them. Called on the thread
/// of the brush, from inside its calls: whoever listens changes nothing and throws nothing. A
/// geometry without an observer pays one comparison a walk.
class TROVIK_API GeometryObserver {
public:
    /// A walk over faces or vertices of the level is over, or was left by an exception of its
    /// visitor. `visits`: what the visitor's Tester answered, in order; what it did not answer any
    /// more is not among them. The list holds until the next walk on the level.
    virtual void WalkEnded(const LevelMesh& level, const std::vector<FaceVisit>& visits) = 0;
    /// MeshChange::Finish was called with these arguments on a change of the level.
    virtual void ChangeFinished(const LevelMesh& level, bool keepTopology, bool joinPrevious) = 0;

protected:
    ~GeometryObserver() = default;
};

}  // namespace trovik
