// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

#include <vector>

class QToolButton;

namespace trovik::studio {

struct ActionContext;
class PanelCombo;
class ValueSlider;
class ViewModel;

/// The display settings of the viewport, and its bookmarks.
class ViewPanel : public QWidget {
    Q_OBJECT
public:
    explicit ViewPanel(const ActionContext& context, QWidget* parent = nullptr);

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
