// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/batch/ApplyStrength.h"
#include "kernels/batch/BatchStages.h"
#include "kernels/formulas/DisplacementFormula.h"
#include "kernels/formulas/NormalFormula.h"

/// \file The second stage of the vertex step, as many vertices at a time as a register has vectors,
/// for kernels in which the vertex order affects only the bounds.
namespace trovik {

/// The inputs that are equal for all vertices of a batch.
template <class Lanes>
struct MoveTerms {
    using V = typename Lanes::Vectors;

    explicit MoveTerms(const DabConstants& dab)
        : vertices(dab.vertices),
          direction(Lanes::Repeated(dab.direction)),
          center(Lanes::Repeated(dab.center)),
          inverseScale(Lanes::Repeated(dab.space.inverseScale)),
          plane(dab.brush) {}

    Vertex* vertices;
    V direction;
    V center;
    V inverseScale;
    PlaneTerms<V> plane;
};

struct Bounds {
    HWVector least;
    HWVector most;
};

/// Extends the bounds to contain the new and old positions, in list order.
template <class Lanes, uint32_t j = 0>
TROVIK_FORCE_INLINE void Extend(Bounds& bounds,
                                const typename Lanes::Vectors& moved,
                                const typename Lanes::Vectors& position) {
    const HWVector now = Lanes::template Part<j>(moved);
    const HWVector before = Lanes::template Part<j>(position);
    bounds.least = HWVector::Minimum(HWVector::Minimum(bounds.least, now), before);
    bounds.most = HWVector::Maximum(HWVector::Maximum(bounds.most, now), before);
    if constexpr (j + 1 < Lanes::vectors) Extend<Lanes, j + 1>(bounds, moved, position);
}

template <Way way, class V>
TROVIK_FORCE_INLINE V DisplacementFrom(const V& position,
                                       const V& direction,
                                       const V& center,
                                       const PlaneTerms<V>& plane) {
    if constexpr (IsPushing(way))
        return direction;
    else if constexpr (IsPlaning(way))
        // The lanes of a dot product can hold different NaNs. As in StepVertex, the lowest counts.
        return direction * PlaneMove(plane, FirstInAllLanes(direction | position));
    else
        return TowardsCenter(center, position);
}

/// Moves the vertices of a batch.
template <class Lanes, Way way, bool inWorldSpace>
class VertexMover {
public:
    using V = typename Lanes::Vectors;

    VertexMover(const DabConstants& dab,
                const PatchVertexEntry* batchEntries,
                const VertexBatch& vertexBatch)
        : terms(dab),
          entries(batchEntries),
          batch(vertexBatch),
          bounds{dab.boundsMin, dab.boundsMax} {}

    /// Moves vertices i, i + step, ..., as many as a register has vectors. With step 0, a single
    /// vertex is moved.
    /// \return the new positions.
    TROVIK_FORCE_INLINE V Move(uint32_t i, uint32_t step, const V& weights) {
        const auto vertexAt = [&](uint32_t j) -> Vertex& { return VertexOf(i + j * step); };
        const auto normalAt = [&](uint32_t j) -> const PackedNormal& {
            return batch.records[i + j * step]->originalNormal;
        };
        const V position = Lanes::PositionsOf(vertexAt);
        V direction = terms.direction;
        if constexpr (IsByNormals(way)) direction = UnpackedNormals<Lanes>(normalAt);
        const V displacement =
            DisplacementFrom<way>(position, direction, terms.center, terms.plane);
        const V moved =
            position + ToMeshSpace(displacement * weights, terms.inverseScale, inWorldSpace);
        Lanes::StorePositions(vertexAt, moved);
        Extend<Lanes>(bounds, moved, position);
        if constexpr (IsPushing(way)) {
            batch.records[i]->buildUp = batch.buildUp[i];
            for (uint32_t j = 1; j < Lanes::vectors; ++j)
                batch.records[i + j * step]->buildUp = batch.buildUp[i + j * step];
        }
        return moved;
    }

    TROVIK_FORCE_INLINE Vertex& VertexOf(uint32_t i) const {
        return terms.vertices[entries[i].vertex];
    }
    const Bounds& Extended() const { return bounds; }

private:
    MoveTerms<Lanes> terms;
    const PatchVertexEntry* entries;
    const VertexBatch& batch;
    Bounds bounds;
};

/// The implementation of BatchStages::movers for a vector width.
template <class Lanes, Way way, bool inWorldSpace>
bool MoveInAnyOrder(DabConstants& dab,
                    const PatchVertexEntry* entries,
                    uint32_t count,
                    uint64_t movingMask,
                    const VertexBatch& batch,
                    bool withFreeze) {
    using F = typename Lanes::Numbers;
    using V = typename Lanes::Vectors;
    // Lanes::SpreadConsecutive reads beyond the last weight.
    alignas(64) float weight[VertexBatch::capacity + 8];
    ApplyStrengthToBatch<F>(dab, entries, count, withFreeze, batch.weight, weight);
    if constexpr (IsPlaning(way)) {
        for (uint32_t i = 0; i < count; i += F::count)
            (F::Load(weight + i) * F::Splat(planingWeightScale)).Store(weight + i);
    }

    HWVector* const grid = dab.positionGrid;
    VertexMover<Lanes, way, inWorldSpace> mover(dab, entries, batch);
    // Two registers of vertices whose cells are consecutive are moved together.
    constexpr uint32_t half = Lanes::vectors;
    constexpr uint64_t all = (uint64_t{1} << 2 * half) - 1;
    for (uint32_t i = 0; i < count; i += 2 * half) {
        if (((movingMask >> i) & all) == all &&
            entries[i + 2 * half - 1].cell == entries[i].cell + 2 * half - 1) [[likely]] {
            HWVector* const cells = grid + entries[i].cell;
            Lanes::StoreCells(cells, mover.Move(i, 1, Lanes::SpreadConsecutive(weight + i)));
            Lanes::StoreCells(cells + half,
                              mover.Move(i + half, 1, Lanes::SpreadConsecutive(weight + i + half)));
            continue;
        }
        for (uint32_t k = i; k < i + 2 * half && k < count; ++k) {
            HWVector& cell = grid[entries[k].cell];
            if (((movingMask >> k) & 1u) != 0)
                cell = Lanes::template Part<0>(mover.Move(k, 0, V::Splat(weight[k])));
            else
                cell = PositionOf(mover.VertexOf(k));
        }
    }
    dab.boundsMin = mover.Extended().least;
    dab.boundsMax = mover.Extended().most;
    return movingMask != 0;
}

}  // namespace trovik
