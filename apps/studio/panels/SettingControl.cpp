// SPDX-License-Identifier: Apache-2.0
#include "panels/SettingControl.h"

#include "engine/Engine.h"
#include "panels/Controls.h"
#include "panels/CurveSetting.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace trovik::studio {

namespace {

using nlohmann::json;

QHBoxLayout* MakeRow(QWidget* parent) {
    auto* row = new QHBoxLayout(parent);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(4);
    return row;
}

class SwitchControl : public SettingControl {
public:
    SwitchControl(Engine& given, const ToolSetting& setting, QWidget* parent)
        : SettingControl(given, setting, parent) {
        check = new PanelCheck(appearance.label, appearance.description, this);
        MakeRow(this)->addWidget(check);
        connect(check, &QToolButton::clicked, this, [this](bool on) { Send(on); });
    }
    void Show(const ToolSetting& setting) override {
        check->setChecked(setting.value.is_boolean() && setting.value.get<bool>());
    }

private:
    PanelCheck* check;
};

class ChoiceControl : public SettingControl {
public:
    ChoiceControl(Engine& given, const ToolSetting& setting, QWidget* parent)
        : SettingControl(given, setting, parent) {
        auto* label = new RowLabel(appearance.label, this);
        box = new PanelCombo(appearance.label, appearance.description, this);
        for (const json& choice : setting.range.at("choices")) {
            const QString value = QString::fromStdString(choice.get<std::string>());
            box->addItem(ChoiceText(value), value);
        }
        QHBoxLayout* row = MakeRow(this);
        row->addWidget(label);
        row->addWidget(box, 1);
        connect(box, &QComboBox::activated, this, [this](int index) {
            Send(box->itemData(index).toString().toStdString());
        });
    }
    void Show(const ToolSetting& setting) override {
        box->setCurrentIndex(
            setting.value.is_string() ? box->findData(QString::fromStdString(setting.value)) : -1);
    }

private:
    PanelCombo* box;
};

/// A number field, with a switch if the setting can be off (false or null).
class NumberControl : public SettingControl {
public:
    NumberControl(Engine& given, const ToolSetting& setting, QWidget* parent, bool isOptional)
        : SettingControl(given, setting, parent) {
        QHBoxLayout* row = MakeRow(this);
        if (isOptional) {
            check = new PanelCheck({}, appearance.description, this);
            check->setAccessibleName(appearance.label);
            row->addWidget(check);
            connect(check, &QToolButton::clicked, this, [this](bool on) { Switch(on); });
        }
        slider = new ValueSlider(appearance.label, appearance.description, this);
        slider->SetRange(SliderRange(setting, appearance));
        row->addWidget(slider, 1);
        connect(slider, &ValueSlider::Edited, this, [this](double shown) {
            const double value = shown / appearance.factor;
            if (slider->Limits().isWhole)
                Send(static_cast<int>(std::lround(value)));
            else
                Send(value);
        });
    }

    void Show(const ToolSetting& setting) override {
        const bool isOn = setting.value.is_number();
        if (check != nullptr) check->setChecked(isOn);
        slider->setEnabled(check == nullptr || isOn);
        if (name == "radius") FitRadius();
        if (isOn) slider->SetValue(setting.value.get<double>() * appearance.factor);
    }

private:
    /// A drag covers the range from small details to half of the document's size.
    void FitRadius() {
        if (!engine.HasDocument()) return;
        const AxisAlignedBoundingBox& box = engine.Document().bounds;
        const double size = static_cast<double>(
            Vector(box.maxX - box.minX, box.maxY - box.minY, box.maxZ - box.minZ).Length());
        ValueSlider::Range range = slider->Limits();
        if (!(size > 0.0) || range.softMost == size / 2) return;
        range.softLeast = size / 1000;
        range.softMost = size / 2;
        slider->SetRange(range);
    }

    void Switch(bool on) {
        if (on && slider->Value() <= slider->Limits().least) {
            Send(appearance.firstValue);
        } else if (on) {
            Send(slider->Value() / appearance.factor);
        } else if (const ToolSetting* world = engine.Setting("radius");
                   name == "radiusPixels" && world != nullptr) {
            // A radius in world units replaces one in pixels.
            engine.Run(SetStep("radius", world->value));
        } else {
            Send(false);
        }
    }

    PanelCheck* check = nullptr;
    ValueSlider* slider;
};

bool AcceptsType(const ToolSetting& setting, const char* type) {
    const json types = setting.range.value("type", json());
    if (types.is_array()) return std::find(types.begin(), types.end(), type) != types.end();
    return types == type;
}

}  // namespace

SettingControl::SettingControl(Engine& given, const ToolSetting& setting, QWidget* parent)
    : QWidget(parent), engine(given), name(setting.name), appearance(AppearanceOf(setting)) {
    setObjectName(QString::fromStdString(name));
}

void SettingControl::Send(const json& value) { engine.Run(SetStep(name, value)); }

SettingControl* SettingControl::Make(Engine& engine, const ToolSetting& setting, QWidget* parent) {
    if (setting.name == "falloff") return new FalloffControl(engine, setting, parent);
    if (setting.range.contains("choices")) return new ChoiceControl(engine, setting, parent);
    if (AcceptsType(setting, "array")) return new CurveControl(engine, setting, parent);
    const bool isNumber = AcceptsType(setting, "number") || AcceptsType(setting, "integer");
    if (isNumber) {
        // An optional number can be false or null.
        const bool isOptional =
            AcceptsType(setting, "boolean") || setting.value.is_null() ||
            // The radius in pixels is null while the brush uses the radius in world units.
            setting.name == "radiusPixels";
        return new NumberControl(engine, setting, parent, isOptional);
    }
    if (AcceptsType(setting, "boolean")) return new SwitchControl(engine, setting, parent);
    return nullptr;
}

SettingList::SettingList(Engine& given, SettingGroup shown, QWidget* parent)
    : QWidget(parent), engine(given), group(shown) {
    layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    connect(&engine, &Engine::SettingsChanged, this, &SettingList::Refresh);
    Refresh();
}

SettingControl* SettingList::Find(const std::string& name) const {
    for (SettingControl* control : controls)
        if (control->Name() == name) return control;
    return nullptr;
}

bool SettingList::HasAny() const {
    return std::any_of(controls.begin(), controls.end(), [](const SettingControl* control) {
        return !control->isHidden();
    });
}

void SettingList::Refresh() {
    if (!engine.Settings()) return;
    for (const ToolSetting& setting : *engine.Settings()) {
        const SettingAppearance appearance = AppearanceOf(setting);
        if (appearance.group != group) continue;
        SettingControl* control = Find(setting.name);
        if (control == nullptr && setting.applies) {
            control = SettingControl::Make(engine, setting, this);
            if (control == nullptr) continue;
            controls.push_back(control);
            layout->addWidget(control);
        }
        if (control == nullptr) continue;
        control->setVisible(setting.applies);
        if (!setting.applies) continue;
        control->Show(setting);
        const ToolSetting* condition = appearance.dependsOn.isEmpty()
                                           ? nullptr
                                           : engine.Setting(appearance.dependsOn.toStdString());
        control->setEnabled(condition == nullptr || !condition->applies ||
                            (condition->value != json(false) && condition->value != json("off")));
    }
    Q_EMIT Refreshed();
}

}  // namespace trovik::studio
