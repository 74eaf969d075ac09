// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

/// \file
/// Locations of a patch's sides in the grid and in the index tables of the adjacent patches.
namespace trovik {

/// When ghost cells are read, a result of QuadEdgeNeighbour counts as a neighbour only if it is
/// below this value. The grid cursor also treats the value itself as a neighbour.
inline constexpr uint32_t firstOpen = 0x80000000u;

struct Walk {
    uint32_t start;
    int32_t step;
};

/// Returns the row of vertices one step inside the patch from `side`, as its start and step in the
/// vertex table. The row runs in the direction of the side.
///   side 0: row 1, left to right       side 2: row size - 1, right to left
///   side 1: column size - 1, downward  side 3: column 1, upward
inline Walk NeighbourWalk(uint32_t side, uint32_t size) {
    const uint32_t points = size + 1;
    const auto row = static_cast<int32_t>(points);
    switch (side) {
        case 0:
            return {points, 1};
        case 1:
            return {size - 1, row};
        case 2:
            return {size * points - 1, -1};
        default:
            return {size * points + 1, -row};
    }
}

/// The ghost cells along a side of the patch, and the step from a ghost cell to the patch's edge.
struct RingSide {
    uint32_t start;
    int32_t step;
    int32_t inward;
};

inline RingSide RingSideOf(uint32_t side, uint32_t stride) {
    const auto row = static_cast<int32_t>(stride);
    switch (side) {
        case 0:
            return {1, 1, row};
        case 1:
            return {2 * stride - 1, row, -1};
        case 2:
            return {stride * stride - 2, -1, -row};
        default:
            return {(stride - 2) * stride, -row, 1};
    }
}

inline uint32_t Along(uint32_t start, uint32_t count, int32_t step) {
    return start + static_cast<uint32_t>(static_cast<int32_t>(count) * step);
}

}  // namespace trovik
