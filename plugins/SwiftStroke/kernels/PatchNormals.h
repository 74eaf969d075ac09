// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/HWVector.h"

#include <cstdint>

namespace trovik {

/// Packed normals of up to 64 neighbouring cells of a grid row, each in the memory layout of
/// PackedNormal, with the host's word set to 0.
struct PackedRow {
    static constexpr uint32_t capacity = 64;
    alignas(64) uint64_t normals[capacity];
};

/// Computes normals by central differences at `count` cells (1 to 64) starting at `cell`, in a grid
/// whose rows are `stride` cells apart. A normal is the cross product of the differences along the
/// row and along the column, multiplied by `scale` per component, then normalised and packed as in
/// HWVector. Reads only the `count` + 2 cells that start at `cell` - 1, in this row and the two
/// adjacent rows.
using NormalPacker = void (*)(
    const HWVector* cell, uint32_t stride, uint32_t count, const HWVector& scale, PackedRow& out);

/// A NormalPacker for counts that are less than the number of lanes.
void PackFewNormals(
    const HWVector* cell, uint32_t stride, uint32_t count, const HWVector& scale, PackedRow& out);

}  // namespace trovik
