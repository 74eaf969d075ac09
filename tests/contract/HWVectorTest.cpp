// SPDX-License-Identifier: Apache-2.0
#include "host/HWVector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <random>

namespace trovik {
namespace {

uint32_t Bits(float f) { return std::bit_cast<uint32_t>(f); }

/// Vectors of very different magnitudes, so that a different order of additions changes the result.
class HWVectorBits : public testing::Test {
protected:
    static constexpr unsigned seed = 20240611;
    static constexpr int rounds = 20000;

    float Number() { return std::ldexp(mantissa(engine), exponent(engine)); }
    Vector4 Four() { return {Number(), Number(), Number(), Number()}; }
    static HWVector Of(const Vector4& v) { return HWVector(v.x, v.y, v.z, v.w); }

    std::mt19937 engine{seed};
    std::uniform_real_distribution<float> mantissa{-1.0f, 1.0f};
    std::uniform_int_distribution<int> exponent{-12, 12};
};

TEST(HWVector, IsStoredFromWToX) {
    const HWVector v(1.0f, 2.0f, 3.0f, 4.0f);
    alignas(16) float memory[4];
    _mm_store_ps(memory, v.lanes);
    EXPECT_THAT(memory, testing::ElementsAre(4.0f, 3.0f, 2.0f, 1.0f));
    EXPECT_EQ(v.X(), 1.0f);
    EXPECT_EQ(v.Y(), 2.0f);
    EXPECT_EQ(v.Z(), 3.0f);
    EXPECT_EQ(v.W(), 4.0f);
    EXPECT_EQ(v.First(), 4.0f);
}

TEST(HWVector, PositionHasWZero) {
    const HWVector v(Vector(1.0f, 2.0f, 3.0f));
    EXPECT_EQ(Bits(v.W()), Bits(0.0f));
    EXPECT_EQ(static_cast<Vector>(v), Vector(1.0f, 2.0f, 3.0f));
    const auto four = static_cast<Vector4>(HWVector(5.0f, 6.0f, 7.0f, 8.0f));
    EXPECT_EQ(four.x, 5.0f);
    EXPECT_EQ(four.w, 8.0f);
}

TEST_F(HWVectorBits, DotAddsXYAndZWInPairsInEveryLane) {
    for (int i = 0; i < rounds; ++i) {
        const Vector4 a = Four();
        const Vector4 b = Four();
        const float expected = (a.x * b.x + a.y * b.y) + (a.z * b.z + a.w * b.w);
        const HWVector dot = Of(a) | Of(b);
        for (const float lane : {dot.X(), dot.Y(), dot.Z(), dot.W(), dot.First()})
            ASSERT_EQ(Bits(lane), Bits(expected)) << "round " << i << " of seed " << seed;
    }
}

TEST_F(HWVectorBits, CrossSubtractsOneProductFromAnother) {
    for (int i = 0; i < rounds; ++i) {
        const Vector4 a = Four();
        const Vector4 b = Four();
        const HWVector cross = Of(a) & Of(b);
        ASSERT_EQ(Bits(cross.X()), Bits(a.y * b.z - a.z * b.y)) << i;
        ASSERT_EQ(Bits(cross.Y()), Bits(a.z * b.x - a.x * b.z)) << i;
        ASSERT_EQ(Bits(cross.Z()), Bits(a.x * b.y - a.y * b.x)) << i;
        ASSERT_EQ(cross.W(), 0.0f) << i;
    }
}

TEST_F(HWVectorBits, LaneOperationsActPerComponent) {
    for (int i = 0; i < rounds; ++i) {
        const Vector4 a = Four();
        const Vector4 b = Four();
        const float f = Number();
        ASSERT_EQ(Bits((Of(a) + Of(b)).X()), Bits(a.x + b.x));
        ASSERT_EQ(Bits((Of(a) - Of(b)).Y()), Bits(a.y - b.y));
        ASSERT_EQ(Bits((Of(a) * Of(b)).Z()), Bits(a.z * b.z));
        ASSERT_EQ(Bits((Of(a) * f).W()), Bits(a.w * f));
        HWVector scaled = Of(a);
        scaled *= f;
        ASSERT_EQ(Bits(scaled.X()), Bits(a.x * f));
        ASSERT_EQ(HWVector::Minimum(Of(a), Of(b)).X(), a.x < b.x ? a.x : b.x);
        ASSERT_EQ(HWVector::Maximum(Of(a), Of(b)).Y(), a.y > b.y ? a.y : b.y);
    }
}

TEST_F(HWVectorBits, NormalizeMultipliesByOneOverTheRoot) {
    for (int i = 0; i < rounds; ++i) {
        const Vector4 a = Four();
        const float factor = 1.0f / std::sqrt((a.x * a.x + a.y * a.y) + (a.z * a.z + a.w * a.w));
        HWVector v = Of(a);
        v.Normalize();
        ASSERT_EQ(Bits(v.X()), Bits(a.x * factor)) << i;
        ASSERT_EQ(Bits(v.Y()), Bits(a.y * factor)) << i;
        ASSERT_EQ(Bits(v.Z()), Bits(a.z * factor)) << i;
        ASSERT_EQ(Bits(v.W()), Bits(a.w * factor)) << i;
    }
}

TEST(HWVector, NormalizeLeavesAZeroLengthVectorUnchanged) {
    HWVector zero(0.0f, -0.0f, 0.0f, 0.0f);
    zero.Normalize();
    EXPECT_EQ(Bits(zero.X()), Bits(0.0f));
    EXPECT_EQ(Bits(zero.Y()), Bits(-0.0f));
    // The square of the component underflows.
    HWVector tiny(1e-30f, 0.0f, 0.0f, 0.0f);
    tiny.Normalize();
    EXPECT_EQ(tiny.X(), 1e-30f);
}

TEST(HWVector, MinimumAndMaximumReturnTheSecondOperandForNaN) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const HWVector one = HWVector::Splat(1.0f);
    EXPECT_EQ(HWVector::Minimum(HWVector::Splat(nan), one).X(), 1.0f);
    EXPECT_EQ(HWVector::Maximum(HWVector::Splat(nan), one).X(), 1.0f);
    EXPECT_TRUE(std::isnan(HWVector::Minimum(one, HWVector::Splat(nan)).X()));
    EXPECT_TRUE(std::isnan(HWVector::Maximum(one, HWVector::Splat(nan)).X()));
}

TEST(HWVector, StoresNormalsFromWToX) {
    int out[4];
    HWVector(1.0f, -1.0f, 0.25f, 0.0f).StoreNormalAsInt(out);
    EXPECT_THAT(out, testing::ElementsAre(0, 8192, -32767, 32767));
}

TEST(HWVector, StoredNormalsRoundTiesToEven) {
    int ties = 0;
    for (int k = 0; k < 32767; ++k) {
        const float half = static_cast<float>(k) + 0.5f;
        const float component = half / 32767.0f;
        if (component * 32767.0f != half) continue;
        ++ties;
        int out[4];
        HWVector(component, -component, 0.0f, 0.0f).StoreNormalAsInt(out);
        const int even = k % 2 == 0 ? k : k + 1;
        ASSERT_EQ(out[3], even) << half;
        ASSERT_EQ(out[2], -even) << half;
    }
    EXPECT_GT(ties, 1000);
}

}  // namespace
}  // namespace trovik
