// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/scene/SceneFile.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace trovik {

/// A tool setting, as used by the "set" step of stroke scripts.
struct ToolSetting {
    /// Name in scripts; a field within a setting has a name like "stamp.factor".
    std::string name;
    std::string unit;
    /// Whether the tool has this setting. If not, `value` is null, and a script that sets it is
    /// rejected or has no effect.
    bool applies = true;
    /// The value in the form that scripts use; null if there is no value, for example no curve or
    /// no path.
    nlohmann::json value;
    /// The accepted range, with the keywords of a JSON schema: "minimum", "exclusiveMinimum",
    /// "maximum", "exclusiveMaximum", "choices", and "type". Empty for a setting without limits.
    nlohmann::json range;

    bool operator==(const ToolSetting&) const = default;
};

/// Value names for the "positioning" setting of stamps, in the order of StampPositioning.
inline constexpr const char* positioningNames[] = {"tool", "upright", "stroke", "start"};

/// Value names for the "mode" setting of ElasticGrab, in the order of ElasticMode.
inline constexpr const char* elasticModeNames[] = {"grab", "twist", "scale", "pinch"};

/// Value names for the "unit" of the detail, in the order of DetailSettings::Measure.
inline constexpr const char* detailUnitNames[] = {"off", "world", "radius", "pixels"};

/// Value names for the "direction" setting, indexed by number.
TROVIK_API const std::vector<std::string>& DirectionNames();

/// All settings, which are the same for every brush, with their current values for the brush's
/// active tool. Values come from the brush and from `settings`, ranges from the stroke script
/// schema.
TROVIK_API std::vector<ToolSetting> ReadToolSettings(const BrushOperation& brush,
                                                     const SceneSettings& settings);

/// A tool with the settings that it has when a script first selects it.
struct ToolDescription {
    const BrushConfiguration* tool;
    std::vector<ToolSetting> settings;
};

/// All tools: those of the plug-ins' brushes, in their order, followed by those of the grab brush
/// and the freeze tool. Each tool's settings are read from a newly created brush. The plug-ins must
/// have been loaded (LoadPlugins).
TROVIK_API std::vector<ToolDescription> DescribeTools();

}  // namespace trovik
