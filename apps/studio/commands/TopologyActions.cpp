// SPDX-License-Identifier: Apache-2.0

/// \file Actions that replace the mesh.
#include "commands/RemeshDialog.h"
#include "commands/ReplacementNote.h"
#include "commands/StudioActions.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QSpinBox>

#include <algorithm>
#include <cmath>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(TopologyActions)
};

constexpr int maxFaces = 100'000'000;

int WholeFrom(uint64_t count, int least) {
    return static_cast<int>(std::clamp<uint64_t>(count, static_cast<uint64_t>(least), maxFaces));
}

void RunRemesh(const ActionContext& context) {
    RemeshDialog dialog(context.engine, context.State(), context.window);
    if (dialog.exec() == QDialog::Accepted)
        context.Run("remesh", dialog.Options(), dialog.windowTitle());
}

void RunDecimate(const ActionContext& context) {
    const QString title = Text::tr("Decimate");
    FormDialog dialog(title, Text::tr("Decimate"), context.window);
    AddReplacementNote(dialog, context.State());
    QSpinBox* faces = dialog.AddWhole(Text::tr("Triangles"),
                                      Text::tr("Number of triangles to keep. A quad is two "
                                               "triangles; masked areas are kept"),
                                      4,
                                      maxFaces,
                                      WholeFrom(FacesOf(context.State()), 4));
    QCheckBox* borders = dialog.AddCheck(
        Text::tr("Keep borders"), Text::tr("Keeps all vertices of open borders"), true);
    if (dialog.exec() != QDialog::Accepted) return;
    context.Run(
        "decimate", {{"faces", faces->value()}, {"keepBorders", borders->isChecked()}}, title);
}

void RunRepair(const ActionContext& context) {
    const QString title = Text::tr("Repair");
    FormDialog dialog(title, Text::tr("Repair"), context.window);
    AddReplacementNote(dialog, context.State());
    QDoubleSpinBox* weld = dialog.AddNumber(
        Text::tr("Weld distance"),
        Text::tr("Merges vertices within this distance, in world units; 0 merges only vertices at "
                 "the same position"),
        0.0,
        1e6,
        0.0,
        {6, 0.0001});
    QComboBox* holes = dialog.AddChoice(Text::tr("Holes"),
                                        Text::tr("Whether and how holes are filled"),
                                        {{Text::tr("Keep"), "none"},
                                         {Text::tr("Fill flat"), "flat"},
                                         {Text::tr("Fill smoothly"), "smooth"}});
    QDoubleSpinBox* pieces =
        dialog.AddNumber(Text::tr("Remove pieces below"),
                         Text::tr("Removes connected components with less than this fraction of "
                                  "all faces"),
                         0.0,
                         100.0,
                         0.0,
                         {2, 1.0, QStringLiteral(" %")});
    QCheckBox* orient = dialog.AddCheck(
        Text::tr("Orient faces"), Text::tr("Flips faces so that all normals point outwards"), true);
    if (dialog.exec() != QDialog::Accepted) return;
    context.Run("repair",
                {{"weld", weld->value()},
                 {"fillHoles", FormDialog::ChosenText(holes)},
                 {"minPieceShare", pieces->value() / 100.0},
                 {"orient", orient->isChecked()}},
                title);
}

}  // namespace

void AddTopologyActions(const ActionContext& context) {
    ActionRegistry& actions = context.actions;
    context.EnableWithDocument(
        actions.Add({.id = "surface.remesh",
                     .text = Text::tr("Remesh…"),
                     .description = Text::tr("Replaces the mesh by triangles of equal size."),
                     .icon = "surface-remesh",
                     .run = [context] { RunRemesh(context); }}));
    context.EnableWithDocument(
        actions.Add({.id = "surface.decimate",
                     .text = Text::tr("Decimate…"),
                     .description = Text::tr("Replaces the mesh by a coarser triangle mesh that "
                                             "keeps the shape."),
                     .icon = "surface-decimate",
                     .run = [context] { RunDecimate(context); }}));
    context.EnableWithDocument(actions.Add(
        {.id = "surface.repair",
         .text = Text::tr("Repair…"),
         .description = Text::tr("Welds vertices, removes faulty faces and small pieces, orients "
                                 "faces and fills holes."),
         .icon = "surface-repair",
         .run = [context] { RunRepair(context); }}));
}

}  // namespace trovik::studio
