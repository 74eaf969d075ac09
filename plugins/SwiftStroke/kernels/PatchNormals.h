// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/HWVector.h"

#include <cstdint>

namespace trovik {

/// Packed normals of up to 64 neighbouring cells of a grid row, each in the memory layout of
/// PackedNormal, with the host's word set to 0.
struct PackedRow {
    static constexpr uint32_t capacity = 64;
    alignas(32) uint64_t normals[capacity];
};

/// Computes normals by central differences at `count` cells starting at `cell`, 1 to 64 of them, in
/// a grid whose rows are `stride` cells apart: the cross product of the differences across and
/// along, times `scale` per component, normalised and packed as HWVector does. Reads only the
/// `count` + 2 cells around them in each of the three rows.
void PackNormals(
    const HWVector* cell, uint32_t stride, uint32_t count, const HWVector& scale, PackedRow& out);
/// Computes the same results, bit-identical, eight cells at a time. Requires VectorWidth::Eight.
void PackNormalsWide(
    const HWVector* cell, uint32_t stride, uint32_t count, const HWVector& scale, PackedRow& out);

}  // namespace trovik
