// SPDX-License-Identifier: Apache-2.0

/// \file
/// The panels of the main window, docked and undocked.
#include "panels/BrushPanel.h"
#include "panels/HistoryPanel.h"
#include "panels/InfoPanel.h"
#include "panels/LayersPanel.h"
#include "panels/LevelsPanel.h"
#include "panels/MaskPanel.h"
#include "panels/ReferencesPanel.h"
#include "panels/StampTray.h"
#include "panels/SymmetryPanel.h"
#include "panels/ToolShelf.h"
#include "panels/ViewPanel.h"
#include "window/MainWindow.h"
#include "window/PanelStack.h"
#include "window/PanelWindows.h"

#include <QDockWidget>

namespace trovik::studio {

namespace {

QDockWidget* AddDock(QMainWindow& window,
                     const QString& id,
                     const QString& title,
                     Qt::DockWidgetArea area,
                     QWidget* contents) {
    auto* dock = new QDockWidget(title, &window);
    dock->setObjectName(id);
    dock->setFeatures(QDockWidget::DockWidgetClosable);
    // No title bar, because the panels have their own titles.
    dock->setTitleBarWidget(new QWidget(dock));
    dock->setWidget(contents);
    window.addDockWidget(area, dock);
    return dock;
}

/// Describes how a panel that fills a dock is removed from the dock and inserted again.
PanelWindows::Home HomeIn(QDockWidget* dock) {
    return {dock->windowTitle(),
            [dock] {
                QWidget* panel = dock->widget();
                dock->setWidget(nullptr);
                dock->hide();
                return panel;
            },
            [dock](QWidget* panel) {
                dock->setWidget(panel);
                dock->show();
            }};
}

}  // namespace

void MainWindow::AddDocks() {
    tools = new ToolShelf(context.engine, context.actions, this);
    QDockWidget* toolDock =
        AddDock(*this, QStringLiteral("tools"), tr("Tools"), Qt::LeftDockWidgetArea, tools);
    brush = new BrushPanel(context.engine, this);
    QDockWidget* brushDock =
        AddDock(*this, QStringLiteral("brush"), tr("Brush"), Qt::RightDockWidgetArea, brush);
    panels = new PanelStack(this);
    AddPanels();
    AddDock(*this, QStringLiteral("panels"), tr("Panels"), Qt::RightDockWidgetArea, panels);
    setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
    setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);

    panelWindows = new PanelWindows(context.actions, *this);
    AddUndocking(QStringLiteral("tools"), HomeIn(toolDock));
    brush->AddTitleAction(AddUndocking(QStringLiteral("brush"), HomeIn(brushDock)));
    const QStringList ids = panels->Ids();
    for (const QString& id : ids)
        panels->SetTitleAction(
            id,
            AddUndocking(id,
                         {panels->Title(id),
                          [this, id] { return panels->Take(id); },
                          [this, id](QWidget* panel) { panels->PutBack(id, panel); }}));
    connect(panels, &PanelStack::Requested, panelWindows, &PanelWindows::Undock);
}

QAction* MainWindow::AddUndocking(const QString& id, const PanelWindows::Home& home) {
    panelWindows->Add(id, home);
    QAction* action = context.actions.Add(
        {.id = QStringLiteral("undock.%1").arg(id),
         .text = tr("Undock %1").arg(home.title),
         .description = tr("Moves the panel to a window of its own; choose again, or close the "
                           "window, to dock it."),
         .icon = "undock",
         .isCheckable = true,
         .run = [this, id] {
             if (panelWindows->IsUndocked(id))
                 panelWindows->Dock(id);
             else
                 panelWindows->Undock(id);
         }});
    const auto update = [this, id, action] { action->setChecked(panelWindows->IsUndocked(id)); };
    connect(panelWindows, &PanelWindows::Changed, action, update);
    // The action toggles its check mark before it runs.
    connect(action, &QAction::triggered, action, update);
    return action;
}

void MainWindow::AddPanels() {
    Engine& engine = context.engine;
    ActionRegistry& actions = context.actions;
    struct Row {
        const char* id;
        const char* icon;
        QString title, tip;
        QWidget* panel;
        bool scrolls;
    };
    const Row rows[] = {
        {"layers",
         "layers",
         tr("Layers"),
         tr("Detail that can be scaled, hidden and removed later"),
         new LayersPanel(context, panels),
         false},
        {"levels",
         "levels",
         tr("Levels"),
         tr("Coarser and finer versions of the surface"),
         new LevelsPanel(engine, actions, panels),
         true},
        {"mask",
         "mask",
         tr("Mask and Visibility"),
         tr("Protects or hides parts of the surface"),
         new MaskPanel(context, panels),
         true},
        {"symmetry",
         "symmetry",
         tr("Symmetry"),
         tr("Mirrored and repeated strokes"),
         new SymmetryPanel(engine, actions, panels),
         true},
        {"stamps",
         "stamp",
         tr("Stamps"),
         tr("Images that shape the dabs"),
         new StampTray(engine, context.preferences, panels),
         true},
        {"view",
         "view",
         tr("View"),
         tr("How the viewport shows the surface"),
         new ViewPanel(context, panels),
         true},
        {"references",
         "reference",
         tr("References"),
         tr("Images to sculpt from, behind or in front of the surface"),
         new ReferencesPanel(context, panels),
         true},
        {"history",
         "history",
         tr("History"),
         tr("Steps that can be undone and redone"),
         new HistoryPanel(engine, actions, panels),
         false},
        {"info",
         "info",
         tr("Information"),
         tr("Counts, memory and times"),
         new InfoPanel(engine, context.view, panels),
         true},
    };
    for (const Row& row : rows) {
        panels->Add(row.id, row.icon, row.title, row.tip, row.panel, row.scrolls);
        actions.Add({.id = QStringLiteral("panel.%1").arg(QLatin1String(row.id)),
                     .text = tr("Show %1").arg(row.title),
                     .description = row.tip + u'.',
                     .icon = row.icon,
                     .run = [this, id = QString::fromLatin1(row.id)] { panels->Show(id); }});
    }
}

}  // namespace trovik::studio
