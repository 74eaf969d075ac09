// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "brush/SwiftStroke.h"

/// \file Batches of up to 64 vertices of a patch's work list, for the look-up, mark, distance and
/// weight stages. In these stages, vertices are independent of each other, so each stage is a plain
/// loop over a batch that processes several vertices at a time. The order-dependent stages (stamps,
/// layers, averaging, bounds, notifications) run afterwards, vertex by vertex in list order.
///
/// Each number is computed by the same operations as in the vertex step, in the same order, so
/// results are bit-identical for any batch length and vector width.
namespace trovik {

struct DabConstants;

struct VertexBatch {
    static constexpr uint32_t capacity = 64;

    /// Position at first touch; the fourth component is the mark that the record had before this
    /// dab.
    alignas(64) float start[capacity][4];
    /// The falloff weight, damped by build-up if the kernel family uses build-up.
    alignas(64) float weight[capacity];
    /// On entry, the build-up of the record. On return, that build-up plus the weight of this dab.
    alignas(64) float buildUp[capacity];
    /// Facing factors; set only if the facing falloff is on.
    alignas(64) float facing[capacity];
    StoredVertexInfo* records[capacity];
};

/// One row of a patch, split into batches.
struct RowBatches {
    static constexpr uint32_t most = 3;
    /// Longer rows are not supported.
    static constexpr uint32_t capacity = most * VertexBatch::capacity;

    VertexBatch batches[most];
    uint64_t movingMask[most];

    bool IsMoving(uint32_t i) const { return ((movingMask[i / 64] >> (i % 64)) & 1u) != 0; }
};
static_assert(VertexBatch::capacity == 64);

/// One kernel's implementation of the second stage of the vertex step.
struct BatchMovers {
    /// Moves a batch in list order. Bit i of `movingMask` is set if vertex i moves; the positions
    /// of the others are only copied to the grid. Null if the vertices may be moved in any order;
    /// the kernel then uses BatchStages::movers. \return whether the dab reached any of them.
    bool (*batch)(DabConstants& patch,
                  const PatchVertexEntry* entries,
                  uint32_t count,
                  uint64_t movingMask,
                  const VertexBatch& batch);
};

/// Extends the dab's bounds to contain the old and new cell values of a row's moving vertices, in
/// list order.
/// \return whether any vertex moved.
bool ExtendBounds(DabConstants& patch,
                  const HWVector* now,
                  const HWVector* before,
                  uint32_t points,
                  const RowBatches& row);

/// Looks up the records of `count` entries, creates the missing ones, and marks them all with
/// `dabStamp`.
/// \return the number of processed entries; less than `count` if memory for a record could not be
/// allocated. Errors: those of MeshChange::Add_uncached, if the very first entry fails.
uint32_t TouchBatch(const PatchVertexEntry* entries,
                    uint32_t count,
                    Vertex* vertices,
                    MeshChange& change,
                    uint32_t dabStamp,
                    bool withLayerSlot,
                    VertexBatch& batch);

/// The state of an iteration over the records of a cached patch, in list order.
struct RecordWalk {
    /// Null if the patch is not cached.
    const PatchCache::Run* run = nullptr;
    /// Number of records of the run that have already been visited.
    uint32_t done = 0;
};

/// Fills the batch like TouchBatch, for the next `count` entries of a cached patch, all of which
/// have records.
/// \param fetched  the patch list entries if the loop should prefetch their vertices; otherwise
/// null.
void TouchCached(RecordWalk& walk,
                 uint32_t count,
                 const PatchVertexEntry* fetched,
                 const Vertex* vertices,
                 StoredVertexInfo* records,
                 uint32_t dabStamp,
                 VertexBatch& batch);

/// Returns a bit mask; bit i is set if vertex i of the batch did not have this dab's mark yet.
uint64_t FreshOf(const VertexBatch& batch, uint32_t count, uint32_t dabStamp);

/// Returns whether any vertex that was already marked is within the radius. In a mesh without
/// quads, a patch also counts as reached if another patch has moved such a vertex.
bool MarkedWithinReach(const VertexBatch& batch,
                       uint32_t count,
                       const DabConstants& dab,
                       bool inWorldSpace);

/// How the weight computation uses build-up: it damps the weight, and the weight is added to it.
enum class BuildUp { None, Damps, DampsAndGrows };

}  // namespace trovik
