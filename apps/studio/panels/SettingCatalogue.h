// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/script/ToolSettings.h"
#include "panels/ValueSlider.h"

#include <QString>

namespace trovik::studio {

enum class SettingGroup { Brush, Detail, Pressure, Stroke, Stamp, Advanced };

/// The presentation of a tool setting. Its range determines the control; see SettingControl.
struct SettingAppearance {
    QString label, description;
    SettingGroup group = SettingGroup::Advanced;
    /// Limits of a drag; if they are equal, the limits of the range are used.
    double softLeast = 0.0, softMost = 0.0;
    bool isLogarithmic = false;
    /// The displayed number is the value of the setting multiplied by this factor, in `unit`.
    double factor = 1.0;
    QString unit;
    /// Name of a setting that must not be false or "off" for this one to have an effect; empty if
    /// there is none.
    QString dependsOn;
    /// Initial value of an optional number when it is switched on.
    double firstValue = 0.0;
};

/// The presentation of any setting. Those that are not in the catalogue get a label derived from
/// their name and belong to the group Advanced.
SettingAppearance AppearanceOf(const ToolSetting& setting);

/// Translated title of a group.
QString TitleOf(SettingGroup group);
/// Display name of an enumeration value, such as "Surface normal" for "surfaceNormal".
QString ChoiceText(const QString& value);
/// Limits of the slider of a numeric setting.
ValueSlider::Range SliderRange(const ToolSetting& setting, const SettingAppearance& appearance);

/// The step that sets a setting: "stamp.factor" is the field "factor" of "stamp".
nlohmann::json SetStep(const std::string& name, const nlohmann::json& value);

}  // namespace trovik::studio
