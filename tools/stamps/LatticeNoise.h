// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/stamps/StableArithmetic.h"

#include <cstdint>

namespace trovik::stamps {

/// Returns a hash of a number, which is the same on every machine.
std::uint32_t HashOf(std::uint32_t number);

/// A sequence of pseudo-random numbers, determined by the seed.
class RandomSequence {
public:
    explicit RandomSequence(std::uint32_t seed) : state(HashOf(seed)) {}
    /// Returns the next number, from 0 to less than 1.
    double Next();
    double Between(double low, double high) { return Mix(low, high, Next()); }

private:
    std::uint32_t state;
};

/// Returns gradient noise, about -0.7 to 0.7, with a continuous second derivative; see Perlin:
/// "Improving Noise" (2002). A lattice cell is one unit wide; the noise repeats after `period`
/// cells in both directions. \param period  at least 1.
double Noise(Point2 p, int period, std::uint32_t seed);

/// Returns the sum of `octaves` noises, each with half the cell size and half the amplitude of the
/// previous one, scaled to about -0.7 to 0.7. The sum repeats after `period` cells.
double LayeredNoise(Point2 p, int period, int octaves, std::uint32_t seed);

/// Returns the distance to the nearest of a set of random points, one per cell, from 0 to about
/// 1.2; see Worley: "A Cellular Texture Basis Function" (1996). The pattern repeats after `period`
/// cells.
double CellDistance(Point2 p, int period, std::uint32_t seed);

}  // namespace trovik::stamps
