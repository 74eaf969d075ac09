// SPDX-License-Identifier: Apache-2.0
#include "panels/ToolShelf.h"

#include "commands/ActionRegistry.h"
#include "commands/ToolCatalogue.h"
#include "engine/Engine.h"
#include "panels/Controls.h"
#include "panels/FlowLayout.h"

#include <QToolButton>

namespace trovik::studio {

ToolShelf::ToolShelf(Engine& given, ActionRegistry& registry, QWidget* parent)
    : QWidget(parent), engine(given), actions(registry) {
    setAccessibleName(tr("Tools"));
    layout = new FlowLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    connect(&engine, &Engine::StateChanged, this, &ToolShelf::Refresh);
    Refresh();
}

QToolButton* ToolShelf::Button(const QString& tool) const {
    return findChild<QToolButton*>(QStringLiteral("tool.%1").arg(tool));
}

void ToolShelf::Refresh() {
    QStringList tools;
    if (engine.State())
        for (const std::string& name : engine.State()->tools)
            tools.append(QString::fromStdString(name));
    // Before the first document is opened, the known tools are shown disabled, so that the layout
    // does not change later.
    if (tools.isEmpty())
        for (const ToolAppearance& tool : KnownTools()) tools.append(tool.name);
    if (tools == shown) return;
    shown = tools;
    while (QLayoutItem* item = layout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    for (const QString& tool : tools) {
        const QString id = QStringLiteral("tool.%1").arg(tool);
        QAction* action = actions.Find(id);
        if (action == nullptr) continue;
        QToolButton* button = MakeActionButton(action, this);
        button->setObjectName(id);
        const int side = fontMetrics().height() + 20;
        button->setFixedSize(side, side);
        button->setIconSize({side - 12, side - 12});
        layout->addWidget(button);
    }
    updateGeometry();
}

}  // namespace trovik::studio
