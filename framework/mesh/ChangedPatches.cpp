// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/ChangedPatches.h"

#include "framework/mesh/LevelHierarchy.h"
#include "framework/mesh/VertexNeighbours.h"

#include <algorithm>

namespace trovik {

namespace {

/// The vertices that are new in one level above the patch level, and the patch that owns each of
/// them: the lowest-numbered patch that contains it.
class NewVertices {
public:
    NewVertices(const LevelHierarchy& hierarchy, uint32_t number, uint32_t facesOfPatch)
        : level(*hierarchy.Level(number)),
          corners(hierarchy.Level(number - 1)->CornersPerFace()),
          facesPerPatch(facesOfPatch),
          patches(hierarchy.Level(number - 1)->faceCount / facesOfPatch) {}

    /// \return whether the patch differs from that of the previous call.
    bool Find(uint32_t vertex) {
        if (vertex >= first && vertex < end) return false;
        uint32_t low = 0;
        uint32_t high = patches - 1;
        while (low < high) {
            const uint32_t middle = low + (high - low) / 2;
            if (EndOf(middle) <= vertex)
                low = middle + 1;
            else
                high = middle;
        }
        patch = low;
        first = low == 0 ? level.CoarserVertexCount() : EndOf(low - 1);
        end = EndOf(low);
        return true;
    }
    uint32_t Patch() const { return patch; }

private:
    /// The faces of the level below number their new vertices one after the other; the face point
    /// is the last vertex of a face.
    uint32_t EndOf(uint32_t ofPatch) const {
        const uint32_t lastFace = (ofPatch + 1) * facesPerPatch - 1;
        return level.faceVertexIndices.array[lastFace * corners * 4 + 2] + 1;
    }

    const LevelMesh& level;
    /// Corners per face of the level below.
    uint32_t corners;
    /// Faces of the level below in one patch.
    uint32_t facesPerPatch;
    uint32_t patches;
    uint32_t patch = 0;
    uint32_t first = 0;
    uint32_t end = 0;
};

/// Bit set of the vertices of a list, for fast look-up.
class VertexMarks {
public:
    explicit VertexMarks(const std::vector<uint32_t>& vertices) {
        if (vertices.empty()) return;
        const auto [low, high] = std::minmax_element(vertices.begin(), vertices.end());
        lowest = *low;
        words.resize((*high - lowest) / wordBits + 1);
        for (const uint32_t vertex : vertices)
            words[(vertex - lowest) / wordBits] |= uint64_t{1} << ((vertex - lowest) % wordBits);
    }
    bool Has(uint32_t vertex) const {
        const uint32_t word = (vertex - lowest) / wordBits;
        return vertex >= lowest && word < words.size() &&
               (words[word] >> ((vertex - lowest) % wordBits) & 1u) != 0;
    }

private:
    static constexpr uint32_t wordBits = 64;
    uint32_t lowest = 0;
    std::vector<uint64_t> words;
};

class PatchFinder {
public:
    PatchFinder(LevelMesh& ofLevel, uint32_t ofPatchLevel)
        : level(ofLevel),
          patchMesh(*ofLevel.Hierarchy().Level(ofPatchLevel)),
          depth(static_cast<uint32_t>(ofLevel.Index()) - ofPatchLevel) {
        const LevelHierarchy& hierarchy = level.Hierarchy();
        uint32_t faces = 1;
        for (uint32_t number = ofPatchLevel + 1; number <= ofPatchLevel + depth; ++number) {
            born.emplace_back(hierarchy, number, faces);
            faces *= hierarchy.Level(number - 1)->CornersPerFace();
            firstNew.push_back(hierarchy.Level(number)->CoarserVertexCount());
        }
    }

    std::vector<uint32_t> Find(const std::vector<uint32_t>& vertices) {
        std::vector<uint32_t> patches;
        std::vector<uint32_t> owners;
        std::vector<uint32_t> around;
        for (const uint32_t vertex : vertices) {
            if (NewVertices* one = BornWith(vertex)) {
                if (one->Find(vertex)) owners.push_back(one->Patch());
                continue;
            }
            FacesAt(patchMesh, vertex, around);
            patches.insert(patches.end(), around.begin(), around.end());
        }
        MakeSet(owners);
        if (!owners.empty()) AddAcross(owners, VertexMarks(vertices), patches);
        patches.insert(patches.end(), owners.begin(), owners.end());
        MakeSet(patches);
        return patches;
    }

private:
    /// Returns the entry of the level in which the vertex is new; null if that is at most the patch
    /// level.
    NewVertices* BornWith(uint32_t vertex) {
        for (std::size_t i = born.size(); i-- > 0;)
            if (vertex >= firstNew[i]) return &born[i];
        return nullptr;
    }

    /// A new vertex on the border between two patches belongs to both. Adds the patches adjacent to
    /// the owners that are not owners themselves and contain such a vertex.
    void AddAcross(const std::vector<uint32_t>& owners,
                   const VertexMarks& marks,
                   std::vector<uint32_t>& patches) {
        for (const uint32_t patch : owners) {
            for (uint32_t side = 0; side < patchMesh.CornersPerFace(); ++side) {
                const uint32_t across = patchMesh.QuadEdgeNeighbour(patch, side);
                if (across == openBorder) continue;
                const uint32_t other = across >> 2;
                if (!std::binary_search(owners.begin(), owners.end(), other) &&
                    HasMarkInside(patch, side, patchMesh.CornersPerFace(), depth, marks))
                    patches.push_back(other);
            }
        }
    }

    /// Returns whether a vertex inside the side of a face, not at its ends, is marked.
    /// \param below  number of levels from the level of the face to the finest level.
    bool HasMarkInside(uint32_t face,
                       uint32_t side,
                       uint32_t corners,
                       uint32_t below,
                       const VertexMarks& marks) const {
        if (below == 0) return false;
        // The sides of the two children that form the side; see LevelTopology.cpp.
        const uint32_t firstChild = face * corners + side;
        const uint32_t secondChild = face * corners + (side + 1) % corners;
        const uint32_t firstSide = corners == 4 ? side : 0;
        const uint32_t secondSide = corners == 4 ? side : 3;
        uint32_t finest = firstChild;
        // The end of the first half: the child at that corner keeps the same corner on every finer
        // level.
        const uint32_t middle = (firstSide + 1) & 3u;
        for (uint32_t i = 1; i < below; ++i) finest = finest * 4 + middle;
        if (marks.Has(level.faceVertexIndices.array[finest * 4 + middle])) return true;
        return HasMarkInside(firstChild, firstSide, 4, below - 1, marks) ||
               HasMarkInside(secondChild, secondSide, 4, below - 1, marks);
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
