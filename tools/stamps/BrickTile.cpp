// SPDX-License-Identifier: Apache-2.0
#include "tools/stamps/LatticeNoise.h"
#include "tools/stamps/ShippedStamps.h"
#include "tools/stamps/StampPainting.h"

#include <array>

namespace trovik::stamps {

namespace {

// Lengths in this file are in units of 1/1024 of the stamp's side.
constexpr double Side = 1024.0;
constexpr double Joint = 30.0;
constexpr int Rows = 4;

/// A brick in a wall in which rows of two bricks alternate with rows of one brick between two half
/// bricks. All four borders of the stamp therefore lie in joints between bricks: the stamp is 0
/// there, and copies still fit together.
struct Brick {
    Point2 centre;
    Point2 half;
    std::uint32_t seed;
    double height;
    Point2 tilt;
    double turn;
    /// Chips along the edge: their centres relative to the brick's centre; biteSizes contains their
    /// radii.
    std::array<Point2, 5> bites;
    std::array<double, 5> biteSizes;
};

Brick MakeBrick(double left, double right, int row) {
    const double rowHeight = Side / Rows;
    Brick brick{};
    brick.centre = {(left + right) * 0.5, (row + 0.5) * rowHeight};
    brick.half = {(right - left - Joint) * 0.5, (rowHeight - Joint) * 0.5};
    brick.seed = HashOf(static_cast<std::uint32_t>(row * 1024) + static_cast<std::uint32_t>(left));
    RandomSequence numbers(brick.seed);
    brick.height = numbers.Between(0.72, 0.92);
    brick.tilt = {numbers.Between(-0.05, 0.05) / brick.half.x,
                  numbers.Between(-0.06, 0.06) / brick.half.y};
    brick.turn = numbers.Between(-0.012, 0.012);
    for (std::size_t i = 0; i < brick.bites.size(); ++i) {
        // The centre is slightly outside the edge.
        const bool upright = numbers.Next() < 0.35;
        const double sign = numbers.Next() < 0.5 ? -1.0 : 1.0;
        const double along = numbers.Between(-0.8, 0.8);
        const double size = numbers.Between(14.0, 34.0);
        const double out = size * numbers.Between(0.45, 0.95);
        brick.bites[i] = upright ? Point2{sign * (brick.half.x + out), along * brick.half.y}
                                 : Point2{along * brick.half.x, sign * (brick.half.y + out)};
        brick.biteSizes[i] = size;
    }
    return brick;
}

/// Returns the distance of a point from the brick's edge, which has rounded corners and chips;
/// positive inside.
double Inside(const Brick& brick, Point2 p) {
    constexpr double Corner = 20.0;
    const Point2 q{std::fabs(p.x) - brick.half.x + Corner, std::fabs(p.y) - brick.half.y + Corner};
    const Point2 outer{std::max(q.x, 0.0), std::max(q.y, 0.0)};
    double inside = Corner - Length(outer) - std::min(std::max(q.x, q.y), 0.0);
    for (std::size_t i = 0; i < brick.bites.size(); ++i)
        inside = SmoothMin(inside, Length(p - brick.bites[i]) - brick.biteSizes[i], 8.0);
    return inside;
}

double BrickHeight(const Brick& brick, Point2 point) {
    Point2 p = point - brick.centre;
    p = {p.x + p.y * brick.turn, p.y - p.x * brick.turn};
    // Each brick has its own noise, with a period longer than the brick.
    constexpr int NoisePeriod = 4096;
    const auto noise = [&brick, p](double cell, int octaves, std::uint32_t salt) {
        return LayeredNoise(p * (1.0 / cell), NoisePeriod, octaves, brick.seed + salt);
    };
    const Point2 warped = p + Point2{noise(70.0, 3, 1), noise(70.0, 3, 2)} * 7.0;
    const double inside = Inside(brick, warped);
    if (inside <= 0.0) return 0.0;

    const double edge = Clamp01(inside / 34.0);
    const double rim = std::sqrt(edge * (2.0 - edge));
    double top =
        brick.height + Dot(brick.tilt, p) + 0.075 * noise(150.0, 4, 3) + 0.045 * noise(22.0, 3, 4);
    // Pores of different sizes in coarse areas.
    const double coarse = SmoothStep(0.0, 0.4, noise(110.0, 2, 5));
    const Point2 bent = p + Point2{noise(9.0, 1, 8), noise(9.0, 1, 9)} * 5.0;
    const double pores = CellDistance(bent * (1.0 / 17.0), NoisePeriod, brick.seed + 6u);
    const double wide = 0.20 + 0.22 * noise(12.0, 1, 10);
    top -= 0.11 * coarse * SmoothStep(wide + 0.14, wide - 0.10, pores);
    // A long crack on some bricks.
    if (brick.seed % 5u < 2u) {
        const double bend = p.x - 0.2 * brick.half.x - p.y * 0.4 - 60.0 * noise(110.0, 4, 7);
        const double gape = 5.0 + 6.0 * noise(60.0, 2, 11);
        top -= 0.20 * SmoothStep(gape + 2.0, 0.0, std::fabs(bend));
    }
    return rim * Clamp01(top);
}

const std::array<std::array<Brick, 3>, Rows>& Wall() {
    static const auto wall = [] {
        std::array<std::array<Brick, 3>, Rows> rows{};
        for (int row = 0; row < Rows; ++row) {
            auto& bricks = rows[static_cast<std::size_t>(row)];
            if (row % 2 == 0) {
                bricks = {MakeBrick(0, 512, row), MakeBrick(512, 1024, row), Brick{}};
            } else {
                bricks = {
                    MakeBrick(0, 256, row), MakeBrick(256, 768, row), MakeBrick(768, 1024, row)};
            }
        }
        return rows;
    }();
    return wall;
}

double WallHeight(Point2 p) {
    const Point2 point = p * Side;
    const auto& row = Wall()[static_cast<std::size_t>(p.y * Rows)];
    double height = 0.0;
    for (const Brick& brick : row)
        if (std::fabs(point.x - brick.centre.x) < brick.half.x + Joint)
            height = std::max(height, BrickHeight(brick, point));
    // Sand in the joints, but not along the borders.
    const double border = std::min(std::min(p.x, 1.0 - p.x), std::min(p.y, 1.0 - p.y)) * Side;
    const double sand = 0.05 + 0.05 * LayeredNoise(p * 128.0, 128, 3, 77u);
    return std::max(height, SmoothStep(3.0, 16.0, border) * std::max(sand, 0.0));
}

}  // namespace

FloatImage PaintBrickTile() { return PaintHeights(1024, 2, WallHeight); }

}  // namespace trovik::stamps
