// SPDX-License-Identifier: Apache-2.0
#include "commands/StudioActions.h"
#include "commands/SymmetrySetting.h"

#include <QCoreApplication>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(SymmetryActions)
};

constexpr int firstRadialCount = 6;

template <typename Change>
void ChangeSymmetry(const ActionContext& context, const Change& change) {
    SymmetrySetting setting = SymmetrySetting::Of(context.State());
    change(setting);
    context.Run("mirror", setting.ToJson());
}

}  // namespace

void AddSymmetryActions(const ActionContext& context) {
    ActionRegistry& actions = context.actions;
    constexpr const char* names[] = {"x", "y", "z"};
    for (int axis = 0; axis < 3; ++axis) {
        const QString name = QString::fromLatin1(names[axis]).toUpper();
        QAction* action = actions.Add(
            {.id = QStringLiteral("symmetry.%1").arg(QLatin1String(names[axis])),
             .text = Text::tr("Symmetry %1").arg(name),
             .description =
                 Text::tr("Mirrors strokes in the plane perpendicular to the mesh's %1 axis.")
                     .arg(name.toLower()),
             .keys = {QKeySequence(name)},
             .icon = QStringLiteral("axis-%1").arg(QLatin1String(names[axis])),
             .isCheckable = true,
             .run = [context, axis] {
                 ChangeSymmetry(context,
                                [&](SymmetrySetting& setting) { setting.TogglePlane(axis); });
             }});
        context.EnableWithDocument(action);
        context.CheckWhen(action, [axis](const DocumentState& state) {
            return SymmetrySetting::Of(state).HasPlane(axis);
        });
    }
    QAction* radial = actions.Add(
        {.id = "symmetry.radial",
         .text = Text::tr("Radial Symmetry"),
         .description = Text::tr("Repeats strokes about an axis of the mesh. The number of copies "
                                 "and the axis are set in the symmetry panel."),
         .icon = "radial",
         .isCheckable = true,
         .run = [context] {
             ChangeSymmetry(context, [](SymmetrySetting& setting) {
                 setting.isTopological = false;
                 setting.mirrors.copies = setting.mirrors.copies > 1 ? 1 : firstRadialCount;
             });
         }});
    context.CheckWhen(radial, [](const DocumentState& state) {
        return SymmetrySetting::Of(state).mirrors.copies > 1;
    });
    QAction* topological =
        actions.Add({.id = "symmetry.topological",
                     .text = Text::tr("Topological Symmetry"),
                     .description = Text::tr(
                         "Mirrors strokes by the mesh's connectivity, so that a posed figure "
                         "stays symmetric."),
                     .icon = "topological",
                     .isCheckable = true,
                     .run = [context] {
                         ChangeSymmetry(context, [](SymmetrySetting& setting) {
                             setting.isTopological = !setting.isTopological;
                             setting.mirrors = {};
                         });
                     }});
    context.CheckWhen(topological,
                      [](const DocumentState& state) { return state.symmetry.topological; });
    QAction* off =
        actions.Add({.id = "symmetry.off",
                     .text = Text::tr("No Symmetry"),
                     .description = Text::tr("Turns off symmetry for strokes."),
                     .icon = "cancel",
                     .run = [context] { context.Run("mirror", nlohmann::json::array()); }});
    QAction* fromPositive = actions.Add(
        {.id = "symmetry.symmetrize",
         .text = Text::tr("Symmetrize +X to -X"),
         .description = Text::tr(
             "Makes the half of the mesh at negative x the mirror image of the other half."),
         .icon = "symmetrize",
         .run = [context] {
             context.Run("symmetrize", {{"axis", "x"}, {"from", "positive"}});
         }});
    QAction* fromNegative = actions.Add(
        {.id = "symmetry.symmetrize.negative",
         .text = Text::tr("Symmetrize -X to +X"),
         .description = Text::tr(
             "Makes the half of the mesh at positive x the mirror image of the other half."),
         .icon = "symmetrize",
         .run = [context] {
             context.Run("symmetrize", {{"axis", "x"}, {"from", "negative"}});
         }});
    for (QAction* action : {radial, topological, off, fromPositive, fromNegative})
        context.EnableWithDocument(action);
}

}  // namespace trovik::studio
