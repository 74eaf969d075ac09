// SPDX-License-Identifier: Apache-2.0

/// \file Tests that live strokes apply dabs as soon as they are final, and that the dabs are
/// bit-identical to those of the recorded stroke.
#include "framework/errors/HostError.h"
#include "framework/math/SameBits.h"
#include "framework/script/PenStream.h"
#include "framework/strokes/LiveStroke.h"
#include "tests/SourceFolder.h"
#include "tests/brushes/PathFixture.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace trovik::test {
namespace {

using Dabs = std::vector<RecordingBrush::Dab>;

constexpr const char* streams[] = {
    "clean", "blot", "spike", "jitter", "doubled", "late", "everything"};

std::vector<PathSample> Stream(const std::string& name) {
    return ReadPenStream(SourceFolder() + "/tests/data/pointer/" + name + ".json");
}

bool SameBits(const RecordingBrush::Dab& a, const RecordingBrush::Dab& b) {
    return a.hit.face == b.hit.face && a.hit.position == b.hit.position &&
           a.hit.normal == b.hit.normal && a.position == b.position && a.size == b.size &&
           a.pressure == b.pressure && a.strength == b.strength && a.previous == b.previous &&
           trovik::SameBits(a.stampMatrix, b.stampMatrix);
}

class LiveStrokeTest : public testing::Test, protected PathFixture {
protected:
    LiveStrokeTest() {
        settings.view = view;
        settings.options = bench.Options(radius, spacing);
    }

    /// Returns the dabs of the stroke that `draw(stroke)` draws, from press to release.
    template <typename Draw>
    Dabs Drawn(Draw draw) {
        brush.dabs.clear();
        bench.loop.Begin(BrushOperation::ModifierNone, 7);
        LiveStroke stroke(bench.loop, bench.geometry, bench.tree, settings);
        draw(stroke);
        stroke.Release();
        EXPECT_EQ(stroke.Count(), brush.dabs.size());
        bench.loop.End();
        return brush.dabs;
    }
    Dabs Recorded(const std::vector<PathSample>& samples) {
        return Drawn([&](LiveStroke& stroke) { stroke.Take(samples); });
    }
    /// Adds the samples in batches of 1 to `most` samples.
    Dabs InPieces(const std::vector<PathSample>& samples, std::size_t most, unsigned seed) {
        std::mt19937 random(seed);
        return Drawn([&](LiveStroke& stroke) {
            for (std::size_t i = 0; i < samples.size();) {
                const std::size_t end = std::min(samples.size(), i + 1 + random() % most);
                stroke.Add(
                    std::vector<PathSample>(samples.begin() + static_cast<std::ptrdiff_t>(i),
                                            samples.begin() + static_cast<std::ptrdiff_t>(end)));
                i = end;
            }
        });
    }
    /// Uses a budget of zero, so that each call applies one dab.
    Dabs WithoutTime(const std::vector<PathSample>& samples) {
        return Drawn([&](LiveStroke& stroke) {
            const std::size_t half = samples.size() / 2;
            const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(half);
            bool remain = stroke.Add({samples.begin(), middle}, LiveStroke::Budget::zero());
            while (remain && settings.mode == DrawMode::AlongPath) {
                const unsigned before = stroke.Count();
                remain = stroke.Continue(LiveStroke::Budget::zero());
                EXPECT_LE(stroke.Count(), before + 1);
            }
            stroke.Add({middle, samples.end()}, LiveStroke::Budget::zero());
            remain = stroke.Release(LiveStroke::Budget::zero());
            while (remain) {
                const unsigned before = stroke.Count();
                // Samples after the release have no effect.
                stroke.Add(samples.front());
                remain = stroke.Continue(LiveStroke::Budget::zero());
                EXPECT_LE(stroke.Count(), before + 1);
            }
        });
    }
    void ExpectSameInAnyPieces(const std::vector<PathSample>& samples) {
        const Dabs expected = Recorded(samples);
        ASSERT_FALSE(expected.empty());
        for (const std::size_t most : {1u, 3u, 40u}) {
            const Dabs dabs = InPieces(samples, most, static_cast<unsigned>(samples.size()));
            ASSERT_EQ(dabs.size(), expected.size()) << most;
            for (std::size_t i = 0; i < dabs.size(); ++i)
                ASSERT_TRUE(SameBits(dabs[i], expected[i])) << i << " in pieces of up to " << most;
        }
        const Dabs oneByOne = WithoutTime(samples);
        ASSERT_EQ(oneByOne.size(), expected.size());
        for (std::size_t i = 0; i < oneByOne.size(); ++i)
            ASSERT_TRUE(SameBits(oneByOne[i], expected[i])) << i << " with no time budget";
    }
    /// Checks every recorded pen stream, and straight mouse strokes.
    void ExpectAllSame() {
        for (const char* name : streams) {
            SCOPED_TRACE(name);
            ExpectSameInAnyPieces(Stream(name));
        }
        ExpectSameInAnyPieces(Mouse());
    }
    /// Samples at whole pixels along straight lines, with a pause and without pressure.
    static std::vector<PathSample> Mouse() {
        std::vector<PathSample> samples;
        double time = 1.0;
        const auto go = [&](float x, float y) {
            samples.push_back(Sample(x, y, 1.0f, time));
            time += 0.008;
        };
        for (int i = 0; i <= 40; ++i) go(300.0f + 3.0f * static_cast<float>(i), 250.0f);
        for (int i = 0; i < 30; ++i) go(420.0f, 250.0f);
        for (int i = 1; i <= 40; ++i)
            go(420.0f - static_cast<float>(i), 250.0f + static_cast<float>(3 * i));
        return samples;
    }

