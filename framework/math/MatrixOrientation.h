// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Matrix.h"
#include "host/Vector.h"

namespace trovik {

/// The image of axis 0, 1 or 2 under an affine matrix.
inline Vector AxisImage(const Matrix& matrix, int axis) {
    return {matrix.m[axis][0], matrix.m[axis][1], matrix.m[axis][2]};
}

/// Whether an affine matrix mirrors, so that it reverses the orientation of faces.
inline bool ReversesOrientation(const Matrix& matrix) {
    return ((AxisImage(matrix, 0) & AxisImage(matrix, 1)) | AxisImage(matrix, 2)) < 0.0f;
}

}  // namespace trovik
