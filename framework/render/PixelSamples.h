// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace trovik {

/// Two numbers in [0, 1).
struct SamplePoint {
    float x = 0.0f;
    float y = 0.0f;
};

/// The sample points of one pixel. They depend only on the pixel and the sample count, so a render
/// does not depend on how pixels are distributed among threads.
///
/// Each stream is the two-dimensional sequence of Sobol: "On the Distribution of Points in a Cube
/// and the Approximate Evaluation of Integrals" (1967), scrambled as in Burley: "Practical
/// Hash-based Owen Scrambling" (2020). Pixels use consecutive blocks of a single sequence along a
/// space-filling curve, so that the points of neighbouring pixels complement each other and the
/// error of a render is blue noise; see Ahmed, Wonka: "Screen-Space Blue-Noise Diffusion of Monte
/// Carlo Sampling Error via Hierarchical Ordering of Pixels" (2020). The curve follows the order
/// described in Morton: "A Computer Oriented Geodetic Data Base and a New Technique in File
/// Sequencing" (1966). Streams are independent of each other.
class PixelSamples {
public:
    /// \param count  number of samples per pixel, 1 to 65536.
    PixelSamples(int x, int y, int count)
        : tileHash(
              Mix(Mix(static_cast<uint32_t>(x) / tileSide) + static_cast<uint32_t>(y) / tileSide)),
          first((SpreadBits(static_cast<uint32_t>(x) % tileSide) |
                 SpreadBits(static_cast<uint32_t>(y) % tileSide) << 1)
                << BitsOf(count)) {}

    /// Returns point `index` of a stream.
    SamplePoint At(uint32_t stream, int index) const {
        const uint32_t hash = Mix(tileHash + stream * 0x9e3779b9u);
        const uint32_t shuffled =
            ReverseBits(Scramble(ReverseBits(first + static_cast<uint32_t>(index)), hash));
        return {ToFloat(ReverseBits(Scramble(shuffled, Mix(hash + 1u)))),
                ToFloat(ReverseBits(Scramble(Pascal(shuffled), Mix(hash + 2u))))};
    }

private:
    /// Side length of a tile in pixels. Each tile has its own sequence, in which a pixel's index
    /// has 16 bits, 8 for each coordinate.
    static constexpr uint32_t tileSide = 256;

    static uint32_t BitsOf(int count) {
        uint32_t bits = 0;
        while ((1 << bits) < count) ++bits;
        return bits;
    }

    /// Hashes a value so that every bit of the result depends on every bit of the value.
    static uint32_t Mix(uint32_t value) {
        value = (value ^ (value >> 16)) * 0x7feb352du;
        value = (value ^ (value >> 15)) * 0x846ca68bu;
        return value ^ (value >> 16);
    }

    /// Moves the low 8 bits to the even bit positions.
    static uint32_t SpreadBits(uint32_t value) {
        value = (value | value << 4) & 0x0f0fu;
        value = (value | value << 2) & 0x3333u;
        return (value | value << 1) & 0x5555u;
    }

    static uint32_t ReverseBits(uint32_t value) {
        value = ((value >> 1) & 0x55555555u) | ((value & 0x55555555u) << 1);
        value = ((value >> 2) & 0x33333333u) | ((value & 0x33333333u) << 2);
        value = ((value >> 4) & 0x0f0f0f0fu) | ((value & 0x0f0f0f0fu) << 4);
        return __builtin_bswap32(value);
    }

    /// Scrambles a number whose lowest bit is the first digit after the binary point: each bit is
    /// flipped depending on a hash of the bits below it. The scrambling is that of Owen: "Randomly
    /// Permuted (t,m,s)-Nets and (t,s)-Sequences" (1995). The hash is from Laine, Karras:
    /// "Stratified Sampling for Stochastic Transparency" (2011).
    static uint32_t Scramble(uint32_t reversed, uint32_t hash) {
        reversed += hash;
        reversed ^= reversed * 0x6c50b47cu;
        reversed ^= reversed * 0xb82f1e52u;
        reversed ^= reversed * 0xc7afe638u;
        reversed ^= reversed * 0x8d22f6e6u;
        return reversed;
    }

    /// The second Sobol dimension, bit-reversed: the product of Pascal's triangle modulo 2 and the
    /// index.
    static uint32_t Pascal(uint32_t index) {
        index ^= (index >> 16);
        index ^= (index & 0xff00ff00u) >> 8;
        index ^= (index & 0xf0f0f0f0u) >> 4;
        index ^= (index & 0xccccccccu) >> 2;
        return index ^ ((index & 0xaaaaaaaau) >> 1);
    }

    static float ToFloat(uint32_t value) {
        return static_cast<float>(value >> 8) * (1.0f / 16777216.0f);
    }

    uint32_t tileHash;
    uint32_t first;
};

}  // namespace trovik
