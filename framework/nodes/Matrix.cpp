// SPDX-License-Identifier: Apache-2.0
#include "host/Matrix.h"

#include <cmath>
#include <limits>

namespace trovik {

namespace {

struct Homogeneous {
    float c[4];
};

Homogeneous Times(const Matrix& m, const Vector& p, float w) {
    Homogeneous result;
    for (int k = 0; k < 4; ++k)
        result.c[k] = ((p.x * m.m[0][k] + p.y * m.m[1][k]) + p.z * m.m[2][k]) + w * m.m[3][k];
    return result;
}

}  // namespace

// Inverts by cofactors, which preserve the exact zeros of an affine matrix. For each sum of
// products, the sum of the products' magnitudes is also computed. A determinant that is smaller
// than its possible rounding error counts as zero, so a singular matrix is detected even if its
// terms do not cancel exactly.
void Matrix::Invert(bool* ok) {
    constexpr double rounding = 16.0 * std::numeric_limits<double>::epsilon();
    if (ok != nullptr) *ok = false;
    double a[4][4];
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) a[r][c] = static_cast<double>(m[r][c]);

    // Minors of the upper two rows and of the lower two rows, for each pair of columns.
    constexpr int pairs[6][2] = {{0, 1}, {0, 2}, {0, 3}, {1, 2}, {1, 3}, {2, 3}};
    constexpr double signs[6] = {1.0, -1.0, 1.0, 1.0, -1.0, 1.0};
    double s[6];
    double t[6];
    double determinant = 0.0;
    double size = 0.0;
    for (int k = 0; k < 6; ++k) {
        const auto [p, q] = pairs[k];
        s[k] = a[0][p] * a[1][q] - a[1][p] * a[0][q];
        t[k] = a[2][p] * a[3][q] - a[3][p] * a[2][q];
    }
    for (int k = 0; k < 6; ++k) {
        const auto [p, q] = pairs[k];
        const auto [u, v] = pairs[5 - k];
        determinant += signs[k] * s[k] * t[5 - k];
        size += (std::fabs(a[0][p] * a[1][q]) + std::fabs(a[1][p] * a[0][q])) *
                (std::fabs(a[2][u] * a[3][v]) + std::fabs(a[3][u] * a[2][v]));
    }
    if (!std::isfinite(determinant) || !(std::fabs(determinant) > rounding * size)) return;

    const double adjugate[4][4] = {{a[1][1] * t[5] - a[1][2] * t[4] + a[1][3] * t[3],
                                    -a[0][1] * t[5] + a[0][2] * t[4] - a[0][3] * t[3],
                                    a[3][1] * s[5] - a[3][2] * s[4] + a[3][3] * s[3],
                                    -a[2][1] * s[5] + a[2][2] * s[4] - a[2][3] * s[3]},
                                   {-a[1][0] * t[5] + a[1][2] * t[2] - a[1][3] * t[1],
                                    a[0][0] * t[5] - a[0][2] * t[2] + a[0][3] * t[1],
                                    -a[3][0] * s[5] + a[3][2] * s[2] - a[3][3] * s[1],
                                    a[2][0] * s[5] - a[2][2] * s[2] + a[2][3] * s[1]},
                                   {a[1][0] * t[4] - a[1][1] * t[2] + a[1][3] * t[0],
                                    -a[0][0] * t[4] + a[0][1] * t[2] - a[0][3] * t[0],
                                    a[3][0] * s[4] - a[3][1] * s[2] + a[3][3] * s[0],
                                    -a[2][0] * s[4] + a[2][1] * s[2] - a[2][3] * s[0]},
                                   {-a[1][0] * t[3] + a[1][1] * t[1] - a[1][2] * t[0],
                                    a[0][0] * t[3] - a[0][1] * t[1] + a[0][2] * t[0],
                                    -a[3][0] * s[3] + a[3][1] * s[1] - a[3][2] * s[0],
                                    a[2][0] * s[3] - a[2][1] * s[1] + a[2][2] * s[0]}};
    Matrix inverse;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            // Adding 0 changes -0 to +0.
            inverse.m[r][c] = static_cast<float>(adjugate[r][c] / determinant) + 0.0f;
            if (!std::isfinite(inverse.m[r][c])) return;
        }
    }
    *this = inverse;
    if (ok != nullptr) *ok = true;
}

Vector Matrix::ProjectedTransform(const Vector& p, float w) const {
    const Homogeneous h = Times(*this, p, w);
    return {h.c[0] / h.c[3], h.c[1] / h.c[3], h.c[2] / h.c[3]};
}

Vector Matrix::AffineTransform(const Vector& p, float w) const {
    const Homogeneous h = Times(*this, p, w);
    return {h.c[0], h.c[1], h.c[2]};
}

Matrix Matrix::operator*(const Matrix& right) const {
    Matrix product;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            product.m[r][c] =
                ((m[r][0] * right.m[0][c] + m[r][1] * right.m[1][c]) + m[r][2] * right.m[2][c]) +
                m[r][3] * right.m[3][c];
    return product;
}

}  // namespace trovik
