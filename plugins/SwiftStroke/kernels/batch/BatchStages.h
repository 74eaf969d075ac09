// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/KernelSwitches.h"
#include "kernels/PatchNormals.h"
#include "kernels/batch/VectorWidth.h"
#include "kernels/batch/VertexBatch.h"

/// \file The loops that exist once per vector width. Their source is a set of templates over lanes,
/// which StagesN.cpp instantiates; see lanes/Xyz.h.
namespace trovik {

/// The kind of displacement of kernels that may move vertices in any order. Pulling has no
/// direction.
enum class Way { PushAlong, PushByNormals, PlaneAlong, PlaneByNormals, Pull };
inline constexpr unsigned wayCount = 5;

constexpr bool IsPushing(Way way) { return way == Way::PushAlong || way == Way::PushByNormals; }
constexpr bool IsPlaning(Way way) { return way == Way::PlaneAlong || way == Way::PlaneByNormals; }
constexpr bool IsByNormals(Way way) {
    return way == Way::PushByNormals || way == Way::PlaneByNormals;
}
/// \param family  not Averaging.
constexpr Way WayOf(Family family, bool alongVertexNormal) {
    if (family == Family::Pulling) return Way::Pull;
    if (family == Family::Pushing) return alongVertexNormal ? Way::PushByNormals : Way::PushAlong;
    return alongVertexNormal ? Way::PlaneByNormals : Way::PlaneAlong;
}

/// Computes the weights of a batch.
/// \return a bit mask; bit i is set if vertex i is new in this dab and within the radius. The
/// weights of the others are undefined.
using WeightFunction = uint64_t (*)(const DabConstants& dab, uint32_t count, VertexBatch& batch);

/// Moves a batch like BatchMovers::batch.
using OrderFreeMover = bool (*)(DabConstants& dab,
                                const PatchVertexEntry* entries,
                                uint32_t count,
                                uint64_t movingMask,
                                const VertexBatch& batch,
                                bool withFreeze);

/// Moves `rowsTogether` rows of `points` entries at once. Reads the positions from the grid, which
/// averaging kernels have filled. The patch must list each vertex once. The result is bit-identical
/// to processing one row after the other.
/// \return whether any vertex moved.
using RowMover = bool (*)(DabConstants& dab,
                          const PatchVertexEntry* entries,
                          uint32_t points,
                          const RowBatches* rows,
                          bool withFreeze);

/// The loops of one vector width. Arrays with two elements are indexed by "in world space".
struct BatchStages {
    /// Indexed by BuildUp.
    WeightFunction weights[3][2];
    /// Indexed by Way.
    OrderFreeMover movers[wayCount][2];
    RowMover rowMovers[2];
    /// Rows per call of a row mover, at most maxRowsTogether.
    uint32_t rowsTogether;
    NormalPacker packNormals;
};
inline constexpr uint32_t maxRowsTogether = 4;

extern const BatchStages batchStages4;
extern const BatchStages batchStages8;

/// Returns the loops of a width that the CPU supports.
const BatchStages& StagesOf(VectorWidth width);

}  // namespace trovik
