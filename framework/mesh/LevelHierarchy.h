// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/GeometryObserver.h"
#include "framework/mesh/LevelMesh.h"
#include "framework/mesh/TopologicalMirror.h"

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace trovik {

/// Specifies when an observer is called relative to the other observers of the geometry.
enum class ObserverOrder {
    /// Called before the others. For observers that update data structures derived from the
    /// surface, such as pick trees, which other observers may query.
    First,
    Later
};

/// The part of a level hierarchy's interface that a single level needs, because its topology
/// depends on the levels below it. LevelGeometry, the only implementation, adds the propagation of
/// edits between levels.
class TROVIK_API LevelHierarchy : public Geometry {
public:
    uint32_t LevelCount() const { return static_cast<uint32_t>(levels.size()); }
    LevelMesh* Level(uint32_t index) const { return levels[index].get(); }

    /// Null until a topological mirror has been found.
    const TopologicalMirror* Mirror() const { return mirror.get(); }

    /// Adds an observer of all levels. Has no effect if it is already in the list. The observer is
    /// borrowed. Observers with the same order are called in the order in which they were added.
    void AddObserver(GeometryObserver& observer, ObserverOrder order = ObserverOrder::Later);
    /// Removes an observer. Has no effect if it was not added.
    void RemoveObserver(GeometryObserver& observer);
    const std::vector<GeometryObserver*>& Observers() const { return observers; }

    /// \name Reports to the observers
    /// Code that has changed a level calls these after the change. Without observers, each costs
    /// one comparison.
    /// \param what  a combination of SurfaceChange::What.
    /// @{

    /// Reports the patches of level max(0, level - 5) that contain a face with one of the vertices.
    /// Reports nothing if the list is empty. Cost: linear in the number of vertices.
    void ReportVertices(uint32_t level, uint8_t what, const std::vector<uint32_t>& vertices);
    /// Reports the listed patches.
    /// \param patches  faces of level `patchLevel`, without duplicates.
    void ReportPatches(uint32_t level,
                       uint8_t what,
                       uint32_t patchLevel,
                       std::span<const uint32_t> patches);
    void ReportAll(uint32_t level, uint8_t what);
    /// Reports an edit of the topology of level 0 in place, which may also have changed the number
    /// of faces and vertices.
    /// \param faces  the faces that have changed or are new, without duplicates; may be empty.
    void ReportTopology(std::span<const uint32_t> faces);
    /// @}

    /// Implements LevelMesh::StartChange.
    virtual MeshChange* StartChange(LevelMesh& level) = 0;
    /// Implements LevelMesh::Layer.
    virtual trovik::Layer* LayerOf(LevelMesh& level) = 0;
    /// Called by the destructor of each level, including levels that were removed from the list.
    /// All levels must be destroyed before the implementing object.
    virtual void LevelDestroyed(LevelMesh& level) = 0;

protected:
    std::vector<std::unique_ptr<LevelMesh>> levels;
    std::unique_ptr<TopologicalMirror> mirror;

private:
    void Report(const SurfaceChange& change) const;

    std::vector<GeometryObserver*> observers;
    /// The number of observers that have ObserverOrder::First.
    std::ptrdiff_t firstObservers = 0;
};

}  // namespace trovik
