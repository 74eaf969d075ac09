// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace trovik {

/// Two numbers in [0, 1).
struct SamplePoint {
    float x = 0.0f;
    float y = 0.0f;
};

/// The sample points of one pixel. They depend on nothing but seed and pixel, so that a picture
/// is the same whichever thread works on which part of it.
///
/// Each stream holds points that spread evenly over the square, and the more evenly the more of
/// them are taken; streams are independent of each other. The points are Sobol's first two
/// dimensions, scrambled as in B. Burley, "Practical Hash-based Owen Scrambling", Journal of
/// Computer Graphics Techniques 9(4), 2020.
class PixelSamples {
public:
    PixelSamples(uint32_t seed, int x, int y)
        : pixelHash(Mix(Mix(Mix(seed) + static_cast<uint32_t>(x)) + static_cast<uint32_t>(y))) {}

    /// Point number `index` of a stream.
    SamplePoint At(uint32_t stream, uint32_t index) const {
        const uint32_t streamHash = Mix(pixelHash + stream);
        const uint32_t shuffled = Scramble(index, streamHash);
        return {ToFloat(Scramble(ReverseBits(shuffled), Mix(streamHash + 1u))),
                ToFloat(Scramble(SecondSobol(shuffled), Mix(streamHash + 2u)))};
    }

private:
    /// Spreads every bit over all others.
    static uint32_t Mix(uint32_t value) {
        value = (value ^ (value >> 16)) * 0x7feb352du;
        value = (value ^ (value >> 15)) * 0x846ca68bu;
        return value ^ (value >> 16);
    }

    static uint32_t ReverseBits(uint32_t value) {
        value = ((value >> 1) & 0x55555555u) | ((value & 0x55555555u) << 1);
        value = ((value >> 2) & 0x33333333u) | ((value & 0x33333333u) << 2);
        value = ((value >> 4) & 0x0f0f0f0fu) | ((value & 0x0f0f0f0fu) << 4);
        return __builtin_bswap32(value);
    }

    /// Owen's scrambling: flips each bit by a hash of those above it.
    static uint32_t Scramble(uint32_t value, uint32_t hash) {
        value = ReverseBits(value) + hash;
        value ^= value * 0x6c50b47cu;
        value ^= value * 0xb82f1e52u;
        value ^= value * 0xc7afe638u;
        value ^= value * 0x8d22f6e6u;
        return ReverseBits(value);
    }

    static uint32_t SecondSobol(uint32_t index) {
        uint32_t result = 0;
        for (uint32_t column = 1u << 31; index != 0; index >>= 1, column ^= column >> 1)
            if ((index & 1u) != 0) result ^= column;
        return result;
    }

    static float ToFloat(uint32_t value) {
        return static_cast<float>(value >> 8) * (1.0f / 16777216.0f);
    }

    uint32_t pixelHash;
};

}  // namespace trovik
