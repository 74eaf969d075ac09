// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/ToolTraits.h"

namespace trovik {

namespace {

constexpr ToolTraits percent = {.strengthUnit = ToolTraits::StrengthUnit::Percent};
constexpr ToolTraits percentOnPlane = {.strengthUnit = ToolTraits::StrengthUnit::Percent,
                                       .worksOnPlane = true};

struct NamedTraits {
    const char* tool;
    ToolTraits traits;
};

constexpr NamedTraits table[] = {
    {"Pinch", percent},
    {"Smooth", percent},
    {"Amplify", percentOnPlane},
    {"Flatten", percentOnPlane},
    {"Scrape", percentOnPlane},
    {"Fill", percentOnPlane},
    // Wax raises its plane by 0.1 * 0.5 times its strength. At full strength, the plane is a
    // quarter of a radius above the surface.
    {"Wax",
     {.radiiAtFullStrength = 0.25f / (0.1f * 0.5f),
      .vectorStampTakesPercent = false,
      .worksOnPlane = true}},
    {"Repeat", {.rotatesStampAlongStroke = true, .placesStampsSideBySide = true}},
    {"Knife", {.rotatesStampAlongStroke = true}},
    {"Freeze", percent},
};

constexpr ToolTraits defaults;

}  // namespace

const ToolTraits& TraitsOf(const BrushConfiguration* tool) {
    if (tool == nullptr) return defaults;
    for (const NamedTraits& row : table)
        if (tool->Name() == QLatin1String(row.tool)) return row.traits;
    return defaults;
}

}  // namespace trovik
