// SPDX-License-Identifier: Apache-2.0
#include "framework/io/Crc32.h"

#include <array>
#include <cstring>

namespace trovik {

namespace {

constexpr uint32_t polynomial = 0xedb88320u;
constexpr std::size_t step = 8;

/// Table k contains the effect of a byte that is followed by k more bytes (slicing-by-8), so that
/// eight bytes are processed at a time. See Kounavis, Berry: "Novel Table Lookup-Based Algorithms
/// for High-Performance CRC Generation" (2008).
using Tables = std::array<std::array<uint32_t, 256>, step>;

constexpr Tables MakeTables() {
    Tables tables{};
    for (uint32_t byte = 0; byte < 256; ++byte) {
        uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit)
            value = (value >> 1) ^ ((value & 1u) != 0 ? polynomial : 0u);
        tables[0][byte] = value;
    }
    for (std::size_t k = 1; k < step; ++k)
        for (std::size_t byte = 0; byte < 256; ++byte)
            tables[k][byte] = (tables[k - 1][byte] >> 8) ^ tables[0][tables[k - 1][byte] & 0xffu];
    return tables;
}

constexpr Tables tables = MakeTables();

}  // namespace

uint32_t Crc32(const void* bytes, std::size_t size, uint32_t before) {
    const auto* at = static_cast<const unsigned char*>(bytes);
    uint32_t crc = ~before;
    for (; size >= step; size -= step, at += step) {
        uint32_t low = 0;
        uint32_t high = 0;
        std::memcpy(&low, at, 4);
        std::memcpy(&high, at + 4, 4);
        low ^= crc;
        crc = tables[7][low & 0xffu] ^ tables[6][(low >> 8) & 0xffu] ^
              tables[5][(low >> 16) & 0xffu] ^ tables[4][low >> 24] ^ tables[3][high & 0xffu] ^
              tables[2][(high >> 8) & 0xffu] ^ tables[1][(high >> 16) & 0xffu] ^
              tables[0][high >> 24];
    }
    for (; size > 0; --size, ++at) crc = (crc >> 8) ^ tables[0][(crc ^ *at) & 0xffu];
    return ~crc;
}

}  // namespace trovik
