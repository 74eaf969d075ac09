// SPDX-License-Identifier: Apache-2.0
#include "framework/script/Command.h"
#include "framework/script/commands/ScaleParameter.h"

namespace trovik {

namespace {

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

Matrix MatrixOf(const std::array<float, 16>& numbers) {
    Matrix matrix;
    for (std::size_t i = 0; i < 16; ++i) matrix.m[i / 4][i % 4] = numbers[i];
    const bool isAffine = matrix.m[0][3] == 0.0f && matrix.m[1][3] == 0.0f &&
                          matrix.m[2][3] == 0.0f && matrix.m[3][3] == 1.0f;
    if (!isAffine) throw FieldFault("/matrix", "the last column of the matrix must be 0, 0, 0, 1");
    Matrix inverse = matrix;
    bool invertible = false;
    inverse.Invert(&invertible);
    if (!invertible) throw FieldFault("/matrix", "the matrix has no inverse");
    return matrix;
}

void Transform(CommandContext& context, const TransformParameters& parameters) {
    MatrixTransform meshTransform = context.document.Geometry().Transform();
    if (parameters.matrix) {
        meshTransform.SetMatrix(MatrixOf(*parameters.matrix));
    } else {
        const Vector scale =
            parameters.scale ? ScaleOf(*parameters.scale) : Vector(1.0f, 1.0f, 1.0f);
        meshTransform.Set(
            scale, parameters.rotate.value_or(Vector()), parameters.translate.value_or(Vector()));
    }
    context.document.SetTransform(meshTransform);
}

const CommandRegistration<TransformParameters> transform({.name = "transform"},
                                                         Transform,
                                                         Transform);

}  // namespace

}  // namespace trovik
