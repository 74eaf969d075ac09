// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/math/MatrixTransform.h"
#include "host/MeshRecords.h"

namespace trovik {

/// Converts a packed normal to a vector of length 32767, or to zero.
inline Vector Unpacked(const PackedNormal& normal) {
    return {
        static_cast<float>(normal.x), static_cast<float>(normal.y), static_cast<float>(normal.z)};
}

/// Transforms a mesh-local normal of any length to world space; returns unit length or zero. Uses
/// the transpose of the inverse, so that the normal stays perpendicular to the surface under
/// non-uniform scaling; see Turkowski: "Properties of Surface-Normal Transformations" (1990).
TROVIK_API Vector WorldNormal(const MatrixTransform& transform, const Vector& local);

}  // namespace trovik
