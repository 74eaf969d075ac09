// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/DabStrength.h"

#include "framework/brushes/ToolTraits.h"
#include "framework/images/StampImage.h"

namespace trovik {

namespace {

bool TakesPercent(const BrushOperation& brush, const ToolTraits& tool) {
    if (tool.strengthUnit == ToolTraits::StrengthUnit::Percent) return true;
    return tool.vectorStampTakesPercent && brush.IsMaskEnabled(stampMask) &&
           IsVectorStampName(brush.MaskName(stampMask).toStdString());
}

}  // namespace

float DabStrength(const BrushOperation& brush, float pressure, float radius) {
    const float percent = brush.EffectiveBrushStrength(pressure);
    const ToolTraits& tool = TraitsOf(brush);
    if (TakesPercent(brush, tool)) return percent;
    const float length = percent * 0.01f * radius;
    return length * tool.radiiAtFullStrength;
}

float StrengthAtRadius(const BrushOperation& brush, float strength, float radius, float newRadius) {
    if (newRadius == radius || TakesPercent(brush, TraitsOf(brush))) return strength;
    return strength * (newRadius / radius);
}

}  // namespace trovik
