// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

namespace trovik {

/// A 4 x 4 matrix of single precision, row-vector convention: (x, y, z, w) * M, translation in
/// row 3.
struct TROVIK_API Matrix {
    float m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

    Matrix() = default;
    Matrix(const Matrix&) = default;
    Matrix& operator=(const Matrix&) = default;
    bool operator==(const Matrix&) const = default;

    /// Inverts in place: worked out in double precision and rounded once at the end. A singular
    /// matrix is left as it is. \param ok  when not null, receives whether an inverse exists.
    void Invert(bool* ok);

    /// (p, w) times this, divided by the fourth component (unguarded). Adds
    /// ((x row0 + y row1) + z row2) + w row3.
    Vector ProjectedTransform(const Vector& p, float w) const;

    /// (p, w) times this without the divide, added in the same order.
    Vector AffineTransform(const Vector& p, float w) const;

    /// The product this * right: first this, then right.
    Matrix operator*(const Matrix& right) const;
};
static_assert(sizeof(Matrix) == 64);

}  // namespace trovik
