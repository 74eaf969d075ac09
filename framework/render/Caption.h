// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/RenderImage.h"

namespace trovik {

/// Height of a text line in pixels at a scale of 1.
inline constexpr int captionHeight = 8;

/// Draws ASCII text in upper case with 5 x 7 dots per character, `scale` pixels per dot, and the
/// top left corner at (x, y).
void DrawCaption(
    RenderImage& picture, int x, int y, int scale, const std::string& text, uint8_t brightness);
int CaptionWidth(const std::string& text, int scale);

}  // namespace trovik
