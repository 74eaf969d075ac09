// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QToolButton;

namespace trovik::studio {

class ActionRegistry;
class Engine;
class FlowLayout;

/// The tools of the document as buttons with icons, in as many columns as fit. The buttons use the
/// actions "tool.NAME".
class ToolShelf : public QWidget {
    Q_OBJECT
public:
    ToolShelf(Engine& engine, ActionRegistry& actions, QWidget* parent = nullptr);

    /// Null if there is none.
    QToolButton* Button(const QString& tool) const;

private:
    void Refresh();

    Engine& engine;
    ActionRegistry& actions;
    FlowLayout* layout;
    QStringList shown;
};

}  // namespace trovik::studio
