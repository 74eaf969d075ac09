// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace trovik {

class TurnedLayers;

/// What a carrying did to one level: where the vertices that it moved were, the normals that it
/// refreshed, the freeze amounts that it changed, and what layers held.
struct CarriedLevel {
    uint32_t level = 0;
    std::vector<uint32_t> vertices;
    std::vector<Vector> positionsBefore;
    std::vector<uint32_t> normalVertices;
    std::vector<PackedNormal> normalsBefore;
    std::vector<uint32_t> freezeVertices;
    std::vector<uint8_t> freezeBefore;
    /// Null where no layer holds anything of what was moved.
    std::shared_ptr<TurnedLayers> layers = nullptr;

    bool IsEmpty() const { return vertices.empty() && freezeVertices.empty() && !layers; }
    TROVIK_API uint64_t Bytes() const;
};

/// An older state of a level: the vertices that lie elsewhere now, ascending, and their positions
/// then.
struct SeenDifferences {
    /// False: nothing is kept, since nothing changed.
    bool kept = false;
    std::vector<uint32_t> vertices;
    std::vector<Vector> positions;

    uint64_t Bytes() const {
        return vertices.capacity() * sizeof(uint32_t) + positions.capacity() * sizeof(Vector);
    }
};

/// Older freeze amounts of a level: the vertices that have others now, ascending, and their amounts
/// then.
struct FreezeDifferences {
    /// False: nothing is kept, since nothing changed.
    bool kept = false;
    std::vector<uint32_t> vertices;
    std::vector<uint8_t> amounts;

    uint64_t Bytes() const { return vertices.capacity() * sizeof(uint32_t) + amounts.capacity(); }
};

/// A level as its neighbours last saw it (OlderStates).
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

/// All that a change of levels did besides adding or removing some: enough to go back to the bit.
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

/// What carrying cost since the count began: it follows what was changed, not the level's size.
struct CarryCounts {
    /// Points that were refined, each in two states.
    uint64_t refined = 0;
    /// Vertices for which the turn of the surface was found.
    uint64_t turned = 0;
    /// Coarse vertices that were fitted to a changed finer level.
    uint64_t fitted = 0;
};

}  // namespace trovik
