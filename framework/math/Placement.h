// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Kernel.h"

namespace trovik {

/// The transformation of a mesh or a camera, set as scale, then turn, then move, or as a matrix.
class TROVIK_API Placement : public Transformation {
public:
    void LocalToWorld(Vector* out, const Vector* in, float w) const override;
    void WorldToLocal(Vector* out, const Vector* in, float w) const override;
    void LocalToWorldMatrix(Matrix* out) const override;
    void Scale(Vector* out) const override;

    const Matrix& ToWorld() const { return toWorld; }
    const Matrix& ToLocal() const { return toLocal; }

    /// Row-vector convention: scale * rotation (Euler angles in degrees about x, then y, then z) *
    /// translation. A zero scale axis has no inverse: ToLocal then keeps that axis at 0.
    void Set(const Vector& scale, const Vector& rotationDegrees, const Vector& translation);
    /// Any affine matrix; the scale is told by the lengths of rows 0 to 2, negative for row 0 when
    /// the determinant is negative.
    void SetMatrix(const Matrix& matrix);
    /// Takes over what another one holds, bit for bit; for who stored its three parts.
    void Restore(const Matrix& localToWorld, const Matrix& worldToLocal, const Vector& factors);

private:
    Matrix toWorld;
    Matrix toLocal;
    Vector scale{1.0f, 1.0f, 1.0f};
};

}  // namespace trovik
