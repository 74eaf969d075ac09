// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/ArcPath.h"
#include "framework/strokes/PathShape.h"
#include "tests/brushes/PathFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace trovik::test {
namespace {

std::vector<PathSample> Through(const std::vector<Vector>& positions) {
    std::vector<PathSample> samples;
    samples.reserve(positions.size());
    for (const Vector& position : positions) samples.push_back(Sample(position.x, position.y));
    return samples;
}

/// The largest distance between points at the same fraction of each path's length.
float Apart(const std::vector<PathSample>& a, const std::vector<PathSample>& b) {
    const ArcPath first(a);
    const ArcPath second(b);
    float apart = 0.0f;
    for (int k = 0; k <= 1000; ++k) {
        const double share = k / 1000.0;
        apart = std::max(apart,
                         (first.At(first.Length() * share).position -
                          second.At(second.Length() * share).position)
                             .Length());
    }
    return apart;
}

std::vector<PathSample> Smoothed(const std::vector<PathSample>& samples, float length) {
    PathShape shape;
    shape.smoothing = length;
    return Shaped(samples, shape);
}

std::vector<PathSample> Stabilised(const std::vector<PathSample>& samples,
                                   float length,
                                   bool timed = false) {
    PathShape shape;
    shape.steady = length;
    return Shaped(samples, shape, timed);
}

std::vector<PathSample> Snapped(const std::vector<PathSample>& samples,
                                const std::vector<Vector>& curve,
                                float distance) {
    PathShape shape;
    shape.snapTo = curve;
    shape.snapDistance = distance;
    return Shaped(samples, shape);
}

TEST(SmoothedPath, StraightPathAndItsPressureStayUnchanged) {
    const auto path = Smoothed({Sample(10, 20, 0.0f), Sample(110, 20, 1.0f)}, 30.0f);
    ASSERT_GT(path.size(), 40u);
    for (const PathSample& sample : path) {
        EXPECT_NEAR(sample.position.y, 20.0f, 1e-4f);
        EXPECT_NEAR(sample.pressure, (sample.position.x - 10.0f) * 0.01f, 1e-5f);
    }
    EXPECT_EQ(path.front().position, Vector(10, 20, 0));
    EXPECT_EQ(path.back().position, Vector(110, 20, 0));
}

TEST(SmoothedPath, CornerBecomesAParabola) {
    // At the corner, the mean covers the last ten units before it and the first ten after it. The
    // samples of each part are 5 units from the corner on average and have half the weight.
    const ArcPath path(Smoothed(Through({{0, 0, 0}, {100, 0, 0}, {100, 100, 0}}), 20.0f));
    float nearest = 100.0f;
    for (const PathSample& sample : path.Knots())
        nearest = std::min(nearest, (sample.position - Vector(97.5f, 2.5f, 0)).Length());
    EXPECT_LT(nearest, 1e-3f);
    EXPECT_TRUE(path.Corners().empty() || path.Corners().size() > 8) << "no sharp corner is left";
}

TEST(SmoothedPath, ZigzagShrinks) {
    std::vector<Vector> zigzag;
    for (int i = 0; i <= 200; ++i)
        zigzag.emplace_back(static_cast<float>(i), i % 2 == 0 ? 1.0f : -1.0f, 0.0f);
    const auto path = Smoothed(Through(zigzag), 24.0f);
    for (const PathSample& sample : path)
        if (sample.position.x > 15.0f && sample.position.x < 185.0f) {
            EXPECT_LT(std::fabs(sample.position.y), 0.1f);
        }
}

TEST(SmoothedPath, DoesNotDependOnTheNumberOfSamples) {
    const auto rough = Through({{0, 0, 0}, {40, 13, 0}, {55, 71, 0}, {20, 90, 0}});
    const auto path = Smoothed(rough, 25.0f);
    EXPECT_GT(Apart(path, rough), 1.0f);
    for (const int parts : {2, 7, 50})
        EXPECT_LT(Apart(Smoothed(Finer(rough, parts), 25.0f), path), 2e-4f) << parts;
}

TEST(SteadyStroke, BrushFollowsAtTheLengthOfTheStabiliser) {
    const auto path = Stabilised(Through({{0, 0, 0}, {100, 0, 0}}), 30.0f);
    EXPECT_EQ(path.front().position, Vector(0, 0, 0));
    EXPECT_NEAR(path.back().position.x, 70.0f, 1e-4f)
        << "one stabiliser length behind, without a jump";
    for (std::size_t i = 1; i < path.size(); ++i)
        EXPECT_LE((path[i].position - path[i - 1].position).Length(), 30.0f / 16.0f + 1e-4f);
}

TEST(SteadyStroke, PathAroundACornerIsATractrix) {
    // The stabiliser's cord lies along x when the pen turns at a right angle. Along a tractrix, the
    // brush lags behind the pen's distance d by l tanh(d / l), and its lateral distance is l /
    // cosh(d / l), where l is the length of the cord.
    const float cord = 20.0f;
    const auto path = Stabilised(Through({{0, 0, 0}, {100, 0, 0}, {100, 45, 0}}), cord);
    const float d = 45.0f / cord;
    EXPECT_NEAR(path.back().position.x, 100.0f - cord / std::cosh(d), 1e-3f);
    EXPECT_NEAR(path.back().position.y, 45.0f - cord * std::tanh(d), 1e-3f);
}

TEST(SteadyStroke, MotionWithinTheStabiliserLengthMovesNothing) {
    const auto path =
        Stabilised(Through({{0, 0, 0}, {50, 0, 0}, {20, 0, 0}, {45, 3, 0}, {30, -4, 0}}), 20.0f);
    EXPECT_NEAR(path.back().position.x, 30.0f, 1e-3f);
    EXPECT_NEAR(path.back().position.y, 0.0f, 1e-3f);
    EXPECT_NEAR(ArcPath(path).Length(), 30.0, 1e-2);
}

TEST(SteadyStroke, DoesNotDependOnTheNumberOfSamples) {
    const auto rough = Through({{0, 0, 0}, {60, 10, 0}, {50, 80, 0}, {-20, 60, 0}, {30, 60, 0}});
    const auto path = Stabilised(rough, 18.0f);
    for (const int parts : {2, 7, 50})
        EXPECT_LT(Apart(Stabilised(Finer(rough, parts), 18.0f), path), 2e-4f) << parts;
}

TEST(SteadyStroke, TimeContinuesWhileTheBrushIsStationary) {
    const auto path =
        Stabilised({Sample(0, 0, 1, 0), Sample(50, 0, 1, 1), Sample(50, 0, 1, 5)}, 20.0f, true);
    const ArcPath way(path, true);
    ASSERT_FALSE(way.Pauses().empty());
    EXPECT_NEAR(way.Pauses().back().at, 30.0, 1e-4);
    EXPECT_EQ(way.Knots().back().time, 5.0);
}

TEST(StraightLine, RunsFromPressToReleaseWithTheRecordedPressures) {
    const auto line = Straightened(
        {Sample(0, 0, 0.0f), Sample(30, 40, 1.0f), Sample(100, 40, 0.5f), Sample(120, 0, 0)});
    ASSERT_EQ(line.size(), 4u);
    for (const PathSample& sample : line) EXPECT_EQ(sample.position.y, 0.0f);
    const float whole = 50.0f + 70.0f + std::sqrt(2000.0f);
    EXPECT_NEAR(line[1].position.x, 120.0f * 50.0f / whole, 1e-4f);
    EXPECT_EQ(line[1].pressure, 1.0f);
    EXPECT_EQ(line[3].position, Vector(120, 0, 0));
}

TEST(CurveThroughPoints, PassesThroughEachPointSmoothly) {
    const auto points = Through({{0, 0, 0}, {10, 30, 0}, {60, 35, 0}, {62, 30, 0}, {90, 0, 0}});
    const auto curve = CurveThrough(points);
    EXPECT_EQ(curve.size(), 4u * 64u + 1u);
    for (std::size_t i = 0; i < points.size(); ++i)
        EXPECT_EQ(curve[i * 64].position, points[i].position) << i;
    EXPECT_EQ(ArcPath(points).Corners().size(), 3u);
    for (std::size_t i = 1; i + 1 < curve.size(); ++i) {
        const Vector in = (curve[i].position - curve[i - 1].position).Normalized();
        const Vector out = (curve[i + 1].position - curve[i].position).Normalized();
        EXPECT_GT(in | out, 0.97f) << i;
    }
}

TEST(CurveThroughPoints, IsStraightThroughCollinearPoints) {
    const auto curve = CurveThrough({Sample(0, 0, 0.0f),
                                     Sample(10, 10, 1.0f),
                                     Sample(10, 10, 0.3f),
                                     Sample(15, 15, 0.5f),
                                     Sample(40, 40, 0)});
    for (const PathSample& sample : curve) EXPECT_NEAR(sample.position.x, sample.position.y, 1e-5f);
    EXPECT_NEAR(ArcPath(curve).Length(), 40.0 * std::sqrt(2.0), 1e-4) << "never back";
    EXPECT_EQ(curve[32].pressure, 0.5f);
    EXPECT_EQ(CurveThrough(Through({{0, 0, 0}, {5, 0, 0}})).size(), 2u);
}

TEST(SnapToCurve, SnapsThePenToANearbyCurve) {
    // A hand that wavers along y = 50 and then moves away from it.
    std::vector<Vector> hand;
    for (int i = 0; i <= 100; ++i)
        hand.emplace_back(
            static_cast<float>(2 * i), 50.0f + 6.0f * std::sin(0.4f * static_cast<float>(i)), 0.0f);
    hand.emplace_back(200.0f, 100.0f, 0.0f);
    const auto path = Snapped(Through(hand), {{0, 50, 0}, {300, 50, 0}}, 8.0f);
    std::size_t held = 0;
    for (const PathSample& sample : path) {
        if (sample.position.x < 199.0f) {
            EXPECT_EQ(sample.position.y, 50.0f);
        }
        if (sample.position.y == 50.0f) ++held;
        EXPECT_FALSE(sample.position.y > 50.0f && sample.position.y <= 57.9f)
            << "on the curve, or unaffected";
    }
    EXPECT_GT(held, 100u);
    EXPECT_EQ(path.back().position, Vector(200, 100, 0));
}

TEST(SnapToCurve, PathFarFromTheCurveStaysUnchanged) {
    const auto rough = Through({{0, 0, 0}, {60, 10, 0}, {50, 80, 0}});
    EXPECT_LT(Apart(Snapped(rough, {{0, 200, 0}, {300, 200, 0}}, 20.0f), rough), 1e-4f);
}

TEST(ShapedPath, PathWithoutAShapeStaysUnchanged) {
    const auto rough = Through({{0, 0, 0}, {60, 10, 0}, {50, 80, 0}});
    const auto same = Shaped(rough, PathShape());
    ASSERT_EQ(same.size(), rough.size());
    for (std::size_t i = 0; i < rough.size(); ++i) EXPECT_EQ(same[i].position, rough[i].position);
    PathShape shape;
    shape.line = true;
    shape.steady = 10.0f;
    const auto both = Shaped(rough, shape);
    const float whole = std::sqrt(50.0f * 50.0f + 80.0f * 80.0f);
    EXPECT_NEAR((both.back().position - Vector(50, 80, 0)).Length(), 10.0f, 1e-4f);
    EXPECT_NEAR(both.back().position.x, 50.0f * (1.0f - 10.0f / whole), 1e-3f);
}

}  // namespace
}  // namespace trovik::test
