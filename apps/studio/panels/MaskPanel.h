// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

namespace trovik::studio {

class ActionRegistry;
class Engine;
class PanelCombo;
class ValueSlider;

/// Mask and visibility: buttons for their actions, and masking by cavity with its settings.
class MaskPanel : public QWidget {
    Q_OBJECT
public:
    MaskPanel(Engine& engine, ActionRegistry& actions, QWidget* parent = nullptr);

private:
    void MaskByCavity();

    Engine& engine;
    PanelCombo* sign;
    PanelCombo* mode;
    ValueSlider* from;
    ValueSlider* softness;
    ValueSlider* amount;
};

}  // namespace trovik::studio
