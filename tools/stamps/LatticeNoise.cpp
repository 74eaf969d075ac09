// SPDX-License-Identifier: Apache-2.0
#include "tools/stamps/LatticeNoise.h"

#include <array>

namespace trovik::stamps {

namespace {

constexpr int GradientCount = 64;

int Wrap(int cell, int period) {
    const int rest = cell % period;
    return rest < 0 ? rest + period : rest;
}

std::uint32_t CellNumber(int column, int row, int period, std::uint32_t seed) {
    const auto x = static_cast<std::uint32_t>(Wrap(column, period));
    const auto y = static_cast<std::uint32_t>(Wrap(row, period));
    return HashOf(HashOf(HashOf(seed) + x) + y);
}

double Fade(double t) { return t * t * t * (t * (t * 6.0 - 15.0) + 10.0); }

Point2 Gradient(std::uint32_t number) {
    static const auto table = [] {
        std::array<Point2, GradientCount> headings{};
        for (int i = 0; i < GradientCount; ++i)
            headings[static_cast<std::size_t>(i)] = Heading((i + 0.5) / GradientCount);
        return headings;
    }();
    return table[number % GradientCount];
}

double Unit(std::uint32_t number) { return number * (1.0 / 4294967296.0); }

}  // namespace

std::uint32_t HashOf(std::uint32_t number) {
    number += 0x9e3779b9u;
    number ^= number >> 16;
    number *= 0x21f0aaadu;
    number ^= number >> 15;
    number *= 0x735a2d97u;
    number ^= number >> 15;
    return number;
}

double RandomSequence::Next() {
    state = HashOf(state);
    return Unit(state);
}

double Noise(Point2 p, int period, std::uint32_t seed) {
    const double left = std::floor(p.x);
    const double top = std::floor(p.y);
    const Point2 in{p.x - left, p.y - top};
    const int column = static_cast<int>(left);
    const int row = static_cast<int>(top);
    const auto corner = [&](int dx, int dy) {
        const Point2 gradient = Gradient(CellNumber(column + dx, row + dy, period, seed));
        return Dot(gradient, in - Point2{static_cast<double>(dx), static_cast<double>(dy)});
    };
    const double fx = Fade(in.x);
    return Mix(
        Mix(corner(0, 0), corner(1, 0), fx), Mix(corner(0, 1), corner(1, 1), fx), Fade(in.y));
}

double LayeredNoise(Point2 p, int period, int octaves, std::uint32_t seed) {
    double sum = 0.0;
    double height = 1.0;
    double total = 0.0;
    for (int octave = 0; octave < octaves; ++octave) {
        sum += height * Noise(p, period, seed + static_cast<std::uint32_t>(octave) * 101u);
        total += height;
        height *= 0.5;
        p = p * 2.0;
        period *= 2;
    }
    // The peaks of the octaves rarely coincide.
    return sum / std::sqrt(total);
}

double CellDistance(Point2 p, int period, std::uint32_t seed) {
    const double left = std::floor(p.x);
    const double top = std::floor(p.y);
    const int column = static_cast<int>(left);
    const int row = static_cast<int>(top);
    double nearest = 4.0;
    for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
            RandomSequence numbers(CellNumber(column + dx, row + dy, period, seed));
            const double x = left + dx + numbers.Next();
            const double y = top + dy + numbers.Next();
            nearest = std::min(nearest, Square(p.x - x) + Square(p.y - y));
        }
    }
    return std::sqrt(nearest);
}

}  // namespace trovik::stamps
