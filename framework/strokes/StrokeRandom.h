// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace trovik {

/// Pseudo-random numbers that are identical on every machine for the same seed. They are computed
/// with integer arithmetic and one exact floating-point multiplication at the end. The generator is
/// from Steele, Lea, Flood: "Fast Splittable Pseudorandom Number Generators" (2014).
class StrokeRandom {
public:
    explicit StrokeRandom(uint64_t seed = 0) : state(seed) {}

    /// The next 64 random bits: an odd constant is added to the state, and the sum is mixed.
    uint64_t Next() {
        state += 0x9e3779b97f4a7c15u;
        uint64_t z = state;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
        return z ^ (z >> 31);
    }
    /// A random number in [0, 1), a multiple of 2^-24.
    float Share() { return static_cast<float>(Next() >> 40) * 0x1p-24f; }
    /// A random number in [-1, 1).
    float Signed() { return Share() * 2.0f - 1.0f; }

private:
    uint64_t state;
};

}  // namespace trovik
