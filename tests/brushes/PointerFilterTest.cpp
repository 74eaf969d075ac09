// SPDX-License-Identifier: Apache-2.0

/// \file Tests the pointer filter on recorded pointer streams with pen and driver faults. A
/// filtered stroke passes if its dabs match those of the stroke without faults: the number of dabs
/// differs by at most one, and each dab is within a quarter of the spacing of the expected position
/// and within 0.06 of the expected pressure.
#include "framework/script/PenStream.h"
#include "framework/strokes/PointerFilter.h"
#include "tests/SourceFolder.h"
#include "tests/brushes/PathFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace trovik::test {
namespace {

using Dabs = std::vector<RecordingBrush::Dab>;

std::vector<PathSample> Stream(const std::string& name) {
    return ReadPenStream(SourceFolder() + "/tests/data/pointer/" + name + ".json");
}

class PointerFilterTest : public testing::Test, protected PathFixture {
protected:
    PointerFilterTest() { expected = InView(Stream("clean")); }

    struct Faults {
        float position = 0.0f;
        float pressure = 0.0f;
        std::size_t count = 0;
    };
    /// The differences from the stroke without faults, dab by dab.
    Faults FaultsOf(const std::vector<PathSample>& samples) {
        const Dabs dabs = InView(samples);
        Faults faults;
        faults.count = dabs.size() > expected.size() ? dabs.size() - expected.size()
                                                     : expected.size() - dabs.size();
        for (std::size_t i = 0; i < std::min(dabs.size(), expected.size()); ++i) {
            faults.position =
                std::max(faults.position, (dabs[i].position - expected[i].position).Length());
            faults.pressure =
                std::max(faults.pressure, std::fabs(dabs[i].pressure - expected[i].pressure));
        }
        return faults;
    }
    void ExpectClean(const std::vector<PathSample>& samples) {
        const Faults faults = FaultsOf(samples);
        EXPECT_LE(faults.count, 1u);
        EXPECT_LE(faults.position, 0.25f * 0.25f);
        EXPECT_LE(faults.pressure, 0.06f);
    }

