// SPDX-License-Identifier: Apache-2.0
#include "panels/CurveSetting.h"

#include "engine/Engine.h"
#include "framework/brushes/Falloff.h"
#include "panels/Controls.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace trovik::studio {

namespace {

using nlohmann::json;

struct Preset {
    QString title;
    CurveEditor::Points points;
};

std::vector<Preset> PressurePresets() {
    return {{CurveControl::tr("Linear"), {{0, 0}, {1, 1}}},
            {CurveControl::tr("Soft"), {{0, 0}, {0.3f, 0.55f}, {1, 1}}},
            {CurveControl::tr("Hard"), {{0, 0}, {0.6f, 0.3f}, {1, 1}}},
            {CurveControl::tr("S-shaped"), {{0, 0}, {0.25f, 0.08f}, {0.75f, 0.92f}, {1, 1}}},
            {CurveControl::tr("Full early"), {{0, 0}, {0.6f, 1}, {1, 1}}},
            {CurveControl::tr("Constant"), {{0, 1}, {1, 1}}}};
}

bool AreSame(const CurveEditor::Points& left, const CurveEditor::Points& right) {
    return std::equal(left.begin(),
                      left.end(),
                      right.begin(),
                      right.end(),
                      [](const PressureCurve::Point& a, const PressureCurve::Point& b) {
                          return std::abs(a.pressure - b.pressure) < 1e-5f &&
                                 std::abs(a.value - b.value) < 1e-5f;
                      });
}

/// Positions of the points that represent a built-in or sampled curve.
constexpr float sampledAt[] = {0.0f, 0.2f, 0.4f, 0.6f, 0.8f, 1.0f};

PanelCombo* AddHeader(QVBoxLayout* layout, const SettingAppearance& appearance, QWidget* parent) {
    auto* row = new QHBoxLayout;
    row->setSpacing(4);
    auto* label = new RowLabel(appearance.label, parent);
    auto* box = new PanelCombo(appearance.label, appearance.description, parent);
    row->addWidget(label);
    row->addWidget(box, 1);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addLayout(row);
    return box;
}

}  // namespace

CurveControl::CurveControl(Engine& given, const ToolSetting& setting, QWidget* parent)
    : SettingControl(given, setting, parent) {
    auto* layout = new QVBoxLayout(this);
    presets = AddHeader(layout, appearance, this);
    for (const Preset& preset : PressurePresets()) presets->addItem(preset.title);
    presets->setPlaceholderText(tr("Custom curve"));
    editor =
        new CurveEditor(appearance.label,
                        appearance.description + u' ' +
                            tr("Drag points; double-click to add one, right-click to remove one."),
                        this);
    editor->SetAxis(tr("light"), tr("hard press"));
    layout->addWidget(editor);
    connect(editor, &CurveEditor::Edited, this, &CurveControl::SendPoints);
    connect(presets, &QComboBox::activated, this, [this](int index) {
        editor->SetValue(PressurePresets()[static_cast<std::size_t>(index)].points);
        SendPoints();
    });
}

void CurveControl::SendPoints() {
    if (AreSame(editor->Value(), PressurePresets().front().points)) {
        Send(nullptr);
        return;
    }
    json points = json::array();
    for (const PressureCurve::Point& point : editor->Value())
        points.push_back({point.pressure, point.value});
    Send(points);
}

void CurveControl::Show(const ToolSetting& setting) {
    CurveEditor::Points points = PressurePresets().front().points;
    if (setting.value.is_array()) {
        points.clear();
        for (const json& point : setting.value)
            points.push_back({point.at(0).get<float>(), point.at(1).get<float>()});
    }
    editor->SetValue(points);
    const std::vector<Preset> known = PressurePresets();
    const auto found = std::find_if(known.begin(), known.end(), [&](const Preset& preset) {
        return AreSame(preset.points, points);
    });
    presets->setCurrentIndex(found == known.end() ? -1 : static_cast<int>(found - known.begin()));
}

FalloffControl::FalloffControl(Engine& given, const ToolSetting& setting, QWidget* parent)
    : SettingControl(given, setting, parent) {
    auto* layout = new QVBoxLayout(this);
    names = AddHeader(layout, appearance, this);
    for (const std::string& known : FalloffNames())
        names->addItem(ChoiceText(QString::fromStdString(known)), QString::fromStdString(known));
    names->setPlaceholderText(tr("Custom curve"));
    editor =
        new CurveEditor(appearance.label,
                        appearance.description + u' ' +
                            tr("Drag points; double-click to add one, right-click to remove one."),
                        this);
    editor->SetAxis(tr("centre"), tr("rim"));
    layout->addWidget(editor);
    connect(names, &QComboBox::activated, this, [this](int index) {
        Send(names->itemData(index).toString().toStdString());
    });
    connect(editor, &CurveEditor::Edited, this, [this] {
        sent = editor->Samples(sampleCount);
        Send(sent);
    });
}

void FalloffControl::Show(const ToolSetting& setting) {
    CurveEditor::Points points;
    if (setting.value.is_string()) {
        const int index = FalloffIndexOf(setting.value.get<std::string>());
        for (const float x : sampledAt) points.push_back({x, FalloffValue(index, x)});
        names->setCurrentIndex(
            names->findData(QString::fromStdString(setting.value.get<std::string>())));
    } else if (setting.value.is_array() && !setting.value.empty()) {
        names->setCurrentIndex(-1);
        // The editor already has the points of a curve that it sent.
        if (!sent.empty()) return;
        const std::size_t last = setting.value.size() - 1;
        for (const float x : sampledAt) {
            const auto at = static_cast<std::size_t>(std::lround(x * static_cast<float>(last)));
            points.push_back({x, std::clamp(setting.value.at(at).get<float>(), 0.0f, 1.0f)});
        }
    }
    sent.clear();
    for (PressureCurve::Point& point : points) point.value = std::clamp(point.value, 0.0f, 1.0f);
    editor->SetValue(points);
}

}  // namespace trovik::studio
