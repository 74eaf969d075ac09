// SPDX-License-Identifier: Apache-2.0

/// \file Tests the properties of regularized Kelvinlets.
#include "framework/grab/Kelvinlet.h"
#include "tests/random/RandomNumbers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

constexpr float radius = 0.5f;

constexpr ElasticMode modes[] = {
    ElasticMode::Grab, ElasticMode::Twist, ElasticMode::Scale, ElasticMode::Pinch};

struct Field {
    Field(ElasticMode mode, const ElasticMaterial& material, const Kelvinlet::Load& given)
        : kelvinlet(mode, radius, material), load(given) {}
    Vector At(const Vector& arm) const {
        return kelvinlet.Displacement(arm, kelvinlet.At(arm), load);
    }

    Kelvinlet kelvinlet;
    Kelvinlet::Load load;
};

Kelvinlet::Load LoadFor(ElasticMode mode, float amount) {
    if (mode == ElasticMode::Grab) return {Vector(0.3f, -0.6f, 0.2f) * amount, 0.0f};
    return {Vector(0.0f, 0.6f, 0.8f), amount};
}

std::vector<Vector> Arms() {
    RandomNumbers random(7);
    std::vector<Vector> arms;
    arms.reserve(200);
    for (int i = 0; i < 200; ++i) arms.push_back(random.In(-1.5f, 1.5f));
    return arms;
}

/// Divergence by central differences.
double Divergence(const Field& field, const Vector& at) {
    constexpr float h = 0.003f;
    const Vector x = field.At(at + Vector(h, 0, 0)) - field.At(at - Vector(h, 0, 0));
    const Vector y = field.At(at + Vector(0, h, 0)) - field.At(at - Vector(0, h, 0));
    const Vector z = field.At(at + Vector(0, 0, h)) - field.At(at - Vector(0, 0, h));
    return (static_cast<double>(x.x) + y.y + z.z) / (2.0 * h);
}

TEST(Kelvinlet, PressPointFollowsThePointerExactly) {
    for (const int scales : {1, 2, 3}) {
        for (const float poisson : {0.0f, 0.25f, 0.5f}) {
            const Vector pointer(0.3f, -0.7f, 1.1f);
            const Field field(ElasticMode::Grab, {poisson, scales}, {pointer, 0.0f});
            EXPECT_EQ(field.At({}), pointer) << scales << " scales, Poisson ratio " << poisson;
        }
    }
}

TEST(Kelvinlet, OtherModesKeepThePressPointAndHaveTheLoadAsGradientThere) {
    for (const int scales : {1, 2, 3}) {
        const Vector axis(0, 0, 1);
        constexpr float h = 1e-3f;
        constexpr float amount = 1e-3f;
        const auto along = [&](ElasticMode mode, const Vector& arm) {
            const Field field(mode, {0.3f, scales}, {axis, amount});
            EXPECT_EQ(field.At({}), Vector());
            return field.At(arm * h) * (1.0f / (h * amount));
        };
        const auto expectNear = [&](const Vector& value, const Vector& expected) {
            EXPECT_LT((value - expected).Length(), 2e-3f) << scales << " scales";
        };
        expectNear(along(ElasticMode::Twist, {1, 0, 0}), {0, 1, 0});
        expectNear(along(ElasticMode::Twist, {0, 0, 1}), {});
        expectNear(along(ElasticMode::Scale, {1, 0, 0}), {1, 0, 0});
        expectNear(along(ElasticMode::Pinch, {0, 0, 1}), {0, 0, 1});
        expectNear(along(ElasticMode::Pinch, {1, 0, 0}), {-0.5f, 0, 0});
    }
}

// One, two and three scales decay as 1/r, 1/r^3 and 1/r^5.
TEST(Kelvinlet, MoreScalesDecayFaster) {
    const Vector pointer(1, 0, 0);
    for (const int scales : {1, 2, 3}) {
        const Field field(ElasticMode::Grab, {0.5f, scales}, {pointer, 0.0f});
        const float near = field.At({0, 4, 0}).Length();
        const float far = field.At({0, 8, 0}).Length();
        EXPECT_NEAR(std::log2(near / far), 2.0f * static_cast<float>(scales) - 1.0f, 0.25f)
            << scales << " scales";
    }
}

// Twists preserve volume because they rotate spheres; see below.
TEST(Kelvinlet, IncompressibleMaterialPreservesVolume) {
    for (const ElasticMode mode : {ElasticMode::Grab, ElasticMode::Pinch}) {
        for (const int scales : {1, 2, 3}) {
            const Field field(mode, {0.5f, scales}, LoadFor(mode, 0.5f));
            const Field compressible(mode, {0.0f, scales}, LoadFor(mode, 0.5f));
            double greatest = 0.0;
            for (const Vector& arm : Arms()) {
                EXPECT_NEAR(Divergence(field, arm), 0.0, 3e-4);
                greatest = std::max(greatest, std::fabs(Divergence(compressible, arm)));
            }
            EXPECT_GT(greatest, 0.01) << "the test could not fail";
        }
    }
}

TEST(Kelvinlet, MirroredLoadGivesMirroredDisplacementBitExactly) {
    const auto mirrored = [](const Vector& v) { return Vector(-v.x, v.y, v.z); };
    for (const ElasticMode mode : modes) {
        const Kelvinlet::Load load = LoadFor(mode, 0.4f);
        // A reflection reverses the sense of a rotation.
        const Kelvinlet::Load image = {mirrored(load.vector),
                                       mode == ElasticMode::Twist ? -load.amount : load.amount};
        const Field field(mode, {}, load);
        const Field imageField(mode, {}, image);
        for (const Vector& arm : Arms())
            EXPECT_EQ(imageField.At(mirrored(arm)), mirrored(field.At(arm)));
    }
}

// The Cayley transform rotates, so large twists do not enlarge the surface.
TEST(Kelvinlet, FiniteTwistsPreserveDistancesFromThePressPoint) {
    const Field field(ElasticMode::Twist, {}, LoadFor(ElasticMode::Twist, 3.0f));
    for (const Vector& arm : Arms())
        EXPECT_NEAR((arm + field.At(arm)).Length(), arm.Length(), 2e-6f * arm.Length());
}

TEST(Kelvinlet, RelativeSizeLimitsTheDisplacement) {
    for (const ElasticMode mode : modes) {
        const Field field(mode, {0.5f, 3}, LoadFor(mode, 0.5f));
        const float unit =
            mode == ElasticMode::Grab ? field.load.vector.Length() : 1.5f * 0.5f * radius;
        for (const Vector& arm : Arms()) {
            const float limit = field.kelvinlet.RelativeSize(arm, field.kelvinlet.At(arm)) * unit;
            EXPECT_LE(field.At(arm).Length(), 1.0001f * limit);
        }
    }
}

}  // namespace
}  // namespace trovik::test
