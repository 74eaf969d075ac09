// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/detail/DetailRegion.h"
#include "framework/detail/DetailSettings.h"
#include "framework/multires/LevelChange.h"

#include <array>
#include <functional>
#include <vector>

namespace trovik {

/// Adapts the edge lengths of a triangle mesh under the brush, for each dab of a stroke.
///
/// Edges within the reach of the brush that are longer than 4/3 of the target are split, and those
/// shorter than 4/5 of it are collapsed; edges are then flipped towards six neighbours per vertex,
/// and new vertices are moved tangentially towards the middle of their neighbours. Masked parts
/// (by at least half), borders, seams of the UVs, borders of groups and creases are kept. See
/// Botsch, Kobbelt: "A Remeshing Approach to Multiresolution Modeling" (2004), and for sculpting
/// with adaptive triangles: Dunyach, Vanderhaeghe, Barthe, Botsch: "Adaptive Remeshing for
/// Real-Time Mesh Deformation" (2013).
///
/// Only a copy of the faces around such edges is edited; it is then written back. The cost
/// therefore depends on the region under the brush, not on the mesh, except for two numbers per
/// face and vertex that are kept for the stroke.
///
/// Belongs to one open change of one level, and must be used on the document's thread.
class TROVIK_API StrokeTessellator {
public:
    /// The region under the brush, mesh-local.
    struct Reach {
        Vector centre;
        float radius = 0.0f;
        /// A face near the centre. The number then refers to the face that is nearest to it.
        uint32_t face = 0;
    };
    struct Passes {
        bool splits = true;
        bool collapses = true;
        bool relaxes = true;
        int maxPasses = 3;
    };
    /// An edit, with numbers of vertices of the level.
    struct Edit {
        enum Kind { Split, Flip, Collapse } kind;
        /// Split: the ends of the edge and the new vertex. Flip: the ends of the old edge.
        /// Collapse: the kept and the removed vertex.
        std::array<uint32_t, 3> vertices;
    };

    /// Borrows both. LevelGeometry::WhyTopologyIsFixed must be empty.
    StrokeTessellator(LevelMesh& level, LevelChange& change);

    LevelMesh& Level() const { return level; }
    const LevelChange& Change() const { return change; }

    /// Whether a face has a point within the reach.
    bool Reaches(const Reach& reach, uint32_t face) const;
    /// Adapts the edges of the faces.
    /// \param faces  faces that the brush reaches; hidden ones are not changed.
    /// \param detail  `length` must be above 0.
    /// \param report  called after the edit for each change to vertices that still exist; may be
    ///     empty.
    /// \return the number of edges that were split, collapsed or flipped.
    /// \throw std::bad_alloc or Error::s_cBadAlloc; HostError if the mesh would have too many
    ///     faces. The mesh is then unchanged.
    int Adapt(const Reach& reach,
              const std::vector<uint32_t>& faces,
              const DabDetail& detail,
              const Passes& passes,
              const std::function<void(const Edit&)>& report = {});

private:
    /// Returns the faces around edges whose length must change.
    std::vector<uint32_t> RegionAround(const Reach& reach,
                                       const std::vector<uint32_t>& faces,
                                       const DabDetail& detail,
                                       const Passes& passes);
    void UpdateNormals(const std::vector<uint32_t>& faces, TriangleEdit& edit);

    LevelMesh& level;
    LevelChange& change;
    LocalNumbers numbers;
    LocalNumbers vertexNumbers;
};

}  // namespace trovik
