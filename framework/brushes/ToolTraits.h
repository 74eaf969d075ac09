// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

#include <span>

namespace trovik {

/// Properties of a tool that affect how the host applies its dabs. A tool's catalogue entry
/// (BrushConfiguration) does not contain these properties, so the host declares them by tool name;
/// a tool that is not listed in ToolTraits.cpp has the defaults below.
struct ToolTraits {
    enum class StrengthUnit {
        /// A length in world units: 100 percent is `radiiAtFullStrength` brush radii.
        Length,
        /// A percentage that is passed on unchanged.
        Percent
    };

    StrengthUnit strengthUnit = StrengthUnit::Length;
    float radiiAtFullStrength = 1.0f;
    /// With a vector stamp, whose values are fractions of its side, the strength is a percentage
    /// regardless of `strengthUnit`.
    bool vectorStampTakesPercent = true;
    /// Whether StampPositioning::Tool aligns the stamp with the stroke direction.
    bool rotatesStampAlongStroke = false;
    /// Copies of the stamp are placed side by side: the dab distance is two radii plus the tool's
    /// gap, and the stroke's spacing is ignored.
    bool placesStampsSideBySide = false;
    /// The tool flattens onto a plane, which can be constant for a stroke ("globalplane",
    /// "updateplane").
    bool worksOnPlane = false;
    /// All dabs of a stroke have the press point as their hit, as with DrawMode::Drag.
    bool holdsPressPoint = false;
    /// With BrushOperation::ModifierSmooth, the tool smooths or blurs. Otherwise, applications use
    /// the tool Smooth for such a stroke.
    bool canSmooth = true;
    /// The settings of these features have an effect on the tool.
    bool usesStamp = true;
    bool usesFalloff = true;
    bool usesSpacing = true;
    /// Dabs are placed on the surface along the path, so that the airbrush and the influence of the
    /// tilt on the strength have an effect.
    bool staysOnSurface = true;
    /// Strokes can refine the mesh under the brush (DetailSettings).
    bool refinesMesh = true;
};

/// The host's data about a tool.
struct HostTool {
    /// Name in the catalogue and in scripts.
    const char* name;
    ToolTraits traits = {};
    /// The default key, as text such as "S", and the name of the icon. Both are used by
    /// applications.
    const char* key = "";
    const char* icon = "tool";
    /// One or two sentences that describe the effect; translated in the context "ToolCatalogue".
    const char* description = "";
};

/// All tools that are listed in ToolTraits.cpp, in the order in which applications show them. Other
/// tools of the catalogue have the default values.
TROVIK_API std::span<const HostTool> HostTools();

/// Returns the traits of the tool with this name, or the defaults for other tools.
TROVIK_API const ToolTraits& TraitsOf(const QString& toolName);
/// Returns the traits of a catalogue row, or the defaults if it is null. Cost: a search in a list
/// of about twenty names.
TROVIK_API const ToolTraits& TraitsOf(const BrushConfiguration* tool);
/// Returns the traits of the brush's active tool.
inline const ToolTraits& TraitsOf(const BrushOperation& brush) {
    return TraitsOf(brush.ActiveConfiguration());
}

}  // namespace trovik
