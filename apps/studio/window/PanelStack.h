// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

#include <vector>

class QLabel;
class QStackedWidget;
class QAction;
class QToolButton;
class QHBoxLayout;

namespace trovik::studio {

/// Panels that are selected with a row of icons; only one is visible at a time. A panel scrolls if
/// it is too tall. Panels can be taken out, to be shown elsewhere, and restored.
class PanelStack : public QWidget {
    Q_OBJECT
public:
    explicit PanelStack(QWidget* parent = nullptr);

    /// \param scrolls  false for panels that contain a scrolling list.
    void Add(const QString& id,
             const QString& icon,
             const QString& title,
             const QString& tip,
             QWidget* panel,
             bool scrolls = true);
    /// Shows a panel. For a panel that was taken, Requested is sent instead.
    void Show(const QString& id);
    /// The visible panel; empty if all panels were taken.
    QString Shown() const;
    /// Sets the action of the button next to the title while a panel is shown.
    void SetTitleAction(const QString& id, QAction* action);
    /// Removes a panel and returns it; the caller becomes its owner. Its icon remains.
    QWidget* Take(const QString& id);
    /// Inserts a panel that was taken, and shows it.
    void PutBack(const QString& id, QWidget* panel);
    QStringList Ids() const;
    QString Title(const QString& id) { return Find(id)->title; }

Q_SIGNALS:
    /// The user has chosen a panel that was taken.
    void Requested(const QString& id);

private:
    struct Page {
        QString id, title;
        QToolButton* button;
        /// Null if it was taken.
        QWidget* panel;
        QAction* titleAction = nullptr;
    };
    Page* Find(const QString& id);

    QHBoxLayout* icons;
    QLabel* title;
    QToolButton* titleButton;
    QStackedWidget* stack;
    std::vector<Page> pages;
};

}  // namespace trovik::studio