    LiveStrokeSettings settings;
};

TEST_F(LiveStrokeTest, SplittingTheSamplesDoesNotChangeTheDabs) { ExpectAllSame(); }

TEST_F(LiveStrokeTest, SplittingUnfilteredSamplesDoesNotChangeTheDabs) {
    settings.isFiltered = false;
    ExpectAllSame();
}

TEST_F(LiveStrokeTest, SplittingDoesNotChangeTheDabsOfAnyPathShape) {
    for (int shape = 0; shape < 7; ++shape) {
        SCOPED_TRACE(shape);
        settings.shape = {};
        if (shape == 0 || shape == 5) settings.shape.smoothing = 40.0f;
        if (shape == 1 || shape == 5) settings.shape.steady = 25.0f;
        if (shape == 2 || shape == 5 || shape == 6) settings.shape.curve = true;
        if (shape == 3) settings.shape.line = true;
        if (shape == 4 || shape == 5) {
            settings.shape.snapTo = {{250, 200, 0}, {420, 330, 0}, {600, 250, 0}};
            settings.shape.snapDistance = 60.0f;
            settings.shape.snapSmoothly = shape == 5;
        }
        settings.dynamics.airbrush = shape == 6 ? 40.0f : 0.0f;
        ExpectAllSame();
    }
}

TEST_F(LiveStrokeTest, SplittingDoesNotChangeAirbrushRandomOrFollowingStampDabs) {
    brush.EnableStamp(16, 16);
    brush.SetToolName("Knife");
    brush.strokeOptionD.SetValue(true, true);
    settings.dynamics.randomSize = 0.4f;
    settings.dynamics.tiltRotatesStamp = true;
    for (const float rate : {0.0f, 20.0f, 90.0f}) {
        SCOPED_TRACE(rate);
        settings.dynamics.airbrush = rate;
        settings.shape = {};
        ExpectAllSame();
        settings.shape.smoothing = 30.0f;
        ExpectAllSame();
        settings.shape.steady = 15.0f;
        ExpectAllSame();
    }
}

TEST_F(LiveStrokeTest, SplittingSurfacePointsDoesNotChangeTheDabs) {
    settings.space = PathSpace::Surface;
    settings.isFiltered = false;
    std::vector<PathSample> samples;
    for (const PathSample& sample : Stream("clean")) {
        samples.push_back(sample);
        samples.back().position = {sample.position.x / 50.0f, sample.position.y / 50.0f, 0.0f};
    }
    ExpectSameInAnyPieces(samples);
    settings.shape.steady = 0.75f;
    ExpectSameInAnyPieces(samples);
}

TEST_F(LiveStrokeTest, StraightSegmentIsNotDelayedUntilItTurns) {
    settings.isFiltered = false;
    Drawn([&](LiveStroke& stroke) {
        for (int i = 0; i <= 100; ++i) {
            stroke.Add(Sample(300.0f + 2.0f * static_cast<float>(i), 300.0f));
            // 20 pixels are one unit. There is a dab every quarter unit, delayed by up to half a
            // pixel.
            if (i == 0) {
                EXPECT_TRUE(brush.dabs.empty());
                continue;
            }
            EXPECT_GE(brush.dabs.size(), static_cast<std::size_t>((2.0 * i - 0.5) / 5.0) + 1) << i;
            EXPECT_LE(brush.dabs.size(), static_cast<std::size_t>(2.0 * i / 5.0) + 1) << i;
        }
    });
    EXPECT_EQ(brush.dabs.size(), 41u);
}

TEST_F(LiveStrokeTest, FilterDelaysByFiftyMilliseconds) {
    PointerFilter filter;
    const auto samples = Stream("clean");
    std::size_t out = 0;
    std::size_t longest = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto certain = filter.Add({samples[i]});
        out += certain.size();
        // Samples are 8 ms apart.
        if (i < 11) {
            EXPECT_EQ(out, 0u) << "the press is not final yet";
            continue;
        }
        longest = std::max(longest, i + 1 - out);
    }
    EXPECT_EQ(longest, 7u);
    PointerLimits limits;
    limits.lateTime = 0.0;
    PointerFilter quick(limits);
    out = 0;
    for (std::size_t i = 0; i < 100; ++i) {
        out += quick.Add({samples[i]}).size();
        if (i >= 8) {
            EXPECT_EQ(i + 1 - out, 4u) << "the spike's";
        }
    }
}

