// SPDX-License-Identifier: Apache-2.0
#include "framework/render/DistanceMap.h"

#include "framework/render/Caption.h"
#include "framework/render/ToneCurve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace trovik {

namespace {

using Color = std::array<float, 3>;

/// The scale at equal steps, as sRGB bytes.
constexpr std::array<std::array<uint8_t, 3>, 9> scaleBytes = {{{255, 255, 204},
                                                               {255, 237, 160},
                                                               {254, 217, 118},
                                                               {254, 178, 76},
                                                               {253, 141, 60},
                                                               {252, 78, 42},
                                                               {227, 26, 28},
                                                               {189, 0, 38},
                                                               {128, 0, 38}}};

/// \param fraction  of the range; values outside 0 .. 1 are clamped.
Color ScaleColor(float fraction) {
    constexpr std::size_t last = scaleBytes.size() - 1;
    const float at = std::clamp(fraction, 0.0f, 1.0f) * static_cast<float>(last);
    const std::size_t step = std::min(static_cast<std::size_t>(at), last - 1);
    const float weight = at - static_cast<float>(step);
    Color color;
    for (std::size_t i = 0; i < color.size(); ++i)
        color[i] = ((1.0f - weight) * static_cast<float>(scaleBytes[step][i]) +
                    weight * static_cast<float>(scaleBytes[step + 1][i])) /
                   255.0f;
    return color;
}

std::string LengthText(float length) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3g", static_cast<double>(length));
    return text;
}

}  // namespace

std::vector<float> DistanceColors(const std::vector<float>& distances, float range) {
    std::vector<float> colors;
    colors.reserve(distances.size() * 3);
    for (const float distance : distances) {
        const Color color = ScaleColor(distance / range);
        colors.insert(colors.end(), color.begin(), color.end());
    }
    return colors;
}

void DrawDistanceLegend(RenderImage& picture, float range) {
    const int textScale = picture.height >= 400 ? 2 : 1;
    const int margin = 12 * textScale;
    const int width = std::min(picture.width - 2 * margin, 160 * textScale);
    const int height = 8 * textScale;
    const int labelHeight = captionHeight * textScale;
    const int top = picture.height - margin - labelHeight - 2 * textScale - height;
    if (width < 100 * textScale || top < picture.height / 2) return;
    for (int x = 0; x < width; ++x) {
        const Color color = ScaleColor(static_cast<float>(x) / static_cast<float>(width - 1));
        for (int y = top; y < top + height; ++y) {
            const std::size_t at =
                static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
                static_cast<std::size_t>(margin + x);
            for (std::size_t i = 0; i < color.size(); ++i)
                picture.rgb[at * 3 + i] = ToByte(color[i]);
            if (!picture.alpha.empty()) picture.alpha[at] = 255;
        }
    }
    constexpr uint8_t brightness = 220;
    const int labelTop = top + height + 2 * textScale;
    for (const float fraction : {0.0f, 0.5f, 1.0f}) {
        const std::string text = LengthText(fraction * range);
        const auto before = static_cast<int>(
            std::lround(fraction * static_cast<float>(width - CaptionWidth(text, textScale))));
        DrawCaption(picture, margin + before, labelTop, textScale, text, brightness);
    }
}

}  // namespace trovik
