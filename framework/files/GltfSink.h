// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/io/OutputFile.h"

#include <array>
#include <bit>
#include <cstdint>

namespace trovik {

/// Writes numbers to the buffer of a glTF file, little-endian, as raw bytes or base64.
class GltfSink {
public:
    GltfSink(OutputFile& target, bool asLetters) : file(target), isText(asLetters) {}

    void Word(std::uint32_t word) {
        for (int shift = 0; shift < 32; shift += 8) {
            Byte(word >> shift & 0xFFu);
        }
    }
    template <std::size_t count>
    void Floats(const std::array<float, count>& numbers) {
        for (const float number : numbers) {
            Word(std::bit_cast<std::uint32_t>(number));
        }
    }
    /// Pads the last base64 group. Call it after the last number.
    void End() {
        if (held > 0) {
            const std::size_t letters = held + 1;
            while (held < 3) {
                bits <<= 8;
                ++held;
            }
            PutLetters(letters);
        }
    }

private:
    void Byte(std::uint32_t byte) {
        if (!isText) {
            file.Put(static_cast<char>(byte));
            return;
        }
        bits = bits << 8 | byte;
        if (++held == 3) {
            PutLetters(4);
        }
    }

    void PutLetters(std::size_t letters) {
        constexpr char alphabet[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (std::size_t letter = 0; letter < 4; ++letter) {
            file.Put(letter < letters ? alphabet[bits >> (18 - 6 * letter) & 63u] : '=');
        }
        bits = 0;
        held = 0;
    }

    OutputFile& file;
    bool isText;
    std::uint32_t bits = 0;
    std::size_t held = 0;
};

}  // namespace trovik
