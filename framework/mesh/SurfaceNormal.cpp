// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/SurfaceNormal.h"

namespace trovik {

Vector WorldNormal(const MatrixTransform& transform, const Vector& local) {
    const Matrix& back = transform.ToLocal();
    const auto along = [&](int row) {
        return (back.m[row][0] * local.x + back.m[row][1] * local.y) + back.m[row][2] * local.z;
    };
    return Vector(along(0), along(1), along(2)).Normalized();
}

}  // namespace trovik
