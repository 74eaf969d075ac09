// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

namespace trovik {

/// Conditions that are constant for a whole patch, so the vertex loop does not test them. Member k
/// is bit k of the index into the kernel table.
struct KernelSwitches {
    bool withStamp = false;          ///< bit 0: the weight is multiplied by a stamp
    bool withoutRadius = false;      ///< bit 1: whole-mesh pass: no distance, falloff or build-up
    bool alongVertexNormal = false;  ///< bit 2: move along each vertex's normal; in averaging
                                     ///< kernels: average positions
    bool withFreeze = false;         ///< bit 3: the freeze amount reduces the weight
    bool throughLayer = false;       ///< bit 4: write through the sculpt layer
    bool averageBit = false;         ///< bit 5: selects the family together with pullBit; see below
    bool tiledStamp = false;         ///< bit 6: wrap stamp coordinates
    bool pullBit = false;            ///< bit 7
    bool notifyPerVertex = false;    ///< bit 8: notify every renderer of each written vertex
    bool inWorldSpace = false;       ///< bit 9: measure distances in world space

    static constexpr unsigned count = 1024;

    static constexpr KernelSwitches FromIndex(unsigned index) {
        const auto bit = [index](unsigned k) { return ((index >> k) & 1u) != 0; };
        return {bit(0), bit(1), bit(2), bit(3), bit(4), bit(5), bit(6), bit(7), bit(8), bit(9)};
    }
    constexpr unsigned Index() const {
        const bool bits[] = {withStamp,
                             withoutRadius,
                             alongVertexNormal,
                             withFreeze,
                             throughLayer,
                             averageBit,
                             tiledStamp,
                             pullBit,
                             notifyPerVertex,
                             inWorldSpace};
        unsigned index = 0;
        for (unsigned k = 0; k < 10; ++k) index |= bits[k] ? 1u << k : 0u;
        return index;
    }
    constexpr bool operator==(const KernelSwitches&) const = default;
};

consteval bool AllSwitchIndicesRoundTrip() {
    for (unsigned i = 0; i < KernelSwitches::count; ++i)
        if (KernelSwitches::FromIndex(i).Index() != i) return false;
    return true;
}
static_assert(AllSwitchIndicesRoundTrip());

/// How a tool converts a weight to a displacement.
enum class Family { Pushing, Averaging, Pulling, Planing };

constexpr Family FamilyOf(bool averageBit, bool pullBit) {
    if (averageBit && pullBit) return Family::Planing;
    if (averageBit) return Family::Averaging;
    return pullBit ? Family::Pulling : Family::Pushing;
}

/// Whether a kernel calls no host code per vertex and measures distances from the centre, so that
/// the loops for several vertices at a time can run it.
constexpr bool RunsInLanes(const KernelSwitches& s) {
    return !s.withStamp && !s.tiledStamp && !s.withoutRadius && !s.throughLayer &&
           !s.notifyPerVertex;
}
/// Whether the vertex order affects only the bounds.
constexpr bool MovesInAnyOrder(const KernelSwitches& s) {
    return RunsInLanes(s) && FamilyOf(s.averageBit, s.pullBit) != Family::Averaging;
}
/// Whether the kernel averages positions and may process several rows at once.
constexpr bool AveragesRows(const KernelSwitches& s) {
    return RunsInLanes(s) && FamilyOf(s.averageBit, s.pullBit) == Family::Averaging &&
           s.alongVertexNormal;
}

/// Compile-time switches of a patch kernel's vertex step.
template <KernelSwitches switches>
struct FixedSwitches {
    static constexpr bool withStamp = switches.withStamp;
    static constexpr bool withoutRadius = switches.withoutRadius;
    static constexpr bool alongVertexNormal = switches.alongVertexNormal;
    static constexpr bool withFreeze = switches.withFreeze;
    static constexpr bool throughLayer = switches.throughLayer;
    static constexpr Family family = FamilyOf(switches.averageBit, switches.pullBit);
    static constexpr bool tiledStamp = switches.tiledStamp;
    static constexpr bool notifyPerVertex = switches.notifyPerVertex;
    static constexpr bool inWorldSpace = switches.inWorldSpace;
    /// Whether the vertex has a grid cell. If so, the vertex step writes to the grid and averages
    /// over it.
    static constexpr bool withGrid = true;
};

/// The switches as run-time values, for meshes without patches.
struct RunTimeSwitches {
    RunTimeSwitches(const KernelSwitches& s, bool grid)
        : withStamp(s.withStamp),
          withoutRadius(s.withoutRadius),
          alongVertexNormal(s.alongVertexNormal),
          withFreeze(s.withFreeze),
          throughLayer(s.throughLayer),
          family(FamilyOf(s.averageBit, s.pullBit)),
          tiledStamp(s.tiledStamp),
          notifyPerVertex(s.notifyPerVertex),
          inWorldSpace(s.inWorldSpace),
          withGrid(grid) {}

    bool withStamp;
    bool withoutRadius;
    bool alongVertexNormal;
    bool withFreeze;
    bool throughLayer;
    Family family;
    bool tiledStamp;
    bool notifyPerVertex;
    bool inWorldSpace;
    bool withGrid;
};

}  // namespace trovik
