// SPDX-License-Identifier: Apache-2.0
#include "window/PanelWindow.h"

#include "commands/ActionRegistry.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QVBoxLayout>

namespace trovik::studio {

PanelWindow::PanelWindow(QWidget* contents,
                         const QString& title,
                         ActionRegistry& registry,
                         QWidget* mainWindow,
                         QWidget* receiver)
    : QWidget(mainWindow, Qt::Tool), panel(contents), actions(registry), viewport(receiver) {
    setWindowTitle(title);
    setAccessibleName(title);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(panel);
    panel->show();
}

QWidget* PanelWindow::Take() {
    layout()->removeWidget(panel);
    panel->setParent(nullptr);
    return panel;
}

// Events arrive here if no widget of the panel has used them.
bool PanelWindow::event(QEvent* event) {
    const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease;
    return isKey ? SendToViewport(event) : QWidget::event(event);
}

bool PanelWindow::SendToViewport(QEvent* event) {
    const auto* key = static_cast<QKeyEvent*>(event);
    const QString owner = actions.Owner(QKeySequence(key->keyCombination()));
    // Shortcuts for the viewport need its focus, which it does not have.
    if (event->type() == QEvent::KeyPress && actions.IsForViewport(owner))
        return actions.Trigger(owner);
    return QCoreApplication::sendEvent(viewport, event);
}

void PanelWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    // Queued, because the receiver deletes this window.
    QMetaObject::invokeMethod(this, &PanelWindow::Closed, Qt::QueuedConnection);
}

}  // namespace trovik::studio
