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

/// The patch cache: data about the patches that dabs of the current stroke have visited. After the
/// first visit, each vertex of such a patch has a record, whose index and recorded position never
/// change.
///
/// The cache stores these vertices in work-list order, along with the indices of their records.
/// Most records are consecutive, because the patch that first touched the vertices created them in
/// that order. Later visits therefore need neither the index tables nor the record look-up through
/// the vertices.
///
/// If the bounding box of the recorded positions is out of reach of the brush, the patch is
/// *culled*: none of its vertices moves in this dab, no matter which patch visits them. Culled
/// patches surround the patches that move and make up about a quarter of all patches that a dab
/// visits. The effects of the kernel and of the normal computation are then applied without reading
/// the vertices:
///
/// - Each record's mark is set to the dab's mark.
/// - The normals of the corners and of the vertices next to them on the edge are recomputed,
///   because a corner also belongs to patches other than this one and its direct neighbours.
/// - All other normals already have the value that a visit would compute. The neighbours of such a
///   vertex belong only to the patch itself or, if the vertex is on a side, to the patch across
///   that side. Each neighbour therefore moves only during a visit of one of these two patches, and
///   at the end of that visit, the normals of all vertices of the visited patch are recomputed,
///   including those on the shared side. Both patches compute the same normals, because they have
///   opposite directions along the shared side, and because a patch with an open side is never
///   culled. Rotating a patch by quarter turns does not change any product or difference except the
///   sign of a zero, and a packed zero has no sign.
///
/// The last point holds only if no other code changes the mesh. The cache is therefore used only
/// while the change of the mesh counts outside edits (MeshChange::countsOutsideEdits). It is
/// cleared when the mesh, its change, the patch depth, the mesh's visit stamp or the count of
/// outside edits differs from the state after the previous dab. It is also cleared when Smooth
/// starts or stops averaging layer values, because visits during layer averaging also create
/// records for the vertices around a patch.
class PatchCache {
public:
    /// Consecutive records.
    struct Run {
        uint32_t first;
        uint32_t count;
    };
    /// Ghost vertices around a patch: for each side of the ghost layer in turn, its first two and
    /// its last two vertices.
    using RingEnds = std::array<uint32_t, 16>;
    struct Patch {
        /// The vertices in the order of the work list.
        const uint32_t* vertices = nullptr;
        uint32_t firstRun = 0;
        uint32_t runCount = 0;
        /// Bounding box of the recorded positions, and whether one of them contains a NaN.
        HWVector lower;
        HWVector upper;
        bool hasNan = false;
        /// Result of the search for `ringEnds`, which only a few patches need.
        enum class Ring { NotSearched, Found, Open } ring = Ring::NotSearched;
        RingEnds ringEnds = {};

        /// Returns whether every point of the box fails the distance test of the weight
        /// computation; uses single precision and the same order of additions. Rounding is
        /// monotonic, so no point of the box has a smaller rounded squared distance than the
        /// nearest one.
        bool IsBeyond(const float center[3], float radiusSquared) const;
    };

    void Forget();
    /// Clears data that may be out of date. Must be called at the start of a dab.
    /// \param smoothsLayer  see SwiftStroke::SmoothsLayer.
    void Check(const MeshChange& change, int32_t patchLevel, bool smoothsLayer);
    /// Enables looking up and adding patches if they are deep enough for the cache to be useful.
    void Open() { isOpen = level >= shallowest; }
    bool IsOpen() const { return isOpen; }
    /// Ends the look-ups of a traversal that does not change the surface.
    void StopReading() { isOpen = false; }
    /// Must be called when a dab has ended without an exception. Without this call, the next Check
    /// clears the cache, because an interrupted dab leaves patches partly processed.
    void Close(const MeshChange& change);

    /// \return null if the patch is not in the cache or if the cache is not open.
    Patch* Find(uint32_t patch);
    /// Returns the records of the patch's vertices, in order. The result is valid until the next
    /// patch is added.
    std::span<const Run> RunsOf(const Patch& patch) const {
        return {runs.data() + patch.firstRun, patch.runCount};
    }
    /// Counts a patch that was skipped because it is culled.
    void CountCulled() { ++culledPatches; }
    uint64_t CulledPatches() const { return culledPatches; }

    /// Starts adding a patch with `count` entries, each with a different vertex. Has no effect if
    /// memory cannot be allocated.
    void StartAdding(uint32_t count);
    bool IsAdding() const { return isAdding; }
    /// Adds the next entries with their records.
    /// \param positions  positions at first touch.
    void AddEntries(const PatchVertexEntry* entries,
                    uint32_t count,
                    const float (*positions)[4],
                    StoredVertexInfo* const* records,
                    const StoredVertexInfo* firstRecord);
    /// Stores the patch if all its entries were added.
    void Keep(uint32_t patch);
    /// Discards entries that were not stored.
    void StopAdding();

private:
    /// Returns a pointer to unused memory for this number of vertices. Errors: std::bad_alloc.
    uint32_t* FindRoom(uint32_t count);
    void AddRun(const Run& run);

    /// The cache is not useful for patches with fewer subdivisions, because almost all of their
    /// vertices are on the edge.
    static constexpr int32_t shallowest = 3;

    /// Null while a dab is running and after a dab was interrupted.
    const MeshChange* ofChange = nullptr;
    uint32_t outsideEdits = 0;
    uint32_t visitStamp = 0;
    int32_t level = -1;
    bool readsLayer = false;
    bool isOpen = false;
    std::unordered_map<uint32_t, Patch> patches;
    /// The runs of all patches, one after the other; the runs of the patch that is being added are
    /// last.
    std::vector<Run> runs;
    /// Memory for vertices. It is never reallocated, because patches point into it.
    struct Chunk {
        std::unique_ptr<uint32_t[]> vertices;
        std::size_t size;
    };
    static constexpr std::size_t minChunk = std::size_t{1} << 16;
    /// Number of chunks that are kept for the next stroke.
    static constexpr std::size_t maxKeptChunks = 16;
    std::vector<Chunk> chunks;
    /// The index of the current chunk, and the number of its entries in use; all earlier chunks are
    /// full.
    std::size_t chunk = 0;
    std::size_t taken = 0;
    uint64_t culledPatches = 0;

    bool isAdding = false;
    Patch pendingPatch;
    uint32_t* pendingVertices = nullptr;
    uint32_t wantedVertices = 0;
    uint32_t pendingCount = 0;
};

}  // namespace trovik
