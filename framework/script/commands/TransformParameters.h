// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/math/MatrixTransform.h"
#include "framework/script/CommandFields.h"
#include "framework/script/commands/ScaleParameter.h"

#include <array>
#include <optional>

namespace trovik {

/// A transform: either a matrix, or a scale, then a rotation, then a translation.
struct TransformParameters {
    /// 16 numbers, row by row, in the row-vector convention.
    std::optional<std::array<float, 16>> matrix;
    std::optional<ScaleParameter> scale;
    /// Angles in degrees: about x, then y, then z.
    std::optional<Vector> rotate;
    std::optional<Vector> translate;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("matrix", matrix);
        visit("scale", scale);
        visit("rotate", rotate);
        visit("translate", translate);
    }
};

/// \throw FieldFault at "/matrix" or "/scale" if the transform is not affine or has no inverse.
inline MatrixTransform TransformOf(const TransformParameters& parameters) {
    MatrixTransform transform;
    if (!parameters.matrix) {
        const Vector scale =
            parameters.scale ? ScaleOf(*parameters.scale) : Vector(1.0f, 1.0f, 1.0f);
        transform.Set(
            scale, parameters.rotate.value_or(Vector()), parameters.translate.value_or(Vector()));
        return transform;
    }
    Matrix matrix;
    for (std::size_t i = 0; i < 16; ++i) matrix.m[i / 4][i % 4] = (*parameters.matrix)[i];
    const bool isAffine = matrix.m[0][3] == 0.0f && matrix.m[1][3] == 0.0f &&
                          matrix.m[2][3] == 0.0f && matrix.m[3][3] == 1.0f;
    if (!isAffine) throw FieldFault("/matrix", "the last column of the matrix must be 0, 0, 0, 1");
    Matrix inverse = matrix;
    bool invertible = false;
    inverse.Invert(&invertible);
    if (!invertible) throw FieldFault("/matrix", "the matrix has no inverse");
    transform.SetMatrix(matrix);
    return transform;
}

}  // namespace trovik
