// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFrame>
#include <QPointer>

class QLabel;
class QLineEdit;
class QListWidget;

namespace trovik::studio {

class ActionRegistry;

/// A search field for all actions, with their keys and descriptions, near the top of a window.
/// Return runs the selected action; Escape closes the palette. Without a query, the most recently
/// used actions come first. Held keys are listed only to show their keys; they cannot be run.
class CommandPalette : public QFrame {
    Q_OBJECT
public:
    CommandPalette(ActionRegistry& actions, QWidget* window);

    /// Opens above the window's contents, with an empty query.
    void Open();
    void SetQuery(const QString& query);
    /// The listed ids, best match first.
    QStringList Listed() const;
    /// Closes the palette and runs the selected action.
    void RunSelected();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Refill();
    void ShowDescription();

    ActionRegistry& actions;
    QLineEdit* query;
    QListWidget* list;
    QLabel* description;
    QPointer<QWidget> focusBefore;
};

}  // namespace trovik::studio
