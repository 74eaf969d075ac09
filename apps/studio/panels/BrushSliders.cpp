// SPDX-License-Identifier: Apache-2.0
#include "panels/BrushSliders.h"

#include "engine/Engine.h"
#include "panels/SettingCatalogue.h"
#include "panels/ValueSlider.h"

namespace trovik::studio {

BrushSliders::BrushSliders(Engine& given, QWidget* parent)
    : QObject(parent),
      engine(given),
      radius(
          new ValueSlider(tr("Radius"),
                          tr("Radius of the brush. Hold F over the viewport to change it there."),
                          parent)),
      strength(new ValueSlider(
          tr("Strength"),
          tr("Strength of the brush. Hold Shift+F over the viewport to change it there."),
          parent)) {
    connect(radius, &ValueSlider::Edited, this, [this](double value) {
        engine.Run(SetStep(radiusName, value));
    });
    connect(strength, &ValueSlider::Edited, this, [this](double value) {
        engine.Run(SetStep("strength", value));
    });
    connect(&engine, &Engine::SettingsChanged, this, &BrushSliders::Refresh);
    connect(&engine, &Engine::Opened, this, &BrushSliders::Refresh);
    Refresh();
}

void BrushSliders::Refresh() {
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
