// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QToolBar>

#include <string>

namespace trovik::studio {

class ActionRegistry;
class Engine;
class ValueSlider;

/// The slim bar at the top: undo and redo, radius, strength, their pressure switches, symmetry,
/// common views.
class QuickBar : public QToolBar {
    Q_OBJECT
public:
    QuickBar(Engine& engine, ActionRegistry& actions, QWidget* parent);

private:
    void AddAction(const char* id);
    void Refresh();

    Engine& engine;
    ActionRegistry& actions;
    ValueSlider* radius;
    ValueSlider* strength;
    /// The setting that the radius slider shows: in pixels if the tool uses pixels.
    std::string radiusName = "radius";
};

}  // namespace trovik::studio
