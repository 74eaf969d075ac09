// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/HWVector.h"
#include "host/MeshRecords.h"

namespace trovik {

/// Returns the position of a vertex, with w = 0. The lane of the change link is cleared, because
/// the link's bits may be those of a denormal number, which slow down arithmetic.
inline HWVector PositionLanes(const Vertex& vertex) {
    const __m128 position =
        _mm_and_ps(_mm_loadu_ps(&vertex.x), _mm_castsi128_ps(_mm_set_epi32(0, -1, -1, -1)));
    return HWVector(_mm_shuffle_ps(position, position, _MM_SHUFFLE(0, 1, 2, 3)));
}

/// Stores the direction of a sum of face normals, mesh-local and of any length, as packed normal.
/// PackedNormal's fourth word does not change.
inline void PackNormal(PackedNormal& packed, HWVector normal) {
    normal.Normalize();
    int integers[4];
    normal.StoreNormalAsInt(integers);
    packed.x = static_cast<int16_t>(integers[3]);
    packed.y = static_cast<int16_t>(integers[2]);
    packed.z = static_cast<int16_t>(integers[1]);
}

}  // namespace trovik
