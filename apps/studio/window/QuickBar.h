// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QToolBar>

namespace trovik::studio {

class ActionRegistry;
class Engine;

/// The slim bar at the top: undo and redo, radius, strength, their pressure switches, symmetry,
/// common views.
class QuickBar : public QToolBar {
    Q_OBJECT
public:
    QuickBar(Engine& engine, ActionRegistry& actions, QWidget* parent);

private:
    void AddAction(const char* id);

    ActionRegistry& actions;
};

}  // namespace trovik::studio
