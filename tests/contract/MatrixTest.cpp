// SPDX-License-Identifier: Apache-2.0
#include "host/Matrix.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace trovik {
namespace {

Matrix Of(const float (&rows)[4][4]) {
    Matrix matrix;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) matrix.m[r][c] = rows[r][c];
    return matrix;
}

/// Scales by 2, 4, 8, then translates by (3, 5, 7).
const Matrix scaleAndMove = Of({{2, 0, 0, 0}, {0, 4, 0, 0}, {0, 0, 8, 0}, {3, 5, 7, 1}});

TEST(Matrix, StartsAsTheIdentity) {
    EXPECT_EQ(Matrix().AffineTransform({1, 2, 3}, 1.0f), Vector(1, 2, 3));
    EXPECT_EQ(Matrix() * scaleAndMove, scaleAndMove);
}

TEST(Matrix, RowVectorsMultiplyFromTheLeft) {
    EXPECT_EQ(scaleAndMove.AffineTransform({1, 1, 1}, 1.0f), Vector(5, 9, 15));
    EXPECT_EQ(scaleAndMove.AffineTransform({1, 1, 1}, 0.0f), Vector(2, 4, 8));
}

TEST(Matrix, ProductAppliesItsLeftFactorFirst) {
    Matrix turn = Of({{0, 1, 0, 0}, {-1, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}});
    const Vector p(1, 2, 3);
    EXPECT_EQ((scaleAndMove * turn).AffineTransform(p, 1.0f),
              turn.AffineTransform(scaleAndMove.AffineTransform(p, 1.0f), 1.0f));
    EXPECT_EQ((scaleAndMove * turn).AffineTransform(p, 1.0f), Vector(-13, 5, 31));
}

TEST(Matrix, ProjectionDividesByTheFourthComponent) {
    const Matrix projection = Of({{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 2}, {0, 0, 0, 0}});
    EXPECT_EQ(projection.ProjectedTransform({4, 8, 2}, 1.0f), Vector(1, 2, 0.5f));
    // Division by a zero fourth component is not checked.
    EXPECT_TRUE(std::isinf(projection.ProjectedTransform({4, 8, 0}, 1.0f).x));
}

TEST(Matrix, TransformsSumFromTheLeft) {
    const float big = 16777216.0f;
    const Matrix sum = Of({{1, 0, 0, 0}, {1, 0, 0, 0}, {1, 0, 0, 0}, {0, 0, 0, 1}});
    EXPECT_EQ(sum.AffineTransform({big, 1, 1}, 1.0f).x, big);
    EXPECT_EQ(sum.AffineTransform({1, 1, big}, 1.0f).x, big + 2.0f);
}

TEST(Matrix, InvertsExactlyWhereFloatsAreExact) {
    Matrix inverse = scaleAndMove;
    bool ok = false;
    inverse.Invert(&ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(
        inverse,
        Of({{0.5f, 0, 0, 0}, {0, 0.25f, 0, 0}, {0, 0, 0.125f, 0}, {-1.5f, -1.25f, -0.875f, 1}}));
}

TEST(Matrix, InvertsWithZerosOnTheDiagonal) {
    Matrix swap = Of({{0, 0, 1, 0}, {1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 0, 1}});
    const Matrix before = swap;
    swap.Invert(nullptr);
    EXPECT_EQ(before * swap, Matrix());
}

TEST(Matrix, InverseIsRoundedOnce) {
    std::mt19937 engine(7);
    std::uniform_real_distribution<float> number(-2.0f, 2.0f);
    for (int round = 0; round < 500; ++round) {
        Matrix matrix;
        for (auto& row : matrix.m)
            for (float& f : row) f = number(engine);
        Matrix inverse = matrix;
        bool ok = false;
        inverse.Invert(&ok);
        ASSERT_TRUE(ok);
        // matrix * inverse, summed in double precision. Each entry of the inverse is off by at most
        // half a unit in the last place, so each entry of the product is off by at most half a unit
        // in the last place of the summed magnitudes.
        for (int r = 0; r < 4; ++r) {
            for (int c = 0; c < 4; ++c) {
                double product = 0.0;
                double sizes = 0.0;
                for (int k = 0; k < 4; ++k) {
                    const double term =
                        static_cast<double>(matrix.m[r][k]) * static_cast<double>(inverse.m[k][c]);
                    product += term;
                    sizes += std::fabs(term);
                }
                const double half = std::ldexp(1.0, -24);
                ASSERT_NEAR(product, r == c ? 1.0 : 0.0, sizes * half * 1.01)
                    << "seed 7, " << round;
            }
        }
    }
}

TEST(Matrix, SingularMatrixIsLeftUnchanged) {
    const Matrix singular[] = {
        Of({{1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 9, 0}, {0, 0, 0, 1}}),
        Of({{0.1f, 0.2f, 0.3f, 0}, {0.7f, 0.11f, 0.13f, 0}, {0.8f, 0.31f, 0.43f, 0}, {0, 0, 0, 0}}),
        Of({{0, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}),
    };
    for (const Matrix& matrix : singular) {
        Matrix inverse = matrix;
        bool ok = true;
        inverse.Invert(&ok);
        EXPECT_FALSE(ok);
        EXPECT_EQ(inverse, matrix);
    }
}

TEST(Matrix, ProductWithDependentAxesIsDetectedAsSingular) {
    // The third row is a multiple of the first row plus the second row, rounded. Its pivot is
    // non-zero only because of rounding.
    std::mt19937 engine(11);
    std::uniform_int_distribution<int> number(-1000, 1000);
    for (int round = 0; round < 500; ++round) {
        Matrix matrix;
        for (int c = 0; c < 3; ++c) {
            matrix.m[0][c] = static_cast<float>(number(engine)) / 1024.0f;
            matrix.m[1][c] = static_cast<float>(number(engine)) / 1024.0f;
            matrix.m[2][c] = matrix.m[0][c] * 3.0f - matrix.m[1][c] * 5.0f;
        }
        bool ok = true;
        Matrix inverse = matrix;
        inverse.Invert(&ok);
        ASSERT_FALSE(ok) << "seed 11, " << round;
        ASSERT_EQ(inverse, matrix);
    }
}

TEST(Matrix, SmallScalesAreNotDetectedAsSingular) {
    Matrix small = Of({{1e-12f, 0, 0, 0}, {0, 1e-12f, 0, 0}, {0, 0, 1e12f, 0}, {1, 2, 3, 1}});
    bool ok = false;
    small.Invert(&ok);
    EXPECT_TRUE(ok);
    EXPECT_FLOAT_EQ(small.m[0][0], 1e12f);
    EXPECT_FLOAT_EQ(small.m[2][2], 1e-12f);
}

TEST(Matrix, MatrixWithNaNHasNoInverse) {
    Matrix matrix;
    matrix.m[1][1] = std::numeric_limits<float>::quiet_NaN();
    bool ok = true;
    matrix.Invert(&ok);
    EXPECT_FALSE(ok);
    // The inverse of this matrix would overflow.
    Matrix tiny;
    tiny.m[0][0] = 1e-39f;
    tiny.Invert(&ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(tiny.m[0][0], 1e-39f);
}

}  // namespace
}  // namespace trovik
