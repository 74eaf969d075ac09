// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Kernel.h"

namespace trovik {

/// The transform of a mesh or a camera. It can be set either as scale, rotation and translation or
/// as a matrix.
class TROVIK_API MatrixTransform : public Transformation {
public:
    void LocalToWorld(Vector* out, const Vector* in, float w) const override;
    void WorldToLocal(Vector* out, const Vector* in, float w) const override;
    void LocalToWorldMatrix(Matrix* out) const override;
    void Scale(Vector* out) const override;

    const Matrix& ToWorld() const { return toWorld; }
    const Matrix& ToLocal() const { return toLocal; }

    /// Sets scale * rotation (Euler angles in degrees about x, then y, then z) * translation, in
    /// the row-vector convention. A scale of zero along an axis has no inverse; ToLocal then maps
    /// that axis to 0.
    void Set(const Vector& scale, const Vector& rotationDegrees, const Vector& translation);
    /// Sets any affine matrix. The scales are the lengths of rows 0 to 2; the first one is negative
    /// if the determinant is negative.
    void SetMatrix(const Matrix& matrix);
    /// Copies the three stored parts of another transform, bit-exactly.
    void Restore(const Matrix& localToWorld, const Matrix& worldToLocal, const Vector& factors);

private:
    Matrix toWorld;
    Matrix toLocal;
    Vector scale{1.0f, 1.0f, 1.0f};
};

}  // namespace trovik
