// SPDX-License-Identifier: Apache-2.0
#include "window/QuickBar.h"

#include "commands/ActionRegistry.h"
#include "engine/Engine.h"
#include "panels/Controls.h"
#include "panels/SettingCatalogue.h"
#include "panels/ValueSlider.h"

#include <QToolButton>

namespace trovik::studio {

QuickBar::QuickBar(Engine& given, ActionRegistry& registry, QWidget* parent)
    : QToolBar(tr("Quick bar"), parent), engine(given), actions(registry) {
    setObjectName(QStringLiteral("quickBar"));
    setMovable(false);
    setAccessibleName(tr("Quick bar"));
    const int side = fontMetrics().height() + 2;
    setIconSize({side, side});
    for (const char* id : {"file.new", "file.open", "file.save"}) AddAction(id);
    addSeparator();
    for (const char* id : {"edit.undo", "edit.redo"}) AddAction(id);
    addSeparator();
    const auto add = [&](const QString& name, const QString& tip) {
        auto* slider = new ValueSlider(name, tip, this);
        slider->setFixedWidth(10 * side);
        addWidget(slider);
        return slider;
    };
    radius =
        add(tr("Radius"), tr("Radius of the brush. Hold F over the viewport to change it there."));
    AddAction("brush.pressure.size");
    strength = add(tr("Strength"),
                   tr("Strength of the brush. Hold Shift+F over the viewport to change it there."));
    AddAction("brush.pressure.strength");
    addSeparator();
    for (const char* id : {"symmetry.x", "symmetry.y", "symmetry.z", "symmetry.radial"})
        AddAction(id);
    auto* space = new QWidget(this);
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    addWidget(space);
    for (const char* id : {"view.frame",
                           "view.orthographic",
                           "view.wireframe",
                           "view.cavity",
                           "view.grid",
                           "window.palette"})
        AddAction(id);
    connect(radius, &ValueSlider::Edited, this, [this](double value) {
        engine.Run(SetStep(radiusName, value));
    });
    connect(strength, &ValueSlider::Edited, this, [this](double value) {
        engine.Run(SetStep("strength", value));
    });
    connect(&engine, &Engine::SettingsChanged, this, &QuickBar::Refresh);
    connect(&engine, &Engine::Opened, this, &QuickBar::Refresh);
    Refresh();
}

void QuickBar::AddAction(const char* id) {
    QAction* action = actions.Find(QString::fromLatin1(id));
    if (action == nullptr) return;
    QToolButton* button = MakeActionButton(action, this);
    button->setIconSize(iconSize());
    addWidget(button);
}

void QuickBar::Refresh() {
    const ToolSetting* pixels = engine.Setting("radiusPixels");
    const bool isInPixels = pixels != nullptr && pixels->value.is_number();
    radiusName = isInPixels ? "radiusPixels" : "radius";
    const auto show = [&](ValueSlider* slider, const std::string& name) {
        const ToolSetting* setting = engine.Setting(name);
        slider->setEnabled(setting != nullptr && setting->applies && setting->value.is_number());
        if (!slider->isEnabled()) return;
        const SettingAppearance appearance = AppearanceOf(*setting);
        ValueSlider::Range range = SliderRange(*setting, appearance);
        if (name == "radius" && engine.HasDocument()) {
            const AxisAlignedBoundingBox& box = engine.Document().bounds;
            const auto size = static_cast<double>(
                Vector(box.maxX - box.minX, box.maxY - box.minY, box.maxZ - box.minZ).Length());
            if (size > 0.0) {
                range.softLeast = size / 1000;
                range.softMost = size / 2;
            }
        }
        slider->SetRange(range);
        slider->SetValue(setting->value.get<double>() * appearance.factor);
    };
    show(radius, radiusName);
    show(strength, "strength");
}

}  // namespace trovik::studio
