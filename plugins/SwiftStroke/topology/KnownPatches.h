// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/HWVector.h"
#include "host/Mesh.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

namespace trovik {

struct PatchVertexEntry;

/// What a stroke knows of patches that its dabs have visited. Such a patch has a record for each of
/// its vertices since its first visit, and a record's place and position never change.
///
/// The vertices in the order of the work list are known from then on, and where their records lie:
/// mostly side by side, since the patch that met them first made them in that order. The way
/// through the tables of indices and the look-up through the vertices are then done with.
///
/// Where the box of the records' positions lies out of the brush's reach, the patch *rests*: no
/// vertex of it moves in this dab, whoever visits it. These are the patches around those that
/// move, about a quarter of all that a dab visits. What the kernel and the normals pass would leave
/// behind is then known without looking at the vertices:
///
/// - each record's mark becomes the dab's;
/// - the normals at the corners and of the vertices next to these on the edge are made anew: a
///   corner belongs to patches that this one's visits know nothing of;
/// - the other normals are what a visit would make them. Their neighbours belong to the patch or to
///   the one across the side, and to no third; so each moves in a visit of one of these two, and at
///   the end of it that patch makes the normals of all its vertices, those of the shared side
///   included. Which of the two makes them is the same: a side has two patches that go around it in
///   opposite ways, and a patch with an open side never rests. A turn of the patch by quarters
///   leaves each product and difference what it was, but for the sign of a zero; packed, no zero
///   has a sign.
///
/// The last holds as long as nobody else changes the mesh. So the cache is used only while the
/// mesh's change counts outside edits (MeshChange::countsOutsideEdits), and everything is forgotten
/// when the mesh, its change, the depth of the patches, the mesh's visit stamp or the count of
/// outside edits is not what the dab before left. The same happens when Smooth starts or stops to
/// average layer values: it also makes records for vertices around a patch, and only a visit in
/// that state has made them.
class KnownPatches {
public:
    /// Records that lie side by side.
    struct Run {
        uint32_t first;
        uint32_t count;
    };
    /// Vertices of the ring around a patch: of each side the first two, the last but one and the
    /// last, in the order of the ring's sides.
    using RingEnds = std::array<uint32_t, 16>;
    struct Patch {
        /// In the order of the work list.
        const uint32_t* vertices = nullptr;
        uint32_t firstRun = 0;
        uint32_t runCount = 0;
        /// Box of the positions in the records, and whether one of them was no number.
        HWVector lower;
        HWVector upper;
        bool hasOddPlace = false;
        /// What ringEnds holds, which few patches ever need.
        enum class Ring { NotSought, Found, Open } ring = Ring::NotSought;
        RingEnds ringEnds = {};

        /// Whether every point of the box fails the distance test of the weights, in single
        /// precision and with its order of additions. Rounding keeps order, so the box's nearest
        /// point has the least of all products.
        bool IsBeyond(const float center[3], float radiusSquared) const;
    };

    void Forget();
    /// At the start of a dab: forgets what may not hold any more.
    /// \param smoothsLayer  see SwiftStroke::SmoothsLayer.
    void Check(const MeshChange& change, int32_t patchLevel, bool smoothsLayer);
    /// Patches may be found and learned from here on, where they are deep enough for it to be worth
    /// while.
    void Open() { isOpen = level >= shallowest; }
    bool IsOpen() const { return isOpen; }
    /// The dab ended well. Without this the next Check forgets everything: a dab that was broken
    /// off leaves patches half done.
    void Close(const MeshChange& change);

    /// \return null for a patch that is not known, and while none may be found.
    Patch* Find(uint32_t patch);
    /// The records of the patch's vertices, in their order. Holds until the next patch is learned.
    std::span<const Run> RunsOf(const Patch& patch) const {
        return {runs.data() + patch.firstRun, patch.runCount};
    }
    /// Counts a patch that was passed because it rests.
    void Passed() { ++passedPatches; }
    uint64_t PassedPatches() const { return passedPatches; }

    /// Begins to take down a patch with so many entries, none of which names the vertex of another;
    /// does nothing where memory is refused.
    void StartLearning(uint32_t count);
    bool IsLearning() const { return isLearning; }
    /// The next entries, with their records. \param places  first-touch positions.
    void Learn(const PatchVertexEntry* entries,
               uint32_t count,
               const float (*places)[4],
               StoredVertexInfo* const* records,
               const StoredVertexInfo* firstRecord);
    /// Keeps what was learned as that patch, if all entries were.
    void Keep(uint32_t patch);
    /// Drops what was learned and not kept.
    void StopLearning();

private:
    /// Room for so many vertices, not yet taken. Errors: std::bad_alloc.
    uint32_t* FindRoom(uint32_t count);
    void LearnRun(const Run& run);

    /// Fewer subdivisions leave a patch hardly any vertex that is not on its edge.
    static constexpr int32_t shallowest = 3;

    /// Null while a dab runs or was broken off.
    const MeshChange* ofChange = nullptr;
    uint32_t outsideEdits = 0;
    uint32_t visitStamp = 0;
    int32_t level = -1;
    bool readsLayer = false;
    bool isOpen = false;
    std::unordered_map<uint32_t, Patch> patches;
    /// Of all patches, one after the other; what is being learned comes last.
    std::vector<Run> runs;
    /// Room for vertices. Never moves, since patches point into it.
    struct Chunk {
        std::unique_ptr<uint32_t[]> vertices;
        std::size_t size;
    };
    static constexpr std::size_t leastChunk = std::size_t{1} << 16;
    /// So many the next stroke may find.
    static constexpr std::size_t mostKeptChunks = 16;
    std::vector<Chunk> chunks;
    /// What is taken: of one chunk so much, and all before it.
    std::size_t chunk = 0;
    std::size_t taken = 0;
    uint64_t passedPatches = 0;

    bool isLearning = false;
    Patch learned;
    uint32_t* learning = nullptr;
    uint32_t wantedVertices = 0;
    uint32_t learnedVertices = 0;
};

}  // namespace trovik