TEST_F(LiveStrokeTest, SmoothingLagsByHalfItsLength) {
    settings.isFiltered = false;
    settings.shape.smoothing = 40.0f;
    Drawn([&](LiveStroke& stroke) {
        for (int i = 0; i <= 100; ++i) {
            stroke.Add(Sample(300.0f + 2.0f * static_cast<float>(i), 300.0f));
            if (brush.dabs.empty()) continue;
            const double behind =
                2.0 * i - 20.0 * (static_cast<double>(brush.dabs.back().position.x) - 3.0);
            EXPECT_GE(behind, 19.9);
            // Beyond this delay, the dab lags by at most one smoothing step plus the dab spacing.
            EXPECT_LE(behind, 20.0 + 2.5 + 5.0 + 2.0);
        }
    });
    EXPECT_EQ(brush.dabs.size(), 41u);
}

TEST_F(LiveStrokeTest, AirbrushContinuesByTheTimesOfTicks) {
    settings.dynamics.airbrush = 10.0f;
    std::size_t resting = 0;
    const Dabs live = Drawn([&](LiveStroke& stroke) {
        stroke.Tick(1.0);
        stroke.Add(Sample(400, 300, 0.5f, 3.0));
        for (int k = 1; k <= 55; ++k) stroke.Tick(3.0 + 0.01 * k);
        stroke.Tick(2.0);
        resting = brush.dabs.size();
    });
    // The pen does not move until 3.55 s; the filter delays the last 0.05 s until the release.
    EXPECT_EQ(resting, 5u);
    EXPECT_EQ(live.size(), 6u);
    std::vector<PathSample> samples{Sample(400, 300, 0.5f, 3.0)};
    for (int k = 1; k <= 55; ++k) samples.push_back(Sample(400, 300, 0.5f, 3.0 + 0.01 * k));
    const Dabs recorded = Recorded(samples);
    ASSERT_EQ(recorded.size(), live.size());
    for (std::size_t i = 0; i < live.size(); ++i) EXPECT_TRUE(SameBits(live[i], recorded[i])) << i;
}

TEST_F(LiveStrokeTest, TickAppliesDabsDelayedByTheFilter) {
    std::size_t drawn = 0;
    Drawn([&](LiveStroke& stroke) {
        for (int i = 0; i <= 50; ++i)
            stroke.Add(Sample(300.0f + 2.0f * static_cast<float>(i), 300, 0.5f, 0.008 * i));
        drawn = brush.dabs.size();
        for (int k = 1; k <= 6; ++k) stroke.Tick(0.4 + 0.016 * k);
        EXPECT_EQ(brush.dabs.size(), 21u);
    });
    EXPECT_EQ(drawn, 18u);
    EXPECT_EQ(brush.dabs.size(), 21u);
}

