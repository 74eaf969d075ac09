// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QLabel;
class QListWidget;

namespace trovik::studio {

class ActionRegistry;
class Engine;

/// The undo steps with their bytes, the newest first. A click undoes or redoes up to a step.
class HistoryPanel : public QWidget {
    Q_OBJECT
public:
    HistoryPanel(Engine& engine, ActionRegistry& actions, QWidget* parent = nullptr);

    /// Undoes or redoes until `position` steps are done.
    void JumpTo(std::size_t position);

private:
    void Refresh();

    Engine& engine;
    QListWidget* list;
    QLabel* totals;
};

}  // namespace trovik::studio
