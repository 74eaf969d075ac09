// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

namespace trovik {

struct PatchVertexEntry;

/// What a stroke knows of patches that its dabs met and did not reach: the patches around those
/// that moved, about a quarter of all that a dab visits.
///
/// Such a patch has a record for each of its vertices since its first visit, and a record's
/// position never changes. Where the box of those positions lies out of the brush's reach, no
/// vertex of the patch moves in this dab, whoever visits it. What the kernel and the normals pass
/// would leave behind is then known without looking at the vertices:
///
/// - each record's mark becomes the dab's;
/// - the normals of the patch's edge are made anew, since the vertices beyond it may have moved;
/// - the normals inside depend on the patch's own vertices only, corners aside, and were made after
///   the last of these moved: every vertex that is not a corner of a patch moves during a visit of
///   each patch that holds it, at the latest in the same dab, before that patch's normals.
///
/// The last holds as long as nobody else changes the mesh, so everything is forgotten when the
/// mesh, its change, the depth of the patches, the mesh's visit stamp or the count of outside edits
/// is not what the dab before left.
class RestingPatches {
public:
    /// Records that lie side by side.
    struct Run {
        uint32_t first;
        uint32_t count;
    };
    struct Patch {
        float lower[3];
        float upper[3];
        uint32_t firstRun;
        uint32_t runCount;

        /// Whether every point of the box fails the distance test of the weights, in single
        /// precision and with its order of additions. Rounding keeps order, so the box's nearest
        /// point has the least of all products.
        bool IsBeyond(const float center[3], float radiusSquared) const;
    };

    void Forget();
    /// At the start of a dab: forgets what may not hold any more.
    void Check(const MeshChange& change, int32_t patchLevel);
    /// Patches may rest from here on, where they are deep enough for it to be worth while.
    void Open() { isOpen = level >= shallowest; }
    bool IsOpen() const { return isOpen; }
    /// The dab ended well. Without this the next Check forgets everything: a dab that was broken
    /// off leaves patches half done.
    void Close(const MeshChange& change);

    const Patch* Find(uint32_t patch) const;
    /// Counts a patch that was passed.
    void Passed() { ++passedPatches; }
    uint64_t PassedPatches() const { return passedPatches; }
    std::span<const Run> RunsOf(const Patch& patch) const {
        return {runs.data() + patch.firstRun, patch.runCount};
    }
    /// Takes down a patch that was visited in full. Leaves out one that holds a vertex whose place
    /// is no number, and one for which memory is refused.
    void Learn(uint32_t patch, std::span<const PatchVertexEntry> entries, const MeshChange& change);

private:
    /// Fewer subdivisions leave a patch hardly any vertex that is not on its edge.
    static constexpr int32_t shallowest = 3;

    /// Null while a dab runs or was broken off.
    const MeshChange* ofChange = nullptr;
    uint32_t outsideEdits = 0;
    uint32_t visitStamp = 0;
    int32_t level = -1;
    bool isOpen = false;
    std::unordered_map<uint32_t, Patch> patches;
    std::vector<Run> runs;
    uint64_t passedPatches = 0;
};

}  // namespace trovik
