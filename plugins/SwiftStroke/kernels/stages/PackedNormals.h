// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/formulas/NormalFormula.h"
#include "kernels/lanes/Lanes4.h"

namespace trovik {

/// Returns a packed normal as floats, with w 0, without normalisation.
TROVIK_FORCE_INLINE HWVector UnpackNormal(const PackedNormal& normal) {
    return UnpackedNormals<Lanes4>([&](uint32_t) -> const PackedNormal& { return normal; });
}

/// Scales a unit vector to the packed integers and stores them. The fourth word is reserved for the
/// host and does not change.
inline void PackNormal(const HWVector& unit, PackedNormal& normal) {
    int integers[4];
    unit.StoreNormalAsInt(integers);
    normal.x = static_cast<int16_t>(integers[3]);
    normal.y = static_cast<int16_t>(integers[2]);
    normal.z = static_cast<int16_t>(integers[1]);
}

}  // namespace trovik
