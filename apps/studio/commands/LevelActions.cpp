// SPDX-License-Identifier: Apache-2.0
#include "commands/StudioActions.h"
#include "commands/SubdivideDialog.h"

#include <QCoreApplication>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(LevelActions)
};

bool HasHigher(const DocumentState& state) { return state.currentLevel + 1 < state.levels.size(); }
bool HasLower(const DocumentState& state) { return state.currentLevel > 0; }

void ChangeLevel(const ActionContext& context, int by) {
    const DocumentState& state = context.State();
    const int wanted = static_cast<int>(state.currentLevel) + by;
    if (wanted < 0 || wanted >= static_cast<int>(state.levels.size())) return;
    context.Run("level", wanted, Text::tr("Level %1").arg(wanted));
}

}  // namespace

void AddLevelActions(const ActionContext& context) {
    ActionRegistry& actions = context.actions;
    const auto add = [&](const ActionInfo& info, auto condition) {
        context.EnableWhen(actions.Add(info), condition);
    };
    const auto always = [](const DocumentState&) { return true; };
    add({.id = "level.subdivide",
         .text = Text::tr("Subdivide…"),
         .description = Text::tr("Adds finer levels on top, after showing how many faces and how "
                                 "much memory they add."),
         .icon = "subdivide",
         .run =
             [context] {
                 SubdivideDialog dialog(context.State(), context.window);
                 if (dialog.exec() == QDialog::Accepted)
                     context.Run("subdivide", dialog.Times(), Text::tr("Subdivide"));
             }},
        always);
    add({.id = "level.subdivide.once",
         .text = Text::tr("Subdivide Once"),
         .description = Text::tr("Adds one finer level on top, without asking."),
         .keys = {QKeySequence("Ctrl+D")},
         .icon = "subdivide",
         .run = [context] { context.Run("subdivide", 1, Text::tr("Subdivide")); }},
        always);
    add({.id = "level.up",
         .text = Text::tr("Higher Level"),
         .description = Text::tr("Goes to the next finer level."),
         .keys = {QKeySequence("PgUp")},
         .icon = "level-up",
         .run = [context] { ChangeLevel(context, 1); }},
        HasHigher);
    add({.id = "level.down",
         .text = Text::tr("Lower Level"),
         .description = Text::tr("Goes to the next coarser level. Finer detail is kept."),
         .keys = {QKeySequence("PgDown")},
         .icon = "level-down",
         .run = [context] { ChangeLevel(context, -1); }},
        HasLower);
    add({.id = "level.unsubdivide",
         .text = Text::tr("Unsubdivide"),
         .description = Text::tr("Adds a coarser level below the lowest one if the lowest level is "
                                 "a subdivision of a coarser mesh. The surface does not change."),
         .icon = "unsubdivide",
         .run = [context] { context.Run("unsubdivide", 1, Text::tr("Unsubdivide")); }},
        always);
    add({.id = "level.apply",
         .text = Text::tr("Apply to Base"),
         .description = Text::tr("Gives the lower levels the shape of the current one."),
         .icon = "apply-base",
         .run = [context] { context.Run("applyToBase", true, Text::tr("Apply to base")); }},
        HasLower);
    add({.id = "level.delete.higher",
         .text = Text::tr("Delete Higher Levels"),
         .description = Text::tr("Deletes all levels above the current one, and their detail."),
         .icon = "delete-higher",
         .run =
             [context] {
                 context.Run("deleteLevels", "higher", Text::tr("Delete higher levels"));
             }},
        HasHigher);
    add({.id = "level.delete.lower",
         .text = Text::tr("Delete Lower Levels"),
         .description = Text::tr("Deletes all levels below the current one, which becomes the "
                                 "lowest."),
         .icon = "delete-lower",
         .run =
             [context] { context.Run("deleteLevels", "lower", Text::tr("Delete lower levels")); }},
        HasLower);
    // Labels of the buttons in the levels panel.
    actions.Find("level.delete.higher")->setIconText(Text::tr("Delete higher"));
    actions.Find("level.delete.lower")->setIconText(Text::tr("Delete lower"));
    actions.Find("level.subdivide.once")->setIconText(Text::tr("Subdivide"));
    actions.Find("level.subdivide")->setIconText(Text::tr("Subdivide…"));
}

}  // namespace trovik::studio
