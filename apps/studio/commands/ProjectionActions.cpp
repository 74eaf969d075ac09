// SPDX-License-Identifier: Apache-2.0

/// \file The action that projects the surface onto a mesh file.
#include "commands/FormDialog.h"
#include "commands/MeshFileChoice.h"
#include "commands/StudioActions.h"
#include "commands/SurfaceSize.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QLabel>

#include <algorithm>
#include <cmath>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(ProjectionActions)
};

void ChooseFile(const ActionContext& context) {
    const QString path = ChooseMeshFile(context, Text::tr("Project onto Mesh"));
    if (!path.isEmpty()) AskProjection(context, path);
}

}  // namespace

void AskProjection(const ActionContext& context, const QString& path) {
    const QString title = Text::tr("Project onto Mesh");
    FormDialog dialog(title, Text::tr("Project"), context.window);
    dialog.AddText(Text::tr("File"))->setText(QFileInfo(path).fileName());
    const double size = LongestSide(SurfaceBounds(context));
    const double tenth = size * 0.1;
    QDoubleSpinBox* distance = dialog.AddNumber(
        Text::tr("Distance"),
        Text::tr("In world units. Vertices within half of this distance of the file's surface move "
                 "onto it; from there, the effect decreases"),
        size * 1e-6,
        size * 100.0,
        tenth,
        {std::clamp(static_cast<int>(std::ceil(-std::log10(tenth))) + 2, 2, 9), tenth * 0.1});
    QComboBox* direction = dialog.AddChoice(
        Text::tr("Direction"),
        Text::tr("Whether vertices move to the nearest point or along their "
                 "normals"),
        {{Text::tr("Nearest point"), "nearest"}, {Text::tr("Along the normal"), "normal"}});
    QCheckBox* colors = dialog.AddCheck(
        Text::tr("Colours"), Text::tr("Also takes the vertex colours of the file"), false);
    QCheckBox* world = dialog.AddCheck(
        Text::tr("World space"),
        Text::tr("The file is in world space; otherwise, the transform of the mesh applies to it"),
        false);
    if (dialog.exec() != QDialog::Accepted) return;
    context.Run("project",
                {{"file", path.toStdString()},
                 {"distance", distance->value()},
                 {"direction", FormDialog::ChosenText(direction)},
                 {"colors", colors->isChecked()},
                 {"world", world->isChecked()}},
                title);
}

void AddProjectionActions(const ActionContext& context) {
    context.EnableWithDocument(context.actions.Add(
        {.id = "surface.project",
         .text = Text::tr("Project onto Mesh…"),
         .description = Text::tr("Moves the unmasked surface onto the surface of a mesh file."),
         .icon = "surface-project",
         .run = [context] { ChooseFile(context); }}));
}

}  // namespace trovik::studio
