// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/LevelHierarchy.h"

#include <cstdint>

namespace trovik {

/// The vertices that are new in a level, and the patch that owns each: the lowest-numbered patch
/// that contains it. A patch is a run of faces of the level below: either a single face of that
/// level, or all descendants of one face of a coarser level.
class NewVertices {
public:
    /// \param newLevel  at least level 1.
    /// \param facesOfPatch  number of faces per patch on the level below.
    NewVertices(const LevelMesh& newLevel, uint32_t facesOfPatch) : level(newLevel) {
        const LevelMesh& below = *level.Hierarchy().Level(static_cast<uint32_t>(level.Index()) - 1);
        slotsPerPatch = facesOfPatch * below.CornersPerFace() * 4;
        lastFaceSlot = slotsPerPatch - below.CornersPerFace() * 4;
        patches = below.faceCount / facesOfPatch;
    }

    /// Finds the patch that owns a vertex. Cost: O(1) if it is the same patch as in the previous
    /// call, otherwise logarithmic in the distance to it.
    /// \return whether the patch differs from that of the previous call.
    bool Find(uint32_t vertex) {
        if (vertex >= first && vertex < end) return false;
        // Brackets the vertex by exponential search. See Bentley, Yao: "An Almost Optimal Algorithm
        // for Unbounded Searching" (1976).
        uint32_t low = 0;
        uint32_t high = patches - 1;
        if (vertex >= end) {
            low = end == 0 ? 0 : patch + 1;
            for (uint32_t step = 1; step < high - low; step *= 2) {
                if (EndOf(low + step) <= vertex)
                    low += step + 1;
                else
                    high = low + step;
            }
        } else {
            high = patch;
            for (uint32_t step = 1; step < high - low; step *= 2) {
                if (EndOf(high - step) <= vertex)
                    low = high - step + 1;
                else
                    high -= step;
            }
        }
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
    /// New vertices are numbered in the order of the faces of the level below; the face point of
    /// each face comes last.
    uint32_t EndOf(uint32_t ofPatch) const {
        constexpr uint32_t facePoint = 2;
        const uint32_t* slots =
            level.faceVertexIndices.array + std::size_t{ofPatch} * slotsPerPatch;
        return slots[lastFaceSlot + facePoint] + 1;
    }

    const LevelMesh& level;
    uint32_t slotsPerPatch;
    /// The first corner of the children of the patch's last face.
    uint32_t lastFaceSlot;
    uint32_t patches;
    uint32_t patch = 0;
    uint32_t first = 0;
    uint32_t end = 0;
};

}  // namespace trovik
