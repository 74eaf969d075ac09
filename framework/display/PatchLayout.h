// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/display/FaceBuckets.h"
#include "framework/display/GridIndices.h"

#include <cstdint>
#include <memory>
#include <span>

namespace trovik {

/// The division of a level into patches for drawing. A patch is a range of vertices with 16-bit
/// indices, so that it can be packed, uploaded, culled and drawn separately. A vertex on the border
/// between patches is stored in each of them.
///
///     grids     All levels at least two subdivisions above a level of quads. A patch is a face of
///               PatchLevel() with its descendants: a grid of (2^Depth() + 1)^2 vertices in row
///               order, at most 33 x 33. All patches share GridIndices::OfDepth(Depth()).
///     buckets   All other levels. A patch has up to 4096 faces and its own indices (FaceBuckets).
///
/// Vertices of a grid are ordered as in SubdivisionLevel::QuadVertexIndexTable. The flags of the
/// face at cell (row, column) are stored in the vertex at (row, column); vertices of the last row
/// and column store no flags.
///
/// A layout stores indices only, not positions. It is valid until another level is displayed or
/// faces or vertices of the level are renumbered (SurfaceChange::Topology). May be read by several
/// threads.
class TROVIK_API PatchLayout {
public:
    /// Maximum depth of a patch (33 x 33 vertices). The depth is lower if there are not enough
    /// coarser levels.
    static constexpr uint32_t maxDepth = GridIndices::maxDepth;
    static constexpr uint32_t minDepth = 2;

    /// Must be called on the thread of the level's document. Borrows nothing. Cost: O(level index)
    /// for grids, O(n log n) for buckets with n faces in total.
    explicit PatchLayout(const LevelMesh& level);

    /// Index of the level that is divided.
    uint32_t Level() const { return level; }
    bool IsGrid() const { return buckets == nullptr; }
    uint32_t PatchCount() const { return patchCount; }

    /// Number of vertices of the patch.
    uint32_t VertexCount(uint32_t patch) const;
    /// Total number of vertices in the patches before this one, which is the offset of the patch in
    /// an array that contains all patches. If `patch` is PatchCount(), the total number of
    /// vertices.
    uint64_t FirstVertex(uint32_t patch) const;
    /// Total number of vertices of these patches.
    uint64_t VertexCount(std::span<const uint32_t> patches) const;
    /// Number of vertices of all patches.
    uint64_t TotalVertexCount() const { return FirstVertex(patchCount); }

    /// Grids only. The level whose faces are the patches, in the same order.
    uint32_t PatchLevel() const { return patchLevel; }
    /// Grids only. Number of refinements from PatchLevel() to Level().
    uint32_t Depth() const { return level - patchLevel; }
    /// Grids only. For each vertex of a patch, its index in the patch's slice of faceVertexIndices.
    const uint32_t* GridSlots() const { return gridSlots; }
    /// Grids only. For each face of a patch, its cell: row * 2^Depth() + column.
    const uint32_t* GridCells() const { return gridCells; }
    /// Null for grids.
    const FaceBuckets* Buckets() const { return buckets.get(); }

    /// Indices of the patch's triangles at full detail, relative to the patch's first vertex. The
    /// first index of each triangle refers to the vertex that stores the flags of its face.
    std::span<const uint16_t> Triangles(uint32_t patch) const;

    /// Calls visit(patch) for the patches that contain descendants of `face` of level `levelIndex`,
    /// which must be at most Level(). A bucket may be visited more than once. Cost for grids: O(1)
    /// if `levelIndex` is at least PatchLevel(), otherwise linear in the number of patches under
    /// the face. Cost for buckets: linear in the number of faces under the face.
    template <class Visit>
    void VisitPatchesUnder(uint32_t levelIndex, uint32_t face, Visit visit) const {
        const uint64_t under = FacesUnder(levelIndex);
        const auto first = static_cast<uint32_t>(face * under);
        const auto last = static_cast<uint32_t>(face * under + under - 1);
        if (buckets != nullptr) {
            for (uint32_t f = first; f <= last; ++f) visit(buckets->BucketOf(f));
            return;
        }
        for (uint32_t patch = first >> (2 * Depth()); patch <= last >> (2 * Depth()); ++patch)
            visit(patch);
    }

    /// Number of faces of Level() that descend from a face of `levelIndex`.
    uint64_t FacesUnder(uint32_t levelIndex) const {
        const uint64_t faces = uint64_t{1} << (2 * (level - levelIndex));
        // A triangle of level 0 has three children.
        return levelIndex == 0 && level > 0 && baseIsTriangles ? faces / 4 * 3 : faces;
    }

private:
    uint32_t GridVertexCount() const { return ((1u << Depth()) + 1) * ((1u << Depth()) + 1); }

    uint32_t level;
    bool baseIsTriangles;
    uint32_t patchLevel = 0;
    uint32_t patchCount = 0;
    // Fetched once, because the getters of the tables are not thread-safe.
    const uint32_t* gridSlots = nullptr;
    const uint32_t* gridCells = nullptr;
    std::unique_ptr<const FaceBuckets> buckets;
};

}  // namespace trovik
