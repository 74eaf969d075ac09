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

/// The patch cache: data of patches that dabs of the current stroke have visited. Since its first
/// visit, each vertex of such a patch has a record, and the location and the position in a record
/// never change.
///
/// The cache stores the vertices in the order of the work list, and the locations of their records.
/// Most records are consecutive, because the patch that first touched the vertices created them in
/// that order. Later visits then need neither the index tables nor the look-up through the
/// vertices.
///
/// If the bounding box of the recorded positions is out of reach of the brush, the patch is
/// *culled*: none of its vertices moves in this dab, whichever patch visits them. These are the
/// patches around those that move, about a quarter of all patches that a dab visits. The effects of
/// the kernel and of the normals pass are then applied without reading the vertices:
///
/// - The mark of each record is set to that of the dab.
/// - The normals at the corners, and of the vertices next to them on the edge, are recomputed: a
///   corner belongs to patches that are not covered by the visits of this one.
/// - All other normals already have the value that a visit would compute. Their neighbours belong
///   to the patch or to the patch across the side, and to no third patch. Each neighbour therefore
///   moves during a visit of one of these two, and at the end of that visit the patch recomputes
///   the normals of all its vertices, including those of the shared side. Both patches compute the
///   same normals: the two patches at a side have opposite directions along it, and a patch with an
///   open side is never culled. Rotating a patch by quarter turns changes no product or difference
///   except the sign of a zero, and a packed zero has no sign.
///
/// The last point requires that no other code changes the mesh. The cache is therefore used only
/// while the change of the mesh counts outside edits (MeshChange::countsOutsideEdits). It is
/// cleared when the mesh, its change, the depth of the patches, the visit stamp of the mesh or the
/// count of outside edits differs from the state after the previous dab. It is also cleared when
/// Smooth starts or stops averaging layer values: in that state a visit also creates records for
/// vertices around a patch.
class PatchCache {
public:
    /// Consecutive records.
    struct Run {
        uint32_t first;
        uint32_t count;
    };
    /// Ghost vertices around a patch: for each side the first two, the last but one and the last,
    /// in the order of the sides of the ghost layer.
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
        /// State of ringEnds, which only few patches need.
        enum class Ring { NotSearched, Found, Open } ring = Ring::NotSearched;
        RingEnds ringEnds = {};

        /// Returns whether every point of the box fails the distance test of the weights, in single
        /// precision and with the same order of additions. Rounding is monotonic, so the nearest
        /// point of the box has the smallest products.
        bool IsBeyond(const float center[3], float radiusSquared) const;
    };

    void Forget();
    /// Called at the start of a dab: clears data that may be out of date.
    /// \param smoothsLayer  see SwiftStroke::SmoothsLayer.
    void Check(const MeshChange& change, int32_t patchLevel, bool smoothsLayer);
    /// From here on patches may be looked up and added, if they are deep enough for the cache to be
    /// useful.
    void Open() { isOpen = level >= shallowest; }
    bool IsOpen() const { return isOpen; }
    /// The dab ended without an exception. Otherwise the next Check clears the cache, because an
    /// interrupted dab leaves patches partly processed.
    void Close(const MeshChange& change);

    /// \return null if the patch is not in the cache or if the cache is not open.
    Patch* Find(uint32_t patch);
    /// The records of the vertices of the patch, in order. Valid until the next patch is added.
    std::span<const Run> RunsOf(const Patch& patch) const {
        return {runs.data() + patch.firstRun, patch.runCount};
    }
    /// Counts a patch that was skipped because it is culled.
    void CountCulled() { ++culledPatches; }
    uint64_t CulledPatches() const { return culledPatches; }

    /// Starts to add a patch with this number of entries, each with a different vertex. Has no
    /// effect if memory cannot be allocated.
    void StartAdding(uint32_t count);
    bool IsAdding() const { return isAdding; }
    /// Adds the next entries with their records.
    /// \param places  positions at first touch.
    void AddEntries(const PatchVertexEntry* entries,
                    uint32_t count,
                    const float (*positions)[4],
                    StoredVertexInfo* const* records,
                    const StoredVertexInfo* firstRecord);
    /// Stores the added entries as those of the patch, if they are complete.
    void Keep(uint32_t patch);
    /// Discards entries that were not stored.
    void StopAdding();

private:
    /// Returns unused memory for this number of vertices. Errors: std::bad_alloc.
    uint32_t* FindRoom(uint32_t count);
    void AddRun(const Run& run);

    /// With fewer subdivisions, almost all vertices of a patch are on its edge.
    static constexpr int32_t shallowest = 3;

    /// Null while a dab is running, and after one was interrupted.
    const MeshChange* ofChange = nullptr;
    uint32_t outsideEdits = 0;
    uint32_t visitStamp = 0;
    int32_t level = -1;
    bool readsLayer = false;
    bool isOpen = false;
    std::unordered_map<uint32_t, Patch> patches;
    /// The runs of all patches, one after the other; those of the patch that is being added are
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
    /// The current chunk and the number of its used entries; all earlier chunks are used.
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
