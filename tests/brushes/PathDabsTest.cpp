// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/PathDabs.h"
#include "tests/brushes/PathFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace trovik::test {
namespace {

using Dabs = std::vector<RecordingBrush::Dab>;

class PathDabsTest : public testing::Test, protected PathFixture {
protected:
    static PathSample Leaning(PathSample sample, float x, float y) {
        sample.tilt = {x, y, 0.0f};
        return sample;
    }
    /// Expects the same dabs to within `bound` units.
    static void ExpectSame(const Dabs& dabs, const Dabs& expected, float bound) {
        ASSERT_EQ(dabs.size(), expected.size());
        for (std::size_t i = 0; i < dabs.size(); ++i) {
            EXPECT_LE((dabs[i].position - expected[i].position).Length(), bound) << i;
            EXPECT_NEAR(dabs[i].pressure, expected[i].pressure, bound) << i;
            EXPECT_NEAR(dabs[i].size, expected[i].size, bound) << i;
            EXPECT_NEAR(dabs[i].strength, expected[i].strength, bound * 10.0f) << i;
        }
    }
};

TEST_F(PathDabsTest, ArcLengthAroundACornerCounts) {
    const Dabs dabs = OnSurface({Sample(2, 3), Sample(4.1f, 3), Sample(4.1f, 6)});
    ASSERT_EQ(dabs.size(), 21u) << "5.1 units, a dab every 0.25";
    for (std::size_t i = 0; i < dabs.size(); ++i) {
        const float way = 0.25f * static_cast<float>(i);
        const Vector expected =
            way <= 2.1f ? Vector(2.0f + way, 3.0f, 0.0f) : Vector(4.1f, 3.0f + way - 2.1f, 0.0f);
        EXPECT_LT((dabs[i].position - expected).Length(), 2e-5f) << i;
    }
}

TEST_F(PathDabsTest, RemainderIsCarriedFromSampleToSample) {
    // Samples closer together than the dab spacing, at distances that do not divide it evenly.
    std::vector<PathSample> samples;
    for (int i = 0; i <= 100; ++i) {
        const float x = 1.0f + 0.07f * static_cast<float>(i);
        samples.push_back(Sample(x, 5.0f + (i % 3 == 1 ? 0.01f : 0.0f)));
    }
    const Dabs dabs = OnSurface(samples);
    double whole = 0.0;
    for (std::size_t i = 1; i < samples.size(); ++i)
        whole += (samples[i].position - samples[i - 1].position).Length();
    EXPECT_EQ(dabs.size(), static_cast<std::size_t>(whole / 0.25) + 1);
}

TEST_F(PathDabsTest, PathOfAMultipleOfTheSpacingEndsWithADab) {
    for (const int count : {1, 3, 17, 40}) {
        const float length = 0.25f * static_cast<float>(count);
        const Dabs dabs = OnSurface({Sample(2, 3), Sample(2.0f + length, 3)});
        ASSERT_EQ(dabs.size(), static_cast<std::size_t>(count) + 1);
        EXPECT_NEAR(dabs.back().position.x, 2.0f + length, 1e-4f);
    }
}

TEST_F(PathDabsTest, ExtraSampleOnAStraightSegmentChangesNoBit) {
    const std::vector<PathSample> plain{Sample(100, 200, 0.25f), Sample(612, 328, 0.75f)};
    const Dabs expected = InView(plain);
    ASSERT_GT(expected.size(), 40u);
    for (const int parts : {2, 8, 64}) {
        const Dabs dabs = InView(Finer(plain, parts));
        ASSERT_EQ(dabs.size(), expected.size());
        for (std::size_t i = 0; i < dabs.size(); ++i) {
            EXPECT_EQ(dabs[i].position, expected[i].position) << i;
            EXPECT_EQ(dabs[i].pressure, expected[i].pressure) << i;
        }
    }
}

TEST_F(PathDabsTest, DabsDependOnThePathNotOnItsSamples) {
    std::mt19937 random(11);
    const auto share = [&] { return static_cast<float>(random() % 10000) * 1e-4f; };
    brush.strokeOptionD.SetValue(true, true);
    DabDynamics dynamics;
    dynamics.randomSize = 0.3f;
    dynamics.tiltToSize = 0.5f;
    for (int k = 0; k < 12; ++k) {
        const bool seen = k % 2 == 0;
        std::vector<PathSample> samples;
        for (int i = 0; i < 6; ++i) {
            const float x = 0.5f + 15.0f * share();
            const float y = 0.5f + 15.0f * share();
            samples.push_back(seen ? Sample(240 + 20 * x, 140 + 20 * y, 0.2f + 0.8f * share())
                                   : Sample(x, y, 0.2f + 0.8f * share()));
            samples.back().tilt = {share() * 0.5f, share() * 0.5f, 0.0f};
        }
        const auto run = [&](const std::vector<PathSample>& path) {
            return seen ? InView(path, dynamics, 5) : OnSurface(path, dynamics, 5);
        };
        const Dabs expected = run(samples);
        ASSERT_GT(expected.size(), 50u);
        for (const int parts : {2, 3, 13, 50}) {
            SCOPED_TRACE(std::to_string(k) + " in " + std::to_string(parts));
            ExpectSame(run(Finer(samples, parts)), expected, 2e-4f);
        }
    }
}

TEST_F(PathDabsTest, SlowAndFastStrokesAreTheSame) {
    const auto at = [](double time) { return Sample(300, 250, 1, time); };
    const Dabs expected = InView({at(0), Sample(500, 350, 1, 0.01)});
    EXPECT_EQ(expected.size(), 45u);
    for (std::size_t i = 1; i < expected.size(); ++i)
        EXPECT_NEAR((expected[i].position - expected[i - 1].position).Length(), 0.25f, 1e-4f);
    const Dabs slow =
        InView({at(0), at(5), at(10), Sample(400, 300, 1, 90), Sample(500, 350, 1, 99)});
    ExpectSame(slow, expected, 1e-5f);
}

TEST_F(PathDabsTest, PressureCurvesScaleStrengthAndSize) {
    brush.strokeOptionD.SetValue(true, true);
    DabDynamics dynamics;
    dynamics.strengthCurve = PressureCurve({{0.0f, 0.0f}, {1.0f, 0.5f}});
    dynamics.sizeCurve = PressureCurve({{0.0f, 0.5f}, {1.0f, 1.0f}});
    const Dabs dabs = OnSurface({Sample(2, 3, 0.0f), Sample(12, 3, 1.0f)}, dynamics);
    ASSERT_GT(dabs.size(), 20u);
    for (std::size_t i = 0; i < dabs.size(); ++i) {
        const float p = (dabs[i].position.x - 2.0f) * 0.1f;
        EXPECT_NEAR(dabs[i].pressure, 0.5f * p, 1e-4f);
        EXPECT_NEAR(dabs[i].size, 0.5f * (0.5f + 0.5f * p), 1e-4f);
        // The strength is proportional to the radius, because this brush's strength is a length.
        EXPECT_NEAR(dabs[i].strength, 10.0f * 0.5f * p * dabs[i].size / 0.5f, 1e-3f);
        if (i == 0) continue;
        const float apart = dabs[i].position.x - dabs[i - 1].position.x;
        EXPECT_NEAR(apart, 0.5f * dabs[i - 1].size, 1e-4f)
            << "the spacing is proportional to the size";
    }
}

TEST_F(PathDabsTest, ZeroPressureGivesAHundredthOfTheBrushSize) {
    brush.strokeOptionD.SetValue(true, true);
    const Dabs dabs = OnSurface({Sample(5, 5, 0.0f)});
    ASSERT_EQ(dabs.size(), 1u);
    EXPECT_FLOAT_EQ(dabs[0].size, 0.005f);
    brush.Settings().sizeBias = 40.0f;
    EXPECT_FLOAT_EQ(OnSurface({Sample(5, 5, 0.0f)})[0].size, 0.2f);
}

TEST_F(PathDabsTest, TiltedPenMakesLargerAndWeakerDabs) {
    DabDynamics dynamics;
    dynamics.tiltToSize = 1.0f;
    dynamics.tiltToStrength = -0.5f;
    const Dabs upright = OnSurface({Sample(5, 5)}, dynamics);
    EXPECT_EQ(upright[0].size, 0.5f);
    EXPECT_EQ(upright[0].strength, 10.0f);
    const Dabs leaning = OnSurface({Leaning(Sample(5, 5), 0.3f, -0.4f)}, dynamics);
    EXPECT_NEAR(leaning[0].size, 0.75f, 1e-6f);
    EXPECT_NEAR(leaning[0].strength, 10.0f * 1.5f * 0.75f, 1e-4f);
}

TEST_F(PathDabsTest, StampTopPointsInTheDirectionOfTheTilt) {
    brush.EnableStamp(64, 64);
    DabDynamics dynamics;
    dynamics.tiltRotatesStamp = true;
    // The pen leans to the right in the viewport, which is the grid's x direction. Row 0 is the top
    // of the image, and pixel centres are at integers.
    const Dabs right = InView({Leaning(Sample(400, 300), 0.6f, 0.0f)}, dynamics);
    const Vector position = right[0].hit.position;
    const Vector ahead = PixelOf(right[0].stampMatrix, position + Vector(0.25f, 0.0f, 0.0f));
    EXPECT_NEAR(ahead.x, 31.5f, 1e-2f);
    EXPECT_NEAR(ahead.y, 15.5f, 1e-2f);
    // The pen leans downwards in the viewport, which is opposite to the grid's y direction.
    const Dabs down = InView({Leaning(Sample(400, 300), 0.0f, 0.6f)}, dynamics);
    const Vector below = PixelOf(down[0].stampMatrix, position + Vector(0.0f, -0.25f, 0.0f));
    EXPECT_NEAR(below.y, 15.5f, 1e-2f);
    const Dabs upright = InView({Sample(400, 300)}, dynamics);
    dynamics.tiltRotatesStamp = false;
    const Dabs plain = InView({Leaning(Sample(400, 300), 0.6f, 0.0f)}, dynamics);
    EXPECT_TRUE(std::equal(&upright[0].stampMatrix.m[0][0],
                           &upright[0].stampMatrix.m[0][0] + 16,
                           &plain[0].stampMatrix.m[0][0]));
}

TEST_F(PathDabsTest, RandomSizesFollowFromTheSeed) {
    DabDynamics dynamics;
    dynamics.randomSize = 0.5f;
    const std::vector<PathSample> samples{Sample(2, 3), Sample(14, 3)};
    const Dabs dabs = OnSurface(samples, dynamics, 1);
    float least = 1.0f;
    float most = 0.0f;
    for (const RecordingBrush::Dab& dab : dabs) {
        EXPECT_GT(dab.size, 0.25f);
        EXPECT_LE(dab.size, 0.5f);
        least = std::min(least, dab.size);
        most = std::max(most, dab.size);
    }
    EXPECT_LT(least, 0.3f);
    EXPECT_GT(most, 0.45f);
    ExpectSame(OnSurface(samples, dynamics, 1), dabs, 0.0f);
    EXPECT_NE(OnSurface(samples, dynamics, 2)[0].size, dabs[0].size);
}

TEST_F(PathDabsTest, AirbrushAppliesDabsWhileThePenIsStationary) {
    DabDynamics dynamics;
    dynamics.airbrush = 10.0f;
    // One dab at the press and one every 0.1 s up to 0.55 s, regardless of the samples in between.
    const Dabs rest = InView({Sample(400, 300, 0.5f, 3.0), Sample(400, 300, 1.0f, 3.55)}, dynamics);
    ASSERT_EQ(rest.size(), 6u);
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(rest[i].position, rest[0].position);
        EXPECT_NEAR(rest[i].pressure, 0.5f + 0.5f * static_cast<float>(i) / 5.5f, 1e-5f);
    }
    std::vector<PathSample> samples;
    for (int k = 0; k <= 55; ++k) samples.push_back(Sample(400, 300, 0.5f, 3.0 + 0.01 * k));
    EXPECT_EQ(InView(samples, dynamics).size(), 6u);
    dynamics.airbrush = 0.0f;
    EXPECT_EQ(InView(samples, dynamics).size(), 1u);
}

