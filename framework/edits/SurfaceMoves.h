// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelChange.h"

#include <string>
#include <utility>
#include <vector>

namespace trovik {

/// Moves vertices of a level to given positions, for operations other than brushes. The moves
/// become part of an open change, and therefore of its undo step.
///
/// If a writable, visible layer is active, the displacement of a vertex is divided by the layer's
/// strength and added to the vertex's offset in that layer. The vertex gets exactly the given
/// position. Otherwise the move changes the layer base.
class TROVIK_API SurfaceMoves {
public:
    /// Borrows the level, on which a change must be open when Apply is called.
    explicit SurfaceMoves(LevelMesh& ofLevel) : level(ofLevel) {}
    /// Adds a vertex and its new mesh-local position. A vertex may be added only once.
    void Add(uint32_t vertex, const Vector& position) { moves.emplace_back(vertex, position); }
    bool IsEmpty() const { return moves.empty(); }
    /// Moves the vertices as one undo step of the geometry and reports them. The level must be the
    /// bound level of the geometry.
    /// \return the number of moved vertices; if it is 0, there is no undo step.
    /// \throw Error* under the same conditions as Apply.
    uint32_t ApplyAsStep(LevelGeometry& geometry, const std::string& label);

    /// Moves the vertices and recomputes the normals around them.
    /// \return the vertices whose position or normal has changed, in ascending order.
    /// \throw Error* if an allocation fails; in that case, no vertex has moved.
    /// Cost: proportional to the number of moved vertices.
    std::vector<uint32_t> Apply(LevelChange& change);

private:
    LevelMesh& level;
    std::vector<std::pair<uint32_t, Vector>> moves;
};

/// Returns the record of a vertex in the level's open change, and creates it if necessary. The
/// reference is valid until the next record is created.
/// \param withLayerSlot  see MeshChange::Add_uncached; ignored if the record exists.
/// \param near  a face close to the vertex, or openBorder; a call that creates a record sets it to
/// a face of the vertex, for the next vertex. \throw Error* if an allocation fails.
TROVIK_API StoredVertexInfo& RecordOf(
    LevelMesh& level, LevelChange& change, uint32_t vertex, bool withLayerSlot, uint32_t& near);

/// Returns the active layer of a level; null if there is none.
/// \throw HostError if the layer is hidden or locked.
TROVIK_API SculptLayer* RequireWritableLayer(LevelMesh& level);

}  // namespace trovik