    Dabs expected;
};

TEST_F(PointerFilterTest, StreamWithoutFaultsIsBitIdentical) {
    ASSERT_GT(expected.size(), 80u);
    const auto samples = Stream("clean");
    const auto filtered = Filtered(samples);
    ASSERT_EQ(filtered.size(), samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        EXPECT_EQ(filtered[i].position, samples[i].position) << i;
        EXPECT_EQ(filtered[i].pressure, samples[i].pressure) << i;
        EXPECT_EQ(filtered[i].time, samples[i].time) << i;
    }
}

TEST_F(PointerFilterTest, BlotAtThePressIsRemoved) {
    const auto raw = Stream("blot");
    EXPECT_GT(FaultsOf(raw).pressure, 0.5f);
    ExpectClean(Filtered(raw));
    EXPECT_LT(InView(Filtered(raw))[0].pressure, 0.2f);
}

TEST_F(PointerFilterTest, SpikeAtTheReleaseIsRemoved) {
    const auto raw = Stream("spike");
    EXPECT_GT(FaultsOf(raw).count, 10u) << "trailing dabs towards the position of the lifted pen";
    EXPECT_GT(InView(raw).back().pressure, 0.9f);
    EXPECT_LT(expected.back().pressure, 0.5f);
    ExpectClean(Filtered(raw));
    EXPECT_LT(InView(Filtered(raw)).back().pressure, 0.5f);
}

TEST_F(PointerFilterTest, DecreasingTimesAreMadeToIncrease) {
    const auto raw = Stream("jitter");
    const auto clean = Stream("clean");
    std::size_t falls = 0;
    for (std::size_t i = 1; i < raw.size(); ++i) falls += raw[i].time < raw[i - 1].time ? 1u : 0u;
    EXPECT_GT(falls, 30u);
    const auto filtered = Filtered(raw);
    std::size_t k = 0;
    for (std::size_t i = 0; i < filtered.size(); ++i) {
        // Samples with equal times, recorded while the pen is stationary, have been merged.
        while (k < clean.size() && clean[k].position != filtered[i].position) ++k;
        ASSERT_LT(k, clean.size()) << "the samples are in their original order";
        if (i > 0) {
            EXPECT_GE(filtered[i].time, filtered[i - 1].time);
        }
        if (clean[k].position == Vector(400.0f, 300.0f, 0.0f)) continue;
        EXPECT_NEAR(filtered[i].time, clean[k].time + 0.0275, 0.0275) << i;
    }
    EXPECT_EQ(filtered.back().position, clean.back().position);
    EXPECT_GE(filtered.size() + 4, clean.size());
    ExpectClean(filtered);
}

TEST_F(PointerFilterTest, AirbrushNeedsIncreasingTimes) {
    DabDynamics dynamics;
    dynamics.airbrush = 50.0f;
    const auto count = [&](const std::vector<PathSample>& samples) {
        return static_cast<int>(InView(samples, dynamics).size());
    };
    const int clean = count(Stream("clean"));
    EXPECT_GT(clean, 110);
    EXPECT_GT(std::abs(count(Stream("jitter")) - clean), 5);
    EXPECT_LE(std::abs(count(Filtered(Stream("jitter"))) - clean), 3);
}

TEST_F(PointerFilterTest, DuplicateSamplesCountOnce) {
    const auto raw = Stream("doubled");
    EXPECT_GT(FaultsOf(raw).pressure, 0.2f);
    const auto filtered = Filtered(raw);
    EXPECT_EQ(filtered.size(), Stream("clean").size());
    ExpectClean(filtered);
    EXPECT_EQ(FaultsOf(filtered).position, 0.0f);
    EXPECT_EQ(FaultsOf(filtered).pressure, 0.0f);
}

TEST_F(PointerFilterTest, LateSamplesAreMovedToTheirOrder) {
    const auto raw = Stream("late");
    EXPECT_GT(FaultsOf(raw).count, 20u) << "the unfiltered brush runs back and forth";
    const auto filtered = Filtered(raw);
    const auto clean = Stream("clean");
    ASSERT_EQ(filtered.size(), clean.size());
    ExpectClean(filtered);
}

TEST_F(PointerFilterTest, AllFaultsAtOnceAreFiltered) {
    const auto raw = Stream("everything");
    EXPECT_GT(FaultsOf(raw).count, 20u);
    ExpectClean(Filtered(raw));
}

TEST_F(PointerFilterTest, NaturalHandMotionIsNotAFault) {
    // The pressure decreases while the pen accelerates, as in a flick.
    std::vector<PathSample> samples;
    for (int i = 0; i < 12; ++i) {
        const auto t = static_cast<float>(i);
        samples.push_back(Sample(300 + 1.5f * t * t, 300, 0.9f - 0.05f * t, 0.008 * i));
    }
    const auto filtered = Filtered(samples);
    ASSERT_EQ(filtered.size(), samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        EXPECT_EQ(filtered[i].position, samples[i].position);
        EXPECT_EQ(filtered[i].pressure, samples[i].pressure);
    }
    // A tap, and a short straight stroke of two samples.
    EXPECT_EQ(Filtered({Sample(1, 1)}).size(), 1u);
    EXPECT_EQ(Filtered({Sample(1, 1), Sample(200, 1, 1, 0.5)}).size(), 2u);
    EXPECT_TRUE(Filtered({}).empty());
}

TEST_F(PointerFilterTest, SampleFarTooLateHasAWrongTime) {
    std::vector<PathSample> samples;
    samples.reserve(60);
    for (int i = 0; i < 60; ++i)
        samples.push_back(Sample(300 + static_cast<float>(i), 300, 0.5f, 1.0 + 0.008 * i));
    samples[50].time = 0.0;
    const auto filtered = Filtered(samples);
    ASSERT_EQ(filtered.size(), samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i)
        EXPECT_EQ(filtered[i].position, samples[i].position) << i;
    for (std::size_t i = 1; i < samples.size(); ++i)
        EXPECT_GE(filtered[i].time, filtered[i - 1].time) << i;
}

TEST_F(PointerFilterTest, PressureMayJumpLateInTheStroke) {
    std::vector<PathSample> samples;
    samples.reserve(40);
    for (int i = 0; i < 40; ++i)
        samples.push_back(
            Sample(300 + 4.0f * static_cast<float>(i), 300, i < 20 ? 0.2f : 0.9f, 0.008 * i));
    const auto filtered = Filtered(samples);
    for (std::size_t i = 0; i < samples.size(); ++i)
        EXPECT_EQ(filtered[i].pressure, samples[i].pressure) << i;
}

}  // namespace
}  // namespace trovik::test
