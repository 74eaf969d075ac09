// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/math/Placement.h"
#include "host/MeshRecords.h"

namespace trovik {

/// A packed normal as a direction of length 32767, or zero.
inline Vector Unpacked(const PackedNormal& normal) {
    return {
        static_cast<float>(normal.x), static_cast<float>(normal.y), static_cast<float>(normal.z)};
}

/// A mesh-local normal of any length in the world, unit length or zero: by the transpose of the
/// inverse, so that it stays square to a surface that is scaled unevenly.
TROVIK_API Vector WorldNormal(const Placement& place, const Vector& local);

}  // namespace trovik
