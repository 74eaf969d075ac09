// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/PrintableText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace trovik {

namespace {

struct Character {
    uint32_t code = 0;
    /// Length in bytes; 0 if the bytes are not UTF-8.
    std::size_t length = 0;
};

/// Returns the character at the start of the text, which must not be empty. Overlong forms,
/// surrogates and code points beyond U+10FFFF are not valid UTF-8 (RFC 3629).
Character FirstCharacter(std::string_view text) {
    const auto byte = [text](std::size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t lead = byte(0);
    if (lead < 0x80) return {lead, 1};
    const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    if (lead < 0xc2 || lead > 0xf4 || text.size() < length) return {};
    uint32_t code = lead & (0x7fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0u) != 0x80u) return {};
        code = code << 6 | (byte(i) & 0x3fu);
    }
    constexpr uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < smallest[length] || code > 0x10ffff || (code >= 0xd800 && code < 0xe000)) return {};
    return {code, length};
}

bool IsPrintable(uint32_t code) {
    struct Range {
        uint32_t first, last;
    };
    // Control characters, line and paragraph separators, and formatting characters that reorder or
    // hide text.
    constexpr Range unprintable[] = {{0x00, 0x1f},
                                     {0x7f, 0x9f},
                                     {0x200b, 0x200f},
                                     {0x2028, 0x202e},
                                     {0x2060, 0x2069},
                                     {0xfeff, 0xfeff}};
    return std::none_of(std::begin(unprintable), std::end(unprintable), [code](const Range& range) {
        return code >= range.first && code <= range.last;
    });
}

std::string Escaped(uint32_t code) {
    if (code == '\n') return "\\n";
    if (code == '\t') return "\\t";
    if (code == '\r') return "\\r";
    char text[16];
    std::snprintf(text, sizeof text, "\\u{%x}", static_cast<unsigned>(code));
    return text;
}

}  // namespace

std::string PrintableText(std::string_view text) {
    std::string printable;
    printable.reserve(text.size());
    while (!text.empty()) {
        const Character character = FirstCharacter(text);
        const std::size_t length = std::max<std::size_t>(character.length, 1);
        if (character.length == 0) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<uint8_t>(text.front()));
            printable += escape;
        } else if (IsPrintable(character.code)) {
            printable += text.substr(0, length);
        } else {
            printable += Escaped(character.code);
        }
        text.remove_prefix(length);
    }
    return printable;
}

}  // namespace trovik
