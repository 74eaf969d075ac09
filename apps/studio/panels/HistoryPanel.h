// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QLabel;
class QListWidget;

namespace trovik::studio {

class ActionRegistry;
class Engine;

/// The undo steps with their sizes in bytes, newest first. A click undoes or redoes up to a step.
class HistoryPanel : public QWidget {
    Q_OBJECT
public:
    HistoryPanel(Engine& engine, ActionRegistry& actions, QWidget* parent = nullptr);

    /// Undoes or redoes steps until `position` of them are applied.
    void JumpTo(std::size_t position);

private:
    void Refresh();

    Engine& engine;
    QListWidget* list;
    QLabel* totals;
};

}  // namespace trovik::studio
