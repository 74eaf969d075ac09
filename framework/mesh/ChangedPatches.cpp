// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/ChangedPatches.h"

#include "framework/mesh/LevelHierarchy.h"
#include "framework/mesh/VertexNeighbours.h"

#include <algorithm>

namespace trovik {

namespace {

/// The vertices that are new in one level above the patch level, and the patches that own them: the
/// lowest-numbered ones that hold them.
class NewVertices {
public:
    NewVertices(const LevelHierarchy& hierarchy, uint32_t number, uint32_t facesOfPatch)
        : level(*hierarchy.Level(number)),
          below(*hierarchy.Level(number - 1)),
          corners(below.CornersPerFace()),
          facesPerPatch(facesOfPatch) {}

    /// \return whether the patch is another than that of the call before.
    bool Find(uint32_t vertex) {
        if (vertex >= first && vertex < end) return false;
        uint32_t low = 0;
        uint32_t high = below.faceCount / facesPerPatch - 1;
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

    /// The other patch that holds a vertex of the present patch; openBorder without one.
    uint32_t PatchAcross(uint32_t vertex) const {
        uint32_t face = patch * facesPerPatch;
        uint32_t last = face + facesPerPatch - 1;
        while (face < last) {
            const uint32_t middle = face + (last - face) / 2;
            if (FacePoint(middle) < vertex)
                face = middle + 1;
            else
                last = middle;
        }
        if (FacePoint(face) == vertex) return openBorder;
        const uint32_t* children = level.faceVertexIndices.array + face * corners * 4;
        uint32_t side = 0;
        while (children[side * 4 + (corners == 4 ? (side + 1) & 3u : 1u)] != vertex) ++side;
        const uint32_t across = below.QuadEdgeNeighbour(face, side);
        if (across == openBorder) return openBorder;
        const uint32_t other = (across >> 2) / facesPerPatch;
        return other == patch ? openBorder : other;
    }

    /// Of the present patch: whether its border has to be looked at.
    bool isExposed = false;

private:
    uint32_t FacePoint(uint32_t face) const {
        return level.faceVertexIndices.array[face * corners * 4 + 2];
    }
    uint32_t EndOf(uint32_t ofPatch) const {
        return FacePoint((ofPatch + 1) * facesPerPatch - 1) + 1;
    }

    LevelMesh& level;
    LevelMesh& below;
    uint32_t corners;
    /// Faces of the level below under a patch.
    uint32_t facesPerPatch;
    uint32_t patch = 0;
    uint32_t first = 0;
    uint32_t end = 0;
};

/// Finds the patches of vertices in two passes over them.
class PatchFinder {
public:
    PatchFinder(LevelMesh& ofLevel, uint32_t ofPatchLevel)
        : patchMesh(*ofLevel.Hierarchy().Level(ofPatchLevel)) {
        const LevelHierarchy& hierarchy = ofLevel.Hierarchy();
        const auto top = static_cast<uint32_t>(ofLevel.Index());
        uint32_t faces = 1;
        for (uint32_t number = ofPatchLevel + 1; number <= top; ++number) {
            born.emplace_back(hierarchy, number, faces);
            faces *= hierarchy.Level(number - 1)->CornersPerFace();
            firstNew.push_back(hierarchy.Level(number)->CoarserVertexCount());
        }
    }

    std::vector<uint32_t> Find(const std::vector<uint32_t>& vertices) {
        std::vector<uint32_t> patches;
        std::vector<uint32_t> around;
        std::vector<uint32_t> owners;
        for (const uint32_t vertex : vertices) {
            if (NewVertices* one = BornWith(vertex)) {
                if (one->Find(vertex)) owners.push_back(one->Patch());
                continue;
            }
            FacesAt(patchMesh, vertex, around);
            patches.insert(patches.end(), around.begin(), around.end());
        }
        MakeSet(owners);
        const std::vector<bool> exposed = Exposed(owners);
        for (NewVertices& one : born) one.isExposed = IsExposed(owners, exposed, one.Patch());
        for (const uint32_t vertex : vertices) {
            NewVertices* one = BornWith(vertex);
            if (one == nullptr) continue;
            if (one->Find(vertex)) one->isExposed = IsExposed(owners, exposed, one->Patch());
            if (!one->isExposed) continue;
            const uint32_t across = one->PatchAcross(vertex);
            if (across != openBorder && (patches.empty() || patches.back() != across))
                patches.push_back(across);
        }
        patches.insert(patches.end(), owners.begin(), owners.end());
        MakeSet(patches);
        return patches;
    }

private:
    /// Those of the level in which the vertex is new; null where that is at most the patch level.
    NewVertices* BornWith(uint32_t vertex) {
        for (std::size_t i = born.size(); i-- > 0;)
            if (vertex >= firstNew[i]) return &born[i];
        return nullptr;
    }

    /// Which patches have a patch around them that is not in the list.
    std::vector<bool> Exposed(const std::vector<uint32_t>& owners) {
        std::vector<bool> exposed(owners.size());
        const uint32_t corners = patchMesh.CornersPerFace();
        std::vector<uint32_t> around;
        for (std::size_t i = 0; i < owners.size(); ++i) {
            const uint32_t* v = patchMesh.faceVertexIndices.array + owners[i] * corners;
            for (uint32_t k = 0; k < corners && !exposed[i]; ++k) {
                FacesAt(patchMesh, v[k], around);
                exposed[i] = !std::includes(
                    owners.begin(), owners.end(), around.begin(), around.end());
            }
        }
        return exposed;
    }

    static bool IsExposed(const std::vector<uint32_t>& owners,
                          const std::vector<bool>& exposed,
                          uint32_t patch) {
        const auto found = std::lower_bound(owners.begin(), owners.end(), patch);
        return found != owners.end() && *found == patch &&
               exposed[static_cast<std::size_t>(found - owners.begin())];
    }

    LevelMesh& patchMesh;
    /// By the level, from the one above the patch level on.
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
