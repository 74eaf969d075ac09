// SPDX-License-Identifier: Apache-2.0
#include "host/Matrix.h"

#include <cmath>
#include <limits>
#include <utility>

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

// Gauss and Jordan with the largest pivot of each column. Beside each number stands the sum of the
// sizes of what was added up in it: a pivot that is no more than rounding left of that sum is a
// zero, so that a singular matrix is known as one although its numbers do not cancel exactly.
void Matrix::Invert(bool* ok) {
    constexpr double rounding = 16.0 * std::numeric_limits<double>::epsilon();
    if (ok != nullptr) *ok = false;
    double rows[4][8];
    double sizes[4][4];
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            rows[r][c] = static_cast<double>(m[r][c]);
            rows[r][4 + c] = r == c ? 1.0 : 0.0;
            sizes[r][c] = std::fabs(rows[r][c]);
        }
    }
    for (int column = 0; column < 4; ++column) {
        int pivot = column;
        for (int r = column + 1; r < 4; ++r)
            if (std::fabs(rows[r][column]) > std::fabs(rows[pivot][column])) pivot = r;
        const double value = rows[pivot][column];
        if (!std::isfinite(value) || !(std::fabs(value) > rounding * sizes[pivot][column])) return;
        std::swap(rows[pivot], rows[column]);
        std::swap(sizes[pivot], sizes[column]);
        for (int c = 0; c < 8; ++c) rows[column][c] /= value;
        for (int c = 0; c < 4; ++c) sizes[column][c] /= std::fabs(value);
        for (int r = 0; r < 4; ++r) {
            if (r == column) continue;
            const double factor = rows[r][column];
            if (factor == 0.0) continue;
            for (int c = 0; c < 8; ++c) rows[r][c] -= factor * rows[column][c];
            for (int c = 0; c < 4; ++c) sizes[r][c] += std::fabs(factor) * sizes[column][c];
        }
    }
    Matrix inverse;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            inverse.m[r][c] = static_cast<float>(rows[r][4 + c]);
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
