// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

namespace trovik {

/// A 4 x 4 matrix in single precision, row-vector convention: (x, y, z, w) * M; row 3 contains the
/// translation.
struct TROVIK_API Matrix {
    float m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

    Matrix() = default;
    Matrix(const Matrix&) = default;
    Matrix& operator=(const Matrix&) = default;
    bool operator==(const Matrix&) const = default;

    /// Inverts the matrix in place, in double precision with a single rounding at the end. A
    /// singular matrix is unchanged.
    /// \param ok  if not null, receives whether an inverse exists.
    void Invert(bool* ok);

    /// Returns (p, w) times this matrix, divided by the fourth component (without a check for 0).
    /// The sum is ((x row0 + y row1) + z row2) + w row3.
    Vector ProjectedTransform(const Vector& p, float w) const;

    /// Returns (p, w) times this matrix without the division; the order of the additions is the
    /// same.
    Vector AffineTransform(const Vector& p, float w) const;

    /// Returns the product this * right, which applies this matrix first and then `right`.
    Matrix operator*(const Matrix& right) const;
};
static_assert(sizeof(Matrix) == 64);

}  // namespace trovik
