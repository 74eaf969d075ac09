// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace trovik {

/// 64-bit hash for detecting changes. It is not cryptographic and is never stored in files;
/// ContentHash (framework/io) identifies file content. It reads eight bytes at a time in four
/// independent lanes, so that hashing whole meshes is limited by memory bandwidth. Each step is a
/// bijection of its lane, so changing a single word always changes the hash. The multiplier is 2^64
/// divided by the golden ratio; see Knuth: "The Art of Computer Programming, Volume 3: Sorting and
/// Searching" (1998), section 6.4. \param seed  the hash of the preceding part, if content is
/// hashed in parts.
inline uint64_t ChangeHash(std::string_view bytes, uint64_t seed = 0) {
    const auto mix = [](uint64_t& lane, uint64_t word) {
        lane = (lane ^ word) * 0x9e3779b97f4a7c15u;
        lane ^= lane >> 32;
    };
    uint64_t lanes[4] = {seed, seed + 1, seed + 2, seed + 3};
    std::size_t at = 0;
    for (; at + sizeof lanes <= bytes.size(); at += sizeof lanes) {
        uint64_t words[4];
        std::memcpy(words, bytes.data() + at, sizeof words);
        for (int k = 0; k < 4; ++k) mix(lanes[k], words[k]);
    }
    uint64_t hash = bytes.size();
    for (const uint64_t lane : lanes) mix(hash, lane);
    for (; at < bytes.size(); ++at) mix(hash, static_cast<uint8_t>(bytes[at]));
    return hash;
}

}  // namespace trovik
