// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/scene/SceneFile.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace trovik {

/// A setting of a tool, as the step "set" of stroke scripts takes it.
struct ToolSetting {
    /// Name in scripts; of a field within a setting "stamp.factor".
    std::string name;
    std::string unit;
    /// The tool has it. If not, it is accepted and has no effect, or is refused; `value` is null.
    bool applies = true;
    /// As a script would give it; null if nothing is set, such as a curve or a path.
    nlohmann::json value;
    /// Limits as in a JSON schema: "minimum", "exclusiveMinimum", "maximum", "exclusiveMaximum",
    /// "choices", and "type". Empty for a setting without limits.
    nlohmann::json range;
};

/// Words of the setting "positioning" of stamps, in the order of StampPositioning.
inline constexpr const char* positioningNames[] = {"tool", "upright", "stroke", "start"};

/// Names of the values of the setting "direction", by number.
TROVIK_API const std::vector<std::string>& DirectionNames();

/// All settings, the same for every brush, with their present values for the brush's active tool.
/// Values come from the brush and from `settings`, limits from the schema of stroke scripts.
TROVIK_API std::vector<ToolSetting> ReadToolSettings(const BrushOperation& brush,
                                                     const SceneSettings& settings);

/// A tool with the settings that it has when a script selects it for the first time.
struct ToolDescription {
    const BrushConfiguration* tool;
    std::vector<ToolSetting> settings;
};

/// All tools: those of the plug-ins' brushes, in their order, and the one that freezes. Each is
/// read from a new brush. The plug-ins must have been loaded (LoadPlugins).
TROVIK_API std::vector<ToolDescription> DescribeTools();

}  // namespace trovik
