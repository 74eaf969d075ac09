// SPDX-License-Identifier: Apache-2.0

/// \file
/// Actions of the main window.
#include "commands/CommandPalette.h"
#include "commands/KeymapEditor.h"
#include "commands/Preferences.h"
#include "commands/ViewModel.h"
#include "window/MainWindow.h"
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
    actions.Add(
        {.id = "window.preferences",
         .text = tr("Preferences…"),
         .description =
             tr("Changes the theme, interface size, navigation, undo memory and pen settings."),
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
                 .description = tr("Shows the welcome hint again."),
                 .keys = {QKeySequence("F1")},
                 .icon = "about",
                 .run = [this] {
                     context.preferences.SetShowsWelcome(true);
                     ShowWelcome();
                 }});
    actions.Add({.id = "help.about",
                 .text = tr("About Trovik Studio"),
                 .description = tr("Shows the version and licence."),
                 .icon = "about",
                 .run = [this] { About(); }});
}

void MainWindow::About() {
    QMessageBox::about(this,
                       tr("About Trovik Studio"),
                       tr("<b>Trovik Studio %1</b><p>Multiresolution digital sculpting with layers "
                          "and a journal for crash recovery.<p>Licence: Apache-2.0")
                           .arg(QStringLiteral(TROVIK_VERSION)));
}

}  // namespace trovik::studio
