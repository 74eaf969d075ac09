// SPDX-License-Identifier: Apache-2.0
#include "window/PanelWindows.h"

#include "commands/ActionRegistry.h"

#include <QMainWindow>
#include <QScreen>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace trovik::studio {

PanelWindows::PanelWindows(ActionRegistry& registry, QMainWindow& window)
    : QObject(&window), actions(registry), mainWindow(window) {}

void PanelWindows::Add(const QString& id, Home home) { entries[id].home = std::move(home); }

PanelWindow* PanelWindows::Window(const QString& id) const {
    const auto found = entries.find(id);
    return found == entries.end() ? nullptr : found->second.window.data();
}

void PanelWindows::Undock(const QString& id) {
    const auto found = entries.find(id);
    if (found == entries.end()) return;
    Entry& entry = found->second;
    if (entry.window != nullptr) {
        entry.window->show();
        entry.window->raise();
        return;
    }
    QWidget* panel = entry.home.take();
    // A page that has not been shown yet has no useful size.
    const QSize size = panel->size().expandedTo(panel->sizeHint());
    const QPoint corner = CornerNextTo(*panel, size);
    entry.window =
        new PanelWindow(panel, entry.home.title, actions, &mainWindow, mainWindow.centralWidget());
    entry.window->resize(size);
    entry.window->move(corner);
    connect(entry.window, &PanelWindow::Closed, this, [this, id] { Dock(id); });
    entry.window->show();
    Q_EMIT Changed(id);
}

QPoint PanelWindows::CornerNextTo(const QWidget& panel, const QSize& size) const {
    const QPoint corner = panel.mapToGlobal(QPoint());
    const int distance = mainWindow.fontMetrics().height();
    const int middle = mainWindow.mapToGlobal(mainWindow.rect().center()).x();
    const bool isLeft = corner.x() + panel.width() / 2 < middle;
    const int x = corner.x() + (isLeft ? panel.width() + distance : -size.width() - distance);
    const QRect screen = mainWindow.screen()->availableGeometry();
    return {std::clamp(x, screen.left(), std::max(screen.left(), screen.right() - size.width())),
            std::max(corner.y(), screen.top())};
}

void PanelWindows::Dock(const QString& id) {
    const auto found = entries.find(id);
    if (found == entries.end() || found->second.window == nullptr) return;
    PanelWindow* window = std::exchange(found->second.window, nullptr);
    found->second.home.putBack(window->Take());
    window->hide();
    window->deleteLater();
    mainWindow.activateWindow();
    mainWindow.centralWidget()->setFocus();
    Q_EMIT Changed(id);
}

void PanelWindows::SetVisible(bool visible) {
    for (const auto& [id, entry] : entries)
        if (entry.window != nullptr) entry.window->setVisible(visible);
}

bool PanelWindows::IsAnyVisible() const {
    for (const auto& [id, entry] : entries)
        if (entry.window != nullptr && entry.window->isVisible()) return true;
    return false;
}

QByteArray PanelWindows::State() const {
    nlohmann::json state = nlohmann::json::object();
    for (const auto& [id, entry] : entries)
        if (entry.window != nullptr)
            state[id.toStdString()] = entry.window->saveGeometry().toBase64().toStdString();
    return QByteArray::fromStdString(state.dump());
}

void PanelWindows::Restore(const QByteArray& text) {
    const auto state = nlohmann::json::parse(text.begin(), text.end(), nullptr, false);
    if (!state.is_object()) return;
    for (const auto& [id, geometry] : state.items()) {
        Undock(QString::fromStdString(id));
        PanelWindow* window = Window(QString::fromStdString(id));
        if (window == nullptr || !geometry.is_string()) continue;
        window->restoreGeometry(
            QByteArray::fromBase64(QByteArray::fromStdString(geometry.get<std::string>())));
    }
}

}  // namespace trovik::studio
