// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/script/ToolSettings.h"
#include "panels/ValueSlider.h"

#include <QString>

namespace trovik::studio {

enum class SettingGroup { Brush, Pressure, Stroke, Stamp, Advanced };

/// How a setting of a tool is shown. The control follows from its range; see SettingControl.
struct SettingAppearance {
    QString label, description;
    SettingGroup group = SettingGroup::Advanced;
    /// Values that a drag reaches; equal ones: those of the range.
    double softLeast = 0.0, softMost = 0.0;
    bool isLogarithmic = false;
    /// The shown number is the setting's multiplied by this, in `unit`.
    double factor = 1.0;
    QString unit;
    /// Name of a boolean setting without which this one has no effect; empty: none.
    QString dependsOn;
    /// Value that switches on an optional number which has none yet.
    double firstValue = 0.0;
};

/// Of any setting; those that the catalogue does not have get a label from their name, and the
/// group Advanced.
SettingAppearance AppearanceOf(const ToolSetting& setting);

/// Title of a group, translated.
QString TitleOf(SettingGroup group);
/// A value of an enumeration as users read it, such as "Surface normal" for "surfaceNormal".
QString ChoiceText(const QString& value);
/// Limits of the slider of a numeric setting.
ValueSlider::Range SliderRange(const ToolSetting& setting, const SettingAppearance& appearance);

/// The step that sets a setting: "stamp.factor" is the field "factor" of "stamp".
nlohmann::json SetStep(const std::string& name, const nlohmann::json& value);

}  // namespace trovik::studio
