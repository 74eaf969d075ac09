// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/SymmetrySetting.h"

#include <QWidget>

class QToolButton;

namespace trovik::studio {

class ActionRegistry;
class Engine;
class PanelCombo;
class ValueSlider;

/// Stroke and mesh symmetry.
class SymmetryPanel : public QWidget {
    Q_OBJECT
public:
    SymmetryPanel(Engine& engine, ActionRegistry& actions, QWidget* parent = nullptr);

private:
    void Refresh();
    void Send();

    Engine& engine;
    SymmetrySetting setting;
    ValueSlider* copies;
    PanelCombo* axis;
    PanelCombo* symmetrizeAxis;
    PanelCombo* side;
};

}  // namespace trovik::studio
