// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "panels/CurveEditor.h"
#include "panels/SettingControl.h"

namespace trovik::studio {

class PanelCombo;

/// A pressure curve with presets.
class CurveControl : public SettingControl {
    Q_OBJECT
public:
    CurveControl(Engine& engine, const ToolSetting& setting, QWidget* parent);
    void Show(const ToolSetting& setting) override;
    CurveEditor& Editor() { return *editor; }

private:
    void SendPoints();

    PanelCombo* presets;
    CurveEditor* editor;
};

/// The falloff: a built-in curve, or a user-defined curve, which is sent as samples.
class FalloffControl : public SettingControl {
    Q_OBJECT
public:
    /// Samples of a user-defined curve.
    static constexpr std::size_t sampleCount = 65;

    FalloffControl(Engine& engine, const ToolSetting& setting, QWidget* parent);
    void Show(const ToolSetting& setting) override;
    CurveEditor& Editor() { return *editor; }

private:
    /// The most recently sent samples, to recognise a curve whose points the editor already has.
    std::vector<float> sent;
    PanelCombo* names;
    CurveEditor* editor;
};

}  // namespace trovik::studio
