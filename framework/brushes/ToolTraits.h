// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

namespace trovik {

/// How the host drives a tool. The catalogue row of a tool (BrushConfiguration) has no place for
/// this, so the host declares it by the tool's name; a tool that is not listed in ToolTraits.cpp
/// has the defaults below.
struct ToolTraits {
    enum class StrengthUnit {
        /// A length in world units: 100 percent is `radiiAtFullStrength` brush radii.
        Length,
        /// Percent, passed on as it is.
        Percent
    };

    StrengthUnit strengthUnit = StrengthUnit::Length;
    float radiiAtFullStrength = 1.0f;
    /// With a vector stamp the strength is in percent, whatever the unit: the stamp's values are
    /// fractions of its side.
    bool vectorStampTakesPercent = true;
    /// The tool's own stamp positioning (StampPositioning::Tool) turns the stamp with the stroke.
    bool turnsStampAlongStroke = false;
    /// Copies of the stamp are placed side by side: dabs are two radii apart plus the tool's gap
    /// settings, and the spacing of the stroke does not count.
    bool spacesDabsByStamp = false;
    /// The tool flattens onto a plane, which a stroke can keep ("globalplane", "updateplane").
    bool worksOnPlane = false;
};

/// Of a catalogue row; the defaults for null. Cost: a search in a list of some twenty names.
TROVIK_API const ToolTraits& TraitsOf(const BrushConfiguration* tool);
/// Of the brush's active tool.
inline const ToolTraits& TraitsOf(const BrushOperation& brush) {
    return TraitsOf(brush.ActiveConfiguration());
}

}  // namespace trovik
