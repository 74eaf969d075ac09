// SPDX-License-Identifier: Apache-2.0

/// \file The action that appends a mesh file.
#include "commands/FileDialogs.h"
#include "commands/MeshFileChoice.h"
#include "commands/ReplacementNote.h"
#include "commands/StudioActions.h"
#include "commands/SurfaceSize.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QLabel>

#include <algorithm>
#include <array>
#include <cmath>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(AppendActions)
};

void ChooseFile(const ActionContext& context) {
    const QString path = ChooseMeshFile(context, Text::tr("Append Mesh"));
    if (!path.isEmpty()) AskAppending(context, path);
}

using Boxes = std::array<QDoubleSpinBox*, 3>;

nlohmann::json ValuesOf(const Boxes& boxes) {
    return {boxes[0]->value(), boxes[1]->value(), boxes[2]->value()};
}

/// Adds the value of a choice to a step, unless it is empty.
void AddChosen(nlohmann::json& step, const char* field, const QComboBox* box) {
    const std::string value = FormDialog::ChosenText(box);
    if (!value.empty()) step[field] = value;
}

}  // namespace

void AskAppending(const ActionContext& context, const QString& path) {
    const QString title = Text::tr("Append Mesh");
    FormDialog dialog(title, Text::tr("Append"), context.window);
    AddReplacementNote(dialog, context.State());
    dialog.AddText(Text::tr("File"))->setText(QFileInfo(path).fileName());
    QDoubleSpinBox* scale =
        dialog.AddNumber(Text::tr("Scale"),
                         Text::tr("Size of the new part; 100 % is the size in the file"),
                         1e-3,
                         1e8,
                         100.0,
                         {3, 5.0, QStringLiteral(" %")});
    const double hundredth = LongestSide(SurfaceBounds(context)) * 0.01;
    const int decimals = std::clamp(static_cast<int>(std::ceil(-std::log10(hundredth))) + 2, 2, 9);
    const QString rotations[3] = {Text::tr("Rotate X"), Text::tr("Rotate Y"), Text::tr("Rotate Z")};
    const QString moves[3] = {Text::tr("Move X"), Text::tr("Move Y"), Text::tr("Move Z")};
    Boxes rotate{};
    Boxes move{};
    for (std::size_t i = 0; i < 3; ++i)
        rotate[i] = dialog.AddNumber(rotations[i],
                                     Text::tr("Angle about the axis; X first, then Y, then Z"),
                                     -360.0,
                                     360.0,
                                     0.0,
                                     {2, 5.0, QStringLiteral("°")});
    for (std::size_t i = 0; i < 3; ++i)
        move[i] = dialog.AddNumber(moves[i],
                                   Text::tr("Distance along the axis, after the rotation"),
                                   -1e9,
                                   1e9,
                                   0.0,
                                   {decimals, hundredth});
    const QString inFile = Text::tr("As in the file");
    QComboBox* units = dialog.AddChoice(
        Text::tr("Unit"),
        Text::tr("Unit of the file; has an effect if the unit of the sculpture is known"),
        UnitChoices(inFile));
    QComboBox* up = dialog.AddChoice(
        Text::tr("Up axis"),
        Text::tr("Up axis of the file; has an effect if that of the sculpture is known"),
        UpChoices(inFile));
    QCheckBox* world = dialog.AddCheck(
        Text::tr("World space"),
        Text::tr(
            "The result is in world space; otherwise, the transform of the mesh applies to it"),
        false);
    if (dialog.exec() != QDialog::Accepted) return;
    nlohmann::json step = {{"file", path.toStdString()},
                           {"scale", scale->value() / 100.0},
                           {"rotate", ValuesOf(rotate)},
                           {"translate", ValuesOf(move)},
                           {"world", world->isChecked()}};
    AddChosen(step, "units", units);
    AddChosen(step, "up", up);
    context.Run("append", std::move(step), title);
}

void AddAppendActions(const ActionContext& context) {
    context.EnableWithDocument(context.actions.Add(
        {.id = "surface.append",
         .text = Text::tr("Append Mesh…"),
         .description = Text::tr("Adds the mesh of a file to the sculpture as a new part."),
         .icon = "surface-append",
         .run = [context] { ChooseFile(context); }}));
}

}  // namespace trovik::studio
