// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/strokes/MirrorMaps.h"
#include "tests/mirror/Ball.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace trovik::test {
namespace {

Vector Through(const Matrix& map, const Vector& p) { return map.AffineTransform(p, 1.0f); }

TEST(MirrorMaps, OfNoMirrorsAreEmpty) {
    EXPECT_TRUE(MirrorMaps({}).empty());
    EXPECT_TRUE(MirrorMaps({{}, 1, 2}).empty());
}

TEST(MirrorMaps, OfPlanesAreTheirProducts) {
    const std::vector<Matrix> maps = MirrorMaps({{0, 2}, 1, 1});
    ASSERT_EQ(3u, maps.size());
    EXPECT_EQ(Vector(-1, 2, 3), Through(maps[0], {1, 2, 3}));
    EXPECT_EQ(Vector(1, 2, -3), Through(maps[1], {1, 2, 3}));
    EXPECT_EQ(Vector(-1, 2, -3), Through(maps[2], {1, 2, 3}));
}

TEST(MirrorMaps, OfCopiesRotateAboutTheirAxisWithExactQuarterTurns) {
    const std::vector<Matrix> maps = MirrorMaps({{}, 4, 2});
    ASSERT_EQ(3u, maps.size());
    EXPECT_EQ(Vector(-2, 1, 3), Through(maps[0], {1, 2, 3}));
    EXPECT_EQ(Vector(-1, -2, 3), Through(maps[1], {1, 2, 3}));
    EXPECT_EQ(Vector(2, -1, 3), Through(maps[2], {1, 2, 3}));
    const std::vector<Matrix> about[] = {MirrorMaps({{}, 3, 0}), MirrorMaps({{}, 3, 1})};
    const Vector x = Through(about[0][0], {5, 1, 0});
    EXPECT_NEAR(5.0f, x.x, 1e-6f);
    EXPECT_NEAR(-0.5f, x.y, 1e-6f);
    EXPECT_NEAR(0.8660254f, x.z, 1e-6f);
    const Vector y = Through(about[1][0], {0, 5, 1});
    EXPECT_NEAR(0.8660254f, y.x, 1e-6f);
    EXPECT_NEAR(5.0f, y.y, 1e-6f);
    EXPECT_NEAR(-0.5f, y.z, 1e-6f);
}

TEST(MirrorMaps, DuplicatesAreListedOnce) {
    // Half a turn about z is the reflection in x and y.
    EXPECT_EQ(3u, MirrorMaps({{0, 1}, 2, 2}).size());
    // A plane through the axis and five rotations: ten copies in total.
    EXPECT_EQ(9u, MirrorMaps({{0}, 5, 1}).size());
    EXPECT_EQ(9u, MirrorMaps({{1}, 5, 1}).size());
}

TEST(MirrorMaps, TooManyAreRefusedAndTheOldMirrorsAreKept) {
    BallDocument ball(4);
    ball->SetMirrors({{0}, 1, 1});
    try {
        ball->SetMirrors({{0, 1}, 40, 1});
        FAIL();
    } catch (const HostError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("copies of each dab; the maximum is 65"));
    }
    EXPECT_EQ(1u, ball->Settings().mirrorMaps.size());
    EXPECT_NO_THROW(ball->SetMirrors({{}, 65, 1}));
}

TEST(MirrorMaps, OfCopiesRepeatEveryDab) {
    BallDocument ball(48);
    ball->SetMirrors({{}, 6, 1});
    ball.Tool("Sculpt");
    const std::vector<Vector> before = ball.Positions();
    ball.Stroke({{0.9f, 0.3f, 0.2f}}, 0.15f);
    EXPECT_EQ(6u, ball->Totals().dabs);
    // Each sixth of the ball around y has a similar number of moved vertices. The numbers differ
    // because the faces are arranged differently in each sixth.
    std::size_t moved[6] = {};
    for (uint32_t v = 0; v < before.size(); ++v) {
        if (before[v] == ball.Mesh().Position(v)) continue;
        const float angle = std::atan2(before[v].x, before[v].z) - std::atan2(0.9f, 0.2f);
        const float sixth = angle / (2.0f * 3.14159265f) * 6.0f + 12.5f;
        ++moved[static_cast<int>(sixth) % 6];
    }
    for (const std::size_t count : moved) {
        EXPECT_GT(count, moved[0] / 3);
        EXPECT_LT(count, moved[0] * 3);
        EXPECT_GT(count, 20u);
    }
}

}  // namespace
}  // namespace trovik::test
