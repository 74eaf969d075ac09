// SPDX-License-Identifier: Apache-2.0
#include "framework/io/Base64.h"

#include "framework/errors/HostError.h"

#include <array>
#include <string>

namespace trovik {

namespace {

constexpr std::uint8_t noDigit = 0xff;

constexpr std::array<std::uint8_t, 256> MakeDigits() {
    constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<std::uint8_t, 256> digits{};
    for (std::uint8_t& digit : digits) digit = noDigit;
    for (std::size_t i = 0; i < alphabet.size(); ++i)
        digits[static_cast<unsigned char>(alphabet[i])] = static_cast<std::uint8_t>(i);
    return digits;
}

[[noreturn]] void Fail(std::size_t index) {
    throw HostError("not valid base64 at character " + std::to_string(index));
}

}  // namespace

std::vector<std::uint8_t> DecodeBase64(std::string_view text) {
    static constexpr std::array<std::uint8_t, 256> digits = MakeDigits();
    if (text.size() % 4 != 0) throw HostError("the length of base64 text must be a multiple of 4");
    std::size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=')
        ++padding;
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        const std::size_t given = i + 4 == text.size() ? 4 - padding : 4;
        std::uint32_t bits = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            const std::uint8_t digit = digits[static_cast<unsigned char>(text[i + k])];
            if (k < given && digit == noDigit) Fail(i + k);
            bits = bits << 6 | (k < given ? digit : 0u);
        }
        for (std::size_t k = 0; k + 1 < given; ++k)
            bytes.push_back(static_cast<std::uint8_t>(bits >> (16 - 8 * k) & 0xffu));
    }
    return bytes;
}

}  // namespace trovik
