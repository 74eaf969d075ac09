// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/ToolTraits.h"

#include <QtGlobal>

namespace trovik {

namespace {

constexpr ToolTraits percent = {.strengthUnit = ToolTraits::StrengthUnit::Percent};
constexpr ToolTraits percentOnPlane = {.strengthUnit = ToolTraits::StrengthUnit::Percent,
                                       .worksOnPlane = true};

constexpr ToolTraits hook = {.strengthUnit = ToolTraits::StrengthUnit::Percent,
                             .canSmooth = false,
                             .usesStamp = false,
                             .staysOnSurface = false,
                             .refinesMesh = false};
constexpr ToolTraits freeze = {.strengthUnit = ToolTraits::StrengthUnit::Percent,
                               .refinesMesh = false};
constexpr ToolTraits held = [] {
    ToolTraits traits = hook;
    traits.holdsPressPoint = true;
    traits.usesSpacing = false;
    return traits;
}();
constexpr ToolTraits elastic = [] {
    ToolTraits traits = held;
    traits.usesFalloff = false;
    return traits;
}();

// Wax uses one tenth of its strength, scaled by one half, as the offset of its plane: at full
// strength the plane is a quarter of a radius above the surface.
constexpr ToolTraits wax = {.radiiAtFullStrength = 0.25f / (0.1f * 0.5f),
                            .vectorStampTakesPercent = false,
                            .worksOnPlane = true};

constexpr HostTool table[] = {
    {.name = "Sculpt",
     .key = "S",
     .icon = "tool-sculpt",
     .description = QT_TRANSLATE_NOOP("ToolCatalogue",
                                      "Raises the surface under the brush, or carves into it when "
                                      "inverted. Suitable for most shapes.")},
    {.name = "Smear",
     .key = "E",
     .icon = "tool-smear",
     .description = QT_TRANSLATE_NOOP(
         "ToolCatalogue", "Drags the surface along the stroke, like a finger in clay.")},
    {.name = "Pinch",
     .traits = percent,
     .key = "N",
     .icon = "tool-pinch",
     .description = QT_TRANSLATE_NOOP(
         "ToolCatalogue",
         "Pulls the surface toward the middle of the stroke, which sharpens creases and edges.")},
    {.name = "Smooth",
     .traits = percent,
     .key = "O",
     .icon = "tool-smooth",
     .description = QT_TRANSLATE_NOOP("ToolCatalogue", "Evens out the surface under the brush.")},
    {.name = "Amplify",
     .traits = percentOnPlane,
     .key = "A",
     .icon = "tool-amplify",
     .description = QT_TRANSLATE_NOOP("ToolCatalogue",
                                      "Exaggerates existing detail: raises high areas and lowers "
                                      "low ones. Inverted, it reduces detail.")},
    {.name = "Flatten",
     .traits = percentOnPlane,
     .key = "T",
     .icon = "tool-flatten",
     .description = QT_TRANSLATE_NOOP(
         "ToolCatalogue", "Presses the surface onto a common plane, from above and below.")},
    {.name = "Scrape",
     .traits = percentOnPlane,
     .key = "C",
     .icon = "tool-scrape",
     .description = QT_TRANSLATE_NOOP(
         "ToolCatalogue",
         "Planes off areas that rise above the surface, without changing hollows.")},
    {.name = "Fill",
     .traits = percentOnPlane,
     .key = "L",
     .icon = "tool-fill",
     .description = QT_TRANSLATE_NOOP(
         "ToolCatalogue",
         "Fills hollows up to the surrounding surface, without changing high areas.")},
    {.name = "Wax",
     .traits = wax,
     .key = "W",
     .icon = "tool-wax",
     .description = QT_TRANSLATE_NOOP("ToolCatalogue",
                                      "Adds material in flat layers, like strips of wax or clay.")},
    {.name = "Bulge",
     .key = "B",
     .icon = "tool-bulge",
     .description = QT_TRANSLATE_NOOP(
         "ToolCatalogue",
         "Inflates the surface along its own normals, so that forms swell evenly.")},
    {.name = "Spray",
     .key = "U",
     .icon = "tool-spray",
     .description = QT_TRANSLATE_NOOP("ToolCatalogue",
                                      "Scatters copies of a stamp at random along the stroke.")},
    {.name = "Repeat",
     .traits = {.rotatesStampAlongStroke = true, .placesStampsSideBySide = true},
     .key = "R",
     .icon = "tool-repeat",
     .description = QT_TRANSLATE_NOOP(
         "ToolCatalogue", "Repeats a stamp along the stroke: scales, rivets, stitches.")},
    {.name = "Knife",
     .traits = {.rotatesStampAlongStroke = true},
     .key = "Shift+K",
     .icon = "tool-knife",
     .description = QT_TRANSLATE_NOOP(
         "ToolCatalogue", "Cuts fine lines with raised lips, such as wrinkles and seams.")},
    {.name = "Foamy",
     .key = "D",
     .icon = "tool-foamy",
     .description = QT_TRANSLATE_NOOP(
         "ToolCatalogue",
         "Builds up broad, soft forms. Best for first shapes rather than detail.")},
    {.name = "Imprint",
     .key = "I",
     .icon = "tool-imprint",
     .description = QT_TRANSLATE_NOOP(
         "ToolCatalogue",
         "Places one copy of a stamp: press, drag to its size and direction, and release.")},
    {.name = "Grab",
     .traits = held,
     .key = "G",
     .icon = "tool-grab",
     .description = QT_TRANSLATE_NOOP(
         "ToolCatalogue",
         "Holds the region under the press and moves it with the pointer. Moving the pointer back "
         "restores the shape.")},
    {.name = "ElasticGrab",
     .traits = elastic,
     .key = "Shift+E",
     .icon = "tool-elastic-grab",
     .description = QT_TRANSLATE_NOOP(
         "ToolCatalogue",
         "Moves, twists, scales or pinches the surface like an elastic solid around the press. "
         "Drag to the right to twist, scale or pinch.")},
    {.name = "SnakeHook",
     .traits = hook,
     .key = "K",
     .icon = "tool-snake-hook",
     .description = QT_TRANSLATE_NOOP(
         "ToolCatalogue",
         "Pulls material along the path of the pointer: horns, tentacles, strands of hair.")},
    {.name = "Freeze",
     .traits = freeze,
     .key = "M",
     .icon = "tool-freeze",
     .description = QT_TRANSLATE_NOOP(
         "ToolCatalogue", "Paints the mask. Masked areas are protected from all other tools.")},
};

constexpr ToolTraits defaults;

}  // namespace

const ToolTraits& TraitsOf(const QString& toolName) {
    for (const HostTool& row : table)
        if (toolName == QLatin1String(row.name)) return row.traits;
    return defaults;
}

const ToolTraits& TraitsOf(const BrushConfiguration* tool) {
    return tool == nullptr ? defaults : TraitsOf(tool->Name());
}

std::span<const HostTool> HostTools() { return table; }

}  // namespace trovik
