// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "window/PanelWindow.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <map>

class QMainWindow;

namespace trovik::studio {

/// Moves panels between the main window and windows of their own. Closing such a window docks its
/// panel again.
class PanelWindows : public QObject {
    Q_OBJECT
public:
    /// How a panel is docked in the main window.
    struct Home {
        QString title;
        /// Removes the panel from the main window and returns it.
        std::function<QWidget*()> take;
        /// Inserts the panel where it was.
        std::function<void(QWidget*)> putBack;
    };

    /// \param window  the main window; its central widget is the viewport. The objects are
    /// borrowed.
    PanelWindows(ActionRegistry& actions, QMainWindow& window);

    void Add(const QString& id, Home home);
    /// Opens a window for a panel, or raises its existing window. Unknown ids have no effect.
    void Undock(const QString& id);
    void Dock(const QString& id);
    bool IsUndocked(const QString& id) const { return Window(id) != nullptr; }
    /// The window of an undocked panel; null if it is docked.
    PanelWindow* Window(const QString& id) const;
    /// Hides or shows all windows.
    void SetVisible(bool visible);
    bool IsAnyVisible() const;

    /// The undocked panels and the positions of their windows.
    QByteArray State() const;
    /// Undocks the panels of a state. Data that is not a valid state is ignored.
    void Restore(const QByteArray& state);

Q_SIGNALS:
    /// A panel was undocked or docked.
    void Changed(const QString& id);

private:
    struct Entry {
        Home home;
        QPointer<PanelWindow> window;
    };
    /// A position on the screen for a window of this size, next to the docked panel and over the
    /// viewport.
    QPoint CornerNextTo(const QWidget& panel, const QSize& size) const;

    ActionRegistry& actions;
    QMainWindow& mainWindow;
    std::map<QString, Entry> entries;
};

}  // namespace trovik::studio
