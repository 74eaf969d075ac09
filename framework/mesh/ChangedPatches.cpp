// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/ChangedPatches.h"

#include "framework/mesh/IndexSet.h"
#include "framework/mesh/LevelHierarchy.h"
#include "framework/mesh/NewVertices.h"
#include "framework/mesh/VertexNeighbours.h"

#include <algorithm>

namespace trovik {

namespace {

class PatchFinder {
public:
    PatchFinder(LevelMesh& ofLevel, uint32_t ofPatchLevel)
        : level(ofLevel),
          patchMesh(*ofLevel.Hierarchy().Level(ofPatchLevel)),
          depth(static_cast<uint32_t>(ofLevel.Index()) - ofPatchLevel) {
        const LevelHierarchy& hierarchy = level.Hierarchy();
        uint32_t faces = 1;
        for (uint32_t number = ofPatchLevel + 1; number <= ofPatchLevel + depth; ++number) {
            born.emplace_back(*hierarchy.Level(number), faces);
            faces *= hierarchy.Level(number - 1)->CornersPerFace();
            firstNew.push_back(hierarchy.Level(number)->CoarserVertexCount());
        }
    }

    std::vector<uint32_t> Find(const std::vector<uint32_t>& vertices) {
        std::vector<uint32_t> patches;
        std::vector<uint32_t> owners;
        std::vector<uint32_t> around;
        for (const uint32_t vertex : vertices) {
            if (NewVertices* one = NewVerticesOf(vertex)) {
                if (one->Find(vertex)) owners.push_back(one->Patch());
                continue;
            }
            FacesAt(patchMesh, vertex, around);
            patches.insert(patches.end(), around.begin(), around.end());
        }
        MakeSet(owners);
        AddAcross(owners, vertices, patches);
        patches.insert(patches.end(), owners.begin(), owners.end());
        MakeSet(patches);
        return patches;
    }

private:
    /// Returns the entry for the lowest level that contains the vertex; null if that level is not
    /// above the patch level.
    NewVertices* NewVerticesOf(uint32_t vertex) {
        for (std::size_t i = born.size(); i-- > 0;)
            if (vertex >= firstNew[i]) return &born[i];
        return nullptr;
    }

    /// A new vertex on the border between two patches belongs to both, but only one of them owns
    /// it. Adds the patches that share such a vertex with an adjacent owner but are not owners
    /// themselves.
    void AddAcross(const std::vector<uint32_t>& owners,
                   const std::vector<uint32_t>& vertices,
                   std::vector<uint32_t>& patches) {
        // The vertices on these sides are collected first, because there are far fewer of them than
        // vertices in the list.
        std::vector<uint32_t> onSides;
        std::vector<uint32_t> across;
        for (const uint32_t patch : owners) {
            for (uint32_t side = 0; side < patchMesh.CornersPerFace(); ++side) {
                const uint32_t neighbour = patchMesh.QuadEdgeNeighbour(patch, side);
                if (neighbour == openBorder) continue;
                const uint32_t other = neighbour >> 2;
                if (std::binary_search(owners.begin(), owners.end(), other)) continue;
                AddInside(patch, side, patchMesh.CornersPerFace(), depth, onSides);
                across.resize(onSides.size(), other);
            }
        }
        if (onSides.empty()) return;
        const IndexSet wanted(onSides);
        std::vector<bool> isListed(wanted.Count(), false);
        for (const uint32_t vertex : vertices) {
            const uint32_t rank = wanted.RankOf(vertex);
            if (rank != IndexSet::noRank) isListed[rank] = true;
        }
        for (std::size_t i = 0; i < onSides.size(); ++i)
            if (isListed[wanted.RankOf(onSides[i])]) patches.push_back(across[i]);
    }

    /// Adds the vertices along the side of a face, excluding its endpoints.
    /// \param below  number of levels from the face's level to the finest level.
    void AddInside(uint32_t face,
                   uint32_t side,
                   uint32_t corners,
                   uint32_t below,
                   std::vector<uint32_t>& inside) const {
        if (below == 0) return;
        // The side consists of one side of each of these children; see LevelTopology.cpp.
        const uint32_t firstChild = face * corners + side;
        const uint32_t secondChild = face * corners + (side + 1) % corners;
        const uint32_t firstSide = corners == 4 ? side : 0;
        const uint32_t secondSide = corners == 4 ? side : 3;
        uint32_t finest = firstChild;
        // The index of the corner at the end of the first half. On every finer level, the corner
        // has the same index in the child that contains it.
        const uint32_t middle = (firstSide + 1) & 3u;
        for (uint32_t i = 1; i < below; ++i) finest = finest * 4 + middle;
        inside.push_back(level.faceVertexIndices.array[finest * 4 + middle]);
        AddInside(firstChild, firstSide, 4, below - 1, inside);
        AddInside(secondChild, secondSide, 4, below - 1, inside);
    }

    LevelMesh& level;
    LevelMesh& patchMesh;
    uint32_t depth;
    /// One entry per level, starting above the patch level.
    std::vector<NewVertices> born;
    std::vector<uint32_t> firstNew;
};

}  // namespace

std::vector<uint32_t> PatchesAt(LevelMesh& level,
                                uint32_t patchLevel,
                                const std::vector<uint32_t>& vertices) {
    return PatchFinder(level, patchLevel).Find(vertices);
}

}  // namespace trovik
