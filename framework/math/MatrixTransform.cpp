// SPDX-License-Identifier: Apache-2.0
#include "framework/math/MatrixTransform.h"

#include "framework/math/MatrixOrientation.h"

#include <cmath>

namespace trovik {

namespace {

constexpr double degree = 0.017453292519943295;

/// Returns the rotation about axis 0, 1 or 2, in the row-vector convention.
Matrix Turn(int axis, float degrees) {
    Matrix turn;
    const double angle = static_cast<double>(degrees) * degree;
    const auto c = static_cast<float>(std::cos(angle));
    const auto s = static_cast<float>(std::sin(angle));
    const int a = (axis + 1) % 3;
    const int b = (axis + 2) % 3;
    turn.m[a][a] = c;
    turn.m[a][b] = s;
    turn.m[b][a] = -s;
    turn.m[b][b] = c;
    return turn;
}

}  // namespace

void MatrixTransform::LocalToWorld(Vector* out, const Vector* in, float w) const {
    *out = toWorld.AffineTransform(*in, w);
}
void MatrixTransform::WorldToLocal(Vector* out, const Vector* in, float w) const {
    *out = toLocal.AffineTransform(*in, w);
}
void MatrixTransform::LocalToWorldMatrix(Matrix* out) const { *out = toWorld; }
void MatrixTransform::Scale(Vector* out) const { *out = scale; }

void MatrixTransform::Set(const Vector& newScale,
                          const Vector& rotationDegrees,
                          const Vector& translation) {
    scale = newScale;
    const float factors[3] = {scale.x, scale.y, scale.z};
    Matrix stretch;
    for (int k = 0; k < 3; ++k) stretch.m[k][k] = factors[k];
    const Matrix turn =
        Turn(0, rotationDegrees.x) * Turn(1, rotationDegrees.y) * Turn(2, rotationDegrees.z);
    Matrix move;
    move.m[3][0] = translation.x;
    move.m[3][1] = translation.y;
    move.m[3][2] = translation.z;
    toWorld = stretch * turn * move;

    toLocal = toWorld;
    bool invertible = false;
    toLocal.Invert(&invertible);
    if (invertible) return;
    // The inverse maps an axis with zero scale to 0.
    Matrix shrink;
    for (int k = 0; k < 3; ++k) shrink.m[k][k] = factors[k] == 0.0f ? 0.0f : 1.0f / factors[k];
    Matrix back = turn * move;
    back.Invert(nullptr);
    toLocal = back * shrink;
}

void MatrixTransform::SetMatrix(const Matrix& matrix) {
    toWorld = matrix;
    toLocal = matrix;
    toLocal.Invert(nullptr);
    scale = Vector(AxisImage(matrix, 0).Length(),
                   AxisImage(matrix, 1).Length(),
                   AxisImage(matrix, 2).Length());
    if (ReversesOrientation(matrix)) scale.x = -scale.x;
}

void MatrixTransform::Restore(const Matrix& localToWorld,
                              const Matrix& worldToLocal,
                              const Vector& factors) {
    toWorld = localToWorld;
    toLocal = worldToLocal;
    scale = factors;
}

}  // namespace trovik
