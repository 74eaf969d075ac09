// SPDX-License-Identifier: Apache-2.0

/// \file
/// Actions and panels of the main window.
#include "commands/CommandPalette.h"
#include "commands/KeymapEditor.h"
#include "commands/Preferences.h"
#include "commands/ViewModel.h"
#include "panels/HistoryPanel.h"
#include "panels/InfoPanel.h"
#include "panels/LayersPanel.h"
#include "panels/LevelsPanel.h"
#include "panels/MaskPanel.h"
#include "panels/ReferencesPanel.h"
#include "panels/StampTray.h"
#include "panels/SymmetryPanel.h"
#include "panels/ViewPanel.h"
#include "window/MainWindow.h"
#include "window/PanelStack.h"
#include "window/PreferencesDialog.h"
#include "window/RenderWindow.h"
#include "window/TimeLapseWindow.h"
#include "window/WelcomeHint.h"

#include <QMessageBox>

namespace trovik::studio {

void MainWindow::AddWindowActions() {
    ActionRegistry& actions = context.actions;
    actions.Add({.id = "window.palette",
                 .text = tr("Find Command…"),
                 .description = tr("Searches all commands by name."),
                 .keys = {QKeySequence("Ctrl+Space"), QKeySequence("F3")},
                 .icon = "search",
                 .run = [this] { palette->Open(); }});
    actions.Add(
        {.id = "window.panels",
         .text = tr("Show or Hide Panels"),
         .description =
             tr("Hides the panels so that the viewport fills the window, or shows them again."),
         .keys = {QKeySequence("Tab")},
         .icon = "isolate",
         .isForViewport = true,
         .run = [this] { TogglePanels(); }});
    actions.Add({.id = "window.fullscreen",
                 .text = tr("Full Screen"),
                 .description = tr("Toggles full screen."),
                 .keys = {QKeySequence("F11")},
                 .icon = "frame",
                 .run = [this] { isFullScreen() ? showNormal() : showFullScreen(); }});
    actions.Add({.id = "window.preferences",
                 .text = tr("Preferences…"),
                 .description = tr("Theme, interface size, navigation, undo memory, pen."),
                 .keys = {QKeySequence("Ctrl+,")},
                 .icon = "preferences",
                 .run = [this] { PreferencesDialog(context.preferences, keymap, this).exec(); }});
    actions.Add({.id = "window.keymap",
                 .text = tr("Keymap…"),
                 .description = tr("Shows and changes the keys of all commands."),
                 .keys = {QKeySequence("Ctrl+K")},
                 .icon = "keyboard",
                 .run = [this] { KeymapEditor(context.actions, keymap, this).exec(); }});
    QAction* render =
        actions.Add({.id = "file.render",
                     .text = tr("Render View…"),
                     .description = tr("Renders the view with ray tracing, and saves the image."),
                     .keys = {QKeySequence("Shift+F12")},
                     .icon = "render",
                     .run = [this] {
                         auto* window = new RenderWindow(context, this);
                         window->setAttribute(Qt::WA_DeleteOnClose);
                         window->show();
                         window->Render();
                     }});
    context.EnableWithDocument(render);
    QAction* timeLapse =
        actions.Add({.id = "file.timelapse",
                     .text = tr("Time Lapse of Actions…"),
                     .description = tr("Shows all strokes and commands since the document was "
                                       "opened, and saves them as images."),
                     .icon = "timelapse",
                     .run = [this] {
                         auto* window = new TimeLapseWindow(context, this);
                         window->setAttribute(Qt::WA_DeleteOnClose);
                         window->show();
                     }});
    context.EnableWithDocument(timeLapse);
    actions.Add({.id = "help.welcome",
                 .text = tr("First Steps"),
                 .description = tr("Shows the first-start hint again."),
                 .keys = {QKeySequence("F1")},
                 .icon = "about",
                 .run = [this] {
                     context.preferences.SetShowsWelcome(true);
                     ShowWelcome();
                 }});
    actions.Add({.id = "help.about",
                 .text = tr("About Trovik Studio"),
                 .description = tr("Version and licence."),
                 .icon = "about",
                 .run = [this] { About(); }});
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

void MainWindow::About() {
    QMessageBox::about(this,
                       tr("About Trovik Studio"),
                       tr("<b>Trovik Studio %1</b><p>Multiresolution digital sculpting with layers "
                          "and a journal for crash recovery.<p>Licence: Apache-2.0")
                           .arg(QStringLiteral(TROVIK_VERSION)));
}

}  // namespace trovik::studio
