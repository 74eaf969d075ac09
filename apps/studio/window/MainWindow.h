// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionContext.h"
#include "window/PanelWindows.h"

#include <QMainWindow>
#include <QPointer>

#include <memory>

namespace trovik::studio {

class BrushPanel;
class CommandPalette;
class FileActions;
class Keymap;
class MessageBar;
class PanelStack;
class ToolShelf;
class WelcomeHint;

/// The main window: the viewport in the middle, tools on the left, brush settings and panels on the
/// right, menus, a bar with radius, strength and symmetry, and a status bar. It adds all actions to
/// the registry.
///
/// Panels never keep the keyboard focus: it returns to the viewport after each entry and when the
/// pointer enters the viewport. Panels can be undocked; their windows are restored at the next
/// start.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    /// \param viewport  becomes the central widget and a child. The other objects are borrowed.
    /// \param registry  a registry to which the studio's actions have not been added.
    MainWindow(Engine& engine,
               ActionRegistry& registry,
               ViewModel& view,
               Preferences& preferences,
               Keymap& keymap,
               QWidget* viewport);
    ~MainWindow() override;

    FileActions& Files() { return *files; }
    /// Bookmarks and reference images of the document.
    StudioScene& Scene() { return *scene; }
    CommandPalette& Palette() { return *palette; }
    BrushPanel& Brush() { return *brush; }
    PanelStack& Panels() { return *panels; }
    /// The windows of undocked panels.
    PanelWindows& Undocked() { return *panelWindows; }
    ToolShelf& Tools() { return *tools; }
    /// Shows the first-start hint unless it has been dismissed.
    void ShowWelcome();
    /// Opens the context menu of the viewport. \param hit  the surface at the position.
    void ShowViewportMenu(const HoverHit& hit, const QPoint& globalPosition);
    void ShowNote(const QString& text);
    void ShowError(const QString& text);

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void AddActions();
    void AddWindowActions();
    void AddDocks();
    void AddPanels();
    /// Adds the action that undocks a panel.
    QAction* AddUndocking(const QString& id, const PanelWindows::Home& home);
    void AddStatusBar();
    void AddScriptBar();
    void ConnectEngine();
    void ShowTitle();
    void TogglePanels();
    void About();

    std::unique_ptr<StudioScene> scene;
    ActionContext context;
    Keymap& keymap;
    FileActions* files = nullptr;
    CommandPalette* palette = nullptr;
    BrushPanel* brush = nullptr;
    PanelStack* panels = nullptr;
    PanelWindows* panelWindows = nullptr;
    ToolShelf* tools = nullptr;
    MessageBar* message = nullptr;
    QPointer<WelcomeHint> welcome;
    bool mayClose = false;
    bool isLaidOut = false;
};

/// Fills a menu bar with the actions of the registry.
void FillMenus(QMainWindow& window, const ActionRegistry& actions, FileActions& files);

}  // namespace trovik::studio
