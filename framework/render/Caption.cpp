// SPDX-License-Identifier: Apache-2.0
#include "framework/render/Caption.h"

#include <cctype>

namespace trovik {

namespace {

constexpr int glyphWidth = 5;
constexpr int glyphHeight = 7;
constexpr int advance = 6;

/// Seven rows of five dots; the most significant of the five bits is the leftmost dot.
struct Glyph {
    char letter;
    uint8_t rows[glyphHeight];
};

constexpr Glyph glyphs[] = {
    {'A', {14, 17, 17, 31, 17, 17, 17}}, {'B', {30, 17, 17, 30, 17, 17, 30}},
    {'C', {14, 17, 16, 16, 16, 17, 14}}, {'D', {30, 17, 17, 17, 17, 17, 30}},
    {'E', {31, 16, 16, 30, 16, 16, 31}}, {'F', {31, 16, 16, 30, 16, 16, 16}},
    {'G', {14, 17, 16, 23, 17, 17, 15}}, {'H', {17, 17, 17, 31, 17, 17, 17}},
    {'I', {14, 4, 4, 4, 4, 4, 14}},      {'J', {7, 2, 2, 2, 2, 18, 12}},
    {'K', {17, 18, 20, 24, 20, 18, 17}}, {'L', {16, 16, 16, 16, 16, 16, 31}},
    {'M', {17, 27, 21, 21, 17, 17, 17}}, {'N', {17, 25, 21, 19, 17, 17, 17}},
    {'O', {14, 17, 17, 17, 17, 17, 14}}, {'P', {30, 17, 17, 30, 16, 16, 16}},
    {'Q', {14, 17, 17, 17, 21, 18, 13}}, {'R', {30, 17, 17, 30, 20, 18, 17}},
    {'S', {15, 16, 16, 14, 1, 1, 30}},   {'T', {31, 4, 4, 4, 4, 4, 4}},
    {'U', {17, 17, 17, 17, 17, 17, 14}}, {'V', {17, 17, 17, 17, 17, 10, 4}},
    {'W', {17, 17, 17, 21, 21, 27, 17}}, {'X', {17, 17, 10, 4, 10, 17, 17}},
    {'Y', {17, 17, 10, 4, 4, 4, 4}},     {'Z', {31, 1, 2, 4, 8, 16, 31}},
    {'0', {14, 17, 19, 21, 25, 17, 14}}, {'1', {4, 12, 4, 4, 4, 4, 14}},
    {'2', {14, 17, 1, 6, 8, 16, 31}},    {'3', {30, 1, 1, 14, 1, 1, 30}},
    {'4', {2, 6, 10, 18, 31, 2, 2}},     {'5', {31, 16, 30, 1, 1, 17, 14}},
    {'6', {14, 16, 30, 17, 17, 17, 14}}, {'7', {31, 1, 2, 4, 8, 8, 8}},
    {'8', {14, 17, 17, 14, 17, 17, 14}}, {'9', {14, 17, 17, 15, 1, 1, 14}},
    {'-', {0, 0, 0, 31, 0, 0, 0}},       {'.', {0, 0, 0, 0, 0, 12, 12}},
    {',', {0, 0, 0, 0, 12, 4, 8}},       {':', {0, 12, 12, 0, 12, 12, 0}},
    {'/', {1, 1, 2, 4, 8, 16, 16}},      {'+', {0, 4, 4, 31, 4, 4, 0}},
    {'(', {2, 4, 8, 8, 8, 4, 2}},        {')', {8, 4, 2, 2, 2, 4, 8}},
    {'%', {25, 25, 2, 4, 8, 19, 19}},    {'_', {0, 0, 0, 0, 0, 0, 31}},
};

const Glyph* GlyphOf(char letter) {
    const char capital = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    for (const Glyph& glyph : glyphs)
        if (glyph.letter == capital) return &glyph;
    return nullptr;
}

}  // namespace

int CaptionWidth(const std::string& text, int scale) {
    return text.empty() ? 0 : (static_cast<int>(text.size()) * advance - 1) * scale;
}

void DrawCaption(
    RenderImage& picture, int x, int y, int scale, const std::string& text, uint8_t brightness) {
    for (const char letter : text) {
        const Glyph* glyph = GlyphOf(letter);
        for (int dot = 0; glyph != nullptr && dot < glyphWidth * glyphHeight; ++dot) {
            const int row = dot / glyphWidth;
            const int column = dot % glyphWidth;
            if (((glyph->rows[row] >> (glyphWidth - 1 - column)) & 1) == 0) continue;
            for (int i = 0; i < scale * scale; ++i) {
                const int px = x + column * scale + i % scale;
                const int py = y + row * scale + i / scale;
                if (px < 0 || py < 0 || px >= picture.width || py >= picture.height) continue;
                uint8_t* pixel =
                    picture.rgb.data() + (static_cast<std::size_t>(py * picture.width + px)) * 3;
                pixel[0] = pixel[1] = pixel[2] = brightness;
            }
        }
        x += advance * scale;
    }
}

}  // namespace trovik
