// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>

#include <string>

namespace trovik::studio {

class Engine;
class ValueSlider;

/// Two sliders for the radius and strength of the active tool, to be added to a layout.
class BrushSliders : public QObject {
    Q_OBJECT
public:
    /// \param parent  the parent of the sliders and of this object.
    BrushSliders(Engine& engine, QWidget* parent);

    ValueSlider* Radius() const { return radius; }
    ValueSlider* Strength() const { return strength; }

private:
    void Refresh();

    Engine& engine;
    ValueSlider* radius;
    ValueSlider* strength;
    /// The setting that the radius slider shows: "radiusPixels" if the radius is given in pixels,
    /// otherwise "radius".
    std::string radiusName = "radius";
};

}  // namespace trovik::studio
