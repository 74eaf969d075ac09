// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/GeometryObserver.h"
#include "framework/mesh/LevelMesh.h"
#include "framework/mesh/TopologicalMirror.h"

#include <memory>
#include <vector>

namespace trovik {

/// The levels of one mesh, as each level sees them: its topology follows from the levels below it.
/// LevelGeometry, the only implementation, adds what happens between levels.
class TROVIK_API LevelHierarchy : public Geometry {
public:
    uint32_t LevelCount() const { return static_cast<uint32_t>(levels.size()); }
    LevelMesh* Level(uint32_t index) const { return levels[index].get(); }

    /// Null until a topological mirror has been found.
    const TopologicalMirror* Mirror() const { return mirror.get(); }

    /// Receives the walks and changes on all levels; null for none. Borrowed.
    void SetObserver(GeometryObserver* newObserver) { observer = newObserver; }
    GeometryObserver* Observer() const { return observer; }

    /// Implements LevelMesh::StartChange.
    virtual MeshChange* StartChange(LevelMesh& level) = 0;
    /// Implements LevelMesh::Layer.
    virtual trovik::Layer* LayerOf(LevelMesh& level) = 0;
    /// Called by the destructor of each level, also of levels that were taken out. The levels have
    /// to be destroyed before the implementation is.
    virtual void LevelDestroyed(LevelMesh& level) = 0;

protected:
    std::vector<std::unique_ptr<LevelMesh>> levels;
    std::unique_ptr<TopologicalMirror> mirror;
    GeometryObserver* observer = nullptr;
};

}  // namespace trovik
