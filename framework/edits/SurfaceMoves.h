// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelChange.h"

#include <utility>
#include <vector>

namespace trovik {

/// Vertices of a level that go to given places, for who moves them otherwise than by a brush. They
/// become part of an open change, and so of its undo step.
///
/// With an active layer that takes changes and shows, what a vertex moves goes into its offset
/// there, and the vertex lies at its place to the bit. Otherwise the move lies below the layers.
class TROVIK_API SurfaceMoves {
public:
    /// Borrows the level, on which a change must be open when Apply is called.
    explicit SurfaceMoves(LevelMesh& ofLevel) : level(ofLevel) {}
    /// Mesh-local. Each vertex once.
    void Add(uint32_t vertex, const Vector& place) { moves.emplace_back(vertex, place); }
    bool IsEmpty() const { return moves.empty(); }

    /// Moves the vertices and refreshes the normals around them. \return what has another place or
    /// normal now, ascending. \throw Error* when memory is refused; no vertex has moved then.
    /// Cost: by the vertices that move.
    std::vector<uint32_t> Apply(LevelChange& change);

private:
    LevelMesh& level;
    std::vector<std::pair<uint32_t, Vector>> moves;
};

}  // namespace trovik