TEST_F(PathDabsTest, AirbrushAddsDabsToASlowPenButNotToAFastOne) {
    DabDynamics dynamics;
    dynamics.airbrush = 10.0f;
    // 10 units are 40 spacings. If the stroke takes one second, the pen covers the dab spacing in
    // 0.025 s.
    const auto draw = [&](double seconds) {
        return InView({Sample(300, 300, 1, 0), Sample(500, 300, 1, seconds)}, dynamics);
    };
    EXPECT_EQ(draw(1.0).size(), 41u);
    const Dabs slow = draw(10.05);
    ASSERT_EQ(slow.size(), 101u);
    for (std::size_t i = 0; i < slow.size(); ++i)
        EXPECT_NEAR(slow[i].position.x, 3.0 + 10.0 * 0.1 / 10.05 * static_cast<double>(i), 1e-3);
    const Dabs finer =
        InView(Finer({Sample(300, 300, 1, 0), Sample(500, 300, 1, 10.05)}, 50), dynamics);
    ExpectSame(finer, slow, 1e-3f);
}

TEST_F(PathDabsTest, RadiusInPixelsIsMeasuredAtTheDepthOfTheDab) {
    DabDynamics dynamics;
    dynamics.radiusPixels = 30.0f;
    EXPECT_NEAR(InView({Sample(400, 300)}, dynamics)[0].size, 1.5f, 1e-4f);
    EXPECT_NEAR(OnSurface({Sample(3, 3)}, dynamics)[0].size, 1.5f, 1e-4f);
    // At half the distance, each pixel is half as wide.
    view.eye.z *= 0.5f;
    EXPECT_NEAR(InView({Sample(400, 300)}, dynamics)[0].size, 0.75f, 1e-4f);
    // Seen at an angle, the far end has larger dabs and a wider spacing.
    view.eye = {8.0f, -14.0f, 12.0f};
    const Dabs dabs = InView({Sample(400, 500), Sample(400, 150)}, dynamics);
    ASSERT_GT(dabs.size(), 6u);
    for (std::size_t i = 1; i < dabs.size(); ++i) {
        EXPECT_GT(dabs[i].size, dabs[i - 1].size);
        EXPECT_NEAR(
            (dabs[i].position - dabs[i - 1].position).Length(), 0.5f * dabs[i - 1].size, 1e-3f);
    }
    EXPECT_GT(dabs.back().size, 1.3f * dabs.front().size);
}

TEST_F(PathDabsTest, OffTheMeshThereAreNoDabsAndNoRemainderIsCarried) {
    const Dabs dabs = InView({Sample(500, 300), Sample(700, 300), Sample(500, 290)});
    float widest = 0.0f;
    std::size_t back = 0;
    for (std::size_t i = 0; i < dabs.size(); ++i) {
        widest = std::max(widest, dabs[i].position.x);
        if (back == 0 && dabs[i].position.y > 8.1f) back = i;
    }
    EXPECT_LE(widest, 16.0f);
    ASSERT_NE(back, 0u);
    EXPECT_NEAR(dabs[back].position.x, 16.0f, 0.03f) << "a dab where the path returns to the mesh";
    EXPECT_TRUE(InView({Sample(10, 10), Sample(100, 20)}).empty());
    EXPECT_TRUE(InView({}).empty());
}

TEST_F(PathDabsTest, SmallestSpacingsTerminate) {
    spacing = minSpacing;
    radius = 0.5f;
    const Dabs dabs = InView({Sample(400, 300), Sample(401, 300)});
    EXPECT_NEAR(static_cast<double>(dabs.size()), 101.0, 1.0) << "a thousandth of the radius";
}

}  // namespace
}  // namespace trovik::test
