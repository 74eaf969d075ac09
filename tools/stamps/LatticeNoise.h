// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/stamps/StableArithmetic.h"

#include <cstdint>

namespace trovik::stamps {

/// Scatters the bits of a number; equal numbers give equal ones, always.
std::uint32_t Scatter(std::uint32_t number);

/// A row of numbers that look random and are the same each time for the same seed.
class NumberRow {
public:
    explicit NumberRow(std::uint32_t seed) : state(Scatter(seed)) {}
    /// 0 inclusive to 1 exclusive.
    double Next();
    double Between(double low, double high) { return Mix(low, high, Next()); }

private:
    std::uint32_t state;
};

/// Gradient noise, about -0.7 to 0.7, smooth to its second derivative. One cell of the lattice is
/// one unit; it repeats after `period` cells both ways. \param period  at least 1.
double Noise(Point2 p, int period, std::uint32_t seed);

/// Sum of `octaves` noises, each of half the size and half the height of the one before, scaled to
/// about -0.7 to 0.7. Repeats after `period` cells.
double LayeredNoise(Point2 p, int period, int octaves, std::uint32_t seed);

/// Distance to the nearest of points strewn one a cell, 0 to about 1.2. Repeats after `period`
/// cells.
double CellDistance(Point2 p, int period, std::uint32_t seed);

}  // namespace trovik::stamps
