// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QLabel;

namespace trovik::studio {

class ActionRegistry;
class Engine;
class ValueSlider;

/// The levels of the document: the current one, their counts, and their actions.
class LevelsPanel : public QWidget {
    Q_OBJECT
public:
    LevelsPanel(Engine& engine, ActionRegistry& actions, QWidget* parent = nullptr);

private:
    void Refresh();

    Engine& engine;
    ValueSlider* level;
    QLabel* counts;
    QLabel* forecast;
};

}  // namespace trovik::studio
