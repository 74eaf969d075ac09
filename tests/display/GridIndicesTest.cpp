// SPDX-License-Identifier: Apache-2.0
#include "framework/display/GridIndices.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <utility>

namespace trovik::test {
namespace {

using Point = std::pair<int, int>;

Point PointAt(uint32_t index, uint32_t depth) {
    const uint32_t points = (1u << depth) + 1;
    return {static_cast<int>(index % points), static_cast<int>(index / points)};
}

/// Twice the signed area; positive if the triangle has the orientation of the column and row axes.
int DoubleArea(const Point& a, const Point& b, const Point& c) {
    return (b.first - a.first) * (c.second - a.second) -
           (b.second - a.second) * (c.first - a.first);
}

TEST(GridIndices, EachStrideCoversTheGridOnce) {
    for (uint32_t depth = 0; depth <= GridIndices::maxDepth; ++depth) {
        const GridIndices& grid = GridIndices::OfDepth(depth);
        ASSERT_EQ(grid.StrideCount(), depth + 1);
        for (uint32_t k = 0; k <= depth; ++k) {
            SCOPED_TRACE("depth " + std::to_string(depth) + ", stride 2^" + std::to_string(k));
            const int stride = 1 << k;
            const auto indices = grid.Triangles(k);
            ASSERT_EQ(indices.size(), std::size_t{6} << (2 * (depth - k)));
            std::set<Point> firstHalves, secondHalves;
            for (std::size_t i = 0; i < indices.size(); i += 3) {
                const Point a = PointAt(indices[i], depth);
                const Point b = PointAt(indices[i + 1], depth);
                const Point c = PointAt(indices[i + 2], depth);
                ASSERT_EQ(DoubleArea(a, b, c), stride * stride) << "same orientation, half a cell";
                ASSERT_EQ(a.first % stride, 0);
                ASSERT_EQ(a.second % stride, 0);
                // Each triangle starts at the cell corner that has the flags, and contains the
                // opposite corner.
                const Point diagonal(a.first + stride, a.second + stride);
                ASSERT_TRUE(b == diagonal || c == diagonal);
                auto& halves = c == diagonal ? firstHalves : secondHalves;
                ASSERT_TRUE(halves.insert(a).second) << "the same triangle twice";
            }
            EXPECT_EQ(firstHalves.size(), indices.size() / 6);
            EXPECT_EQ(firstHalves, secondHalves);
        }
    }
}

TEST(GridIndices, BordersOfEachStrideAreASubsetSpacedByIt) {
    constexpr uint32_t depth = 5;
    constexpr int side = 1 << depth;
    for (uint32_t k = 0; k <= depth; ++k) {
        std::map<int, std::set<int>> borders;
        for (const uint16_t index : GridIndices::OfDepth(depth).Triangles(k)) {
            const auto [column, row] = PointAt(index, depth);
            if (row == 0) borders[0].insert(column);
            if (column == side) borders[1].insert(row);
            // A neighbour traverses the side in the opposite direction, so a border must be the
            // same from both ends.
            if (row == side) borders[2].insert(side - column);
            if (column == 0) borders[3].insert(side - row);
        }
        std::set<int> expected;
        for (int i = 0; i <= side; i += 1 << k) expected.insert(i);
        for (int border = 0; border < 4; ++border) EXPECT_EQ(borders[border], expected) << k;
    }
}

TEST(GridIndices, AreInOneSmallBuffer) {
    std::size_t bytes = 0;
    for (uint32_t depth = 0; depth <= GridIndices::maxDepth; ++depth) {
        const GridIndices& grid = GridIndices::OfDepth(depth);
        EXPECT_EQ(&grid, &GridIndices::OfDepth(depth));
        EXPECT_EQ(grid.Triangles(0).data(), grid.Buffer().data());
        for (uint32_t k = 0; k < grid.StrideCount(); ++k)
            EXPECT_EQ(grid.Triangles(k).data(), grid.Buffer().data() + grid.FirstIndex(k));
        EXPECT_EQ(grid.Buffer().size(), grid.FirstIndex(depth) + 6) << "the last is one cell";
        bytes += grid.Buffer().size_bytes();
    }
    EXPECT_LE(bytes, 22000u);
}

}  // namespace
}  // namespace trovik::test
