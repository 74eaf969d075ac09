// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

namespace trovik::studio {

struct ActionContext;
class Engine;
class PanelCombo;
class ValueSlider;

/// Mask and visibility: buttons for their actions, the face groups, and masking by cavity with its
/// settings.
class MaskPanel : public QWidget {
    Q_OBJECT
public:
    explicit MaskPanel(const ActionContext& context, QWidget* parent = nullptr);

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
