// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

#include <vector>

class QToolButton;

namespace trovik::studio {

class ActionRegistry;
class PanelCombo;
class ValueSlider;
class ViewModel;

/// The display settings of the viewport.
class ViewPanel : public QWidget {
    Q_OBJECT
public:
    ViewPanel(ViewModel& view, ActionRegistry& actions, QWidget* parent = nullptr);

private:
    void Refresh();
    void ChooseColor(std::size_t index);

    ViewModel& view;
    PanelCombo* matcap;
    ValueSlider* cavity;
    ValueSlider* fieldOfView;
    std::vector<QToolButton*> colors;
};

}  // namespace trovik::studio
