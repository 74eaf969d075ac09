// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/DabStrength.h"

#include "framework/images/StampImage.h"

#include <algorithm>
#include <string>

namespace trovik {

namespace {

/// Tools that take percent.
constexpr const char* percentTools[] = {
    "Pinch", "Smooth", "Amplify", "Flatten", "Scrape", "Fill", "Freeze"};
/// Wax takes one tenth of its strength, scaled by one half, for the offset of its plane.
constexpr float waxLift = 0.25f / (0.1f * 0.5f);

std::string ToolName(const BrushOperation& brush) {
    const BrushConfiguration* tool = brush.ActiveConfiguration();
    return tool == nullptr ? std::string() : tool->Name().toStdString();
}

/// Vector stamps tell their moves in shares of the stamp's side, whatever the tool; Wax turns its
/// strength into the height of its plane all the same.
bool TakesPercent(const BrushOperation& brush, const std::string& tool) {
    constexpr int stampMask = -1;
    if (tool != "Wax" && brush.IsMaskEnabled(stampMask) &&
        IsVectorStampName(brush.MaskName(stampMask).toStdString()))
        return true;
    return std::find(std::begin(percentTools), std::end(percentTools), tool) !=
           std::end(percentTools);
}

}  // namespace

float DabStrength(const BrushOperation& brush, float pressure, float radius) {
    const float percent = brush.EffectiveBrushStrength(pressure);
    const std::string tool = ToolName(brush);
    if (TakesPercent(brush, tool)) return percent;
    const float length = percent * 0.01f * radius;
    return tool == "Wax" ? length * waxLift : length;
}

float StrengthAtRadius(const BrushOperation& brush, float strength, float radius, float newRadius) {
    if (newRadius == radius || TakesPercent(brush, ToolName(brush))) return strength;
    return strength * (newRadius / radius);
}

}  // namespace trovik
