// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/DabStrength.h"

#include <algorithm>
#include <string>

namespace trovik {

namespace {

/// Tools that take percent.
constexpr const char* percentTools[] = {"Pinch", "Smooth", "Amplify", "Flatten", "Scrape", "Fill"};
/// Wax takes one tenth of its strength, scaled by one half, for the offset of its plane.
constexpr float waxLift = 0.25f / (0.1f * 0.5f);

}  // namespace

float DabStrength(const BrushOperation& brush, float pressure, float radius) {
    const float percent = brush.EffectiveBrushStrength(pressure);
    const BrushConfiguration* tool = brush.ActiveConfiguration();
    const std::string name = tool == nullptr ? std::string() : tool->Name().toStdString();
    if (std::find(std::begin(percentTools), std::end(percentTools), name) != std::end(percentTools))
        return percent;
    const float length = percent * 0.01f * radius;
    return name == "Wax" ? length * waxLift : length;
}

}  // namespace trovik
