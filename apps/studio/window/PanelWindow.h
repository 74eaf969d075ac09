// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

namespace trovik::studio {

class ActionRegistry;

/// A window of its own for an undocked panel. Keys that the panel does not use reach the viewport:
/// the main window's shortcuts work in it (it is a window of type Qt::Tool), and it passes all
/// other keys on.
class PanelWindow : public QWidget {
    Q_OBJECT
public:
    /// \param panel  becomes a child. \param mainWindow  becomes the parent; its central widget
    /// receives the keys.
    PanelWindow(QWidget* panel,
                const QString& title,
                ActionRegistry& actions,
                QWidget* mainWindow,
                QWidget* viewport);

    /// Removes the panel from the window. The caller becomes its owner.
    QWidget* Take();

Q_SIGNALS:
    /// The user has closed the window.
    void Closed();

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    bool SendToViewport(QEvent* event);

    QWidget* panel;
    ActionRegistry& actions;
    QWidget* viewport;
};

}  // namespace trovik::studio
