// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

#include <vector>

class QLabel;
class QStackedWidget;
class QToolButton;
class QHBoxLayout;

namespace trovik::studio {

/// Panels that are selected by a row of icons; one panel is visible. A panel scrolls if it is too
/// tall.
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
    void Show(const QString& id);
    QString Shown() const;
    QStringList Ids() const;

private:
    struct Page {
        QString id, title;
        QToolButton* button;
    };
    QHBoxLayout* icons;
    QLabel* title;
    QStackedWidget* stack;
    std::vector<Page> pages;
};

}  // namespace trovik::studio
