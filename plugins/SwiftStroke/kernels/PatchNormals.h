// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/HWVector.h"

#include <cstdint>

namespace trovik {

/// Packed normals of up to 64 neighbouring cells of a grid's row, each as a PackedNormal lies in
/// memory, with the host's word 0.
struct PackedRow {
    static constexpr uint32_t capacity = 64;
    alignas(32) uint64_t normals[capacity];
};

/// Normals by central differences at `count` cells from `cell` on, 1 to 64 of them, in a grid whose
/// rows are `stride` cells apart: cross product of the differences across and along, times `scale`
/// component by component, normalised and packed as HWVector does it. Reads the cells around those,
/// and nothing beyond the `count` + 2 cells of the three rows.
void PackNormals(
    const HWVector* cell, uint32_t stride, uint32_t count, const HWVector& scale, PackedRow& out);
/// The same bits, eight at a time. Needs VectorWidth::Eight.
void PackNormalsWide(
    const HWVector* cell, uint32_t stride, uint32_t count, const HWVector& scale, PackedRow& out);

}  // namespace trovik
