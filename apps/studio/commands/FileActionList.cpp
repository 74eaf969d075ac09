// SPDX-License-Identifier: Apache-2.0

/// \file
/// The actions that FileActions adds.
#include "commands/FileActions.h"
#include "commands/FileDialogs.h"
#include "commands/Preferences.h"
#include "commands/ScriptPlayer.h"

#include <QFileDialog>
#include <QWidget>

namespace trovik::studio {

void FileActions::AddDocumentActions() {
    ActionRegistry& actions = context.actions;
    actions.Add(
        {.id = "file.new",
         .text = tr("New…"),
         .description = tr("Starts with a sphere, cube, plane, cylinder, cone, torus or bust."),
         .keys = {QKeySequence("Ctrl+N")},
         .icon = "new",
         .run = [this] {
             NewDialog dialog(context.window);
             if (dialog.exec() == QDialog::Accepted)
                 OpenPrimitive(dialog.Shape(), dialog.Segments(), dialog.Levels());
         }});
    actions.Add({.id = "file.new.sphere",
                 .text = tr("New Sphere"),
                 .description = tr("Starts with a sphere that is ready to sculpt."),
                 .keys = {QKeySequence("Ctrl+Alt+N")},
                 .icon = "sphere",
                 .run = [this] { OpenPrimitive(Primitive::Sphere, 16, 3); }});
    actions.Add({.id = "file.open",
                 .text = tr("Open…"),
                 .description = tr("Opens a scene or a mesh."),
                 .keys = {QKeySequence("Ctrl+O")},
                 .icon = "open",
                 .run = [this] { AskAndOpen(false); }});
    QAction* save = actions.Add(
        {.id = "file.save",
         .text = tr("Save"),
         .description = tr("Saves everything except the undo history to the scene file."),
         .keys = {QKeySequence("Ctrl+S")},
         .icon = "save",
         .run = [this] { Save(); }});
    QAction* saveAs = actions.Add({.id = "file.saveAs",
                                   .text = tr("Save As…"),
                                   .description = tr("Saves to a different scene file."),
                                   .keys = {QKeySequence("Ctrl+Shift+S")},
                                   .icon = "save",
                                   .run = [this] { SaveAs(); }});
    QAction* incremental =
        actions.Add({.id = "file.saveIncremental",
                     .text = tr("Save Incremental"),
                     .description = tr(
                         "Saves to a new file with the next number, and keeps the previous file."),
                     .keys = {QKeySequence("Ctrl+Alt+S")},
                     .icon = "save",
                     .run = [this] { SaveIncremental(); }});
    QAction* copy = actions.Add(
        {.id = "file.saveCopy",
         .text = tr("Save a Copy…"),
         .description = tr("Saves to a different scene file, and keeps the current one open."),
         .icon = "save",
         .run = [this] { SaveCopy(); }});
    for (QAction* action : {save, saveAs, incremental, copy}) context.EnableWithDocument(action);
}

void FileActions::AddTransferActions() {
    ActionRegistry& actions = context.actions;
    actions.Add(
        {.id = "file.import",
         .text = tr("Import Mesh…"),
         .description = tr("Opens a mesh with the units, up axis and levels that you choose."),
         .keys = {QKeySequence("Ctrl+Shift+O")},
         .icon = "import",
         .run = [this] { AskAndOpen(true); }});
    QAction* exporting = actions.Add({.id = "file.export",
                                      .text = tr("Export Mesh…"),
                                      .description = tr("Writes the current level to a mesh file."),
                                      .keys = {QKeySequence("Ctrl+E")},
                                      .icon = "export",
                                      .run = [this] { Export(); }});
    QAction* bake =
        actions.Add({.id = "file.bake",
                     .text = tr("Bake Map…"),
                     .description = tr("Bakes the detail of a level into a displacement or normal "
                                       "map for a coarser one."),
                     .icon = "bake",
                     .run = [this] { Bake(); }});
    QAction* displace =
        actions.Add({.id = "file.displace",
                     .text = tr("Import Displacement…"),
                     .description = tr("Displaces the surface with a displacement map."),
                     .icon = "import",
                     .run = [this] { ImportDisplacement(); }});
    QAction* screenshot = actions.Add({.id = "file.screenshot",
                                       .text = tr("Screenshot…"),
                                       .description = tr("Saves the viewport as an image."),
                                       .keys = {QKeySequence("F12")},
                                       .icon = "screenshot",
                                       .run = [this] { Screenshot(); }});
    for (QAction* action : {exporting, bake, displace, screenshot})
        context.EnableWithDocument(action);
    actions.Add({.id = "file.quit",
                 .text = tr("Quit"),
                 .description = tr("Quits the studio after asking about unsaved changes."),
                 .keys = {QKeySequence("Ctrl+Q")},
                 .icon = "quit",
                 .run = [this] { context.window->close(); }});
}

void FileActions::AddScriptActions() {
    ActionRegistry& actions = context.actions;
    actions.Add({.id = "file.script.run",
                 .text = tr("Run Script…"),
                 .description = tr("Runs the steps of a stroke script."),
                 .keys = {QKeySequence("Ctrl+R")},
                 .icon = "script",
                 .run = [this] {
                     const QString path = AskToOpen(
                         tr("Run Script"), QStringLiteral("script"), tr("Scripts (*.json)"));
                     if (!path.isEmpty()) player->Run(path);
                 }});
    actions.Add({.id = "file.script.load",
                 .text = tr("Step through Script…"),
                 .description = tr("Loads a script to run it step by step or as a time lapse."),
                 .keys = {QKeySequence("Ctrl+Alt+R")},
                 .icon = "step",
                 .run = [this] {
                     const QString path = AskToOpen(tr("Step through Script"),
                                                    QStringLiteral("script"),
                                                    tr("Scripts (*.json)"));
                     if (!path.isEmpty()) player->Load(path);
                 }});
    QAction* play =
        actions.Add({.id = "script.play",
                     .text = tr("Play or Pause Script"),
                     .description = tr("Plays the loaded script dab by dab, or pauses it."),
                     .keys = {QKeySequence("Ctrl+P")},
                     .icon = "play",
                     .run = [this] {
                         if (player->GetState() == ScriptPlayer::State::Playing)
                             player->Pause();
                         else
                             player->Play();
                     }});
    QAction* step = actions.Add({.id = "script.step",
                                 .text = tr("Next Step of Script"),
                                 .description = tr("Runs the next step of the loaded script."),
                                 .keys = {QKeySequence("Ctrl+Right")},
                                 .icon = "step",
                                 .run = [this] { player->Step(); }});
    QAction* stop =
        actions.Add({.id = "script.stop",
                     .text = tr("Stop Script"),
                     .description = tr("Completes the current step and unloads the script."),
                     .icon = "stop",
                     .run = [this] { player->Stop(); }});
    const auto update = [this, play, step, stop] {
        const ScriptPlayer::State state = player->GetState();
        const bool isLoaded =
            state == ScriptPlayer::State::Paused || state == ScriptPlayer::State::Playing;
        play->setEnabled(isLoaded);
        step->setEnabled(isLoaded);
        stop->setEnabled(player->IsRunning());
    };
    connect(player, &ScriptPlayer::Changed, this, update);
    update();
    QAction* save = actions.Add(
        {.id = "file.script.save",
         .text = tr("Save Actions as Script…"),
         .description = tr("Writes a script of all strokes and commands since the document was "
                           "opened. Running it reproduces the surface bit for bit."),
         .icon = "script",
         .run = [this] { SaveActions(); }});
    context.EnableWithDocument(save);
}

}  // namespace trovik::studio
