// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace trovik {

class RotatedLayers;

/// The changes that were propagated to one level: the old positions of the moved vertices, the old
/// normals that were replaced, the old freeze amounts, and the old layer state.
struct CarriedLevel {
    uint32_t level = 0;
    std::vector<uint32_t> vertices;
    std::vector<Vector> positionsBefore;
    std::vector<uint32_t> normalVertices;
    std::vector<PackedNormal> normalsBefore;
    std::vector<uint32_t> freezeVertices;
    std::vector<uint8_t> freezeBefore;
    /// Null if no layer has data for the vertices that moved.
    std::shared_ptr<RotatedLayers> layers = nullptr;

    bool IsEmpty() const { return vertices.empty() && freezeVertices.empty() && !layers; }
    TROVIK_API uint64_t Bytes() const;
};

/// An older state of a level: the vertices that have moved since, in ascending order, and their old
/// positions.
struct SeenDifferences {
    /// False if there is nothing to store because nothing changed.
    bool kept = false;
    std::vector<uint32_t> vertices;
    std::vector<Vector> positions;

    uint64_t Bytes() const {
        return vertices.capacity() * sizeof(uint32_t) + positions.capacity() * sizeof(Vector);
    }
};

/// Older freeze amounts of a level: the vertices whose amounts have changed since, in ascending
/// order, and their old amounts.
struct FreezeDifferences {
    /// False if there is nothing to store because nothing changed.
    bool kept = false;
    std::vector<uint32_t> vertices;
    std::vector<uint8_t> amounts;

    uint64_t Bytes() const { return vertices.capacity() * sizeof(uint32_t) + amounts.capacity(); }
};

/// The state of a level with which its neighbours were last synchronised (see OlderStates).
struct SeenByNeighbours {
    SeenDifferences fromAbove;
    SeenDifferences fromBelow;
    FreezeDifferences freezeFromAbove;
    FreezeDifferences freezeFromBelow;

    uint64_t Bytes() const {
        return sizeof(SeenByNeighbours) + fromAbove.Bytes() + fromBelow.Bytes() +
               freezeFromAbove.Bytes() + freezeFromBelow.Bytes();
    }
};

/// All effects of a level switch except added or removed levels; sufficient to revert the switch
/// bit-exactly.
struct LevelSwitch {
    uint32_t bound = 0;
    std::vector<SeenByNeighbours> seen;
    std::vector<CarriedLevel> carried;

    uint64_t Bytes() const {
        uint64_t bytes = sizeof(LevelSwitch);
        for (const SeenByNeighbours& one : seen) bytes += one.Bytes();
        for (const CarriedLevel& one : carried) bytes += one.Bytes();
        return bytes;
    }
};

/// The amount of work done to propagate changes since counting began. The counts depend on the size
/// of the changes, not on the size of the level.
struct CarryCounts {
    /// Number of points that were refined. Each point is refined for both states.
    uint64_t refined = 0;
    /// Number of vertices for which the surface rotation was computed.
    uint64_t turned = 0;
    /// Number of coarse vertices that were fitted to a changed finer level.
    uint64_t fitted = 0;
};

}  // namespace trovik
