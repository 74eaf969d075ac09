// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/ArcPath.h"
#include "framework/strokes/PathResampler.h"

#include <gtest/gtest.h>

#include <cmath>

namespace trovik::test {
namespace {

PathSample At(float x, float y, float pressure = 1.0f, double time = 0.0) {
    PathSample sample;
    sample.position = {x, y, 0.0f};
    sample.pressure = pressure;
    sample.time = time;
    return sample;
}

TEST(ArcPath, IsEvaluatedByArcLength) {
    const ArcPath path({At(0, 0, 0.0f), At(3, 4, 0.5f), At(3, 10, 1.0f)});
    EXPECT_EQ(path.Length(), 11.0);
    EXPECT_EQ(path.At(2.5).position, Vector(1.5f, 2.0f, 0.0f));
    EXPECT_EQ(path.At(2.5).pressure, 0.25f);
    EXPECT_EQ(path.At(8.0).position, Vector(3.0f, 7.0f, 0.0f));
    EXPECT_EQ(path.At(8.0).pressure, 0.75f);
    EXPECT_EQ(path.At(-1.0).position, Vector(0.0f, 0.0f, 0.0f));
    EXPECT_EQ(path.At(99.0).position, Vector(3.0f, 10.0f, 0.0f));
    EXPECT_EQ(path.Along(1.0), Vector(3.0f, 4.0f, 0.0f));
    EXPECT_EQ(path.Along(5.0), Vector(0.0f, 6.0f, 0.0f));
    EXPECT_EQ(path.Along(11.0), Vector(0.0f, 6.0f, 0.0f));
}

TEST(ArcPath, ExtraSampleOnAStraightSegmentChangesNoBit) {
    const ArcPath plain({At(1, 2, 0.25f), At(9, 6, 0.75f), At(9, 1, 0.0f)});
    const ArcPath fuller({At(1, 2, 0.25f),
                          At(3, 3, 0.375f),
                          At(5, 4, 0.5f),
                          At(5, 4, 0.5f),
                          At(9, 6, 0.75f),
                          At(9, 1, 0.0f)});
    ASSERT_EQ(fuller.Knots().size(), 3u);
    EXPECT_EQ(fuller.Reached(), plain.Reached());
    for (int step = 0; step < 38; ++step) {
        const double at = 0.37 * step;
        EXPECT_EQ(fuller.At(at).position, plain.At(at).position) << at;
        EXPECT_EQ(fuller.At(at).pressure, plain.At(at).pressure) << at;
    }
}

TEST(ArcPath, SignificantSamplesAreKept) {
    EXPECT_EQ(ArcPath({At(0, 0, 0), At(2, 0, 1), At(4, 0, 0)}).Knots().size(), 3u) << "pressure";
    EXPECT_EQ(ArcPath({At(0, 0), At(4, 0), At(2, 0)}).Length(), 6.0) << "the pen reversed";
    const std::vector<PathSample> uneven{At(0, 0, 1, 0), At(2, 0, 1, 5), At(4, 0, 1, 6)};
    EXPECT_EQ(ArcPath(uneven, false).Knots().size(), 2u);
    EXPECT_EQ(ArcPath(uneven, true).Knots().size(), 3u);
}

TEST(ArcPath, FindsCornersAndPauses) {
    const ArcPath path({At(0, 0, 1, 0),
                        At(4, 0, 1, 1),
                        At(4, 0, 0.5f, 3),
                        At(4, 0, 0.25f, 4),
                        At(4, 2, 0.25f, 5),
                        At(8, 2.05f, 1, 6),
                        At(12, 2.1f, 1, 7)},
                       true);
    ASSERT_EQ(path.Corners().size(), 2u);
    EXPECT_EQ(path.Corners()[0], 4.0);
    EXPECT_EQ(path.Corners()[1], 6.0);
    ASSERT_EQ(path.Pauses().size(), 1u);
    const ArcPath::Pause rest = path.Pauses()[0];
    EXPECT_EQ(rest.at, 4.0);
    EXPECT_EQ(path.At(4.0, ArcPath::Side::Before).time, 1.0);
    EXPECT_EQ(path.At(4.0, ArcPath::Side::After).time, 4.0);
    EXPECT_EQ(path.During(rest, 2.0).pressure, 0.75f);
    EXPECT_EQ(path.During(rest, 3.5).pressure, 0.375f);
}

TEST(ArcPath, ResamplingKeepsCornersPausesAndTheEnd) {
    const ArcPath path(
        {At(0, 0, 1, 0), At(2.5f, 0, 1, 1), At(2.5f, 0, 1, 3), At(2.5f, 1.25f, 1, 4)}, true);
    std::vector<PathSample> samples;
    PathResampler(path, 1.0).Take([&](double at) { return path.At(at).position; }, true, samples);
    const std::vector<Vector> positions{{0, 0, 0},
                                        {1, 0, 0},
                                        {2, 0, 0},
                                        {2.5f, 0, 0},
                                        {2.5f, 0, 0},
                                        {2.5f, 0.5f, 0},
                                        {2.5f, 1.25f, 0}};
    ASSERT_EQ(samples.size(), positions.size());
    for (std::size_t i = 0; i < positions.size(); ++i)
        EXPECT_EQ(samples[i].position, positions[i]) << i;
    EXPECT_EQ(samples[3].time, 1.0);
    EXPECT_EQ(samples[4].time, 3.0);
}

TEST(ArcPath, PathOfOnePointHasNoLength) {
    const ArcPath path({At(3, 4), At(3, 4)});
    EXPECT_EQ(path.Length(), 0.0);
    EXPECT_EQ(path.At(0.0).position, Vector(3.0f, 4.0f, 0.0f));
    EXPECT_EQ(path.Along(0.0), Vector());
    EXPECT_TRUE(ArcPath({}).IsEmpty());
}

}  // namespace
}  // namespace trovik::test
