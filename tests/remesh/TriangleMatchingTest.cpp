// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/TriangleMatching.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <random>

namespace trovik::test {
namespace {

constexpr uint32_t none = TriangleMatching::none;
using Candidates = std::vector<TriangleMatching::Candidates>;

/// Adds a candidate pair; returns false if one of the triangles already has three.
bool Link(Candidates& triangles, uint32_t a, uint32_t b, float quality) {
    const auto freeSide = [&](uint32_t triangle) {
        return std::ranges::find_if(triangles[triangle],
                                    [](const auto& side) { return side.neighbour == none; });
    };
    const auto sideOfA = freeSide(a);
    const auto sideOfB = freeSide(b);
    if (sideOfA == triangles[a].end() || sideOfB == triangles[b].end()) return false;
    *sideOfA = {b, quality};
    *sideOfB = {a, quality};
    return true;
}

std::size_t PairCount(const TriangleMatching& matching) {
    const auto& partners = matching.Partners();
    std::size_t count = 0;
    for (uint32_t triangle = 0; triangle < partners.size(); ++triangle) {
        if (partners[triangle] == none) continue;
        EXPECT_EQ(partners[partners[triangle]], triangle);
        EXPECT_GT(matching.QualityOfPair(triangle), 0.0f);
        ++count;
    }
    return count / 2;
}

/// The largest number of pairs, by trying all of them.
std::size_t MaxPairs(const Candidates& triangles) {
    const std::size_t count = triangles.size();
    std::vector<uint8_t> most(std::size_t{1} << count);
    for (uint32_t used = 1; used < most.size(); ++used) {
        const auto first = static_cast<uint32_t>(std::countr_zero(used));
        const uint32_t rest = used & (used - 1);
        most[used] = most[rest];
        for (const auto& side : triangles[first])
            if (side.neighbour != none && (rest >> side.neighbour & 1u) != 0)
                most[used] =
                    std::max<uint8_t>(most[used], most[rest & ~(1u << side.neighbour)] + 1);
    }
    return most.back();
}

TEST(TriangleMatching, PrefersTheBestPairs) {
    Candidates triangles(4);
    Link(triangles, 0, 1, 0.2f);
    Link(triangles, 1, 2, 0.9f);
    Link(triangles, 2, 3, 0.2f);
    TriangleMatching matching(triangles);
    matching.PairGreedily([](uint32_t, uint32_t) { return true; });
    EXPECT_EQ(matching.Partners(), (std::vector<uint32_t>{none, 2, 1, none}));
    matching.Augment();
    EXPECT_EQ(matching.Partners(), (std::vector<uint32_t>{1, 0, 3, 2}));
    matching.Ban(0);
    matching.Augment();
    EXPECT_EQ(PairCount(matching), 1u);
    EXPECT_EQ(matching.Partners()[0], none);
    matching.LiftBans();
    matching.Augment();
    EXPECT_EQ(matching.Partners(), (std::vector<uint32_t>{1, 0, 3, 2}));
}

TEST(TriangleMatching, MayRefusePairs) {
    Candidates triangles(2);
    Link(triangles, 0, 1, 0.5f);
    TriangleMatching matching(triangles);
    matching.PairGreedily([](uint32_t triangle, uint32_t side) {
        EXPECT_EQ(triangle, 0u);
        EXPECT_EQ(side, 0u);
        return false;
    });
    EXPECT_EQ(PairCount(matching), 0u);
}

TEST(TriangleMatching, FindsAsManyPairsAsPossible) {
    std::mt19937 random(7);
    std::size_t augmented = 0;
    for (int graph = 0; graph < 2000; ++graph) {
        const std::size_t count = 2 + random() % 13;
        Candidates triangles(count);
        const std::size_t links = random() % (2 * count);
        for (std::size_t i = 0; i < links; ++i) {
            const auto a = static_cast<uint32_t>(random() % count);
            const auto b = static_cast<uint32_t>(random() % count);
            const bool isLinked = std::ranges::any_of(
                triangles[a], [b](const auto& side) { return side.neighbour == b; });
            if (a != b && !isLinked) Link(triangles, a, b, static_cast<float>(1 + random() % 5));
        }
        TriangleMatching matching(triangles);
        matching.PairGreedily([](uint32_t, uint32_t) { return true; });
        const std::size_t greedy = PairCount(matching);
        matching.Augment();
        const std::size_t pairs = PairCount(matching);
        ASSERT_EQ(pairs, MaxPairs(triangles)) << graph;
        if (pairs > greedy) ++augmented;
    }
    EXPECT_GT(augmented, 50u);
}

}  // namespace
}  // namespace trovik::test
