// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "brush/SwiftStroke.h"

/// \file
/// Up to 64 vertices of a patch's work list on their way through look-up, mark, distance and
/// weight. These stages do not depend on each other from vertex to vertex, so they run over a batch
/// as plain loops that a vector unit takes several vertices of at a time; what has an order
/// (stamps, layers, averaging, bounds, notices) follows vertex by vertex in the order of the list.
///
/// Every number is made by the operations of the vertex step in the order of the vertex step, so
/// that a batch of any length and any vector width gives the same bits.
namespace trovik {

struct DabConstants;

struct VertexBatch {
    static constexpr uint32_t capacity = 64;

    /// First-touch position, and in the fourth place the mark that the record bore before this dab.
    alignas(32) float start[capacity][4];
    /// The falloff's weight; with build-up where the family has one.
    alignas(32) float weight[capacity];
    /// In: the record's build-up. Out: the same with this dab's weight added.
    alignas(32) float buildUp[capacity];
    /// Facing factors; set only while the facing angle counts.
    alignas(32) float facing[capacity];
    StoredVertexInfo* records[capacity];
};

/// What the weights of a patch are made from.
struct WeighTerms {
    WeighTerms() = default;
    explicit WeighTerms(const DabConstants& dab);

    float center[3] = {};
    float radiusSquared = 0.0f;
    const float* falloffTable = nullptr;
    uint32_t falloffLast = 0;
    float falloffScale = 0.0f;
    float buildUpRateCubed = 0.0f;
    float dabPressure = 0.0f;
    uint32_t dabStamp = 0;
    bool facingActive = false;
    bool scaleAsWax = false;
    float waxScale = 1.0f;
    const BrushSpace* space = nullptr;
};

/// One row of a patch, in as many batches as it takes.
struct RowBatches {
    static constexpr uint32_t most = 3;
    /// Longer rows do not fit.
    static constexpr uint32_t capacity = most * VertexBatch::capacity;

    VertexBatch batches[most];
    uint64_t turns[most];

    bool IsTurnOf(uint32_t i) const { return ((turns[i / 64] >> (i % 64)) & 1u) != 0; }
    float WeightOf(uint32_t i) const { return batches[i / 64].weight[i % 64]; }
};
static_assert(VertexBatch::capacity == 64);

/// The second half of the vertices' turns, as one specialised kernel has it.
struct BatchMovers {
    /// A batch in the order of the list. Bit i of `turns`: vertex i moves; the others only enter
    /// the grid. \return whether the dab reached one.
    bool (*batch)(DabConstants& patch,
                  const PatchVertexEntry* entries,
                  uint32_t count,
                  uint64_t turns,
                  const VertexBatch& batch);
    /// Two rows of `points` entries at once, with the bits of one after the other, for a patch that
    /// lists each vertex once; null where the kernel has an order to keep.
    bool (*rowPair)(DabConstants& patch,
                    const PatchVertexEntry* entries,
                    uint32_t points,
                    const RowBatches& upper,
                    const RowBatches& lower);
};

/// Widens the bounds of the dab by the turns of a row, in the order of the list: from what its
/// cells hold now and held before. \return whether there was one.
bool WidenBounds(DabConstants& patch,
                 const HWVector* now,
                 const HWVector* before,
                 uint32_t points,
                 const RowBatches& row);

/// A batch in the order of the list, two vertices at a time; what BatchMovers::batch does.
using WideMover = bool (*)(DabConstants& patch,
                           const PatchVertexEntry* entries,
                           uint32_t count,
                           uint64_t turns,
                           const VertexBatch& batch,
                           bool withFreeze,
                           bool inWorldSpace);
/// \return null where the kernel has an order to keep. Needs VectorWidth::Eight.
WideMover WideMoverFor(const KernelSwitches& switches);

/// Four rows of `points` entries at once; what BatchMovers::rowPair does for two. Takes places from
/// the grid, which holds them when averages are made.
using WideRowMover = bool (*)(DabConstants& patch,
                              const PatchVertexEntry* entries,
                              uint32_t points,
                              const RowBatches* rows,
                              bool withFreeze,
                              bool inWorldSpace);
/// For every kernel that has a BatchMovers::rowPair. Needs VectorWidth::Eight.
WideRowMover WideRowMoverFor();

/// Looks up the records of `count` entries, makes those that are missing, and marks them all with
/// `dabStamp`. \return how many were taken: fewer than `count` where memory for a record was
/// refused. Errors: those of MeshChange::Add_uncached, when not even the first could be taken.
uint32_t TouchBatch(const PatchVertexEntry* entries,
                    uint32_t count,
                    Vertex* vertices,
                    MeshChange& change,
                    uint32_t dabStamp,
                    bool withLayerSlot,
                    VertexBatch& batch);

/// The way through the records of a known patch, in the order of its list.
struct RecordWalk {
    /// Null where the patch is not known.
    const KnownPatches::Run* run = nullptr;
    /// How many records of the run lie behind.
    uint32_t done = 0;
};

/// What TouchBatch leaves behind, for the next `count` entries of a known patch, all of which have
/// records. \param fetched  the entries if their vertices are to be asked for meanwhile, else null.
void TouchKnown(RecordWalk& walk,
                uint32_t count,
                const PatchVertexEntry* fetched,
                const Vertex* vertices,
                StoredVertexInfo* records,
                uint32_t dabStamp,
                VertexBatch& batch);

/// Bit i: vertex i of the batch bore no mark of this dab yet.
uint64_t FreshOf(const VertexBatch& batch, uint32_t count, uint32_t dabStamp);

/// Whether a vertex that was already marked lies within the radius: what lets a patch of a mesh
/// without quads count as reached by a vertex that another patch has moved.
bool MarkedWithinReach(const VertexBatch& batch,
                       uint32_t count,
                       const WeighTerms& terms,
                       bool inWorldSpace);

/// Fills `facing` for the vertices that the dab sees first. Asks the camera for each.
void FaceBatch(const SwiftStroke& brush,
               uint32_t count,
               const WeighTerms& terms,
               VertexBatch& batch);

/// Which weights: build-up belongs to pushing; with a stamp it is counted later.
enum class BuildUp { None, Damps, DampsAndGrows };

/// Weights of a batch. \return bit i: vertex i is new in this dab and within the radius; the
/// weights of the others mean nothing.
template <BuildUp buildUp, bool inWorldSpace>
uint64_t WeighBatch(const WeighTerms& terms, uint32_t count, VertexBatch& batch);
/// The same bits, eight at a time. Needs VectorWidth::Eight.
template <BuildUp buildUp, bool inWorldSpace>
uint64_t WeighBatchWide(const WeighTerms& terms, uint32_t count, VertexBatch& batch);

}  // namespace trovik
