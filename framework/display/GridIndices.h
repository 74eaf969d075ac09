// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <span>
#include <vector>

namespace trovik {

/// An index buffer for a square grid of vertices in row order. It contains the grid's triangles at
/// full detail, and at strides of 2, 4, 8 and so on for level of detail. All grid patches of all
/// meshes share this buffer, because indices are relative to the patch's first vertex.
///
/// For stride s, the cell with corners (row, column), (row, column + s), (row + s, column + s),
/// (row + s, column) consists of the triangles (0, 1, 2) and (0, 2, 3) of those corners. At full
/// detail, picking uses the same triangles. Each triangle begins with the corner that stores the
/// flags of its face (DisplayVertex::flags); a coarser cell uses the flags of its first face.
///
/// A stride keeps every s-th vertex of each border, so neighbouring patches with equal stride meet
/// without cracks. Neighbouring patches with different strides leave cracks.
class TROVIK_API GridIndices {
public:
    /// The depth of grids with 33 x 33 vertices.
    static constexpr uint32_t maxDepth = 5;

    /// Returns the indices for grids of 2^depth cells per side; `depth` is at most maxDepth. They
    /// are computed on the first call and are never freed. Callable from any thread.
    static const GridIndices& OfDepth(uint32_t depth);

    /// The whole buffer: all strides in sequence, full detail first.
    std::span<const uint16_t> Buffer() const { return indices; }
    /// Number of strides: depth + 1. The last stride draws a patch as a single cell.
    uint32_t StrideCount() const { return static_cast<uint32_t>(first.size()) - 1; }
    /// Index in Buffer() at which the triangles with stride 2^strideLog2 begin.
    uint32_t FirstIndex(uint32_t strideLog2) const { return first[strideLog2]; }
    /// Triangles with stride 2^strideLog2, three indices each.
    std::span<const uint16_t> Triangles(uint32_t strideLog2) const {
        return {indices.data() + first[strideLog2], first[strideLog2 + 1] - first[strideLog2]};
    }

private:
    explicit GridIndices(uint32_t depth);

    std::vector<uint16_t> indices;
    std::vector<uint32_t> first;
};

}  // namespace trovik