TEST_F(LiveStrokeTest, LineWaitsForItsEndAndHasAPreview) {
    settings.shape.line = true;
    Drawn([&](LiveStroke& stroke) {
        for (int i = 0; i <= 20; ++i)
            stroke.Add(Sample(300.0f + 5.0f * static_cast<float>(i),
                              300.0f + static_cast<float>(i % 3),
                              0.5f,
                              0.008 * i));
        EXPECT_TRUE(brush.dabs.empty());
        const auto preview = stroke.Preview();
        ASSERT_GE(preview.size(), 2u);
        EXPECT_EQ(preview.front().position, Vector(300, 300, 0));
        EXPECT_EQ(preview.back().position, Vector(400, 302, 0));
        for (const PathSample& sample : preview)
            EXPECT_NEAR(sample.position.y, 300.0f + (sample.position.x - 300.0f) * 0.02f, 1e-3f);
    });
    EXPECT_EQ(brush.dabs.size(), 21u);
}

TEST_F(LiveStrokeTest, CurveWaitsForOneMoreSample) {
    settings.isFiltered = false;
    settings.shape.curve = true;
    Drawn([&](LiveStroke& stroke) {
        stroke.Add(Sample(300, 300));
        stroke.Add(Sample(350, 300));
        EXPECT_TRUE(brush.dabs.empty());
        stroke.Add(Sample(400, 300));
        EXPECT_NEAR(brush.dabs.back().position.x, 5.5f, 1e-3f);
        stroke.Add(Sample(450, 300));
        EXPECT_NEAR(brush.dabs.back().position.x, 8.0f, 1e-3f);
    });
    EXPECT_NEAR(brush.dabs.back().position.x, 10.5f, 1e-3f);
}

TEST_F(LiveStrokeTest, ImprintFollowsThePenAndEndsWhereTheRecordedOneDoes) {
    brush.EnableStamp(16, 16);
    for (const char* name : streams) {
        for (const DrawMode mode : {DrawMode::FromCenter, DrawMode::AcrossPoints}) {
            settings.mode = mode;
            brush.drawMode = static_cast<int>(mode);
            const auto samples = Stream(name);
            const Dabs recorded = Recorded(samples);
            ASSERT_EQ(recorded.size(), 1u);
            const Dabs live = InPieces(samples, 3, 1);
            EXPECT_GT(live.size(), 50u);
            RecordingBrush::Dab last = live.back();
            // `previous` still comes from the reverted copy.
            last.previous = recorded.back().previous;
            EXPECT_TRUE(SameBits(last, recorded.back())) << name;
        }
    }
}

TEST_F(LiveStrokeTest, AbandonedStrokeAcceptsNoMoreSamples) {
    brush.dabs.clear();
    bench.loop.Begin(BrushOperation::ModifierNone);
    LiveStroke stroke(bench.loop, bench.geometry, bench.tree, settings);
    for (int i = 0; i <= 50; ++i)
        stroke.Add(Sample(300.0f + 2.0f * static_cast<float>(i), 300, 0.5f, 0.008 * i));
    const std::size_t drawn = brush.dabs.size();
    stroke.Abandon();
    stroke.Add(Sample(500, 300, 0.5f, 9.0));
    stroke.Release();
    EXPECT_EQ(brush.dabs.size(), drawn);
    EXPECT_TRUE(stroke.Preview().empty());
    bench.loop.End();
}

TEST_F(LiveStrokeTest, OverlongPathEndsTheStroke) {
    settings.isFiltered = false;
    brush.dabs.clear();
    bench.loop.Begin(BrushOperation::ModifierNone);
    LiveStroke stroke(bench.loop, bench.geometry, bench.tree, settings);
    stroke.Add({Sample(300, 300), Sample(350, 300)});
    const std::size_t drawn = brush.dabs.size();
    EXPECT_EQ(drawn, 11u);
    EXPECT_THROW(stroke.Add(Sample(1e30f, 300)), HostError);
    stroke.Add(Sample(400, 300));
    stroke.Release();
    EXPECT_EQ(brush.dabs.size(), drawn);
    bench.loop.End();
}

}  // namespace
}  // namespace trovik::test
