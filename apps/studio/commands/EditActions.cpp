// SPDX-License-Identifier: Apache-2.0
#include "commands/StudioActions.h"

#include <QCoreApplication>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(EditActions)
};

}  // namespace

void AddEditActions(const ActionContext& context) {
    ActionRegistry& actions = context.actions;
    QAction* undo = actions.Add({.id = "edit.undo",
                                 .text = Text::tr("Undo"),
                                 .description = Text::tr("Reverts the last stroke or command."),
                                 .keys = {QKeySequence("Ctrl+Z")},
                                 .icon = "undo",
                                 .run = [context] { context.Run("undo", 1); }});
    QAction* redo = actions.Add({.id = "edit.redo",
                                 .text = Text::tr("Redo"),
                                 .description = Text::tr("Redoes the last undone step."),
                                 .keys = {QKeySequence("Ctrl+Shift+Z"), QKeySequence("Ctrl+Y")},
                                 .icon = "redo",
                                 .run = [context] { context.Run("redo", 1); }});
    context.EnableWhen(undo, [](const DocumentState& state) { return state.historyPosition > 0; });
    context.EnableWhen(redo, [](const DocumentState& state) {
        return state.historyPosition < state.history.size();
    });
    QAction* reset =
        actions.Add({.id = "edit.reset",
                     .text = Text::tr("Reset to Imported Mesh"),
                     .description = Text::tr(
                         "Restores the imported mesh. Layers, mask and undo history are lost."),
                     .icon = "reset",
                     .run = [context] { context.Run("reset", true); }});
    context.EnableWithDocument(reset);
    QAction* cancel =
        actions.Add({.id = "edit.cancel",
                     .text = Text::tr("Cancel Running Command"),
                     .description = Text::tr("Stops a long command; the document is not changed."),
                     .keys = {QKeySequence("Ctrl+.")},
                     .icon = "cancel",
                     .run = [context] { context.engine.CancelJob(); }});
    cancel->setEnabled(false);
    QObject::connect(&context.engine, &Engine::BusyChanged, cancel, &QAction::setEnabled);
}

}  // namespace trovik::studio
