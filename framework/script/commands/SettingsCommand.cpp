// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/Falloff.h"
#include "framework/script/ToolSettings.h"
#include "framework/script/commands/SettingsParameters.h"

#include <algorithm>

namespace trovik {

namespace {

std::string Listed(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
    return list;
}

void SetFalloff(BrushOperation& brush, const FalloffSetting& falloff) {
    if (const auto* samples = std::get_if<std::vector<float>>(&falloff)) {
        SetFalloffSamples(brush, *samples);
        return;
    }
    const auto* name = std::get_if<std::string>(&falloff);
    const int index = name != nullptr ? FalloffIndexOf(*name) : std::get<int>(falloff);
    if (index < 0 || index >= static_cast<int>(FalloffNames().size()))
        throw FieldFault("/falloff", "unknown falloff; expected one of " + Listed(FalloffNames()));
    brush.SetFalloffIndex(index);
}

void SetDirection(BrushOperation& brush, const DirectionSetting& direction) {
    const auto& names = DirectionNames();
    int mode = -1;
    if (const auto* name = std::get_if<std::string>(&direction)) {
        const auto found = std::find(names.begin(), names.end(), *name);
        if (found != names.end()) mode = static_cast<int>(found - names.begin());
    } else {
        mode = std::get<int>(direction);
    }
    if (mode < 0 || mode >= static_cast<int>(names.size()))
        throw FieldFault("/direction", "unknown direction; expected one of " + Listed(names));
    brush.directionAttribute.SetValue(mode, true);
}

void SetFlag(BrushOperation& brush,
             const std::optional<bool>& flag,
             const char* attribute,
             const char* pointer) {
    if (flag) BrushAttribute<bool>(brush, attribute, pointer).SetValue(*flag, true);
}

/// Sets an attribute that the host's own brushes have for some of their tools.
/// \throw FieldFault if the active tool does not have the setting.
template <typename T>
void SetForTool(BrushOperation& brush, const char* setting, const char* attribute, const T& value) {
    auto* found =
        dynamic_cast<AttributeInstance<T>*>(brush.AttributeByName(QString::fromLatin1(attribute)));
    if (found == nullptr || !found->IsVisible()) {
        const BrushConfiguration* tool = brush.ActiveConfiguration();
        throw FieldFault(
            std::string("/") + setting,
            (tool == nullptr ? "the brush" : "the tool " + tool->Name().toStdString()) +
                " has no setting \"" + setting + '"');
    }
    found->SetValue(value, true);
}

void SetGrab(BrushOperation& brush, const SettingsParameters& settings) {
    if (settings.connectedOnly)
        SetForTool(brush, "connectedOnly", "connectedonly", *settings.connectedOnly);
    if (settings.alongNormal)
        SetForTool(brush, "alongNormal", "alongnormal", *settings.alongNormal);
    if (settings.mode) {
        // The schema has already checked the name.
        const auto* const name =
            std::find(std::begin(elasticModeNames), std::end(elasticModeNames), *settings.mode);
        SetForTool(brush, "mode", "elasticmode", static_cast<int>(name - elasticModeNames));
    }
    if (settings.scales) SetForTool(brush, "scales", "elasticscales", *settings.scales);
    if (settings.poissonRatio)
        SetForTool(brush, "poissonRatio", "poissonratio", *settings.poissonRatio);
}

void ApplySettings(CommandContext& context, const SettingsParameters& settings) {
    BrushOperation& brush = context.document.Brush();
    BrushOperation::Private& host = brush.Settings();
    SceneSettings& strokes = context.document.Settings();
    strokes.radius = settings.radius.value_or(strokes.radius);
    if (settings.spacing) strokes.spacing = *settings.spacing * 0.01f;
    if (settings.strength) brush.SetBrushStrength(*settings.strength);
    if (settings.falloff) SetFalloff(brush, *settings.falloff);
    if (settings.direction) SetDirection(brush, *settings.direction);
    if (settings.buildUpRate)
        BrushAttribute<float>(brush, "builduprate", "/buildUpRate")
            .SetValue(*settings.buildUpRate, true);
    SetFlag(brush, settings.globalPlane, "globalplane", "/globalPlane");
    SetFlag(brush, settings.updatePlane, "updateplane", "/updatePlane");
    SetFlag(brush, settings.affectAllLayers, "affectalllayers", "/affectAllLayers");
    SetGrab(brush, settings);
    host.strengthBias = settings.strengthBias.value_or(host.strengthBias);
    if (settings.pressureControlsStrength)
        brush.strokeOptionC.SetValue(*settings.pressureControlsStrength, true);
    if (settings.facing) {
        brush.SetFalloffBasedOnFacingAngle(settings.facing->enabled.value_or(true),
                                           settings.facing->start.value_or(brush.facingAngleStart),
                                           settings.facing->range.value_or(brush.facingAngleRange));
    }
    SetFlag(brush, settings.drawFromCenter, "drawfromcenter", "/drawFromCenter");
    if (settings.stamp) SetStamp(context, *settings.stamp);
    SetPen(context, settings);
}

// The settings before an invalid one take effect, so the notification is sent in this case too.
void Set(CommandContext& context, const SettingsParameters& settings) {
    try {
        ApplySettings(context, settings);
    } catch (...) {
        context.document.NoteToolChanged();
        throw;
    }
    context.document.NoteToolChanged();
}

// Checked one at a time, so that every invalid setting is reported.
void CheckSettings(CommandContext& context,
                   const FieldReader& settings,
                   const CommandEntry::Report& report) {
    const nlohmann::json& all = settings.Json();
    for (const auto& [name, value] : all.items()) {
        nlohmann::json one = {{name, value}};
        // These two are mutually exclusive.
        if (name == "radiusPixels" && all.contains("radius")) one["radius"] = all.at("radius");
        report([&] {
            const FieldReader field = settings.With(one);
            AtParameters(field, [&] { Set(context, ReadField<SettingsParameters>(field)); });
        });
    }
}

const CommandRegistration<SettingsParameters> set(
    {.name = "set",
     .duringStroke = DuringStroke::Allowed,
     .inputs = {{"/stamp", CommandInput::WhenUsed}, {"/stamp/path", CommandInput::WhenUsed}}},
    Set,
    CheckSettings);

}  // namespace

}  // namespace trovik
